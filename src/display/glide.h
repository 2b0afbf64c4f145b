#pragma once

#include <cstdint>

namespace tarno2 {

/// How far a running signal is shown: boards hand over whole blocks, some of them four times a second, and a picture
/// that went on with each block would jump. This one goes on evenly, and lags the board by about a block, never by more
/// than two. Times come from the caller. One thread.
class Glide {
public:
    /// Another signal, or one that was not looked at for a while.
    void reset() { known_ = false; }
    /// The count of frames to show of those that have arrived. `framesPerSecond`: 0 when it isn't known; all are shown
    /// then. `nowMs`: a clock that never goes back.
    [[nodiscard]] uint64_t shown(uint64_t arrived, double framesPerSecond, uint64_t nowMs);

private:
    bool known_ = false;
    uint64_t arrived_ = 0;
    uint64_t lastMs_ = 0;
    double block_ = 0.0;  ///< frames that come at a time
    double shown_ = 0.0;
};

}  // namespace tarno2
