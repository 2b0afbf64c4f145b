#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "records/channel_label.h"
#include "records/passport.h"

namespace tarno2 {

/// What the columns of a recording are called and told in.
struct RecordedLabels {
    struct Channel {
        int32_t number = 0;  ///< of the board's input, from 0
        ChannelLabel label;
    };
    std::vector<Channel> channels;   ///< in the order of the columns of a frame; empty: nobody knows
    std::vector<std::string> lines;  ///< names of the lines of the port, as many as have one

    /// Its name, or its number in words: "Channel 5".
    [[nodiscard]] std::string channelName(size_t column) const;
    /// Likewise: "Line 1".
    [[nodiscard]] std::string lineName(size_t line) const;
    /// Volts without a scale where nobody knows.
    [[nodiscard]] const ChannelLabel& labelOf(size_t column) const;
};

/// As a passport tells. A scale that can't be is left out.
[[nodiscard]] RecordedLabels labelsOf(const Passport& passport);

}  // namespace tarno2
