#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "records/conversion_inputs.h"

namespace tarno2 {

/// What codes of one channel mean in its unit: value = code * step + zero.
struct ChannelScale {
    double step;
    double zero;

    /// In the unit of the channel's label, volts where it has none; `inUnit` false: always volts.
    ChannelScale(const ConversionInputs& inputs, size_t channel, bool inUnit);
    [[nodiscard]] double value(double code) const { return code * step + zero; }
};

/// What the stored numbers of each channel mean, in words: "inlet: -8192 = -5 V, 8191 = 5 V; ...". `subtracted`: what
/// was taken from a code to store it. At most so many channels are told of, and then "...".
[[nodiscard]] std::string fullScaleText(const ConversionInputs& inputs, int64_t subtracted, size_t mostChannels);

/// A number in at most `length` characters, as exactly as they can tell it; without an exponent unless that tells more.
[[nodiscard]] std::string numberText(double value, size_t length);

}  // namespace tarno2
