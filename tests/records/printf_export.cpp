#include "tests/records/printf_export.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

namespace tarno2::test {

namespace {

template <typename... Values>
std::string print(const char* format, Values... values) {
    std::array<char, 512> text{};
    const int length = std::snprintf(text.data(), text.size(), format, values...);
    return {text.data(), static_cast<size_t>(length)};
}

std::string withDecimal(std::string text, char decimal) {
    std::replace(text.begin(), text.end(), '.', decimal);
    return text;
}

std::string firstColumn(uint64_t line, const ExportFormat& format, double frequency) {
    const double t = static_cast<double>(line) / frequency;
    switch (format.firstColumn) {
        case FirstColumn::Samples:
            return print("%llu", static_cast<unsigned long long>(line));
        case FirstColumn::Seconds:
            return printfFixed(t, format.timePrecision, format.decimal);
        case FirstColumn::Clock: {
            const int h = static_cast<int>(t / 3600);
            const int m = static_cast<int>((t - 3600.0 * h) / 60);
            const int s = static_cast<int>(t - 3600.0 * h - 60.0 * m);
            const double ms = (t - 3600.0 * h - 60.0 * m - s) * 1000;
            return withDecimal(print("%d:%d:%d:%lf", h, m, s, ms), format.decimal);
        }
        case FirstColumn::Absent:
            break;
    }
    return {};
}

/// The sample's bits in the uppermost ones of 64, and down again: an arithmetic shift spreads the sign.
int64_t code(uint32_t word, const ConversionInputs& inputs) {
    const unsigned up = 64 - inputs.codeBits - inputs.codeShift;
    const unsigned down = 64 - inputs.codeBits;
    const uint64_t raised = uint64_t{word} << up;
    return inputs.codeSigned ? static_cast<int64_t>(raised) >> down : static_cast<int64_t>(raised >> down);
}

}  // namespace

std::string printfFixed(double value, int precision, char decimal) {
    return withDecimal(print("%.*lf", precision, value), decimal);
}

std::string printfExport(const std::string& data, const ExportFormat& format, const ConversionInputs& inputs) {
    std::string text;
    const size_t frameBytes = inputs.frameBytes();
    for (size_t frame = 0; (frame + 1) * frameBytes <= data.size(); ++frame) {
        text += firstColumn(frame, format, inputs.frequency);
        uint32_t port = 0;
        for (size_t c = 0; c < inputs.channelCount; ++c) {
            uint32_t word = 0;
            for (size_t byte = inputs.bytesPerSample; byte-- > 0;) {
                word = word << 8 | static_cast<uint8_t>(data[frame * frameBytes + c * inputs.bytesPerSample + byte]);
            }
            port = c == 0 ? (word & inputs.digitalMask) >> inputs.digitalShift : port;
            const auto value = static_cast<double>(code(word, inputs));
            const auto volts = [&] {
                const auto [upper, lower] = inputs.ranges[c];
                return (upper - lower) * ((value - inputs.codeMinimum) / (inputs.codeMaximum - inputs.codeMinimum)) +
                       lower;
            };
            text +=
                format.divider + printfFixed(format.volts ? volts() : value, format.voltagePrecision, format.decimal);
        }
        for (uint32_t line = 0; line < inputs.digitalLines; ++line) {
            text += format.divider + print("%u", (port >> line) & 1U);
        }
        text += "\r\n";
    }
    return text;
}

}  // namespace tarno2::test
