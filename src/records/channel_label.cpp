#include "records/channel_label.h"

#include <algorithm>
#include <cmath>

namespace tarno2 {

namespace {

constexpr char kPartDivider = ';';

bool isControl(char c) {
    constexpr unsigned char kFirstPrintable = 0x20;
    constexpr unsigned char kDelete = 0x7F;
    const auto byte = static_cast<unsigned char>(c);
    return byte < kFirstPrintable || byte == kDelete;
}

}  // namespace

bool isScale(double factor, double offset) {
    return std::isfinite(factor) && factor != 0.0 && std::isfinite(offset);
}

std::optional<UnitScale> scaleThrough(double volts1, double value1, double volts2, double value2) {
    const UnitScale scale{(value2 - value1) / (volts2 - volts1),
                          value1 - volts1 * ((value2 - value1) / (volts2 - volts1))};
    return isScale(scale.factor, scale.offset) ? std::optional(scale) : std::nullopt;
}

bool isLabelText(std::string_view utf8) {
    return std::ranges::none_of(utf8, [](char c) { return c == kPartDivider || isControl(c); });
}

std::string usableLabelText(std::string_view utf8) {
    std::string text(utf8);
    for (char& c : text) {
        c = c == kPartDivider ? ',' : isControl(c) ? ' ' : c;
    }
    const size_t begin = std::min(text.find_first_not_of(' '), text.size());
    return text.substr(begin, text.find_last_not_of(' ') + 1 - begin);
}

std::vector<std::string> labelParts(std::string_view list) {
    std::vector<std::string> parts(1);
    for (const char c : list) {
        if (c == kPartDivider) {
            parts.emplace_back();
        } else {
            parts.back() += c;
        }
    }
    return parts;
}

std::string labelList(const std::vector<std::string>& parts) {
    std::string list;
    for (const std::string& part : parts) {
        list += part + kPartDivider;
    }
    return list.substr(0, list.find_last_not_of(kPartDivider) + 1);
}

}  // namespace tarno2
