#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tarno2 {

// What drivers are told, as settings files hold it: pairs "Key=value", parted by semicolons; a semicolon inside of a
// value is doubled. In the text for all drivers the name of one stands before each of its keys: "Replay/File=run.wav".

/// One thing that a driver is told.
struct DriverValue {
    std::string key;    ///< letters and digits
    std::string value;  ///< a number in the "C" locale; empty: the driver's own default

    friend bool operator==(const DriverValue&, const DriverValue&) = default;
};

/// Letters and digits alone, and at least one.
[[nodiscard]] bool isDriverKey(std::string_view key);

/// The pairs of a text for one driver, in their order; nothing when a part of it is no pair.
[[nodiscard]] std::optional<std::vector<DriverValue>> parseDriverValues(std::string_view text);

/// The text for one driver that tells these.
[[nodiscard]] std::string driverValuesText(const std::vector<DriverValue>& values);

/// The pairs of a driver in a text for all of them, in their order.
[[nodiscard]] std::vector<DriverValue> driverValuesOf(std::string_view text, std::string_view driver);

/// A text for all drivers in which a driver is told this. An empty value takes its pair out. All that the text says
/// besides stays, also of drivers that nobody knows.
[[nodiscard]] std::string withDriverValue(std::string_view text, std::string_view driver, const DriverValue& value);

/// A text for all drivers in which a driver is told just what `source`, a text of the same kind, tells it. What the
/// others are told stays.
[[nodiscard]] std::string withDriverValuesOf(std::string_view text, std::string_view driver, std::string_view source);

}  // namespace tarno2
