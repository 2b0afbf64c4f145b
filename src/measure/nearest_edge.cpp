#include "measure/nearest_edge.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "measure/channel_sums.h"
#include "measure/crossings.h"
#include "measure/frame_blocks.h"
#include "measure/line_edges.h"

namespace tarno2 {

namespace {

/// Of the span, so much about the place that looking takes no time.
FrameSpan around(FrameSpan span, double place, size_t frameBytes) {
    const uint64_t most = std::max<uint64_t>(kMostEdgeBytes / frameBytes, 2);
    if (span.count() <= most) {
        return span;
    }
    const auto middle =
        static_cast<uint64_t>(std::clamp(place, static_cast<double>(span.first), static_cast<double>(span.end)));
    const uint64_t first = std::clamp(middle - std::min(middle, most / 2), span.first, span.end - most);
    return {first, first + most};
}

/// Keeps the nearest of the places that it is told.
struct Nearest {
    double wanted = 0.0;
    std::optional<double> found = std::nullopt;
    void take(double place) {
        if (!found || std::abs(place - wanted) < std::abs(*found - wanted)) {
            found = place;
        }
    }
};

bool readAll(FrameSource& source, FrameSpan span,
             const std::function<void(uint64_t, const std::byte*, uint64_t)>& use) {
    WorkProgress progress;
    return readParts(source, {span}, progress, [&](size_t, uint64_t first, const std::byte* frames, uint64_t count) {
               use(first, frames, count);
           }) == ReadEnd::Whole;
}

}  // namespace

std::optional<double> nearestEdge(FrameSource& source, const SignalFormat& format, FrameSpan span, size_t channel,
                                  double place) {
    span = around(span, place, format.frameBytes());
    const auto sums = ChannelSums::create(format);
    if (span.count() == 0 ||
        !readAll(source, span, [&](uint64_t, const std::byte* frames, uint64_t count) { sums->add(frames, count); })) {
        return std::nullopt;
    }
    // Nobody asks for edges of the others.
    std::vector<CrossingLevels> levels(format.channelCount(), CrossingLevels::between(0.0, 0.0));
    const CodeMoments moments = sums->moments(channel);
    levels[channel] = CrossingLevels::between(moments.minimum, moments.maximum);
    const auto origin = static_cast<double>(span.first);
    Nearest nearest{.wanted = place};
    const auto crossings =
        Crossings::create(format, levels, span.first, [&](size_t, bool, double time) { nearest.take(origin + time); });
    const bool whole = readAll(source, span, [&](uint64_t first, const std::byte* frames, uint64_t count) {
        crossings->add(first, frames, count);
    });
    return whole ? nearest.found : std::nullopt;
}

std::optional<double> nearestLineEdge(FrameSource& source, const SignalFormat& format, FrameSpan span, size_t line,
                                      double place) {
    span = around(span, place, format.frameBytes());
    const auto origin = static_cast<double>(span.first);
    Nearest nearest{.wanted = place};
    LineWatch watch(format, span.first, [&](size_t of, bool, double time) {
        if (of == line) {
            nearest.take(origin + time);
        }
    });
    const bool whole =
        span.count() > 0 && readAll(source, span, [&](uint64_t first, const std::byte* frames, uint64_t count) {
            watch.add(first, frames, count);
        });
    return whole ? nearest.found : std::nullopt;
}

}  // namespace tarno2
