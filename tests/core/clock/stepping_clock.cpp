#include "tests/core/clock/stepping_clock.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <thread>
#include <tuple>

#include "platform/clock.h"

namespace tarno2 {

namespace {

constexpr int64_t kBegin = 1'760'000'000'000'000;  // microseconds since 1970

/// The thread that asks for the system's time: that of the recording. The board's reads the monotonic clock alone.
std::atomic<std::thread::id> recording;
/// What that thread read last of the monotonic clock, which has moved on.
std::atomic<uint64_t> seen{0};

size_t ownPlace() {
    static std::atomic<size_t> threads{0};
    thread_local const size_t place = threads.fetch_add(1);
    return place % std::tuple_size_v<decltype(test::SteppingClock::looksOfThreads)>;
}

/// The board reads the monotonic clock, makes what is due, and reads it once more for its wait: after four looks it has
/// made all of it. Others look too, to wait for something, but none as often as the board.
void letTheBoardCatchUp(test::SteppingClock& clock) {
    constexpr uint64_t kLooks = 4;
    auto& looks = clock.looksOfThreads;
    std::array<uint64_t, std::tuple_size_v<decltype(test::SteppingClock::looksOfThreads)>> before{};
    std::ranges::transform(looks, before.begin(), [](const auto& count) { return count.load(); });
    for (bool done = false; !done; std::this_thread::yield()) {
        size_t board = ownPlace() == 0 ? 1 : 0;
        for (size_t i = 0; i < looks.size(); ++i) {
            board = i != ownPlace() && looks[i] > looks[board] ? i : board;
        }
        done = looks[board] >= before[board] + kLooks;
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
    clock.looksOfThreads[ownPlace()].fetch_add(1);
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
