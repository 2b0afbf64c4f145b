#include "display/wall_clock.h"

#include <algorithm>
#include <chrono>
#include <cmath>

#include "records/clock_pairs.h"
#include "records/utc_text.h"

namespace tarno2 {

namespace {

constexpr double kMicroseconds = 1e6;
constexpr int64_t kSecond = 1'000'000;
constexpr int64_t kMinute = 60 * kSecond;
constexpr int64_t kDay = 24 * 60 * kMinute;
constexpr double kFarthest = 1e17;    // beyond any date
constexpr double kClockReach = 0.01;  // of the rate, that clocks of a board and a computer differ by at most

int64_t floorDivision(int64_t value, int64_t by) {
    return value / by - (value % by < 0 ? 1 : 0);
}

}  // namespace

int64_t WallClock::at(double frame) const {
    return start + std::llround(std::clamp(frame / framesPerSecond * kMicroseconds, -kFarthest, kFarthest));
}

double WallClock::frameAt(int64_t time) const {
    return static_cast<double>(time - start) / kMicroseconds * framesPerSecond;
}

// A short recording's own pairs tell its rate badly, and a board that was played back has one of its own: then the
// rate of the description counts, from the clock's first moment on.
std::optional<WallClock> wallClockOf(const Passport& passport, uint64_t firstFrame, double rate) {
    rate = passport.rate.packets().value_or(rate);
    if (!(rate > 0.0) || passport.synchronisation.mode != "off") {
        return std::nullopt;
    }
    const int64_t local = passport.startOffset * kMinute;
    const auto first = static_cast<double>(firstFrame);
    const auto line = ClockLine::through(passport.end.clock);
    if (line && std::abs(line->frequency() - rate) <= rate * kClockReach) {
        return WallClock{line->utcOf(first) + local, line->frequency(), local};
    }
    const int64_t begun = passport.end.begun != 0 ? passport.end.begun : passport.start;
    WallClock clock{begun + local, rate, local};
    clock.start = clock.at(first);
    return begun != 0 ? std::optional(clock) : std::nullopt;
}

std::optional<WallClock> wallClockOf(const LocalTime& created, double rate) {
    const auto time = timeOf(created);
    return time && rate > 0.0 ? std::optional(WallClock{*time, rate, std::nullopt}) : std::nullopt;
}

std::optional<WallClock> wallClockNow(uint64_t frames, double rate) {
    if (!(rate > 0.0)) {
        return std::nullopt;
    }
    const int64_t utc = utcMicroseconds();
    const int64_t ahead = utcOffsetMinutes(utc) * kMinute;
    WallClock clock{utc + ahead, rate, ahead};
    clock.start = clock.at(-static_cast<double>(frames));
    return clock;
}

int64_t microsecondsBetween(const WallClock& from, const WallClock& to) {
    const int64_t shown = to.start - from.start;
    return from.ahead && to.ahead ? shown - (*to.ahead - *from.ahead) : shown;
}

std::optional<int64_t> timeOf(const LocalTime& time) {
    using namespace std::chrono;
    const year_month_day date{year{time.year}, month{time.month}, day{time.day}};
    if (!date.ok() || time.hour > 23 || time.minute > 59 || time.second > 59 || time.millisecond > 999) {
        return std::nullopt;
    }
    const int64_t days = sys_days{date}.time_since_epoch().count();
    return days * kDay + (time.hour * 60 + time.minute) * kMinute + time.second * kSecond + time.millisecond * 1000;
}

std::string clockText(int64_t time, int decimals) {
    constexpr int kMicrosecondDigits = 6;
    constexpr size_t kWholeSeconds = 8;
    int64_t step = kSecond;
    for (int i = 0; i < std::min(decimals, kMicrosecondDigits); ++i) {
        step /= 10;
    }
    const int64_t rounded = floorDivision(time + step / 2, step) * step;
    const std::string moment = utcText(rounded);
    std::string text = moment.substr(moment.find('T') + 1, kWholeSeconds + 1 + kMicrosecondDigits) + "000";
    text.resize(decimals > 0 ? kWholeSeconds + 1 + static_cast<size_t>(std::min(decimals, 9)) : kWholeSeconds);
    return text;
}

std::string dateText(int64_t time) {
    const std::string moment = utcText(time);
    return moment.substr(0, moment.find('T'));
}

}  // namespace tarno2
