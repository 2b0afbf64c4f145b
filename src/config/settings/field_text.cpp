#include "config/settings/field_text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

namespace tarno2 {

namespace {

/// Without blanks around and a plus, and with a point.
std::string plainNumber(std::string_view text) {
    const auto first = text.find_first_not_of(" \t");
    if (first == std::string_view::npos) {
        return {};
    }
    std::string number(text.substr(first, text.find_last_not_of(" \t") - first + 1));
    std::replace(number.begin(), number.end(), ',', '.');
    if (number.starts_with('+') && !number.starts_with("+-")) {
        number.erase(0, 1);
    }
    return number;
}

}  // namespace

std::optional<double> parseNumberField(std::string_view text) {
    const std::string number = plainNumber(text);
    double value = 0.0;
    const auto [end, error] = std::from_chars(number.data(), number.data() + number.size(), value);
    if (error != std::errc() || end != number.data() + number.size() || !std::isfinite(value)) {
        return std::nullopt;
    }
    return value;
}

std::string frequencyText(double hertz) {
    std::array<char, 64> digits{};
    const auto [end, error] = std::to_chars(digits.data(), digits.data() + digits.size(), static_cast<float>(hertz),
                                            std::chars_format::fixed);
    return error == std::errc() ? std::string(digits.data(), end) : std::string();
}

}  // namespace tarno2
