#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tarno2 {

/// What a channel is called, and what its volts mean: a value in its unit is volts * factor + offset. Texts are UTF-8.
struct ChannelLabel {
    std::string name;     ///< empty: the channel has its number alone
    std::string unit;     ///< empty: volts
    double factor = 1.0;  ///< finite and not 0
    double offset = 0.0;  ///< finite

    [[nodiscard]] double inUnit(double volts) const { return volts * factor + offset; }
    [[nodiscard]] double inVolts(double value) const { return (value - offset) / factor; }
    /// Its values are told in something else than volts.
    [[nodiscard]] bool hasUnit() const { return !unit.empty() || factor != 1.0 || offset != 0.0; }
    /// The unit for the reader: "V" where there is none.
    [[nodiscard]] std::string unitText() const { return unit.empty() ? "V" : unit; }

    friend bool operator==(const ChannelLabel&, const ChannelLabel&) = default;
};

/// A straight line that volts can be told by: finite, and not level.
[[nodiscard]] bool isScale(double factor, double offset);

/// Factor and offset.
struct UnitScale {
    double factor;
    double offset;
};
/// The line through two points, volts and value of each; nothing when there is none that `isScale`.
[[nodiscard]] std::optional<UnitScale> scaleThrough(double volts1, double value1, double volts2, double value2);

// Names and units of a list stand in one text, parted by semicolons. So they hold none, nor any control character.

[[nodiscard]] bool isLabelText(std::string_view utf8);
/// The nearest text that is one: blanks for control characters, commas for semicolons, none of either at its ends.
[[nodiscard]] std::string usableLabelText(std::string_view utf8);
/// The parts of a list, at least one; empty ones count.
[[nodiscard]] std::vector<std::string> labelParts(std::string_view list);
/// The list of them, without the empty ones at its end.
[[nodiscard]] std::string labelList(const std::vector<std::string>& parts);

}  // namespace tarno2
