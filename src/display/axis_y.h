#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "display/signal_format.h"

namespace tarno2 {

/// Units of the signal view's Y axis; the numbers are those of the settings files and of the menu items' tags.
enum class AxisYUnit : int32_t { Automatic = -1, Volts = 0, Millivolts = 1, Microvolts = 2, Codes = 3, Units = 4 };

/// What values of a unit of the axis can be compared with: those of volts turn into each other.
enum class AxisYKind : uint8_t { Volts, Codes, Units };
[[nodiscard]] AxisYKind kindOf(AxisYUnit unit);

/// A value on the Y axis is `code * factor + offset`.
struct LinearScale {
    double factor = 1.0;
    double offset = 0.0;
    [[nodiscard]] double of(double code) const { return code * factor + offset; }
};

/// Decimals with which values that lie `step` apart are told from each other, 9 at most.
[[nodiscard]] int decimalsFor(double step);

/// Turns one channel's codes into a unit, `Units` being the channel's own. `unit` must not be `Automatic`. A board
/// without a code range gives codes.
[[nodiscard]] LinearScale axisYScale(const SignalFormat& format, size_t channel, AxisYUnit unit);
/// The same for the columns of digital lines, which are drawn against the code range: the smallest code lies at the
/// lower limit of the widest channel, the largest at its upper limit.
[[nodiscard]] LinearScale digitalAxisYScale(const SignalFormat& format, AxisYUnit unit);
/// Volts that the widest channel can show, either way from 0.
[[nodiscard]] double fullScaleVolts(const SignalFormat& format);
/// What `Automatic` stands for when the largest voltage shown is this: the largest unit in which it is 1 or more.
[[nodiscard]] AxisYUnit unitForVolts(double largestVolts);
/// Units in a volt; 1 for codes and for the units of the channels.
[[nodiscard]] double unitsPerVolt(AxisYUnit unit);

/// The units of the shown channels, each once, in their order: "bar", or "bar, V". `shown`: their columns; `volts`:
/// the word for a channel without a unit.
[[nodiscard]] std::string unitsOf(const SignalFormat& format, const std::vector<size_t>& shown,
                                  const std::string& volts);

/// Limits of an axis.
struct AxisRange {
    double low = 0.0;
    double high = 0.0;
    [[nodiscard]] bool empty() const { return !(low < high); }
    /// The value farthest from 0, without its sign.
    [[nodiscard]] double largest() const { return std::max(std::abs(low), std::abs(high)); }
    friend bool operator==(const AxisRange&, const AxisRange&) = default;
};

/// The automatic scale of the Y axis: the visible extremes with a tenth of margin on each side. It grows at once when a
/// value leaves it. It shrinks only after the values have left much of it empty for a second, and then slowly, so that
/// the picture holds still under a noisy signal. Time comes from the caller. Window thread.
class AutomaticScaleY {
public:
    /// The limits to draw with, for values from `visible.low` to `visible.high` (swapped or not finite ones are taken
    /// as nothing visible). `nowMs`: a clock that never goes back.
    AxisRange update(AxisRange visible, uint64_t nowMs);
    /// Forgets what was shown: the next update takes its limits at once (another unit, another recording).
    void reset() { known_ = false; }
    /// It shrinks, or will: another update is needed even if no data come.
    [[nodiscard]] bool moving() const { return roomy_; }

private:
    void shrink(AxisRange wanted, double passedMs);

    bool known_ = false;
    bool moving_ = false;  ///< it is shrinking
    bool roomy_ = false;   ///< the values leave much of it empty
    AxisRange shown_;
    uint64_t roomySince_ = 0;
    uint64_t lastMs_ = 0;
};

}  // namespace tarno2
