#include "platform/codepage1251.h"

#include <algorithm>
#include <array>

#include "platform/utf.h"

namespace tarno2 {

namespace {

constexpr unsigned char kFirstUpper = 0x80;
constexpr char16_t kNoCharacter = 0xFFFD;

/// The characters of the bytes 0x80 to 0xFF; those below are ASCII.
constexpr std::array<char16_t, 128> kUpperHalf = {
    0x0402, 0x0403, 0x201A, 0x0453, 0x201E, 0x2026, 0x2020, 0x2021, 0x20AC, 0x2030, 0x0409, 0x2039, 0x040A,
    0x040C, 0x040B, 0x040F, 0x0452, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014, 0xFFFD, 0x2122,
    0x0459, 0x203A, 0x045A, 0x045C, 0x045B, 0x045F, 0x00A0, 0x040E, 0x045E, 0x0408, 0x00A4, 0x0490, 0x00A6,
    0x00A7, 0x0401, 0x00A9, 0x0404, 0x00AB, 0x00AC, 0x00AD, 0x00AE, 0x0407, 0x00B0, 0x00B1, 0x0406, 0x0456,
    0x0491, 0x00B5, 0x00B6, 0x00B7, 0x0451, 0x2116, 0x0454, 0x00BB, 0x0458, 0x0405, 0x0455, 0x0457, 0x0410,
    0x0411, 0x0412, 0x0413, 0x0414, 0x0415, 0x0416, 0x0417, 0x0418, 0x0419, 0x041A, 0x041B, 0x041C, 0x041D,
    0x041E, 0x041F, 0x0420, 0x0421, 0x0422, 0x0423, 0x0424, 0x0425, 0x0426, 0x0427, 0x0428, 0x0429, 0x042A,
    0x042B, 0x042C, 0x042D, 0x042E, 0x042F, 0x0430, 0x0431, 0x0432, 0x0433, 0x0434, 0x0435, 0x0436, 0x0437,
    0x0438, 0x0439, 0x043A, 0x043B, 0x043C, 0x043D, 0x043E, 0x043F, 0x0440, 0x0441, 0x0442, 0x0443, 0x0444,
    0x0445, 0x0446, 0x0447, 0x0448, 0x0449, 0x044A, 0x044B, 0x044C, 0x044D, 0x044E, 0x044F,
};

std::optional<char> byteOf(char16_t unit) {
    if (unit < kFirstUpper) {
        return static_cast<char>(unit);
    }
    const auto* const found = std::find(kUpperHalf.begin(), kUpperHalf.end(), unit);
    if (unit == kNoCharacter || found == kUpperHalf.end()) {
        return std::nullopt;
    }
    return static_cast<char>(kFirstUpper + (found - kUpperHalf.begin()));
}

/// Letters beyond ASCII in a row: converted when they are UTF-8.
std::string lettersToCp1251(std::string letters) {
    const auto utf16 = utf8ToUtf16(letters);
    if (!utf16) {
        return letters;
    }
    std::string bytes;
    for (const char16_t unit : *utf16) {
        constexpr char16_t kSurrogate = 0xFC00;
        if ((unit & kSurrogate) != 0xDC00) {  // the second half of a character
            bytes += byteOf(unit).value_or('?');
        }
    }
    return bytes;
}

}  // namespace

char16_t cp1251CodePoint(unsigned char byte) {
    return byte < kFirstUpper ? byte : kUpperHalf.at(byte - kFirstUpper);
}

std::u16string cp1251ToUtf16(std::string_view text) {
    std::u16string utf16(text.size(), u'\0');
    std::transform(text.begin(), text.end(), utf16.begin(),
                   [](char c) { return cp1251CodePoint(static_cast<unsigned char>(c)); });
    return utf16;
}

std::optional<std::string> utf16ToCp1251(std::u16string_view text) {
    std::string bytes;
    bytes.reserve(text.size());
    for (const char16_t unit : text) {
        const auto byte = byteOf(unit);
        if (!byte) {
            return std::nullopt;
        }
        bytes += *byte;
    }
    return bytes;
}

std::string cp1251ToUtf8(std::string_view text) {
    return utf16ToUtf8(cp1251ToUtf16(text));
}

std::string typedToUtf8(std::string_view text) {
    return utf8ToUtf16(text) ? std::string(text) : cp1251ToUtf8(text);
}

std::optional<std::string> utf8ToCp1251(std::string_view utf8) {
    const auto utf16 = utf8ToUtf16(utf8);
    return utf16 ? utf16ToCp1251(*utf16) : std::nullopt;
}

std::string systemTextToCp1251(const std::string& text) {
    const auto isUpper = [](char c) { return static_cast<unsigned char>(c) >= kFirstUpper; };
    std::string bytes;
    bytes.reserve(text.size());
    for (auto at = text.begin(); at != text.end();) {
        const auto row = std::find_if(at, text.end(), isUpper);
        const auto end = std::find_if_not(row, text.end(), isUpper);
        bytes.append(at, row);
        bytes += lettersToCp1251({row, end});
        at = end;
    }
    return bytes;
}

}  // namespace tarno2
