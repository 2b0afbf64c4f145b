#include "records/clock_pairs.h"

#include <algorithm>
#include <cmath>

namespace tarno2 {

namespace {

constexpr double kNanosecondsPerMicrosecond = 1000.0;

}  // namespace

void ClockPairs::add(const ClockPair& pair) {
    if (count_ > 0 && (pair.frame < pairs_[count_ - 1].frame || pair.monotonic <= pairs_[count_ - 1].monotonic)) {
        return;
    }
    if (count_ == kMostPairs) {
        for (size_t i = 0; i < kMostPairs / 2; ++i) {
            pairs_[i] = pairs_[2 * i];
        }
        count_ = kMostPairs / 2;
        period_ *= 2;
    }
    pairs_[count_++] = pair;
}

std::optional<ClockLine> ClockLine::through(std::span<const ClockPair> pairs) {
    if (pairs.size() < 2) {
        return std::nullopt;
    }
    // Counted from the first pair: differences keep all their digits in a double.
    const ClockPair& origin = pairs.front();
    const auto time = [&](const ClockPair& pair) { return static_cast<double>(pair.monotonic - origin.monotonic); };
    const auto frames = [&](const ClockPair& pair) { return static_cast<double>(pair.frame - origin.frame); };
    double meanTime = 0.0;
    double meanFrames = 0.0;
    for (const ClockPair& pair : pairs) {
        meanTime += time(pair);
        meanFrames += frames(pair);
    }
    meanTime /= static_cast<double>(pairs.size());
    meanFrames /= static_cast<double>(pairs.size());
    double squares = 0.0;
    double products = 0.0;
    for (const ClockPair& pair : pairs) {
        squares += (time(pair) - meanTime) * (time(pair) - meanTime);
        products += (time(pair) - meanTime) * (frames(pair) - meanFrames);
    }
    if (squares <= 0.0 || products <= 0.0) {
        return std::nullopt;
    }
    ClockLine line;
    line.origin_ = origin;
    line.framesPerNanosecond_ = products / squares;
    line.atOrigin_ = meanFrames - line.framesPerNanosecond_ * meanTime;
    return line;
}

int64_t ClockLine::utcOf(double frame) const {
    const double frames = frame - static_cast<double>(origin_.frame) - atOrigin_;
    constexpr double kMost = 1e17;  // beyond any date
    const double microseconds = frames / framesPerNanosecond_ / kNanosecondsPerMicrosecond;
    return origin_.utc + std::llround(std::clamp(microseconds, -kMost, kMost));
}

double ClockLine::frameAt(int64_t utc) const {
    const double nanoseconds = static_cast<double>(utc - origin_.utc) * kNanosecondsPerMicrosecond;
    return static_cast<double>(origin_.frame) + atOrigin_ + nanoseconds * framesPerNanosecond_;
}

}  // namespace tarno2
