#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "core/devices/board_facts.h"
#include "records/channel_label.h"
#include "records/recorded_format.h"
#include "records/recording_facts.h"

namespace tarno2 {

/// How code and digital port lie in a sample word.
struct SampleWordFormat {
    uint32_t sampleWidth = 2;  ///< bytes, 2 or 4
    uint32_t formatFlags = 0;  ///< bit 0 clear: lines below the code; set: code below the lines
    uint32_t codeShift = 0;    ///< brings the code to bit 0 when bit 0 of the flags is clear; also the number of lines
    uint32_t portShift = 0;    ///< brings line 0 to bit 0 when bit 0 of the flags is set; also the width of the code
    bool signedCodes = true;   ///< codes are two's complement

    [[nodiscard]] uint32_t bits() const { return sampleWidth * 8; }
    [[nodiscard]] bool codeBelowLines() const { return (formatFlags & 1U) != 0; }
    /// Digital lines that are drawn, 0 to 32.
    [[nodiscard]] uint32_t digitalLines() const;
};

/// Everything the view has to know of a stream of frames: the running recording's or a finished one's.
struct SignalFormat {
    /// One column of a frame.
    struct Channel {
        uint32_t listPosition = 0;  ///< in the channel list, which is the frame's order or its reverse
        double upper = 0.0;         ///< volts at the largest code
        double lower = 0.0;         ///< volts at the smallest code
        ChannelLabel label = {};
    };
    SampleWordFormat word;
    std::vector<Channel> channels;  ///< in the frame's order
    double framesPerSecond = 0.0;   ///< of the frames that are shown; 0 when not known
    int32_t minimumCode = 0;
    int32_t maximumCode = 0;             ///< the full-scale code of digital lines
    std::vector<std::string> lineNames;  ///< of digital lines, as many as have one

    [[nodiscard]] size_t channelCount() const { return channels.size(); }
    [[nodiscard]] size_t frameBytes() const { return channels.size() * word.sampleWidth; }
};

/// Of the recording that runs, from what its board and its description say.
[[nodiscard]] SignalFormat signalFormatOf(const BoardFacts& board, const RecordingFacts& facts);
/// Of a finished recording, from its description. Its rate is that of the sampling clock: descriptions don't keep the
/// rate of packets.
[[nodiscard]] SignalFormat signalFormatOf(const RecordedFormat& recorded);

}  // namespace tarno2
