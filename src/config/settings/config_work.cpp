#include "config/settings/config_work.h"

#include <algorithm>
#include <new>
#include <optional>
#include <stdexcept>
#include <vector>

#include "platform/c_locale.h"
#include "records/number_text.h"

namespace tarno2 {

namespace {

constexpr std::string_view kLineEnd = "\r\n";
constexpr std::string_view kContinuation = "\\          ";
constexpr std::string_view kSeparators = " \r\t\n\\";
constexpr size_t kItemsPerLine = 8;

std::string integerText(int32_t value, bool hex) {
    return formatText(hex ? "0x%x" : "%d", value);
}

std::string realText(double value) {
    return formatText("%f", value);
}

/// Without the characters up to the blank at both ends. Letters above 127 stay.
std::string_view trimmed(std::string_view text) {
    const auto isBlank = [](char c) { return static_cast<unsigned char>(c) < 33; };
    const auto* const begin = std::find_if_not(text.begin(), text.end(), isBlank);
    text.remove_prefix(static_cast<size_t>(begin - text.begin()));
    const auto end = std::find_if_not(text.rbegin(), text.rend(), isBlank);
    text.remove_suffix(static_cast<size_t>(end - text.rbegin()));
    return text;
}

/// As much of a text as fits, with the zero byte that ends it.
void copyText(std::string_view text, std::span<char> out) {
    if (!out.empty()) {
        const size_t length = std::min(text.size(), out.size() - 1);
        std::copy_n(text.begin(), length, out.begin());
        out[length] = '\0';
    }
}

std::optional<int32_t> parseInteger(std::string_view text) {
    const size_t x = text.find('x');
    if (x == std::string_view::npos) {
        return parseInt32(text);
    }
    const auto bits = parseHex32(text.substr(x + 1));
    return bits ? std::optional(static_cast<int32_t>(*bits)) : std::nullopt;
}

template <typename Integer>
void storeInteger(std::string_view token, Integer& out) {
    if (const auto value = parseInteger(token)) {
        out = static_cast<Integer>(*value);
    }
}

template <typename Real>
void storeReal(std::string_view token, Real& out) {
    out = static_cast<Real>(parseFloat(token).value_or(0.0F));
}

/// Runs what may be short of memory; false when it is.
template <typename Action>
bool withMemory(Action action) {
    try {
        return action();
    } catch (const std::bad_alloc&) {
        return false;
    } catch (const std::length_error&) {
        return false;
    }
}

}  // namespace

bool CConfigWork::WriteEntry(const char* key, const char* value, const char* comment, bool more) {
    const bool named = key != nullptr && value != nullptr;
    const bool nothing = key == nullptr && value == nullptr;
    if (!forWriting_ || !file_.isOpen() || (comment != nullptr && !named) || (key != nullptr && !named)) {
        return false;
    }
    std::string piece;
    if (named) {
        const bool lineGoesOn = more && comment != nullptr;
        if (comment != nullptr) {
            piece.append("//").append(comment).append(kLineEnd);
        }
        piece.append(key).append(" = ").append(value).append(lineGoesOn ? " " : kLineEnd);
    } else if (nothing) {
        piece.append(kLineEnd).append(more ? kContinuation : "");
    } else {
        piece.append(more ? "" : kContinuation).append(value).append(more ? " " : kLineEnd);
    }
    size_t done = 0;
    const bool written = file_.write(piece.data(), piece.size(), done).ok();
    complete_ = complete_ && written;
    return written;
}

bool CConfigWork::GetString(const char* key, std::span<char> out) {
    return withMemory([&] {
        const std::string raw = FindRaw(key, false);
        std::string value(trimmed(raw));
        if (value.empty()) {
            return false;
        }
        std::erase_if(value, [](char c) { return c == '\t' || c == '\r'; });
        copyText(value, out);
        return true;
    });
}

bool CConfigWork::GetStringArray(const char* key, std::span<const std::span<char>> out) {
    return withMemory([&] {
        const std::string raw = FindRaw(key, true);
        size_t position = 0;
        for (const std::span<char> room : out) {
            const size_t begin = raw.find_first_not_of(kSeparators, position);
            if (begin == std::string::npos) {
                return false;
            }
            position = std::min(raw.find_first_of(kSeparators, begin), raw.size());
            const std::string_view token = std::string_view(raw).substr(begin, position - begin);
            copyText(token.substr(0, kTokenRoom - 1), room);
        }
        return !raw.empty();
    });
}

std::string CConfigWork::FindRaw(const char* key, bool multiline) {
    const std::string_view text = contents_;
    const std::string_view wanted = key;
    if (wanted.empty()) {
        return {};
    }
    for (size_t i = 0; i < text.size();) {
        if (text.substr(i, 2) == "//") {
            const size_t end = text.find('\n', i);
            i = end == std::string_view::npos ? text.size() : end + 1;
            continue;
        }
        const size_t after = i + wanted.size();
        if (text[i] == wanted[0] && after < text.size() && (text[after] == ' ' || text[after] == '=') &&
            text.substr(i, wanted.size()) == wanted) {
            return valueFrom(after, multiline);
        }
        ++i;
    }
    return {};
}

std::string CConfigWork::FindRawAtLineStart(const char* key, bool multiline) {
    const std::string_view text = contents_;
    const std::string_view wanted = key;
    if (wanted.empty()) {
        return {};
    }
    for (size_t line = 0; line < text.size();) {
        const size_t after = line + wanted.size();
        if (after < text.size() && (text[after] == ' ' || text[after] == '=') &&
            text.substr(line, wanted.size()) == wanted) {
            return valueFrom(after, multiline);
        }
        const size_t end = text.find('\n', line);
        line = end == std::string_view::npos ? text.size() : end + 1;
    }
    return {};
}

std::string CConfigWork::valueFrom(size_t position, bool multiline) const {
    const size_t equals = contents_.find('=', position);
    if (equals == std::string::npos) {
        return {};
    }
    size_t end = contents_.find('\n', equals);
    while (multiline && end != std::string::npos && end + 1 < contents_.size() && contents_[end + 1] == '\\') {
        end = contents_.find('\n', end + 1);
    }
    return end == std::string::npos ? std::string() : contents_.substr(equals + 1, end - equals - 1);
}

bool CConfigWork::Open(const std::string& path, bool forWriting) {
    close();
    contents_.clear();
    complete_ = true;
    forWriting_ = forWriting;
    openError_ = OsError::tooLarge();
    return withMemory([&] {
        path_ = path;
        openError_ = forWriting ? file_.open(path_, FileMode::CreateAlways, FileAccess::Write, FileShare::None)
                                : readWholeFile(path_, kMaximumSize, FileShare::None, contents_);
        return openError_.ok();
    });
}

void CConfigWork::loadText(std::string_view text) {
    close();
    contents_ = text;
}

bool CConfigWork::close() {
    if (file_.isOpen()) {
        complete_ = file_.flush().ok() && complete_;
        complete_ = file_.close().ok() && complete_;
    }
    forWriting_ = false;
    return complete_;
}

bool CConfigWork::writeScalar(const char* key, const std::string& value, const char* comment) {
    return WriteString(key, value.c_str(), comment);
}

template <typename Value, typename FormatItem>
bool CConfigWork::writeArray(const char* key, std::span<const Value> values, const char* comment, FormatItem format) {
    for (size_t i = 0; i < values.size(); ++i) {
        const std::string item = format(values[i]);
        if (i > 0 && i % kItemsPerLine == 0 && !WriteEntry(nullptr, nullptr, nullptr, true)) {
            return false;
        }
        const bool first = i == 0;
        if (!WriteEntry(first ? key : nullptr, item.c_str(), first ? comment : nullptr, true)) {
            return false;
        }
    }
    return values.empty() ||
           (WriteEntry(nullptr, nullptr, nullptr, false) && WriteEntry(nullptr, nullptr, nullptr, false));
}

bool CConfigWork::WriteString(const char* key, const char* value, const char* comment) {
    const bool oneLine = value == nullptr || std::string_view(value).find('\n') == std::string_view::npos;
    return oneLine && WriteEntry(key, value, comment, false) && WriteEntry(nullptr, nullptr, nullptr, false);
}

bool CConfigWork::WriteUInt8(const char* key, uint8_t value, const char* comment, bool hex) {
    return writeScalar(key, integerText(value, hex), comment);
}

bool CConfigWork::WriteInt8(const char* key, int8_t value, const char* comment, bool hex) {
    return writeScalar(key, integerText(value, hex), comment);
}

bool CConfigWork::WriteInt16(const char* key, int16_t value, const char* comment, bool hex) {
    return writeScalar(key, integerText(value, hex), comment);
}

bool CConfigWork::WriteInt32(const char* key, int32_t value, const char* comment, bool hex) {
    return writeScalar(key, integerText(value, hex), comment);
}

bool CConfigWork::WriteFloat(const char* key, float value, const char* comment) {
    return writeScalar(key, realText(value), comment);
}

bool CConfigWork::WriteDouble(const char* key, double value, const char* comment) {
    return writeScalar(key, realText(value), comment);
}

bool CConfigWork::WriteStringArray(const char* key, std::span<const char* const> values, const char* comment) {
    return writeArray(key, values, comment, [](const char* value) { return std::string(value); });
}

bool CConfigWork::WriteUInt8Array(const char* key, std::span<const uint8_t> values, const char* comment, bool hex) {
    return writeArray(key, values, comment, [hex](uint8_t value) { return integerText(value, hex); });
}

bool CConfigWork::WriteInt8Array(const char* key, std::span<const int8_t> values, const char* comment, bool hex) {
    return writeArray(key, values, comment, [hex](int8_t value) { return integerText(value, hex); });
}

bool CConfigWork::WriteInt16Array(const char* key, std::span<const int16_t> values, const char* comment, bool hex) {
    return writeArray(key, values, comment, [hex](int16_t value) { return integerText(value, hex); });
}

bool CConfigWork::WriteInt32Array(const char* key, std::span<const int32_t> values, const char* comment, bool hex) {
    return writeArray(key, values, comment, [hex](int32_t value) { return integerText(value, hex); });
}

bool CConfigWork::WriteFloatArray(const char* key, std::span<const float> values, const char* comment) {
    return writeArray(key, values, comment, realText);
}

bool CConfigWork::WriteDoubleArray(const char* key, std::span<const double> values, const char* comment) {
    return writeArray(key, values, comment, realText);
}

bool CConfigWork::GetStringCopy(const char* key, std::string& out) {
    std::string buffer(kTextRoom, '\0');
    if (!GetString(key, buffer)) {
        return false;
    }
    out.assign(buffer, 0, buffer.find('\0'));
    return true;
}

template <typename Value, typename Parse>
bool CConfigWork::readScalar(const char* key, Value& out, Parse parse) {
    std::string text;
    if (!GetStringCopy(key, text)) {
        return false;
    }
    if (const auto value = parse(text)) {
        out = static_cast<Value>(*value);
    }
    return true;
}

bool CConfigWork::GetUInt8(const char* key, uint8_t& out) {
    return readScalar(key, out, parseInteger);
}

bool CConfigWork::GetInt16(const char* key, int16_t& out) {
    return readScalar(key, out, parseInteger);
}

bool CConfigWork::GetInt32(const char* key, int32_t& out) {
    return readScalar(key, out, parseInteger);
}

bool CConfigWork::GetFloat(const char* key, float& out) {
    return readScalar(key, out, parseFloat);
}

bool CConfigWork::GetDouble(const char* key, double& out) {
    return readScalar(key, out, parseDouble);
}

template <typename Value, typename Store>
bool CConfigWork::readArray(const char* key, std::span<Value> out, Store store) {
    return withMemory([&] {
        std::vector<std::vector<char>> buffers(out.size(), std::vector<char>(kTokenRoom));
        const std::vector<std::span<char>> rooms(buffers.begin(), buffers.end());
        const bool complete = GetStringArray(key, rooms);
        for (size_t i = 0; i < out.size(); ++i) {
            if (const std::string_view token = buffers[i].data(); !token.empty()) {
                store(token, out[i]);
            }
        }
        return complete;
    });
}

bool CConfigWork::GetStringArrayCopy(const char* key, std::span<std::string> out) {
    return readArray(key, out, [](std::string_view token, std::string& value) { value = token; });
}

bool CConfigWork::GetUInt8Array(const char* key, std::span<uint8_t> out) {
    return readArray(key, out, storeInteger<uint8_t>);
}

bool CConfigWork::GetInt8Array(const char* key, std::span<int8_t> out) {
    return readArray(key, out, storeInteger<int8_t>);
}

bool CConfigWork::GetInt16Array(const char* key, std::span<int16_t> out) {
    return readArray(key, out, storeInteger<int16_t>);
}

bool CConfigWork::GetInt32Array(const char* key, std::span<int32_t> out) {
    return readArray(key, out, storeInteger<int32_t>);
}

bool CConfigWork::GetFloatArray(const char* key, std::span<float> out) {
    return readArray(key, out, storeReal<float>);
}

bool CConfigWork::GetDoubleArray(const char* key, std::span<double> out) {
    return readArray(key, out, storeReal<double>);
}

}  // namespace tarno2
