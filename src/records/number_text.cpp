#include "records/number_text.h"

#include <array>
#include <charconv>

namespace tarno2 {

namespace {

void skipBlanks(std::string_view& text) {
    const size_t start = text.find_first_not_of(" \t\n\v\f\r");
    text.remove_prefix(start == std::string_view::npos ? text.size() : start);
}

/// Takes blanks and a sign off the front; true for a minus.
bool takeSign(std::string_view& text) {
    skipBlanks(text);
    if (text.empty() || (text.front() != '-' && text.front() != '+')) {
        return false;
    }
    const bool negative = text.front() == '-';
    text.remove_prefix(1);
    return negative;
}

bool isHexDigit(char c) {
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

template <typename Unsigned>
std::optional<Unsigned> parseUnsigned(std::string_view text, int base) {
    const bool negative = takeSign(text);
    if (base == 16 && text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X') && isHexDigit(text[2])) {
        text.remove_prefix(2);
    }
    Unsigned magnitude = 0;
    if (std::from_chars(text.data(), text.data() + text.size(), magnitude, base).ec != std::errc()) {
        return std::nullopt;
    }
    return negative ? Unsigned{0} - magnitude : magnitude;
}

template <typename Real>
std::optional<Real> parseReal(std::string_view text) {
    const bool negative = takeSign(text);
    if (text.empty() || text.front() == '-') {
        return std::nullopt;
    }
    Real magnitude = 0;
    if (std::from_chars(text.data(), text.data() + text.size(), magnitude).ec != std::errc()) {
        return std::nullopt;
    }
    return negative ? -magnitude : magnitude;
}

}  // namespace

std::optional<int32_t> parseInt32(std::string_view text) {
    const bool negative = takeSign(text);
    uint32_t magnitude = 0;
    const bool parsed = std::from_chars(text.data(), text.data() + text.size(), magnitude).ec == std::errc();
    const uint32_t limit = negative ? 0x80000000U : 0x7FFFFFFFU;
    if (!parsed || magnitude > limit) {
        return std::nullopt;
    }
    return static_cast<int32_t>(negative ? 0U - magnitude : magnitude);
}

std::optional<uint32_t> parseUInt32(std::string_view text) {
    return parseUnsigned<uint32_t>(text, 10);
}

std::optional<uint32_t> parseHex32(std::string_view text) {
    return parseUnsigned<uint32_t>(text, 16);
}

std::optional<uint64_t> parseUInt64(std::string_view text) {
    return parseUnsigned<uint64_t>(text, 10);
}

std::optional<float> parseFloat(std::string_view text) {
    return parseReal<float>(text);
}

std::optional<double> parseDouble(std::string_view text) {
    return parseReal<double>(text);
}

std::string exactNumberText(double value) {
    std::array<char, 32> text{};  // 24 at most
    char* const end = std::to_chars(text.data(), text.data() + text.size(), value).ptr;
    return {text.data(), end};
}

}  // namespace tarno2
