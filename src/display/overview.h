#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>

#include "display/frame_source.h"
#include "display/screen.h"
#include "display/signal_format.h"

namespace tarno2 {

/// Minima and maxima of a finished recording, 16 to 1 a level, built by a thread of its own and kept in memory only.
///
/// First a sample of the whole file is taken, which is ready at once and shows the signal's course; then every frame is
/// read. The finest level is as fine as the memory bound allows; what is finer is read from the file when it is shown.
/// Destruction ends the building. Screens are built on one thread, the window's.
class Overview final : public ScreenSource {
public:
    /// Bound of the memory for minima and maxima.
    static constexpr size_t kDefaultBytes = size_t{64} << 20;
    /// Called on the building thread, at most some 25 times a second and once at the end, when more can be shown.
    using Progress = std::function<void()>;

    /// `frames` outlives the overview. Throws std::bad_alloc.
    Overview(FrameSource& frames, const SignalFormat& format, Progress progress = {}, size_t bytes = kDefaultBytes);
    ~Overview() override;

    [[nodiscard]] uint64_t frameCount() const override;
    /// Provisional while a part of the range is not read yet. False also while there is nothing to show of it.
    [[nodiscard]] bool build(uint64_t first, uint64_t end, size_t buckets, Screen& screen) override;

    /// Frames that the exact levels stand for so far. Any thread.
    [[nodiscard]] uint64_t framesDone() const;
    /// A first picture of the whole recording can be given. Any thread.
    [[nodiscard]] bool usable() const;
    /// Every frame was read, or reading failed (`failed`). Any thread.
    [[nodiscard]] bool complete() const;
    [[nodiscard]] bool failed() const;

private:
    struct Parts;
    std::unique_ptr<Parts> parts_;
};

}  // namespace tarno2
