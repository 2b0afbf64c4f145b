#include "platform/clock.h"

#include <cerrno>
#include <ctime>

namespace tarno2 {

namespace {

constexpr int64_t kMillisecondsPerSecond = 1000;
constexpr int64_t kMicrosecondsPerSecond = 1'000'000;
constexpr long kNanosecondsPerMicrosecond = 1000;

}  // namespace

LocalTime localTime(uint64_t millisecondsAgo) {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    const int64_t milliseconds = int64_t{now.tv_sec} * kMillisecondsPerSecond +
                                 now.tv_nsec / static_cast<long>(kNanosecondsPerMillisecond) -
                                 static_cast<int64_t>(millisecondsAgo);
    const auto seconds = static_cast<time_t>(milliseconds / kMillisecondsPerSecond);
    tm parts{};
    localtime_r(&seconds, &parts);
    const auto field = [](long value) { return static_cast<uint16_t>(value); };
    LocalTime time;
    time.year = field(parts.tm_year + 1900);
    time.month = field(parts.tm_mon + 1);
    time.dayOfWeek = field(parts.tm_wday);
    time.day = field(parts.tm_mday);
    time.hour = field(parts.tm_hour);
    time.minute = field(parts.tm_min);
    time.second = field(parts.tm_sec);
    time.millisecond = field(milliseconds % kMillisecondsPerSecond);
    return time;
}

uint64_t tickCount() {
    return monotonicNanoseconds() / kNanosecondsPerMillisecond;
}

uint64_t monotonicNanoseconds() {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<uint64_t>(now.tv_sec) * kNanosecondsPerSecond + static_cast<uint64_t>(now.tv_nsec);
}

int64_t utcMicroseconds() {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    return int64_t{now.tv_sec} * kMicrosecondsPerSecond + now.tv_nsec / kNanosecondsPerMicrosecond;
}

int32_t utcOffsetMinutes(int64_t utc) {
    const auto seconds = static_cast<time_t>(utc / kMicrosecondsPerSecond);
    tm parts{};
    localtime_r(&seconds, &parts);
    return static_cast<int32_t>(parts.tm_gmtoff / 60);
}

void sleepMilliseconds(uint32_t milliseconds) {
    const uint64_t deadline = monotonicNanoseconds() + uint64_t{milliseconds} * kNanosecondsPerMillisecond;
    timespec until{};
    until.tv_sec = static_cast<time_t>(deadline / kNanosecondsPerSecond);
    until.tv_nsec = static_cast<long>(deadline % kNanosecondsPerSecond);
    while (clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &until, nullptr) == EINTR) {
    }
}

}  // namespace tarno2
