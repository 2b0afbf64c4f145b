#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace tarno2 {

/// Windows of the spectrum; the numbers are those of the settings files.
enum class SpectrumWindow : int32_t { Hann = 0, FlatTop = 1, BlackmanHarris = 2, Rectangular = 3 };

/// The window's samples, as many as the transform has. The sample after the last would be the first again.
[[nodiscard]] std::vector<double> windowSamples(SpectrumWindow window, size_t length);
/// Mean of its samples: what it leaves of a sine's amplitude.
[[nodiscard]] double coherentGain(SpectrumWindow window);
/// Bins over which a bin gathers noise: 1 for the rectangular window, 1.5 for Hann's.
[[nodiscard]] double noiseBandwidth(SpectrumWindow window);
/// Bins from a sine's place to where its main lobe ends.
[[nodiscard]] size_t mainLobe(SpectrumWindow window);
/// What is seen of a sine's amplitude so many bins beside its place; 1 at 0.
[[nodiscard]] double windowResponse(SpectrumWindow window, double bins);

}  // namespace tarno2
