#pragma once

#include <cstddef>
#include <vector>

namespace tarno2 {

/// A mark on an axis.
struct PlotTick {
    double value = 0.0;
    bool labelled = true;
};

/// An axis from `low` to `high`, linear or logarithmic; a logarithmic one begins above 0. No toolkit.
class PlotScale {
public:
    /// Limits that enclose nothing are widened.
    PlotScale(double low, double high, bool logarithmic);

    [[nodiscard]] double low() const { return low_; }
    [[nodiscard]] double high() const { return high_; }
    [[nodiscard]] bool logarithmic() const { return logarithmic_; }
    /// Where a value lies: 0 at the lower end, 1 at the upper one, beyond them outside.
    [[nodiscard]] double partOf(double value) const;
    [[nodiscard]] double valueAt(double part) const;
    /// Round values, at most about so many with a label.
    [[nodiscard]] std::vector<PlotTick> ticks(size_t most) const;

private:
    [[nodiscard]] std::vector<PlotTick> linearTicks(size_t most) const;
    [[nodiscard]] std::vector<PlotTick> decades(size_t most) const;

    double low_;
    double high_;
    bool logarithmic_;
};

}  // namespace tarno2
