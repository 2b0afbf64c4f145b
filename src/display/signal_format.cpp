#include "display/signal_format.h"

#include <algorithm>
#include <limits>

namespace tarno2 {

namespace {

constexpr uint32_t kMostLines = 32;

void setCodesOfBits(SignalFormat& format, uint32_t bits) {
    const uint32_t valueBits = std::clamp(format.word.signedCodes ? bits - 1 : bits, 1U, 31U);
    format.maximumCode = static_cast<int32_t>((uint32_t{1} << valueBits) - 1);
    format.minimumCode = format.word.signedCodes ? -format.maximumCode - 1 : 0;
}

uint32_t positionOf(size_t column, size_t columns, bool backwardOrder) {
    return static_cast<uint32_t>(backwardOrder ? columns - 1 - column : column);
}

}  // namespace

uint32_t SampleWordFormat::digitalLines() const {
    if (!codeBelowLines()) {
        return std::min(codeShift, std::min(bits(), kMostLines));
    }
    return portShift < bits() ? std::min(bits() - portShift, kMostLines) : 0;
}

SignalFormat signalFormatOf(const BoardFacts& board, const RecordingFacts& facts) {
    SignalFormat format;
    format.word.sampleWidth = board.sampleWidth();
    format.word.formatFlags = board.format.m_nFormatFlags;
    format.word.codeShift = board.format.m_nCodeShift;
    format.word.portShift = board.format.m_nDigitalShift;
    format.word.signedCodes = board.format.m_nSignedCodes != 0;
    if (board.codeRangeKnown) {
        format.minimumCode = board.codeRange.m_nMinimum;
        format.maximumCode = board.codeRange.m_nMaximum;
    } else {
        setCodesOfBits(format, std::max(uint32_t{board.format.m_nCodeBits}, 2U));
    }
    const size_t columns = facts.ranges.size();
    for (size_t i = 0; i < columns; ++i) {
        const uint32_t position = positionOf(i, columns, facts.backwardOrder);
        format.channels.push_back({position, facts.ranges[position].upper, facts.ranges[position].lower});
    }
    if (facts.packetMode) {
        format.framesPerSecond = facts.packetFrequency;
    } else if (columns > 0) {
        format.framesPerSecond = facts.totalFrequency / static_cast<double>(columns);
    }
    return format;
}

SignalFormat signalFormatOf(const RecordedFormat& recorded) {
    const SampleLayout& layout = recorded.layout;
    SignalFormat format;
    format.word.sampleWidth = static_cast<uint32_t>(layout.bytesPerSample);
    format.word.codeShift = static_cast<uint32_t>(std::max(layout.analogShift, 0));
    format.word.portShift = static_cast<uint32_t>(std::max(layout.digitalShift, 0));
    format.word.signedCodes = layout.analogSigned == 1;
    // Descriptions don't tell the order; lines that lie above a code at bit 0 do.
    const bool linesAbove = layout.digitalMask != 0 && layout.digitalMask != -1 && layout.digitalBits > 0 &&
                            layout.digitalShift > 0 && layout.analogShift == 0;
    format.word.formatFlags = linesAbove ? 1 : 0;
    setCodesOfBits(format, static_cast<uint32_t>(std::max(layout.analogBits, 2)));
    const size_t columns = recorded.ranges.size();
    for (size_t i = 0; i < columns; ++i) {
        const uint32_t position = positionOf(i, columns, recorded.backwardOrder);
        format.channels.push_back({position, recorded.ranges[position].first, recorded.ranges[position].second});
    }
    format.framesPerSecond = recorded.frequencyPerChannel;
    return format;
}

}  // namespace tarno2
