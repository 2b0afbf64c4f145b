#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "core/recording/live_tap.h"
#include "display/screen.h"
#include "display/signal_format.h"

namespace tarno2 {

/// The newest value of a channel and the extremes since the last reset, codes.
struct ChannelValues {
    int32_t newest = 0;
    int32_t minimum = 0;
    int32_t maximum = 0;
};

/// What the view keeps of the running recording: the newest raw frames up to a bound, and minima and maxima of ever
/// longer stretches (16 to 1 a level) of what came before, so that a screen of a microsecond costs the same as one of
/// a day. One thread at a time, usually the window's.
class LiveHistory final : public ScreenSource {
public:
    /// Bytes of raw frames, and about as many of minima and maxima.
    static constexpr size_t kDefaultBytes = size_t{64} << 20;

    /// Throws std::bad_alloc.
    explicit LiveHistory(const SignalFormat& format, size_t bytes = kDefaultBytes);
    ~LiveHistory() override;

    /// Takes what the tap has, at most about `limitBytes` so that a paint is not kept waiting; the rest stays for the
    /// next call. False when there was nothing.
    bool take(LiveTap& tap, size_t limitBytes = size_t{64} << 20);
    /// Takes frames that begin at that number; those between the last and this are a gap.
    void append(uint64_t firstFrame, std::span<const std::byte> frames);

    [[nodiscard]] uint64_t frameCount() const override;
    /// The oldest frame that is still here as it came.
    [[nodiscard]] uint64_t firstRawFrame() const;
    /// Copies frames from `first` up to, but not including, `end` as they came. False, and nothing, when some are gone,
    /// were lost or have not come yet. What `out` has room for is used as it is. Throws std::bad_alloc.
    [[nodiscard]] bool copyRaw(uint64_t first, uint64_t end, std::vector<std::byte>& out) const;
    /// Never provisional. Where raw frames or fine levels are gone already, the buckets are longer than asked for.
    [[nodiscard]] bool build(uint64_t first, uint64_t end, size_t buckets, Screen& screen) override;

    /// One a channel, in the frame's order; empty before the first frame.
    [[nodiscard]] std::vector<ChannelValues> values() const;
    /// Starts the extremes anew with the next frames.
    void resetExtremes();

private:
    struct Parts;
    std::unique_ptr<Parts> parts_;
};

}  // namespace tarno2
