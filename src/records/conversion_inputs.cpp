#include "records/conversion_inputs.h"

#include <algorithm>
#include <cmath>

namespace tarno2 {

namespace {

constexpr uint32_t kBitsPerByte = 8;
constexpr uint32_t kWordBits = 32;

uint32_t notNegative(int32_t value) {
    return value > 0 ? static_cast<uint32_t>(value) : 0;
}

/// The layout of a sample word, of which nothing but the width may be known.
void takeLayout(ConversionInputs& inputs, const RecordedKeys& described, const KnownInputs& known) {
    if (described.layout) {
        const SampleLayout& layout = *described.layout;
        inputs.bytesPerSample = notNegative(layout.bytesPerSample);
        inputs.codeBits = notNegative(layout.analogBits);
        inputs.codeShift = notNegative(layout.analogShift);
        inputs.codeSigned = layout.analogSigned == 1;
        inputs.digitalMask = static_cast<uint32_t>(layout.digitalMask);
        inputs.digitalShift = notNegative(layout.digitalShift);
        inputs.digitalLines = notNegative(layout.digitalBits);
    }
    if (known.bytesPerSample && *known.bytesPerSample != inputs.bytesPerSample) {
        inputs = {};
        inputs.bytesPerSample = *known.bytesPerSample;
        inputs.codeBits = inputs.bytesPerSample * kBitsPerByte;
    }
    inputs.codeBits = known.codeBits.value_or(inputs.codeBits);
    inputs.codeShift = known.codeShift.value_or(inputs.codeShift);
    inputs.codeSigned = known.codeSigned.value_or(inputs.codeSigned);
    inputs.digitalMask = known.digitalMask.value_or(inputs.digitalMask);
    inputs.digitalShift = known.digitalShift.value_or(inputs.digitalShift);
    inputs.digitalLines = known.digitalLines.value_or(inputs.digitalLines);
}

bool makesSense(const ConversionInputs& inputs) {
    const uint32_t bits = inputs.bytesPerSample * kBitsPerByte;
    return (inputs.bytesPerSample == 2 || inputs.bytesPerSample == 4) && inputs.codeBits >= 1 &&
           inputs.codeBits <= bits && inputs.codeShift <= bits - inputs.codeBits && inputs.digitalShift < kWordBits &&
           inputs.digitalLines <= kWordBits && std::isfinite(inputs.codeMinimum) && std::isfinite(inputs.codeMaximum) &&
           inputs.codeMaximum > inputs.codeMinimum;
}

}  // namespace

int64_t ConversionInputs::code(uint32_t word) const {
    const uint32_t field = (word >> codeShift) & static_cast<uint32_t>((uint64_t{1} << codeBits) - 1);
    const bool negative = codeSigned && (field >> (codeBits - 1)) != 0;
    return negative ? int64_t{field} - (int64_t{1} << codeBits) : int64_t{field};
}

double ConversionInputs::volts(size_t channel, int64_t code) const {
    const auto [upper, lower] = ranges[channel];
    return (upper - lower) * ((static_cast<double>(code) - codeMinimum) / (codeMaximum - codeMinimum)) + lower;
}

ConversionInputs conversionInputs(const RecordedKeys& described, const KnownInputs& known) {
    ConversionInputs inputs;
    takeLayout(inputs, described, known);
    const auto bits = static_cast<int>(inputs.codeBits);
    inputs.codeMinimum = known.codeMinimum.value_or(inputs.codeSigned ? -std::ldexp(1.0, bits - 1) : 0.0);
    inputs.codeMaximum = known.codeMaximum.value_or(std::ldexp(1.0, inputs.codeSigned ? bits - 1 : bits) - 1.0);

    inputs.channelCount = known.channelCount.value_or(described.channelCount.value_or(0));
    if (!known.ranges.empty()) {
        inputs.ranges = known.ranges;
    } else if (described.ranges) {
        inputs.ranges = *described.ranges;
    }
    if (known.ranges.size() == 1 && inputs.channelCount <= ConversionInputs::kMostChannels) {
        inputs.ranges.resize(inputs.channelCount, known.ranges.front());
    }

    inputs.frequency =
        known.packetFrequency.value_or(known.frequency.value_or(described.frequencyPerChannel.value_or(0.0)));
    return inputs;
}

void putRangesInOrder(ConversionInputs& inputs, const RecordedKeys& described) {
    if (described.backwardOrder) {
        std::ranges::reverse(inputs.ranges);
    }
}

std::string missingInput(const ConversionInputs& inputs, const ExportFormat& format) {
    if (!makesSense(inputs)) {
        return "DataFormat";
    }
    if (inputs.channelCount == 0 || inputs.channelCount > ConversionInputs::kMostChannels) {
        return "ChannelNumber";
    }
    if (format.volts && inputs.ranges.size() != inputs.channelCount) {
        return "ChannelsRange";
    }
    if (format.hasTime() && !(std::isfinite(inputs.frequency) && inputs.frequency > 0.0)) {
        return "Frequency";
    }
    return {};
}

bool timeRunsOnOverGaps(const RecordedKeys& described, const ExportFormat& format) {
    return described.triggered && format.hasTime();
}

bool lacksPacketFrequency(const RecordedKeys& described, const KnownInputs& known, const ExportFormat& format) {
    return described.packetMode && format.hasTime() && !known.packetFrequency && !known.frequency;
}

}  // namespace tarno2
