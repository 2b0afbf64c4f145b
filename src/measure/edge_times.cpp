#include "measure/edge_times.h"

namespace tarno2 {

void EdgeTimes::add(const EdgeRun& run) {
    if (run.count == 0) {
        return;
    }
    // The balance of all edges is the time high, but for those of the last period.
    high_ += lastFall_.value_or(0.0) - lastRise_ + run.balance;
    if (run.rising) {
        lastRise_ = run.last;
        lastFall_.reset();
    } else {
        lastRise_ = run.count > 1 ? run.earlier : lastRise_;
        lastFall_ = run.last;
    }
    high_ -= lastFall_.value_or(0.0) - lastRise_;
    rises_ += (run.count + (run.rising ? 1 : 0)) / 2;
    falls_ += (run.count + (run.rising ? 0 : 1)) / 2;
}

void EdgeTimes::join(const EdgeTimes& next) {
    const uint64_t falls = falls_ + next.falls_;
    if (next.firstFall_) {
        fall(*next.firstFall_);
    }
    if (next.rises_ > 0) {
        rise(next.firstRise_);
        high_ += next.high_;
        lastRise_ = next.lastRise_;
        lastFall_ = next.lastFall_;
        rises_ += next.rises_ - 1;
    }
    falls_ = falls;
}

std::optional<double> EdgeTimes::period() const {
    if (rises_ < 2) {
        return std::nullopt;
    }
    return (lastRise_ - firstRise_) / static_cast<double>(rises_ - 1);
}

std::optional<double> EdgeTimes::duty() const {
    if (rises_ < 2 || !(lastRise_ > firstRise_)) {
        return std::nullopt;
    }
    return high_ / (lastRise_ - firstRise_);
}

}  // namespace tarno2
