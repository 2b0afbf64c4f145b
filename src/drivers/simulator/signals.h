#pragma once

#include <cstdint>
#include <memory>

#include <tarno2/driver/board.h>

#include "drivers/common/sample_source.h"

namespace tarno2::drivers {

enum class Signal { Counter, Sine, Square, Ramp, Noise, Level, Mixed };

struct SignalSettings {
    Signal signal = Signal::Mixed;
    double frequency = 10.0;      ///< Hz; the period is rounded to whole frames, 2 to 2^31
    int32_t amplitude = 80;       ///< percent of the input range at gain 1
    uint32_t digitalPeriod = 64;  ///< frames until digital line 0 toggles; line k takes 2^k times as long
};

/// One sample's code of a waveform, before gain and amplitude: -2^30 to 2^30. `phase` counts 2^32 to the period.
[[nodiscard]] int32_t waveform(Signal signal, uint32_t phase, uint64_t frame, int32_t channel);

/// The word of a sample, from its code (cut to the code's bits) and the state of the digital lines.
[[nodiscard]] inline uint32_t packSample(const ADCSampleFormat& format, int32_t code, uint32_t lines) {
    return ((static_cast<uint32_t>(code) << format.m_nCodeShift) & format.m_nCodeMask) |
           ((lines << format.m_nDigitalShift) & format.m_nDigitalMask);
}

/// Makes the source of a measurement's samples.
[[nodiscard]] std::unique_ptr<SampleSource> makeSignal(const SignalSettings& settings, const sdk::Board& board,
                                                       const sdk::Measurement& measurement);

}  // namespace tarno2::drivers
