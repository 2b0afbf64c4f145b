// What the signal view costs beside its drawing: the converter beside memcpy of the same block, the history and its
// screens under a recording in real time, the overview of a large file.
//
//   tarno2-bench-display [OVERVIEW-FILE-BYTES]     (0: no overview; it takes that much of the scratch folder's volume)

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "bench/alternating.h"
#include "bench/scratch_folder.h"
#include "bench/simulated_board.h"
#include "bench/stopwatch.h"
#include "display/convert_for_display.h"
#include "display/live_history.h"
#include "display/overview.h"
#include "display/recorded.h"

namespace tarno2::bench {

namespace {

constexpr double kConverterTarget = 1.0 / 3.0;
constexpr double kViewTarget = 0.4;
constexpr size_t kPixels = 1000;

std::vector<int16_t> noise(size_t samples) {
    std::mt19937 random(1);
    std::vector<int16_t> result(samples);
    std::generate(result.begin(), result.end(), [&random] { return static_cast<int16_t>(random()); });
    return result;
}

template <typename Work>
auto timed(int rounds, Work work) {
    return [rounds, work] {
        const Stopwatch watch;
        for (int i = 0; i < rounds; ++i) {
            work();
        }
        return watch.seconds();
    };
}

/// Whether analog samples of 16 bits are fast enough.
bool compareConverter() {
    bool fast = true;
    const std::pair<const char*, SampleWordFormat> formats[] = {{"shifted, signed", {2, 0, 4, 0, true}},
                                                                {"shifted, unsigned", {2, 0, 4, 0, false}},
                                                                {"masked, signed", {2, 1, 0, 14, true}},
                                                                {"masked, unsigned", {2, 1, 0, 14, false}}};
    // A call that the compiler can't look through: every copy is really made.
    void* (*volatile copyBytes)(void*, const void*, size_t) = std::memcpy;
    for (const size_t samples : {size_t{16} << 10, size_t{1} << 20}) {
        const auto raw = noise(samples);
        std::vector<int16_t> copy(samples);
        const int rounds = static_cast<int>((size_t{64} << 20) / samples);
        const auto copied = timed(rounds, [&] { copyBytes(copy.data(), raw.data(), samples * 2); });
        for (const auto& [name, word] : formats) {
            for (const int32_t mode : {0, 1}) {
                DisplayConverter converter{word, true, {}, {}};
                std::vector<int32_t> colors;
                const Ratio ratio =
                    alternating(timed(rounds,
                                      [&] {
                                          const int16_t* out = nullptr;
                                          size_t count = 0;
                                          size_t columns = 0;
                                          ConvertForDisplay16(converter, raw.data(), samples, &out, &count, 16,
                                                              &columns, mode, {}, {}, &colors);
                                      }),
                                copied);
                std::printf("converter / memcpy, mode %d, 16-bit %-18s %7zu samples  %6.3f   (%.3f to %.3f)\n", mode,
                            name, samples, ratio.median, ratio.lowest, ratio.highest);
                fast = fast && (mode != 0 || ratio.median >= kConverterTarget);
            }
        }
    }
    return fast;
}

struct ViewCost {
    double share = 0.0;    ///< of one processor
    double longest = 0.0;  ///< fetching and building one screen, seconds
    uint64_t screens = 0;
};

/// A view that fetches and builds 25 times a second until told to end; a long screen and the channels' values.
class View {
public:
    View(LiveTap& tap, const SignalFormat& format, uint64_t page)
        : tap_(tap), history_(format), page_(page), thread_([this] { run(); }) {}
    ~View() { end(); }
    View(const View&) = delete;
    View& operator=(const View&) = delete;

    ViewCost end() {
        stop_ = true;
        if (thread_.joinable()) {
            thread_.join();
        }
        return cost_;
    }

private:
    void run() {
        const Stopwatch all;
        double busy = 0.0;
        while (!stop_) {
            const Stopwatch one;
            history_.take(tap_);
            const uint64_t end = history_.frameCount();
            static_cast<void>(history_.build(end - std::min(end, page_), end, kPixels, screen_));
            static_cast<void>(history_.values());
            busy += one.seconds();
            cost_.longest = std::max(cost_.longest, one.seconds());
            ++cost_.screens;
            sleepMilliseconds(40);
        }
        cost_.share = busy / all.seconds();
    }

    LiveTap& tap_;
    LiveHistory history_;
    uint64_t page_;
    Screen screen_;
    ViewCost cost_;
    std::atomic<bool> stop_{false};
    std::thread thread_;
};

/// Whether the view under a recording of 16 channels at 10 MS/s takes little, and the recording is whole.
bool measureView() {
    constexpr uint32_t kChannels = 16;
    constexpr double kSamplesPerSecond = 10e6;
    constexpr double kSeconds = 10.0;
    bool fast = true;
    for (const double screenSeconds : {0.01, 1.0, 8.0}) {
        const ScratchFolder folder;
        const auto half = static_cast<uint64_t>(kSamplesPerSecond / 4 * 2);
        SimulatedBoard board(folder.path(), kChannels, half, Pace::RealTime);
        LiveTap tap;
        tap.prepare(kChannels * 2, half, kSamplesPerSecond * 2);
        tap.setWatched(true);
        SignalFormat format;
        format.word.sampleWidth = 2;
        format.channels.resize(kChannels);
        View view(tap, format, static_cast<uint64_t>(screenSeconds * kSamplesPerSecond / kChannels));
        const uint64_t bytes = board.wholeHalves(static_cast<uint64_t>(kSamplesPerSecond * 2 * kSeconds));
        // Throws when the recording is not whole.
        const double seconds = board.record(folder.file("run.dat"), bytes, &tap);
        const ViewCost cost = view.end();
        std::printf(
            "view of %5.2f s, 16 channels, 10 MS/s: %4.1f %% of a processor, longest %5.1f ms, %llu screens; "
            "%.1f MB in %.1f s recorded whole\n",
            screenSeconds, cost.share * 100, cost.longest * 1e3, static_cast<unsigned long long>(cost.screens),
            static_cast<double>(bytes) / 1e6, seconds);
        fast = fast && cost.share < kViewTarget;
    }
    return fast;
}

void writeLargeFile(const std::string& name, uint64_t bytes) {
    const auto block = noise(size_t{4} << 20);
    File file;
    bool ok = file.open(name, FileMode::CreateNew, FileAccess::Write, FileShare::ReadWrite).ok();
    for (uint64_t done = 0; ok && done < bytes; done += block.size() * 2) {
        size_t written = 0;
        ok = file.write(block.data(), block.size() * 2, written).ok() && written == block.size() * 2;
    }
    if (!ok) {
        throw std::runtime_error(name + " can not be written");
    }
}

void measureOverview(uint64_t bytes) {
    const ScratchFolder folder;
    const std::string name = folder.file("large.dat");
    writeLargeFile(name, bytes);
    File description;
    size_t written = 0;
    const std::string text =
        "DataFormat = 2 , 0 , 65535 , 16 , 0 , 0 , 0 , 1 \r\nFrequency = 625000.000000\r\nDataCountPerChannel = 1\r\n"
        "ChannelNumber = 2\r\nChannelsRange = 5.000000 , -5.000000 , 5.000000 , -5.000000 \r\n";
    static_cast<void>(
        description.open(folder.file("large.txt"), FileMode::CreateNew, FileAccess::Write, FileShare::ReadWrite));
    static_cast<void>(description.write(text.data(), text.size(), written));
    static_cast<void>(description.close());

    std::vector<std::byte> block(size_t{512} << 10);
    const Stopwatch readWatch;
    File file;
    static_cast<void>(file.open(name, FileMode::OpenExisting, FileAccess::Read, FileShare::ReadWrite));
    for (size_t done = 1; done > 0;) {
        static_cast<void>(file.read(block.data(), block.size(), done));
    }
    const double readSeconds = readWatch.seconds();

    const Stopwatch watch;
    OpenProblem problem;
    const auto frames = RecordedFrames::open(name, problem);
    Overview overview(*frames, frames->format());
    Screen screen;
    while (!overview.build(0, overview.frameCount(), kPixels, screen)) {
        sleepMilliseconds(1);
    }
    const double usable = watch.seconds();
    while (!overview.complete()) {
        sleepMilliseconds(1);
    }
    const double whole = watch.seconds();
    const Stopwatch building;
    const bool shown = overview.build(0, overview.frameCount(), kPixels, screen);
    std::printf(
        "overview of %.1f GB: usable after %.3f s, whole after %.2f s, reading alone %.2f s; a screen of all "
        "takes %.2f ms%s\n",
        static_cast<double>(bytes) / 1e9, usable, whole, readSeconds, building.seconds() * 1e3,
        shown && !screen.provisional ? "" : " AND IS NOT WHOLE");
}

int measure(uint64_t overviewBytes) {
    bool fast = compareConverter();
    fast = measureView() && fast;
    if (overviewBytes > 0) {
        measureOverview(overviewBytes);
    }
    std::printf("%s\n", fast ? "ok" : "TOO SLOW");
    return fast ? 0 : 1;
}

}  // namespace

}  // namespace tarno2::bench

int main(int argc, char** argv) {
    try {
        return tarno2::bench::measure(argc > 1 ? std::strtoull(argv[1], nullptr, 10) : 0);
    } catch (const std::exception& e) {
        std::fprintf(stderr, "!!!! %s\n", e.what());
        return 2;
    }
}
