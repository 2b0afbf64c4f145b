#include "platform/clock.h"

#include <algorithm>
#include <windows.h>

namespace tarno2 {

namespace {

constexpr uint64_t kTicksPerMillisecond = 10'000;  // a FILETIME counts 100 ns

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

void sleepMilliseconds(uint32_t milliseconds) {
    const uint64_t deadline = monotonicNanoseconds() + milliseconds * kNanosecondsPerMillisecond;
    // Sleep rounds to the system's ticks, downwards too, and takes its largest argument for "forever".
    for (uint64_t now = monotonicNanoseconds(); now < deadline; now = monotonicNanoseconds()) {
        const uint64_t left = (deadline - now + kNanosecondsPerMillisecond - 1) / kNanosecondsPerMillisecond;
        Sleep(static_cast<DWORD>(std::min<uint64_t>(left, INFINITE - 1)));
    }
}

}  // namespace tarno2
