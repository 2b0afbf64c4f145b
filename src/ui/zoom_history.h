#pragma once

#include <cstdint>
#include <deque>
#include <optional>

#include "ui/lane_layout.h"

namespace tarno2 {

/// What of a signal was in the picture.
struct ShownPart {
    double position = 0.0;  ///< frame at the left edge
    double span = 0.0;      ///< frames
    bool held = false;      ///< the user held a running signal
    bool yAutomatic = true;
    double yLower = 0.0;  ///< as the settings keep them
    double yUpper = 0.0;
    double yValue = 0.0;
    LaneLayout lanes;
};

/// The parts of a signal that were in the picture before, to go back to. A turn of the wheel or a drag comes in many
/// small steps and is gone back in one. Window thread.
class ZoomHistory {
public:
    static constexpr size_t kMost = 50;

    /// The part that is about to be left by that cause, kScoperaCause... `nowMs`: a clock that never goes back.
    void leave(ShownPart part, int cause, uint64_t nowMs);
    /// The one before; nothing when there is none.
    [[nodiscard]] std::optional<ShownPart> back();
    void clear() { parts_.clear(); }
    [[nodiscard]] bool empty() const { return parts_.empty(); }

private:
    std::deque<ShownPart> parts_;
    int cause_ = 0;
    uint64_t lastMs_ = 0;
};

}  // namespace tarno2
