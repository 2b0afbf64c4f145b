// What measuring between the cursors costs, beside adding up the same memory: 1 GiB of frames in memory.
//
//   tarno2-bench-measure

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <exception>
#include <thread>
#include <vector>

#include "bench/alternating.h"
#include "bench/stopwatch.h"
#include "measure/statistics.h"

namespace tarno2::bench {

namespace {

constexpr uint64_t kBytes = uint64_t{1} << 30;
constexpr double kMostSeconds = 1.0;
constexpr double kLeastRatio = 0.5;
constexpr double kLeastNoiseRatio = 0.25;  // an edge every second or third sample

/// Frames that lie in memory as they are: a source that hands them out by copying, as a cached file does.
class Cached final : public FrameSource {
public:
    Cached(const std::vector<int16_t>& samples, size_t channels) : samples_(samples), channels_(channels) {}
    [[nodiscard]] size_t frameBytes() const override { return channels_ * sizeof(int16_t); }
    [[nodiscard]] uint64_t frameCount() const override { return samples_.size() / channels_; }
    [[nodiscard]] uint64_t read(uint64_t firstFrame, uint64_t count, std::byte* out) override {
        std::memcpy(out, samples_.data() + firstFrame * channels_, count * frameBytes());
        return count;
    }

private:
    const std::vector<int16_t>& samples_;
    size_t channels_;
};

SignalFormat formatOf(size_t channels) {
    SignalFormat format;
    format.word = {2, 1, 0, 16, true};
    for (uint32_t i = 0; i < channels; ++i) {
        format.channels.push_back({i, 5.0, -5.0, {}});
    }
    format.framesPerSecond = 1e6;
    format.minimumCode = -32768;
    format.maximumCode = 32767;
    return format;
}

enum class Kind { Square, Blow, Constant, Noise };

/// A square wave with noise upon it, a new level every 10000 frames; silence with a blow near its end; nothing; noise.
std::vector<int16_t> signal(Kind kind, size_t channels) {
    std::vector<int16_t> samples(kBytes / sizeof(int16_t));
    uint32_t noise = 1;
    for (size_t i = 0; i < samples.size(); ++i) {
        noise = noise * 1664525U + 1013904223U;
        const auto fine = static_cast<int16_t>(noise >> 16);
        const bool upper = i / channels / 10000 % 2 == 0;
        const bool blow = i / 1024 == samples.size() / 1024 * 9 / 10;
        samples[i] = kind == Kind::Square  ? static_cast<int16_t>((upper ? 9000 : -9000) + fine / 64)
                     : kind == Kind::Blow  ? static_cast<int16_t>(blow ? fine : fine / 64)
                     : kind == Kind::Noise ? fine
                                           : int16_t{100};
    }
    return samples;
}

volatile int64_t kept = 0;  // a sum that nobody looks at might not be made

/// The plainest sum of the samples, each of two threads adding one half of them.
double sumSeconds(const std::vector<int16_t>& samples) {
    const Stopwatch watch;
    int64_t sums[2] = {};
    const auto add = [&samples, &sums](size_t part) {
        int64_t sum = 0;
        const size_t half = samples.size() / 2;
        for (size_t i = part * half; i < (part + 1) * half; ++i) {
            sum += samples[i];
        }
        sums[part] = sum;
    };
    {
        const std::jthread other(add, 1);
        add(0);
    }
    const double seconds = watch.seconds();
    kept = sums[0] + sums[1];
    return seconds;
}

bool compare(const char* name, Kind kind, size_t channels) {
    const std::vector<int16_t> samples = signal(kind, channels);
    Cached source(samples, channels);
    const SignalFormat format = formatOf(channels);
    double slowest = 0.0;
    const auto statistics = [&] {
        const Stopwatch watch;
        WorkProgress progress;
        SpanStatistics out;
        static_cast<void>(measure(source, format, {0, source.frameCount()}, progress, out));
        slowest = std::max(slowest, watch.seconds());
        return watch.seconds();
    };
    const Ratio ratio = alternating(
        statistics, [&] { return sumSeconds(samples); }, 5);
    std::printf("statistics / sum of 1 GiB, %3zu channels, %-28s %6.3f   (%.3f to %.3f)   slowest %.3f s\n", channels,
                name, ratio.median, ratio.lowest, ratio.highest, slowest);
    return ratio.median >= (kind == Kind::Noise ? kLeastNoiseRatio : kLeastRatio) && slowest < kMostSeconds;
}

}  // namespace

int run() {
    bool fast = true;
    for (const size_t channels : {size_t{1}, size_t{9}, size_t{16}, size_t{160}}) {
        fast = compare("edges every 10000 frames", Kind::Square, channels) && fast;
        fast = compare("silence and a blow", Kind::Blow, channels) && fast;
        fast = compare("nothing", Kind::Constant, channels) && fast;
        fast = compare("noise over the whole range", Kind::Noise, channels) && fast;
    }
    std::printf("%s\n", fast ? "fast enough" : "TOO SLOW");
    return fast ? 0 : 1;
}

}  // namespace tarno2::bench

int main() {
    try {
        return tarno2::bench::run();
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
}
