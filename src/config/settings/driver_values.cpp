#include "config/settings/driver_values.h"

#include <algorithm>

namespace tarno2 {

namespace {

constexpr char kDivider = ';';

/// The parts between single semicolons, each with its own semicolons as they were meant. Empty ones are left out.
std::vector<std::string> partsOf(std::string_view text) {
    std::vector<std::string> parts(1);
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] != kDivider) {
            parts.back() += text[i];
        } else if (i + 1 < text.size() && text[i + 1] == kDivider) {
            parts.back() += text[i++];
        } else {
            parts.emplace_back();
        }
    }
    std::erase(parts, std::string());
    return parts;
}

std::string joined(const std::vector<std::string>& parts) {
    std::string text;
    for (const std::string& part : parts) {
        if (!text.empty()) {
            text += kDivider;
        }
        for (const char c : part) {
            text.append(c == kDivider ? 2 : 1, c);
        }
    }
    // A file gives a text back without the blanks at its end.
    return text.ends_with(' ') ? text + kDivider : text;
}

std::optional<DriverValue> pairOf(std::string_view part) {
    const size_t equals = part.find('=');
    if (equals == std::string_view::npos || !isDriverKey(part.substr(0, equals))) {
        return std::nullopt;
    }
    return DriverValue{std::string(part.substr(0, equals)), std::string(part.substr(equals + 1))};
}

/// The pair of that driver that a part of the text for all drivers is.
std::optional<DriverValue> pairOf(std::string_view part, std::string_view driver) {
    if (!part.starts_with(driver) || !part.substr(driver.size()).starts_with('/')) {
        return std::nullopt;
    }
    return pairOf(part.substr(driver.size() + 1));
}

}  // namespace

bool isDriverKey(std::string_view key) {
    return !key.empty() && std::ranges::all_of(key, [](char c) {
        return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
    });
}

std::optional<std::vector<DriverValue>> parseDriverValues(std::string_view text) {
    std::vector<DriverValue> values;
    for (const std::string& part : partsOf(text)) {
        // Blanks after a semicolon are for the reader's eye.
        auto pair = pairOf(std::string_view(part).substr(std::min(part.find_first_not_of(" \t"), part.size())));
        if (!pair) {
            return std::nullopt;
        }
        values.push_back(std::move(*pair));
    }
    return values;
}

std::string driverValuesText(const std::vector<DriverValue>& values) {
    std::vector<std::string> parts;
    parts.reserve(values.size());
    for (const DriverValue& value : values) {
        parts.push_back(value.key + '=' + value.value);
    }
    return joined(parts);
}

std::vector<DriverValue> driverValuesOf(std::string_view text, std::string_view driver) {
    std::vector<DriverValue> values;
    for (const std::string& part : partsOf(text)) {
        if (auto pair = pairOf(part, driver)) {
            values.push_back(std::move(*pair));
        }
    }
    return values;
}

std::string withDriverValue(std::string_view text, std::string_view driver, const DriverValue& value) {
    std::vector<std::string> parts = partsOf(text);
    const auto isIt = [&](const std::string& part) {
        const auto pair = pairOf(part, driver);
        return pair && pair->key == value.key;
    };
    if (value.value.empty()) {
        std::erase_if(parts, isIt);
        return joined(parts);
    }
    const std::string told = std::string(driver) + '/' + value.key + '=' + value.value;
    if (const auto at = std::ranges::find_if(parts, isIt); at != parts.end()) {
        *at = told;
    } else {
        parts.push_back(told);
    }
    return joined(parts);
}

std::string withDriverValuesOf(std::string_view text, std::string_view driver, std::string_view source) {
    std::string result(text);
    for (const DriverValue& value : driverValuesOf(text, driver)) {
        result = withDriverValue(result, driver, {value.key, {}});
    }
    for (const DriverValue& value : driverValuesOf(source, driver)) {
        result = withDriverValue(result, driver, value);
    }
    return result;
}

}  // namespace tarno2
