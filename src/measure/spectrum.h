#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "display/axis_y.h"
#include "display/frame_source.h"
#include "display/signal_format.h"
#include "measure/frame_blocks.h"
#include "measure/frame_span.h"
#include "measure/spectrum_window.h"
#include "measure/work_progress.h"

namespace tarno2 {

/// What a bin is told in; the numbers are those of the settings files. V is the root mean square of a sine in that bin,
/// dBV is over a volt of it. 0 dBFS is a sine over the whole range of the channel. V²/Hz is the density of noise.
enum class SpectrumScale : int32_t { DbV = 0, DbFs = 1, Volts = 2, VoltsSquaredPerHz = 3 };

struct SpectrumWish {
    /// A column of the frames, and how its codes become values.
    struct Channel {
        size_t column = 0;
        LinearScale scale;
    };
    std::vector<Channel> channels = {};
    SpectrumWindow window = SpectrumWindow::Hann;
    size_t length = 16384;  ///< samples of a transform, a power of two; less where the span is shorter
    bool averaged = true;   ///< the mean of blocks that overlap by half, over the whole span; else the last block alone
};

/// Powers of the bins of several channels, from the constant part to half the rate.
struct Spectrum {
    SpectrumWindow window = SpectrumWindow::Hann;
    size_t length = 0;      ///< samples of a transform
    uint64_t blocks = 0;    ///< that were averaged
    double binWidth = 0.0;  ///< Hz; of frames when the rate is not known
    /// Mean square of a sine in each bin, or of the constant part in bin 0.
    std::vector<std::vector<double>> powers;
};

/// Lengths that can be asked for.
inline constexpr size_t kLeastSpectrum = 256;
inline constexpr size_t kMostSpectrum = size_t{1} << 20;

/// What came of it: what came of reading, or there is no transform.
enum class SpectrumEnd : uint8_t { Whole, Cancelled, NotRead, TooShort, Missing };

/// The spectrum of frames of a source. `out` is whole when `Whole` is returned; `TooShort`: the span has fewer than
/// `kLeastSpectrum` frames. Throws std::bad_alloc. Any thread.
[[nodiscard]] SpectrumEnd spectrumOf(FrameSource& source, const SignalFormat& format, FrameSpan span,
                                     const SpectrumWish& wish, WorkProgress& progress, Spectrum& out);

/// Samples of a transform over so many frames: what is asked for, or the longest power of two that fits.
[[nodiscard]] size_t spectrumLength(size_t asked, uint64_t frames);
/// A power in that scale. `fullScale`: amplitude of a sine over the whole range of the channel, volts.
[[nodiscard]] double spectrumValue(double power, SpectrumScale scale, double fullScale, const Spectrum& spectrum);

}  // namespace tarno2
