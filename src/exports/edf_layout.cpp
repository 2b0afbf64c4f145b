#include "exports/edf_layout.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

#include "exports/channel_scale.h"

namespace tarno2 {

namespace {

/// A record should not be larger, unless it lasts a second.
constexpr uint64_t kUsualBytes = 61440;
constexpr uint64_t kMostRecords = 99'999'999;
constexpr size_t kField = 8;
constexpr double kExact = 1e-9;

double secondsOf(const std::string& duration) {
    double seconds = 0.0;
    std::from_chars(duration.data(), duration.data() + duration.size(), seconds);
    return seconds;
}

/// Records of so many frames, told as exactly as they can be.
EdfRecords ofFrames(uint64_t frames, double rate) {
    EdfRecords records;
    records.frames = frames;
    records.duration = numberText(static_cast<double>(frames) / rate, kField);
    const double told = secondsOf(records.duration) * rate;
    records.exactRate = std::fabs(told - static_cast<double>(frames)) <= kExact * static_cast<double>(frames);
    return records;
}

/// How far the told rate is from the true one.
double fault(const EdfRecords& records, double rate) {
    const double seconds = secondsOf(records.duration);
    return seconds > 0.0 ? std::fabs(static_cast<double>(records.frames) / seconds / rate - 1.0) : 1.0;
}

}  // namespace

EdfRecords edfRecords(double rate, uint64_t frameBytes, uint64_t frames) {
    const uint64_t least = std::max<uint64_t>((frames + kMostRecords - 1) / kMostRecords, 1);
    const uint64_t usual = kUsualBytes / frameBytes;
    constexpr uint64_t kRoom = 10;  // for a duration that is a short number
    const uint64_t most = least <= usual ? usual : least * kRoom;
    const auto fits = [&](double count) {
        return count >= static_cast<double>(least) && count <= static_cast<double>(most) &&
               std::fabs(count - std::nearbyint(count)) <= kExact * count;
    };
    static constexpr std::array kDurations = {1.0,  0.5,  0.2,  0.1,  0.05,  0.02, 0.01, 0.005, 0.002, 0.001,
                                              5e-4, 2e-4, 1e-4, 5e-5, 2e-5,  1e-5, 5e-6, 2e-6,  1e-6,  2.0,
                                              5.0,  10.0, 20.0, 50.0, 100.0, 1e3,  1e4,  1e5};
    for (const double duration : kDurations) {
        if (fits(rate * duration)) {
            return ofFrames(static_cast<uint64_t>(std::llround(rate * duration)), rate);
        }
    }
    EdfRecords best = ofFrames(most, rate);
    for (uint64_t count = most; count-- > least && !best.exactRate;) {
        const EdfRecords records = ofFrames(count, rate);
        if (fault(records, rate) < fault(best, rate)) {
            best = records;
        }
    }
    return best;
}

}  // namespace tarno2
