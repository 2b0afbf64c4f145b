// What the synchronisation costs, beside memcpy of the same blocks in the same run. The second number that each case is
// given is the least share of memcpy's speed that it has to reach.

#include <cstdio>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "bench/alternating.h"
#include "bench/stopwatch.h"
#include "sync/condition_analyzer.h"

namespace tarno2::bench {

namespace {

constexpr size_t kBlockSamples = size_t{64} << 10;
constexpr int kRounds = 400;

using Words = std::vector<int16_t>;

struct Case {
    std::string name;
    double least;
    SynchroSettings settings;
    SynchroSizes sizes;
    size_t channels;
    Words block;
};

Words noise() {
    std::mt19937 random(1);
    Words block(kBlockSamples);
    for (int16_t& word : block) {
        word = static_cast<int16_t>(static_cast<int32_t>(random() % 2000) - 1000);
    }
    return block;
}

/// Frames that rise over 2000 every `period` frames.
Words pulses(size_t channels, size_t period) {
    Words block = noise();
    for (size_t frame = 0; frame * channels < block.size(); frame += period) {
        block[frame * channels] = 3000;
    }
    return block;
}

SynchroSettings analysis(bool write) {
    SynchroSettings settings;
    settings.SynchroAnalyzeMode = 1;
    settings.startAnalogEnabled = true;
    settings.AnalyzeAnalogStartMode = 0;
    settings.startCode = -2000;
    settings.writeAnalogEnabled = write;
    settings.AnalyzeAnalogWriteMode = write ? 0 : 2;
    return settings;
}

SynchroSettings trigger(int32_t code) {
    SynchroSettings settings;
    settings.SynchroAnalyzeMode = 2;
    settings.synchroCode = code;
    return settings;
}

SynchroSettings withStop(SynchroSettings settings) {
    settings.stopAnalogEnabled = true;
    settings.AnalyzeAnalogStopMode = 0;
    settings.stopCode = 5000;
    return settings;
}

std::vector<Case> cases() {
    std::vector<Case> all;
    for (const size_t channels : {size_t{1}, size_t{16}}) {
        const bool one = channels == 1;
        const auto add = [&](const char* name, double least, const SynchroSettings& settings, SynchroSizes sizes,
                             const Words& block) {
            all.push_back({std::string(name) + ", " + std::to_string(channels) + " channels", least, settings, sizes,
                           channels, block});
        };
        add("off", 0.7, {}, {}, noise());
        add("analysis, started", 0.7, analysis(false), {}, noise());
        add("analysis, started, stop not met", 0.0, withStop(analysis(false)), {}, noise());
        add("analysis, half of the frames at random", one ? 0.05 : 0.5, analysis(true), {}, noise());
        add("search without a trigger", one ? 0.3 : 0.6, trigger(5000), {1000, 1000}, noise());
        add("records of 1000 + 1000, a trigger every 5000", 0.3, trigger(2000), {1000, 1000}, pulses(channels, 5000));
    }
    return all;
}

double evaluateBlocks(ConditionAnalyzer& analyzer, const Case& c) {
    const Stopwatch watch;
    for (int i = 0; i < kRounds; ++i) {
        const int16_t* words = nullptr;
        size_t count = 0;
        size_t channels = 0;
        for (size_t taken = 0; taken < c.block.size(); taken += analyzer.samplesTaken()) {
            Analyze16(analyzer, c.block.data() + taken, c.block.size() - taken, &words, &count, c.channels, &channels,
                      false);
        }
    }
    return watch.seconds();
}

double copyBlocks(const Case& c, Words& copy) {
    // A call that the compiler can't look through: every copy is really made.
    void* (*volatile copyBytes)(void*, const void*, size_t) = std::memcpy;
    const Stopwatch watch;
    for (int i = 0; i < kRounds; ++i) {
        copyBytes(copy.data(), c.block.data(), c.block.size() * sizeof(int16_t));
    }
    return watch.seconds();
}

int compareAll() {
    std::printf("Speed against memcpy of the same blocks of 64 Ki 16-bit samples, median of 9 alternating pairs\n");
    bool fast = true;
    for (const Case& c : cases()) {
        ConditionAnalyzer analyzer(c.settings, c.sizes, {});
        Words copy(c.block.size());
        const Ratio ratio =
            alternating([&] { return evaluateBlocks(analyzer, c); }, [&] { return copyBlocks(c, copy); });
        const bool enough = ratio.median >= c.least;
        fast = fast && enough;
        std::printf("%-58s %9.3f   (%.3f to %.3f)%s\n", c.name.c_str(), ratio.median, ratio.lowest, ratio.highest,
                    enough ? "" : "   TOO SLOW");
    }
    return fast ? 0 : 1;
}

}  // namespace

}  // namespace tarno2::bench

int main() {
    return tarno2::bench::compareAll();
}
