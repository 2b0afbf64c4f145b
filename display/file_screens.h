#pragma once

#include <vector>

#include "display/frame_source.h"
#include "display/screen.h"
#include "display/signal_format.h"

namespace tarno2 {

/// Screens straight from a recording's files: what is scrolled to while the recording runs, and what lies between the
/// points of an overview. A range of more than some millions of samples is only sampled, and its screen provisional.
/// One thread.
class FileScreens final : public ScreenSource {
public:
    /// `frames` outlives it.
    FileScreens(FrameSource& frames, const SignalFormat& format) : frames_(frames), format_(format) {}

    [[nodiscard]] uint64_t frameCount() const override { return frames_.frameCount(); }
    [[nodiscard]] bool build(uint64_t first, uint64_t end, size_t buckets, Screen& screen) override;

private:
    FrameSource& frames_;
    SignalFormat format_;
    std::vector<std::byte> block_;
};

}  // namespace tarno2
