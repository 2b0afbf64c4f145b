#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <vector>

#include "display/axis_y.h"

namespace tarno2 {

/// A curve that wants a place. `key` stays the same as long as the signal does: the number of the channel, or below 0
/// that of the digital line.
struct LaneColumn {
    int32_t key;
    bool visible;
};

/// Curves that lie in one lane, by their places among the columns.
struct LanePlan {
    int32_t key;  ///< of the column that the lane is named after
    std::vector<size_t> columns;
    [[nodiscard]] bool digital() const { return key < 0; }
};

/// Which curves share a lane, and how high and at what range the operator wants each: what he arranges by hand.
/// Window thread.
class LaneLayout {
public:
    /// A lane for each visible column, in their order, but for those that share one. Digital lines share with digital
    /// lines alone, channels with channels.
    [[nodiscard]] std::vector<LanePlan> arrange(std::span<const LaneColumn> columns) const;
    /// The column moves to the lane of that one. Dropped onto a lane that it shares already it gets its own again.
    void share(int32_t key, const LanePlan& lane);

    /// Logical pixels; 0: as there is room.
    [[nodiscard]] uint32_t heightOf(int32_t lane) const;
    void setHeight(int32_t lane, uint32_t pixels) { lanes_[lane].height = pixels; }

    /// Volts, codes or units: a range that the operator zoomed to.
    [[nodiscard]] std::optional<AxisRange> chosenRange(int32_t lane) const;
    void setRange(int32_t lane, AxisRange range) { lanes_[lane].chosen = range; }
    /// The ranges that were zoomed to are those of an earlier layout; what shares a lane, and heights, stay.
    void takeRanges(const LaneLayout& earlier);
    /// The automatic range of a lane whose curves reach so far.
    [[nodiscard]] AxisRange automaticRange(int32_t lane, AxisRange visible, uint64_t nowMs);
    /// All ranges are automatic, and begin anew.
    void forgetRanges();
    /// The lane's range is automatic and has not settled yet.
    [[nodiscard]] bool moving(int32_t lane) const;

private:
    struct Lane {
        uint32_t height = 0;
        std::optional<AxisRange> chosen;
        AutomaticScaleY scale;
    };
    std::map<int32_t, Lane> lanes_;
    std::map<int32_t, int32_t> sharedWith_;  ///< the lane's key of columns that are not in their own
};

}  // namespace tarno2
