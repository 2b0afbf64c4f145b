// The figures of docs/performance.md: each a candidate against a baseline in alternating pairs, as a ratio of speeds.

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <exception>
#include <string>
#include <vector>

#include "bench/alternating.h"
#include "bench/plain_write.h"
#include "bench/scratch_folder.h"
#include "bench/settings_text.h"
#include "bench/simulated_board.h"
#include "bench/stopwatch.h"
#include "bench/writer_alone.h"

namespace tarno2::bench {

namespace {

constexpr uint64_t kFileBytes = uint64_t{512} << 20;
constexpr double kTarget = 0.9;

void print(const std::string& what, const Ratio& ratio) {
    std::printf("%-66s %6.3f   (%.3f to %.3f)\n", what.c_str(), ratio.median, ratio.lowest, ratio.highest);
    std::fflush(stdout);
}

/// A measurement with its file out of the way again.
template <typename Measure>
auto cleaned(const ScratchFolder& folder, Measure measure) {
    return [&folder, measure] {
        const double seconds = measure(folder.file("run.dat"));
        folder.clear();
        return seconds;
    };
}

/// Returns the headline: the whole way against the plain write loop.
double compareWay(uint32_t channels, uint64_t halfBytes) {
    const ScratchFolder folder;
    SimulatedBoard board(folder.path(), channels, halfBytes);
    const uint64_t bytes = board.wholeHalves(kFileBytes);
    const auto record = cleaned(folder, [&](const std::string& file) { return board.record(file, bytes); });
    const auto fetchAndWrite =
        cleaned(folder, [&](const std::string& file) { return board.fetchAndWrite(file, bytes); });
    const auto plain = cleaned(folder, [&](const std::string& file) { return plainWrite(file, bytes); });
    const auto twoThreads = cleaned(folder, [&](const std::string& file) { return copyAndWrite(file, bytes); });
    const auto fetch = [&] { return board.fetch(bytes); };
    const std::string kind =
        ", " + std::to_string(channels) + " channels, halves of " + std::to_string(board.halfBytes() >> 10) + " KiB";
    const Ratio headline = alternating(record, plain);
    print("whole way / plain write" + kind, headline);
    print("two threads, copy and write / plain write" + kind, alternating(twoThreads, plain));
    print("whole way / two threads, copy and write" + kind, alternating(record, twoThreads));
    print("whole way / fetch and write" + kind, alternating(record, fetchAndWrite));
    print("fetch alone / plain write" + kind, alternating(fetch, plain));
    return headline.median;
}

void compareWriter(size_t blockBytes) {
    const ScratchFolder folder;
    const auto writer =
        cleaned(folder, [&](const std::string& file) { return writeBlocks(file, kFileBytes, blockBytes); });
    const auto plain = cleaned(folder, [](const std::string& file) { return plainWrite(file, kFileBytes); });
    print("writer alone / plain write, blocks of " + std::to_string(blockBytes >> 10) + " KiB",
          alternating(writer, plain));
}

void compareKeyValue(size_t bytes) {
    const std::string text = settingsText(bytes);
    std::vector<char> copy(text.size());
    const size_t rounds = (size_t{64} << 20) / text.size();
    KeyValueFile file;
    const auto timed = [rounds](auto work) {
        return [rounds, work] {
            const Stopwatch watch;
            for (size_t i = 0; i < rounds; ++i) {
                work();
            }
            return watch.seconds();
        };
    };
    const auto takeIn = timed([&] { file.readText(text); });
    const auto lookUp = timed([&] { lookUpSettings(file); });
    // A call that the compiler can't look through: every copy is really made.
    void* (*volatile copyBytes)(void*, const void*, size_t) = std::memcpy;
    const auto copied = timed([&] { copyBytes(copy.data(), text.data(), text.size()); });
    const std::string kind = " / memcpy, " + std::to_string(text.size()) + " bytes";
    print("taking a settings text in" + kind, alternating(takeIn, copied));
    print("looking all its settings up" + kind, alternating(lookUp, copied));
}

/// How long a measurement waits for its first sample once start was pressed: a fast board, and the largest buffer.
void timeStart() {
    const ScratchFolder folder;
    SimulatedBoard board(folder.path(), 160, uint64_t{20} << 20, Pace::RealTime);
    const auto start = cleaned(folder, [&](const std::string& file) { return board.start(file); });
    std::vector<double> seconds(9);
    std::generate(seconds.begin(), seconds.end(), start);
    std::sort(seconds.begin(), seconds.end());
    std::printf("%-66s %6.1f   (%.1f to %.1f) ms\n", "start to the first sample, 80 MB/s, median of 9",
                seconds[seconds.size() / 2] * 1e3, seconds.front() * 1e3, seconds.back() * 1e3);
    std::fflush(stdout);
}

/// Returns the headline.
double compareAll() {
    timeStart();
    std::printf("Ratios of speed, median of 9 alternating pairs (lowest to highest)\n");
    // A fast board: 4 MiB each quarter of a second.
    const double headline = compareWay(160, uint64_t{4} << 20);
    compareWay(16, uint64_t{4} << 20);
    compareWay(160, uint64_t{1} << 20);
    compareWay(160, uint64_t{64} << 10);
    for (const size_t block : {size_t{4} << 10, size_t{64} << 10, size_t{1} << 20, size_t{4} << 20, size_t{16} << 20}) {
        compareWriter(block);
    }
    compareKeyValue(0);
    compareKeyValue(size_t{1} << 20);
    return headline;
}

/// Returns the program's exit status.
int measure() {
    double headline = 0.0;
    try {
        headline = compareAll();
    } catch (const std::exception& e) {
        std::fprintf(stderr, "!!!! %s\n", e.what());
        return 2;
    }
    const bool fast = headline >= kTarget;
    std::printf("%s: the whole way reaches %.3f of plain writing, %.1f is asked\n", fast ? "ok" : "TOO SLOW", headline,
                kTarget);
    return fast ? 0 : 1;
}

}  // namespace

}  // namespace tarno2::bench

int main() {
    return tarno2::bench::measure();
}
