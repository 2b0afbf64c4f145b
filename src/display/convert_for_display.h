#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "config/settings/program_settings.h"
#include "display/signal_format.h"

namespace tarno2 {

/// Which columns a display frame has; the numbers are those of the settings files. Any other number counts as 0.
enum class ShowMode : int32_t { Analog = 0, AnalogAndDigital = 1, Digital = 2 };

/// How the lines of the digital port are drawn.
struct DigitalSettings {
    std::array<DigitalLineSettings, ProgramSettings::kDigitalLineCount> lines;
    int32_t fullScaleCode = 0;  ///< the largest code of the board
};

/// One view's converter: the format of its samples and an array of display samples that grows on demand and is kept.
struct DisplayConverter {
    SampleWordFormat word;
    bool enabled = true;             ///< false: raw blocks are passed through
    std::vector<int16_t> samples16;  ///< scratch
    std::vector<int32_t> samples32;  ///< scratch
};

/// Turns a block of raw 16-bit frames into display frames: the codes of the analog channels (show modes 0 and 1), then
/// a value for each digital line (modes 1 and 2), taken from the frame's first sample.
///
/// `samples`, `sampleCount`: whole frames; a last part of a frame is left out. `channels`: samples in a frame.
/// `displaySamples`, `displayCount`: the display samples, valid until the next call; with unsigned codes their bits are
/// an unsigned number. `columns`: values in a display frame. `channelColors`: one a channel in the frame's order
/// (missing ones are black, 0xBBGGRR). `columnColors`: one a column.
/// 1: done; -1: an output argument is missing; -2: no samples or no channels; -3: out of memory (outputs are empty).
/// A converter that is not enabled gives the raw block with the channels as columns, and 1.
int32_t ConvertForDisplay16(DisplayConverter& converter, const int16_t* samples, size_t sampleCount,
                            const int16_t** displaySamples, size_t* displayCount, size_t channels, size_t* columns,
                            int32_t showMode, const DigitalSettings& digital, std::span<const int32_t> channelColors,
                            std::vector<int32_t>* columnColors);
/// The same with raw 32-bit frames.
int32_t ConvertForDisplay32(DisplayConverter& converter, const int32_t* samples, size_t sampleCount,
                            const int32_t** displaySamples, size_t* displayCount, size_t channels, size_t* columns,
                            int32_t showMode, const DigitalSettings& digital, std::span<const int32_t> channelColors,
                            std::vector<int32_t>* columnColors);

/// The display value of a digital line whose bit is that.
[[nodiscard]] int32_t digitalLineValue(const SampleWordFormat& word, const DigitalSettings& digital, size_t line,
                                       bool bit);

}  // namespace tarno2
