#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

#include "display/signal_format.h"
#include "measure/edge_times.h"

namespace tarno2 {

/// Between which codes a channel has to go for an edge: from `low` or below to `high` or above, or back.
struct CrossingLevels {
    double middle = 0.0;  ///< where the edge is
    double low = 0.0;
    double high = 0.0;

    /// About the middle of a signal that has these extremes: a tenth of its height on each side, so that noise at the
    /// middle is no edge. A constant has none.
    [[nodiscard]] static CrossingLevels between(double minimum, double maximum);
};

/// Looks for edges of every channel in frames that follow each other. An edge is where the straight line between two
/// samples crosses the middle, the last such place before the signal reaches the other level. One thread.
class Crossings {
public:
    /// Called for each edge while frames are added, with its time in frames.
    using Found = std::function<void(size_t channel, bool rising, double time)>;

    /// `levels`: one a channel, codes. Times count from frame `origin`. Throws std::bad_alloc.
    [[nodiscard]] static std::unique_ptr<Crossings> create(const SignalFormat& format,
                                                           const std::vector<CrossingLevels>& levels, uint64_t origin,
                                                           Found found = {});
    virtual ~Crossings() = default;
    Crossings(const Crossings&) = delete;
    Crossings& operator=(const Crossings&) = delete;

    /// Frames that follow those added before.
    virtual void add(uint64_t firstFrame, const std::byte* frames, uint64_t count) = 0;
    /// Takes over the edges of frames that follow, found with the same levels and origin; nothing is added after.
    virtual void join(const Crossings& next) = 0;
    [[nodiscard]] virtual const EdgeTimes& edges(size_t channel) const = 0;

protected:
    Crossings() = default;
};

}  // namespace tarno2
