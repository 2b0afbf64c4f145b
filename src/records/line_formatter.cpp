#include "records/line_formatter.h"

#include <algorithm>
#include <charconv>
#include <utility>

#include "records/column_text.h"

namespace tarno2 {

namespace {

constexpr size_t kLongestDigital = 10;
constexpr size_t kLineEndLength = 2;

}  // namespace

LineFormatter::LineFormatter(ExportFormat format, uint64_t firstLine, uint64_t step)
    : format_(std::move(format)), lineCount_(firstLine), step_(step) {
    format_.timePrecision = std::clamp(format_.timePrecision, 0, ExportFormat::kMaximumPrecision);
    format_.voltagePrecision = std::clamp(format_.voltagePrecision, 0, ExportFormat::kMaximumPrecision);
}

int LineFormatter::format(char* out, size_t spaceLeft, size_t& lineLength, double seconds,
                          std::span<const double> analog, std::span<const int8_t> digital) {
    const size_t divider = format_.divider.size();
    const size_t longest = kLongestFirstColumn + analog.size() * (divider + kLongestNumber) +
                           digital.size() * (divider + kLongestDigital) + kLineEndLength;
    if (longest < spaceLeft) {
        lineLength = static_cast<size_t>(writeLine(out, seconds, analog, digital) - out);
        lineCount_ += step_;
        return 0;
    }
    line_.resize(std::max(line_.size(), longest));
    const auto length = static_cast<size_t>(writeLine(line_.data(), seconds, analog, digital) - line_.data());
    if (length >= spaceLeft) {
        return 1;
    }
    std::copy_n(line_.data(), length, out);
    lineLength = length;
    lineCount_ += step_;
    return 0;
}

char* LineFormatter::writeLine(char* out, double seconds, std::span<const double> analog,
                               std::span<const int8_t> digital) const {
    out = writeFirstColumn(out, format_, lineCount_, seconds);
    for (const double value : analog) {
        out = std::copy(format_.divider.begin(), format_.divider.end(), out);
        out = writeFixed(out, value, format_.voltagePrecision, format_.decimal);
    }
    for (const int8_t value : digital) {
        out = std::copy(format_.divider.begin(), format_.divider.end(), out);
        out = std::to_chars(out, out + kLongestDigital, static_cast<uint32_t>(int32_t{value})).ptr;
    }
    *out++ = '\r';
    *out++ = '\n';
    return out;
}

}  // namespace tarno2
