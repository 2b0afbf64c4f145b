#pragma once

namespace tarno2 {

/// While one is alive, waits and timers of this program end within a millisecond or so of their time. On Windows, whose
/// own ticks are up to 16 ms long; elsewhere they do so anyway. Any thread.
class TimerResolution {
public:
    TimerResolution() = default;
    ~TimerResolution() {
        if (raised_) {
            lower();
        }
    }
    TimerResolution(const TimerResolution&) = delete;
    TimerResolution& operator=(const TimerResolution&) = delete;

private:
    static bool raise();
    static void lower();

    const bool raised_ = raise();
};

}  // namespace tarno2
