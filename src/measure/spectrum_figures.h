#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include "measure/spectrum.h"

namespace tarno2 {

/// A line of a spectrum, between the bins where it is.
struct SpectrumPeak {
    double frequency = 0.0;  ///< Hz
    double power = 0.0;      ///< mean square of the sine
};

/// What is read from the spectrum of a channel. A bin belongs to a line as far as the window's main lobe reaches; the
/// bins about the constant part, and those to which a line falls beyond its lobe, count for nothing.
struct SpectrumFigures {
    std::vector<SpectrumPeak> peaks;  ///< the strongest first, of those 12 dB and more above the median bin
    /// Of the strongest line. Missing when there is none, it is so near 0 Hz that its harmonics run together, or
    /// something stronger is not told from the constant part.
    std::optional<double> distortion;  ///< harmonics 2 to 10 below half the rate, as a part of the line's amplitude
    std::optional<double> signalToNoiseDb;  ///< over all that is neither the line nor one of those harmonics
    std::optional<double> spuriousFreeDb;   ///< over the strongest other bin
};

[[nodiscard]] SpectrumFigures figuresOf(const Spectrum& spectrum, size_t channel, size_t mostPeaks);

}  // namespace tarno2
