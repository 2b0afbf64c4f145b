#include "exports/channel_scale.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

namespace tarno2 {

namespace {

constexpr int kMostDigits = 17;

std::string formatted(double value, std::chars_format format, int precision) {
    std::array<char, 400> text{};
    const auto end = std::to_chars(text.data(), text.data() + text.size(), value, format, precision);
    return {text.data(), end.ptr};
}

double readBack(const std::string& text) {
    double value = 0.0;
    std::from_chars(text.data(), text.data() + text.size(), value);
    return value;
}

/// Without zeros that say nothing, behind the point and in the exponent.
std::string trimmed(std::string text) {
    const size_t letter = text.find('e');
    std::string exponent = letter == std::string::npos ? std::string() : text.substr(letter + 1);
    text.resize(std::min(letter, text.size()));
    if (text.find('.') != std::string::npos) {
        text.erase(text.find_last_not_of('0') + 1);
        if (text.back() == '.') {
            text.pop_back();
        }
    }
    if (exponent.empty()) {
        return text == "-0" ? "0" : text;
    }
    const std::string sign = exponent.front() == '-' ? "-" : "";
    exponent.erase(0, exponent.find_first_of("123456789"));
    return exponent.empty() ? text : text + 'e' + sign + exponent;
}

}  // namespace

ChannelScale::ChannelScale(const ConversionInputs& inputs, size_t channel, bool inUnit)
    : step((inputs.ranges[channel].first - inputs.ranges[channel].second) / (inputs.codeMaximum - inputs.codeMinimum)),
      zero(inputs.ranges[channel].second - inputs.codeMinimum * step) {
    if (inUnit) {
        const ChannelLabel& label = inputs.labels.labelOf(channel);
        step *= label.factor;
        zero = zero * label.factor + label.offset;
    }
}

std::string numberText(double value, size_t length) {
    std::string best;
    for (const auto format : {std::chars_format::fixed, std::chars_format::scientific}) {
        for (int precision = 0; precision < kMostDigits; ++precision) {
            std::string text = trimmed(formatted(value, format, precision));
            const bool better = best.empty() || std::fabs(readBack(text) - value) < std::fabs(readBack(best) - value);
            if (text.size() <= length && better) {
                best = std::move(text);
            }
        }
        if (!best.empty() && readBack(best) == value) {
            break;
        }
    }
    return best;
}

std::string fullScaleText(const ConversionInputs& inputs, int64_t subtracted, size_t mostChannels) {
    constexpr size_t kLength = 12;
    const auto lowest = inputs.codeSigned ? -(int64_t{1} << (inputs.codeBits - 1)) : 0;
    const int64_t highest = lowest + (int64_t{1} << inputs.codeBits) - 1;
    std::string text;
    for (size_t i = 0; i < inputs.channelCount; ++i) {
        if (i == mostChannels) {
            return text + "; ...";
        }
        text += (i == 0 ? "" : "; ") + inputs.labels.channelName(i) + ": ";
        if (i >= inputs.ranges.size()) {
            text += std::to_string(inputs.codeBits) + " bits";
            continue;
        }
        const ChannelScale scale(inputs, i, true);
        const std::string unit = " " + inputs.labels.labelOf(i).unitText();
        const auto tell = [&](int64_t code) {
            text.append(std::to_string(code - subtracted)).append(" = ");
            text.append(numberText(scale.value(static_cast<double>(code)), kLength)).append(unit);
        };
        tell(lowest);
        text += ", ";
        tell(highest);
    }
    return text;
}

}  // namespace tarno2
