#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "display/axis_y.h"
#include "display/frame_source.h"
#include "display/screen.h"
#include "display/signal_format.h"
#include "measure/frame_blocks.h"
#include "measure/frame_span.h"

namespace tarno2 {

/// What is told of a signal between two frames. Of a channel in its codes, or in a unit after `inUnit`.
struct SignalStatistics {
    double minimum = 0.0;
    double maximum = 0.0;
    std::optional<double> mean;
    std::optional<double> rms;        ///< root of the mean square, the constant part included
    std::optional<double> deviation;  ///< root of the mean square about the mean
    std::optional<double> frequency;  ///< whole periods a second; nothing with fewer than two rising edges
    std::optional<double> duty;       ///< part of whole periods above the middle, 0 to 1
    uint64_t edges = 0;

    [[nodiscard]] double peakToPeak() const { return maximum - minimum; }
    /// The same of values `scale.of(code)`.
    [[nodiscard]] SignalStatistics inUnit(const LinearScale& scale) const;
};

/// Every channel and every digital line over the same frames.
struct SpanStatistics {
    FrameSpan span;
    std::vector<SignalStatistics> channels;  ///< codes, in the frame's order
    std::vector<SignalStatistics> lines;     ///< 0 and 1
    bool fromExtremes = false;  ///< only minima and maxima were left: the rest is missing, and the ends are rounded
};

/// Measures frames of a source, every one of them: once for the sums, once more for the edges. `out` is whole when
/// `ReadEnd::Whole` is returned. The span is not empty. Throws std::bad_alloc. Any thread.
[[nodiscard]] ReadEnd measure(FrameSource& source, const SignalFormat& format, FrameSpan span, WorkProgress& progress,
                              SpanStatistics& out);
/// Measures what is left of frames as minima and maxima. Nothing when the screen is empty.
[[nodiscard]] std::optional<SpanStatistics> measureExtremes(const Screen& screen, const SignalFormat& format,
                                                            FrameSpan span);

/// The codes of one frame, in its order, and its lines, line 0 in bit 0.
struct FrameValues {
    std::vector<double> codes;
    uint32_t lines = 0;
};
[[nodiscard]] FrameValues valuesOf(const SignalFormat& format, const std::byte* frame);

}  // namespace tarno2
