#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "display/signal_format.h"

namespace tarno2 {

/// What the codes of a channel come to.
struct CodeMoments {
    uint64_t frames = 0;
    double minimum = 0.0;
    double maximum = 0.0;
    double mean = 0.0;
    double variance = 0.0;  ///< about the mean, over all frames
};

/// Adds up the codes of every channel of many frames. The sums of codes and of their squares are kept as integers of
/// 128 bits and are exact, so the variance of a small signal on a large constant is, too: nothing is rounded before the
/// last division. One thread.
class ChannelSums {
public:
    /// The format has at least one channel. Throws std::bad_alloc.
    [[nodiscard]] static std::unique_ptr<ChannelSums> create(const SignalFormat& format);
    virtual ~ChannelSums() = default;
    ChannelSums(const ChannelSums&) = delete;
    ChannelSums& operator=(const ChannelSums&) = delete;

    virtual void add(const std::byte* frames, uint64_t count) = 0;
    /// Takes over what another one of the same format has added up.
    virtual void join(const ChannelSums& other) = 0;
    /// All 0 when nothing was added.
    [[nodiscard]] virtual CodeMoments moments(size_t channel) const = 0;

protected:
    ChannelSums() = default;
};

}  // namespace tarno2
