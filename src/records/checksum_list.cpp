#include "records/checksum_list.h"

#include <algorithm>
#include <array>
#include <utility>

#include "platform/utf.h"

namespace tarno2 {

namespace {

constexpr size_t kDigits = 64;
constexpr std::array<std::pair<char, char>, 3> kEscapes = {{{'\\', '\\'}, {'\n', 'n'}, {'\r', 'r'}}};

/// A name as the list has it: a name that is no text stays what it is, byte by byte.
std::string listedName(const std::string& file) {
    std::string utf8 = systemToUtf8(file);
    const auto utf16 = utf8ToUtf16(utf8);
    return utf16 && utf16ToSystem(*utf16) == file ? utf8 : file;
}

std::string nameOfListed(const std::string& listed) {
    const auto utf16 = utf8ToUtf16(listed);
    return utf16 ? utf16ToSystem(*utf16) : listed;
}

std::string escaped(const std::string& name) {
    std::string text;
    for (const char c : name) {
        const auto* const escape = std::ranges::find(kEscapes, c, &std::pair<char, char>::first);
        text += escape == kEscapes.end() ? std::string(1, c) : std::string{'\\', escape->second};
    }
    return text;
}

std::optional<std::string> unescaped(std::string_view text) {
    std::string name;
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '\\') {
            name += text[i];
            continue;
        }
        const char letter = ++i < text.size() ? text[i] : '\0';
        const auto* const escape = std::ranges::find(kEscapes, letter, &std::pair<char, char>::second);
        if (escape == kEscapes.end()) {
            return std::nullopt;
        }
        name += escape->first;
    }
    return name;
}

std::optional<FileChecksum> readLine(std::string_view line) {
    const bool escapes = line.starts_with('\\');
    line.remove_prefix(escapes ? 1 : 0);
    // Behind the digits stand two characters: blanks, or a blank and a "*".
    if (line.size() < kDigits + 3 || line[kDigits] != ' ' || (line[kDigits + 1] != ' ' && line[kDigits + 1] != '*')) {
        return std::nullopt;
    }
    FileChecksum file;
    file.sha256 = line.substr(0, kDigits);
    std::ranges::transform(file.sha256, file.sha256.begin(),
                           [](char c) { return c >= 'A' && c <= 'F' ? static_cast<char>(c - 'A' + 'a') : c; });
    const std::string_view rest = line.substr(kDigits + 2);
    const auto name = escapes ? unescaped(rest) : std::optional<std::string>(rest);
    if (!name || !isSha256(file.sha256)) {
        return std::nullopt;
    }
    file.file = nameOfListed(*name);
    return file;
}

}  // namespace

bool isSha256(std::string_view text) {
    return text.size() == kDigits && text.find_first_not_of("0123456789abcdef") == std::string_view::npos;
}

std::string checksumListText(std::span<const FileChecksum> files) {
    std::string text;
    for (const FileChecksum& file : files) {
        const std::string name = listedName(file.file);
        const std::string shown = escaped(name);
        text += (shown == name ? "" : "\\") + file.sha256 + "  " + shown + '\n';
    }
    return text;
}

std::optional<std::vector<FileChecksum>> readChecksumList(std::string_view text) {
    std::vector<FileChecksum> files;
    while (!text.empty()) {
        const size_t end = std::min(text.find('\n'), text.size());
        std::string_view line = text.substr(0, end);
        text.remove_prefix(std::min(end + 1, text.size()));
        line.remove_suffix(line.ends_with('\r') ? 1 : 0);
        if (line.empty()) {
            continue;
        }
        auto file = readLine(line);
        if (!file) {
            return std::nullopt;
        }
        files.push_back(std::move(*file));
    }
    return files.empty() ? std::nullopt : std::optional(std::move(files));
}

}  // namespace tarno2
