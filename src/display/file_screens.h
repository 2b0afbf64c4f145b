#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "display/extremes.h"
#include "display/frame_source.h"
#include "display/screen.h"
#include "display/signal_format.h"

namespace tarno2 {

/// Screens straight from a recording's files: what is scrolled to while the recording runs, and what lies between the
/// points of an overview. One thread.
class FileScreens final : public ScreenSource {
public:
    /// Bytes of frames that are read for one screen. Of a longer range each bucket is only sampled, and its screen is
    /// provisional.
    static constexpr uint64_t kMostBytes = uint64_t{96} << 20;

    /// `frames` outlives it. Throws std::bad_alloc.
    FileScreens(FrameSource& frames, const SignalFormat& format);

    [[nodiscard]] uint64_t frameCount() const override { return frames_.frameCount(); }
    [[nodiscard]] bool build(uint64_t first, uint64_t end, size_t buckets, Screen& screen) override;
    /// A screen of so many frames is read whole.
    [[nodiscard]] bool readsWhole(uint64_t frames) const { return frames <= kMostBytes / frames_.frameBytes(); }

private:
    FrameSource& frames_;
    std::unique_ptr<Extremes> extremes_;
    std::vector<std::byte> block_;
};

}  // namespace tarno2
