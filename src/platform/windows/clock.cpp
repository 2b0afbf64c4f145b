#include "platform/clock.h"

#include <algorithm>
#include <cmath>
#include <windows.h>

namespace tarno2 {

namespace {

constexpr uint64_t kTicksPerMillisecond = 10'000;  // a FILETIME counts 100 ns
constexpr int64_t kTicksPerMicrosecond = 10;
constexpr double kTicksPerMinute = 600'000'000.0;
constexpr int64_t kTicksTo1970 = 116'444'736'000'000'000;  // a FILETIME begins in 1601

int64_t ticksOf(const FILETIME& time) {
    return static_cast<int64_t>(uint64_t{time.dwHighDateTime} << 32U | time.dwLowDateTime);
}

FILETIME fileTimeOf(int64_t ticks) {
    const auto bits = static_cast<uint64_t>(ticks);
    return {static_cast<DWORD>(bits), static_cast<DWORD>(bits >> 32U)};
}

uint64_t counterFrequency() {
    LARGE_INTEGER frequency{};
    QueryPerformanceFrequency(&frequency);
    return static_cast<uint64_t>(frequency.QuadPart);
}

}  // namespace

LocalTime localTime(uint64_t millisecondsAgo) {
    FILETIME time{};
    GetSystemTimeAsFileTime(&time);
    ULARGE_INTEGER ticks{};
    ticks.LowPart = time.dwLowDateTime;
    ticks.HighPart = time.dwHighDateTime;
    ticks.QuadPart -= millisecondsAgo * kTicksPerMillisecond;
    time.dwLowDateTime = ticks.LowPart;
    time.dwHighDateTime = ticks.HighPart;
    SYSTEMTIME universal{};
    SYSTEMTIME now{};
    FileTimeToSystemTime(&time, &universal);
    SystemTimeToTzSpecificLocalTime(nullptr, &universal, &now);
    return {now.wYear, now.wMonth, now.wDayOfWeek, now.wDay, now.wHour, now.wMinute, now.wSecond, now.wMilliseconds};
}

uint64_t tickCount() {
    return monotonicNanoseconds() / kNanosecondsPerMillisecond;
}

uint64_t monotonicNanoseconds() {
    static const uint64_t frequency = counterFrequency();
    LARGE_INTEGER counter{};
    QueryPerformanceCounter(&counter);
    const auto count = static_cast<uint64_t>(counter.QuadPart);
    // Whole seconds apart, so that the product stays in 64 bits.
    return count / frequency * kNanosecondsPerSecond + count % frequency * kNanosecondsPerSecond / frequency;
}

int64_t utcMicroseconds() {
    FILETIME time{};
    GetSystemTimePreciseAsFileTime(&time);
    return (ticksOf(time) - kTicksTo1970) / kTicksPerMicrosecond;
}

int32_t utcOffsetMinutes(int64_t utc) {
    const FILETIME time = fileTimeOf(utc * kTicksPerMicrosecond + kTicksTo1970);
    SYSTEMTIME universal{};
    SYSTEMTIME local{};
    FILETIME localTime{};
    FileTimeToSystemTime(&time, &universal);
    SystemTimeToTzSpecificLocalTime(nullptr, &universal, &local);
    SystemTimeToFileTime(&local, &localTime);
    // The calendar drops what is below a millisecond.
    return static_cast<int32_t>(std::lround(static_cast<double>(ticksOf(localTime) - ticksOf(time)) / kTicksPerMinute));
}

void sleepMilliseconds(uint32_t milliseconds) {
    const uint64_t deadline = monotonicNanoseconds() + milliseconds * kNanosecondsPerMillisecond;
    // Sleep rounds to the system's ticks, downwards too, and takes its largest argument for "forever".
    for (uint64_t now = monotonicNanoseconds(); now < deadline; now = monotonicNanoseconds()) {
        const uint64_t left = (deadline - now + kNanosecondsPerMillisecond - 1) / kNanosecondsPerMillisecond;
        Sleep(static_cast<DWORD>(std::min<uint64_t>(left, INFINITE - 1)));
    }
}

}  // namespace tarno2
