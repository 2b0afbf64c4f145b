#include "drivers/iio/timestamp_watch.h"

#include <algorithm>
#include <cmath>

namespace tarno2::drivers {

namespace {

constexpr size_t kFramesToCatchUp = 8;  // after so many a late frame has been made up for
constexpr size_t kFramesToJudge = 8;    // fewer intervals don't tell whether the times are regular
constexpr double kRegular = 0.9;        // share of the intervals that have to be about a period long

}  // namespace

TimestampWatch::TimestampWatch(double framesPerSecond) : period_(1e9 / framesPerSecond) {}

bool TimestampWatch::isRegular(std::span<const int64_t> times) const {
    size_t regular = 0;
    for (size_t i = 1; i < times.size(); ++i) {
        const auto interval = static_cast<double>(times[i] - times[i - 1]);
        regular += std::abs(interval - period_) <= period_ / 2.0 ? 1 : 0;
    }
    return static_cast<double>(regular) >= kRegular * static_cast<double>(times.size() - 1);
}

std::optional<TimestampWatch::Loss> TimestampWatch::look(std::span<const int64_t> times) {
    if (state_ == State::Unknown && times.size() > kFramesToJudge) {
        state_ = isRegular(times) ? State::Watching : State::Off;
    }
    if (times.empty() || state_ == State::Off) {
        return std::nullopt;
    }
    for (size_t i = 0; i < times.size() && state_ == State::Watching; ++i) {
        const std::optional<int64_t> before = i > 0 ? std::optional(times[i - 1]) : last_;
        if (!before.has_value() || static_cast<double>(times[i] - *before) < 1.5 * period_) {
            continue;
        }
        const size_t later = std::min(i + kFramesToCatchUp, times.size() - 1);
        const double periods = static_cast<double>(times[later] - *before) / period_;
        const int64_t lost = std::llround(periods) - static_cast<int64_t>(later - i + 1);
        if (lost > 0) {
            state_ = State::Off;
            return Loss{.frame = i, .frames = static_cast<uint64_t>(lost)};
        }
    }
    last_ = times.back();
    return std::nullopt;
}

}  // namespace tarno2::drivers
