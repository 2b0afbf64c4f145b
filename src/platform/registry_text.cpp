#include "platform/registry_text.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <utility>

#include "platform/utf.h"

namespace tarno2 {

namespace {

constexpr uint32_t kRegistryExpandString = 2;
constexpr uint32_t kRegistryMultiString = 7;

constexpr std::string_view kHeading4 = "REGEDIT4";
constexpr std::string_view kHeading5 = "Windows Registry Editor Version 5.00";

char lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool isBlank(char c) {
    return c == ' ' || c == '\t';
}

std::string_view trimmed(std::string_view text) {
    while (!text.empty() && isBlank(text.front())) {
        text.remove_prefix(1);
    }
    while (!text.empty() && isBlank(text.back())) {
        text.remove_suffix(1);
    }
    return text;
}

/// Whether nothing more than blanks and a comment follows on the line.
bool endsLine(std::string_view rest) {
    rest = trimmed(rest);
    return rest.empty() || rest.front() == ';';
}

bool takePrefix(std::string_view& text, std::string_view prefix) {
    if (!sameRegistryName(text.substr(0, prefix.size()), prefix)) {
        return false;
    }
    text.remove_prefix(prefix.size());
    return true;
}

bool takeHex(std::string_view& text, uint32_t& number) {
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, 16);
    text.remove_prefix(static_cast<size_t>(end - text.data()));
    return error == std::errc();
}

std::u16string utf16LittleEndian(std::string_view bytes) {
    std::u16string units;
    units.reserve(bytes.size() / 2);
    for (size_t i = 0; i + 1 < bytes.size(); i += 2) {
        const auto low = static_cast<unsigned char>(bytes[i]);
        const auto high = static_cast<unsigned char>(bytes[i + 1]);
        units += static_cast<char16_t>(low | high << 8);
    }
    return units;
}

/// The text in the encoding of the system's file names, without its byte order mark.
std::string decoded(std::string_view text) {
    if (text.starts_with("\xFF\xFE")) {
        return utf16ToSystem(utf16LittleEndian(text.substr(2)));
    }
    if (text.starts_with("\xEF\xBB\xBF")) {
        text.remove_prefix(3);
        const auto utf16 = utf8ToUtf16(text);
        return utf16 ? utf16ToSystem(*utf16) : std::string(text);
    }
    return std::string(text);
}

/// Takes a quoted string off the text. `\\` and `\"` stand for one character; other backslashes, as people write them
/// in paths, stand for themselves.
std::optional<std::string> takeQuoted(std::string_view& text) {
    if (text.empty() || text.front() != '"') {
        return std::nullopt;
    }
    std::string plain;
    for (size_t i = 1; i < text.size(); ++i) {
        if (text[i] == '"') {
            text.remove_prefix(i + 1);
            return plain;
        }
        if (text[i] == '\\' && i + 1 < text.size() && (text[i + 1] == '\\' || text[i + 1] == '"')) {
            ++i;
        }
        plain += text[i];
    }
    return std::nullopt;
}

std::optional<RegistryValue> parseDword(std::string_view text) {
    uint32_t number = 0;
    if (!takeHex(text, number) || !endsLine(text)) {
        return std::nullopt;
    }
    RegistryValue value{kRegistryDword, {}, {}};
    for (unsigned shift = 0; shift < 32; shift += 8) {
        value.data += static_cast<char>(number >> shift & 0xFFU);
    }
    return value;
}

/// "01,02,ff" after "hex:" or "hex(n):".
std::optional<std::string> parseBytes(std::string_view text) {
    std::string bytes;
    for (text = trimmed(text); !endsLine(text); text = trimmed(text)) {
        uint32_t number = 0;
        if (!takeHex(text, number) || number > 0xFF) {
            return std::nullopt;
        }
        bytes += static_cast<char>(number);
        text = trimmed(text);
        if (!text.empty() && text.front() == ',') {
            text.remove_prefix(1);
        } else if (!endsLine(text)) {
            return std::nullopt;
        }
    }
    return bytes;
}

class Parser {
public:
    explicit Parser(std::string_view text) : rest_(text) {}

    std::vector<RegistryTextEntry> parse() {
        if (!takeHeading()) {
            return {};
        }
        while (!rest_.empty()) {
            const std::string_view line = trimmed(takeLine());
            if (line.starts_with('[')) {
                takeKey(line);
            } else if (inKey_ && (line.starts_with('"') || line.starts_with('@'))) {
                takeValue(line);
            }
        }
        return std::move(entries_);
    }

private:
    std::string_view takeLine() {
        const std::string_view line = rest_.substr(0, rest_.find_first_of("\r\n"));
        rest_.remove_prefix(line.size());
        rest_.remove_prefix(rest_.starts_with("\r\n") ? 2 : std::min<size_t>(rest_.size(), 1));
        return line;
    }

    bool takeHeading() {
        std::string_view line;
        while (line.empty() && !rest_.empty()) {
            line = trimmed(takeLine());
        }
        wideStrings_ = line == kHeading5;
        return wideStrings_ || line == kHeading4;
    }

    void takeKey(std::string_view line) {
        inKey_ = false;
        const size_t end = line.rfind(']');
        if (end == std::string_view::npos || !endsLine(line.substr(end + 1))) {
            return;
        }
        line = line.substr(1, end - 1);
        const bool deletion = line.starts_with('-');
        line.remove_prefix(deletion ? 1 : 0);
        const size_t separator = std::min(line.find('\\'), line.size());
        const std::string_view rootName = line.substr(0, separator);
        line.remove_prefix(std::min(separator + 1, line.size()));
        if (sameRegistryName(rootName, "HKEY_LOCAL_MACHINE")) {
            root_ = RegistryRoot::LocalMachine;
        } else if (sameRegistryName(rootName, "HKEY_CURRENT_USER")) {
            root_ = RegistryRoot::CurrentUser;
        } else {
            return;
        }
        key_ = line;
        if (deletion) {
            dropKey();
        } else {
            inKey_ = true;
            entries_.push_back({root_, key_, {}, true, {}});
        }
    }

    void dropKey() {
        const std::string below = key_ + '\\';
        std::erase_if(entries_, [&](const RegistryTextEntry& entry) {
            return entry.root == root_ &&
                   (sameRegistryName(entry.key, key_) || sameRegistryName(entry.key.substr(0, below.size()), below));
        });
    }

    void takeValue(std::string_view line) {
        std::string name;
        if (line.front() == '@') {
            line.remove_prefix(1);
        } else if (auto quoted = takeQuoted(line)) {
            name = std::move(*quoted);
        } else {
            return;
        }
        line = trimmed(line);
        if (!takePrefix(line, "=")) {
            return;
        }
        line = trimmed(line);
        const bool deletion = line.starts_with('-') && endsLine(line.substr(1));
        auto value = deletion ? std::nullopt : parseValue(line);
        if (!deletion && !value) {
            return;
        }
        std::erase_if(entries_, [&](const RegistryTextEntry& entry) {
            return !entry.keyOnly && entry.root == root_ && sameRegistryName(entry.key, key_) &&
                   sameRegistryName(entry.name, name);
        });
        if (value) {
            entries_.push_back({root_, key_, std::move(name), false, std::move(*value)});
        }
    }

    std::optional<RegistryValue> parseValue(std::string_view text) {
        if (auto quoted = takeQuoted(text)) {
            return endsLine(text) ? std::optional(RegistryValue{kRegistryString, std::move(*quoted), {}})
                                  : std::nullopt;
        }
        if (takePrefix(text, "dword:")) {
            return parseDword(trimmed(text));
        }
        uint32_t type = kRegistryBinary;
        if (takePrefix(text, "hex(")) {
            if (!takeHex(text, type) || !takePrefix(text, "):")) {
                return std::nullopt;
            }
        } else if (!takePrefix(text, "hex:")) {
            return std::nullopt;
        }
        auto bytes = parseBytes(continued(text));
        return bytes ? std::optional(RegistryValue{type, asText(type, std::move(*bytes)), {}}) : std::nullopt;
    }

    /// A value whose line ends with a backslash goes on in the next one.
    std::string continued(std::string_view text) {
        std::string whole;
        while (text.ends_with('\\')) {
            whole += text.substr(0, text.size() - 1);
            text = trimmed(takeLine());
        }
        return whole.append(text);
    }

    /// Strings that are written as bytes are UTF-16 in a text of version 5, and end with a zero.
    std::string asText(uint32_t type, std::string bytes) const {
        const bool single = type == kRegistryString || type == kRegistryExpandString;
        if (wideStrings_ && (single || type == kRegistryMultiString)) {
            bytes = utf16ToSystem(utf16LittleEndian(bytes));
        }
        if (single && bytes.ends_with('\0')) {
            bytes.pop_back();
        }
        return bytes;
    }

    std::string_view rest_;
    std::vector<RegistryTextEntry> entries_;
    bool wideStrings_ = false;
    bool inKey_ = false;
    RegistryRoot root_ = RegistryRoot::LocalMachine;
    std::string key_;
};

}  // namespace

std::vector<RegistryTextEntry> parseRegistryText(std::string_view text) {
    const std::string plain = decoded(text);
    return Parser(plain).parse();
}

bool sameRegistryName(std::string_view a, std::string_view b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](char x, char y) { return lower(x) == lower(y); });
}

}  // namespace tarno2
