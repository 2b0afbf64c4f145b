#include "tests/core/clock/stepping_clock.h"

#include <chrono>
#include <thread>

#include "platform/clock.h"

namespace tarno2 {

namespace {

constexpr int64_t kBegin = 1'760'000'000'000'000;  // microseconds since 1970

/// The thread that asks for the system's time: that of the recording. The board's reads the monotonic clock alone.
std::atomic<std::thread::id> recording;
/// What that thread read last of the monotonic clock, which has moved on.
std::atomic<uint64_t> seen{0};

/// The board reads the monotonic clock, then makes what is due: at the second look it has made all of it.
void letTheBoardCatchUp(test::SteppingClock& clock) {
    const uint64_t looks = clock.looks.load();
    while (clock.looks.load() < looks + 2) {
        std::this_thread::yield();
    }
}

}  // namespace

namespace test {

SteppingClock& steppingClock() {
    static SteppingClock clock;
    return clock;
}

}  // namespace test

uint64_t monotonicNanoseconds() {
    test::SteppingClock& clock = test::steppingClock();
    clock.looks.fetch_add(1);
    const uint64_t now = clock.now.load();
    if (recording.load() == std::this_thread::get_id()) {
        seen.store(now);
    }
    if (recording.load() == std::this_thread::get_id() && clock.steps.load() > 0) {
        clock.now.store(now + test::SteppingClock::kStep);
        letTheBoardCatchUp(clock);
        clock.steps.fetch_sub(1);
    }
    return now;
}

int64_t utcMicroseconds() {
    recording.store(std::this_thread::get_id());
    const test::SteppingClock& clock = test::steppingClock();
    return kBegin + static_cast<int64_t>(seen.load() / 1000) + clock.setBy.load();
}

int32_t utcOffsetMinutes(int64_t /*utc*/) {
    return 0;
}

LocalTime localTime(uint64_t /*millisecondsAgo*/) {
    return {2025, 10, 4, 9, 8, 53, 20, 0};
}

uint64_t tickCount() {
    using namespace std::chrono;
    return static_cast<uint64_t>(duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count());
}

void sleepMilliseconds(uint32_t milliseconds) {
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

}  // namespace tarno2
