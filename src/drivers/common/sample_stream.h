#pragma once

#include <string>

#include <tarno2/driver.h>

#include "drivers/common/sample_codec.h"

namespace tarno2::drivers {

/// What is known of samples that a source sends by itself, from the user alone.
struct SampleStream {
    WireFormat format;
    uint32_t channels = 1;
    double rate = 0.0;    ///< Hz, of a channel; 0: nobody knows
    double lower = -1.0;  ///< volts of the lowest and the highest code
    double upper = 1.0;

    [[nodiscard]] SampleDecoder decoder() const { return {format, lower, upper}; }
    /// The board of such samples.
    [[nodiscard]] sdk::Board board() const;
};

/// The settings Channels, Format, Bits, Rate, Range and Polarity.
void addStreamSettings(sdk::Settings& settings, double usualRate);
/// What they say; false with the reason when they don't fit together.
bool readStreamSettings(const sdk::Settings& settings, SampleStream& stream, std::string& why);

/// The value of a choice; false with the reason when the settings file or the environment has something else.
bool readChoice(const sdk::Settings& settings, const std::string& key, const std::vector<std::string>& choices,
                std::string& value, std::string& why);

}  // namespace tarno2::drivers
