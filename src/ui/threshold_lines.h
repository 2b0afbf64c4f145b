#pragma once

#include <cstdint>
#include <vector>

#include "language/text_ids.h"
#include "sync/synchro_settings.h"

namespace tarno2 {

/// A threshold of the synchronisation that is in use.
struct ThresholdLine {
    uint64_t identity = 0;  ///< for `setThreshold`
    int32_t channel = 0;    ///< the board's number of it
    double volts = 0.0;
    TextId role = TextId::LevelTrigger;
    bool upward = true;  ///< above it, or a leading edge
};

/// Those of the settings that ask a channel. A threshold that is no number is none.
[[nodiscard]] std::vector<ThresholdLine> thresholdLines(const SynchroSettings& settings);
/// Moves one of them; it keeps the unit that it was typed in. An unknown identity changes nothing.
void setThreshold(SynchroSettings& settings, uint64_t identity, double volts);

}  // namespace tarno2
