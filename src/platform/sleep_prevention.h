#pragma once

namespace tarno2 {

/// While one is alive, the machine does not go to sleep for want of input; the screen may. On Windows alone: elsewhere
/// desktops have services for it, which this does not ask. An object belongs to the thread that made it.
class SleepPrevention {
public:
    SleepPrevention() { prevent(true); }
    ~SleepPrevention() { prevent(false); }
    SleepPrevention(const SleepPrevention&) = delete;
    SleepPrevention& operator=(const SleepPrevention&) = delete;

private:
    static void prevent(bool wanted);
};

}  // namespace tarno2
