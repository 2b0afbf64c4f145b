#include "platform/utf.h"

namespace tarno2 {

namespace {

constexpr char32_t kReplacement = 0xFFFD;
constexpr char32_t kFirstSurrogate = 0xD800;
constexpr char32_t kFirstLowSurrogate = 0xDC00;
constexpr char32_t kLastSurrogate = 0xDFFF;
constexpr char32_t kFirstSupplementary = 0x10000;
constexpr char32_t kLastCodePoint = 0x10FFFF;

bool isSurrogate(char32_t c) {
    return c >= kFirstSurrogate && c <= kLastSurrogate;
}

/// Reads one character at `at` and moves past it; nothing when the bytes are no UTF-8.
std::optional<char32_t> takeUtf8(std::string_view text, size_t& at) {
    const auto lead = static_cast<unsigned char>(text[at++]);
    if (lead < 0x80U) {
        return lead;
    }
    const int more = lead >= 0xF0U ? 3 : lead >= 0xE0U ? 2 : 1;
    constexpr char32_t kSmallest[] = {0, 0x80, 0x800, kFirstSupplementary};
    if (lead < 0xC0U || lead >= 0xF8U) {
        return std::nullopt;
    }
    char32_t c = lead & (0x3FU >> static_cast<unsigned>(more));
    for (int i = 0; i < more; ++i) {
        if (at == text.size() || (static_cast<unsigned char>(text[at]) & 0xC0U) != 0x80U) {
            return std::nullopt;
        }
        c = (c << 6U) | (static_cast<unsigned char>(text[at++]) & 0x3FU);
    }
    if (c < kSmallest[more] || c > kLastCodePoint || isSurrogate(c)) {
        return std::nullopt;
    }
    return c;
}

void appendUtf8(std::string& text, char32_t c) {
    if (c < 0x80) {
        text += static_cast<char>(c);
        return;
    }
    const unsigned more = c < 0x800 ? 1 : c < kFirstSupplementary ? 2 : 3;
    constexpr char32_t kLead[] = {0, 0xC0, 0xE0, 0xF0};
    text += static_cast<char>(kLead[more] | c >> (6U * more));
    for (unsigned left = more; left-- > 0;) {
        text += static_cast<char>(0x80U | (c >> (6U * left) & 0x3FU));
    }
}

}  // namespace

std::optional<std::u16string> utf8ToUtf16(std::string_view utf8) {
    std::u16string utf16;
    utf16.reserve(utf8.size());
    for (size_t at = 0; at < utf8.size();) {
        const auto c = takeUtf8(utf8, at);
        if (!c) {
            return std::nullopt;
        }
        if (*c < kFirstSupplementary) {
            utf16 += static_cast<char16_t>(*c);
        } else {
            const char32_t offset = *c - kFirstSupplementary;
            utf16 += static_cast<char16_t>(kFirstSurrogate + (offset >> 10U));
            utf16 += static_cast<char16_t>(kFirstLowSurrogate + (offset & 0x3FFU));
        }
    }
    return utf16;
}

std::string utf16ToUtf8(std::u16string_view utf16) {
    std::string utf8;
    utf8.reserve(utf16.size());
    for (size_t i = 0; i < utf16.size(); ++i) {
        const char32_t unit = utf16[i];
        if (!isSurrogate(unit)) {
            appendUtf8(utf8, unit);
            continue;
        }
        const char32_t next = i + 1 < utf16.size() ? utf16[i + 1] : 0;
        if (unit < kFirstLowSurrogate && next >= kFirstLowSurrogate && next <= kLastSurrogate) {
            appendUtf8(utf8, kFirstSupplementary + ((unit - kFirstSurrogate) << 10U) + (next - kFirstLowSurrogate));
            ++i;
        } else {
            appendUtf8(utf8, kReplacement);
        }
    }
    return utf8;
}

std::string utf8ToSystem(const std::string& utf8) {
    const auto utf16 = utf8ToUtf16(utf8);
    return utf16 ? utf16ToSystem(*utf16) : utf8;
}

}  // namespace tarno2
