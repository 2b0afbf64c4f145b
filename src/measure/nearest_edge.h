#pragma once

#include <cstdint>
#include <optional>

#include "display/frame_source.h"
#include "display/signal_format.h"
#include "measure/frame_span.h"

namespace tarno2 {

/// The edge of a channel that is nearest to a place, frames, within the span; nothing when there is none. An edge is
/// where the channel crosses the middle of its extremes in the span. At most `kMostEdgeBytes` of frames about the
/// place are looked at. Any thread.
[[nodiscard]] std::optional<double> nearestEdge(FrameSource& source, const SignalFormat& format, FrameSpan span,
                                                size_t channel, double place);
/// The same of a digital line.
[[nodiscard]] std::optional<double> nearestLineEdge(FrameSource& source, const SignalFormat& format, FrameSpan span,
                                                    size_t line, double place);

/// Bytes of frames that are looked at for an edge: some milliseconds of work.
inline constexpr uint64_t kMostEdgeBytes = uint64_t{32} << 20;

}  // namespace tarno2
