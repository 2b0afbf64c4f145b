#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "records/record_description.h"

namespace tarno2 {

/// Everything in a description that describes the board and its settings: the same for every piece of a recording.
struct RecordingFacts {
    std::string driverName;
    double totalFrequency = 0.0;  ///< Hz over all channels, of the kept frames
    bool synchronousChannels = false;
    bool packetMode = false;
    double packetFrequency = 0.0;  ///< Hz, of the kept frames
    bool externalClock = false;
    bool backwardOrder = false;
    SampleLayout layout;
    struct Range {
        double upper = 0.0;       ///< volts
        double lower = 0.0;       ///< volts
        float inputRange = 0.0F;  ///< volts at gain 1 of an input that lies evenly around zero; 0: of another one
    };
    std::vector<Range> ranges;  ///< one a channel, in recording order

    /// Fills a description that was reset. `packetFrequency` is always set, since a reset leaves it alone. False: no
    /// memory.
    [[nodiscard]] bool describe(RecordDescription& description) const;
};

}  // namespace tarno2
