#include "records/column_tables.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "records/column_text.h"

namespace tarno2 {

namespace {

constexpr uint32_t kWidthWithTables = 2;

/// The word that holds a code with these bits and nothing else.
uint32_t wordOf(const ConversionInputs& inputs, uint64_t codeBits) {
    return static_cast<uint32_t>(codeBits << inputs.codeShift);
}

/// A number grows longer with its distance from zero, on each side of it, so the first and last code have the longest
/// texts; a zero that was rounded to may carry a sign.
size_t longestText(const ExportFormat& format, const ConversionInputs& inputs, size_t channel) {
    const uint64_t codes = uint64_t{1} << inputs.codeBits;
    const std::array<uint64_t, 4> extremes = {0, codes / 2 - 1, codes / 2, codes - 1};
    size_t longest = 0;
    for (const uint64_t bits : extremes) {
        std::array<char, kLongestNumber> text{};
        const double value = columnValue(format, inputs, channel, wordOf(inputs, bits));
        if (!std::isfinite(value)) {
            return format.divider.size() + kLongestNumber;  // codes nearer to zero may have finite ones
        }
        const char* end = writeFixed(text.data(), value, format.voltagePrecision, format.decimal);
        longest = std::max(longest, static_cast<size_t>(end - text.data()));
    }
    constexpr size_t kSign = 1;
    return format.divider.size() + longest + kSign;
}

bool haveOneScale(const ConversionInputs& inputs, size_t a, size_t b) {
    const ChannelLabel& first = inputs.labels.labelOf(a);
    const ChannelLabel& second = inputs.labels.labelOf(b);
    return first.factor == second.factor && first.offset == second.offset;
}

std::vector<char> makeTable(const ExportFormat& format, const ConversionInputs& inputs, size_t channel, size_t entries,
                            size_t stride) {
    std::vector<char> table(entries * stride);
    std::array<char, ColumnTables::kLongStride + kLongestNumber> text{};
    char* const number = std::copy(format.divider.begin(), format.divider.end(), text.data());
    for (size_t bits = 0; bits < entries; ++bits) {
        const double value = columnValue(format, inputs, channel, wordOf(inputs, bits));
        char* const end = writeFixed(number, value, format.voltagePrecision, format.decimal);
        char* const entry = table.data() + bits * stride;
        entry[stride - 1] = static_cast<char>(std::copy(text.data(), end, entry) - entry);
    }
    return table;
}

}  // namespace

double columnValue(const ExportFormat& format, const ConversionInputs& inputs, size_t channel, uint32_t word) {
    const int64_t code = inputs.code(word);
    if (!format.volts) {
        return static_cast<double>(code);
    }
    const double volts = inputs.volts(channel, code);
    return format.units ? inputs.labels.labelOf(channel).inUnit(volts) : volts;
}

ColumnTables::ColumnTables(const ExportFormat& format, const ConversionInputs& inputs) {
    for (size_t channel = 0; channel < inputs.channelCount; ++channel) {
        longest_.push_back(longestText(format, inputs, channel));
    }
    const size_t longest = *std::max_element(longest_.begin(), longest_.end());
    if (inputs.bytesPerSample != kWidthWithTables || longest >= kLongStride) {
        return;
    }
    stride_ = longest < kShortStride ? kShortStride : kLongStride;
    shareTables(format, inputs, size_t{1} << inputs.codeBits);
}

void ColumnTables::shareTables(const ExportFormat& format, const ConversionInputs& inputs, size_t entries) {
    std::vector<size_t> firstOfRange;  // the channel that each table was made for
    std::vector<size_t> tableOfChannel;
    for (size_t channel = 0; channel < inputs.channelCount; ++channel) {
        const auto known = std::find_if(firstOfRange.begin(), firstOfRange.end(), [&](size_t first) {
            return !format.volts || (inputs.ranges[first] == inputs.ranges[channel] &&
                                     (!format.units || haveOneScale(inputs, first, channel)));
        });
        tableOfChannel.push_back(static_cast<size_t>(known - firstOfRange.begin()));
        if (known == firstOfRange.end()) {
            firstOfRange.push_back(channel);
        }
    }
    if (firstOfRange.size() * entries * stride_ > kMemoryLimit) {
        stride_ = 0;
        return;
    }
    for (const size_t channel : firstOfRange) {
        tables_.push_back(makeTable(format, inputs, channel, entries, stride_));
    }
    for (const size_t table : tableOfChannel) {
        channels_.push_back(tables_[table].data());
    }
}

}  // namespace tarno2
