#pragma once

#include "display/file_screens.h"
#include "display/live_history.h"

namespace tarno2 {

/// Scrolling back in the running recording: from the history as long as that is fine enough, else from the file. Only
/// while every frame is written: with synchronisation the file has frames of its own, and `FileScreens` shows them.
class RunningScreens final : public ScreenSource {
public:
    /// Both outlive it.
    RunningScreens(LiveHistory& history, FileScreens& file) : history_(history), file_(file) {}

    [[nodiscard]] uint64_t frameCount() const override { return history_.frameCount(); }
    [[nodiscard]] bool build(uint64_t first, uint64_t end, size_t buckets, Screen& screen) override;

private:
    LiveHistory& history_;
    FileScreens& file_;
};

}  // namespace tarno2
