// Recordings in real time on a disk that stalls: what is lost, and how long the acquisition is held up.

#include <cstdio>
#include <exception>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "bench/scratch_folder.h"
#include "bench/simulated_board.h"
#include "drivers/simulator/counter_signal.h"
#include "platform/clock.h"
#include "platform/file.h"

namespace tarno2::bench {

namespace {

constexpr uint32_t kChannels = 16;
constexpr double kRingSeconds = 0.5;
constexpr uint64_t kBufferLimit = uint64_t{256} << 20;

/// Which writes of a recording stall, and for how long.
struct Stalls {
    uint32_t every = 0;  ///< each so many-th; 0: one alone
    uint32_t first = 0;
    uint32_t milliseconds = 0;
};

/// A file of the system whose writes stall.
class StallingFile final : public DataFile {
public:
    explicit StallingFile(const Stalls& stalls) : stalls_(stalls), file_(makeSystemDataFile()) {}
    OsError create(const std::string& name) override { return file_->create(name); }
    OsError write(const std::byte* data, size_t size, size_t& done) override {
        ++writes_;
        if (stalls_.every == 0 ? writes_ == stalls_.first : writes_ % stalls_.every == 0) {
            sleepMilliseconds(stalls_.milliseconds);
        }
        return file_->write(data, size, done);
    }
    OsError truncate(uint64_t size) override { return file_->truncate(size); }
    OsError flush() override { return file_->flush(); }
    OsError close() override { return file_->close(); }
    [[nodiscard]] Named named(const std::string& name) const override { return file_->named(name); }

private:
    Stalls stalls_;
    std::unique_ptr<DataFile> file_;
    uint32_t writes_ = 0;
};

/// How many samples of the counter signal a file holds from the first one on; all of them when there is no gap.
uint64_t goodSamples(const std::string& name) {
    File file;
    std::vector<uint16_t> words(size_t{1} << 20);
    uint64_t good = 0;
    size_t done = 0;
    if (!file.open(name, FileMode::OpenExisting, FileAccess::Read, FileShare::ReadWrite).ok()) {
        return 0;
    }
    while (file.read(words.data(), words.size() * 2, done).ok() && done > 0) {
        for (const uint16_t word : std::span(words).first(done / 2)) {
            if (word != drivers::counterWord(good, 16)) {
                return good;
            }
            ++good;
        }
    }
    return good;
}

struct Recorded {
    RecordedRun run;
    bool whole = false;  ///< the file holds all that was read, without a gap
};

Recorded record(double samplesPerSecond, double seconds, const Stalls& stalls) {
    const ScratchFolder folder;
    SimulatedBoard board(folder.path(), kChannels, static_cast<uint64_t>(samplesPerSecond / 2.0), Pace::RealTime,
                         Signal::Counter);
    WriterSetup setup;
    setup.fileName = folder.file("run.dat");
    setup.limitBytes = board.wholeHalves(static_cast<uint64_t>(samplesPerSecond * 2.0 * seconds));
    setup.bytesPerSecond = samplesPerSecond * 2.0;
    setup.bufferBytes = bufferFor(setup.bytesPerSecond, kBufferLimit);
    setup.makeFile = [stalls] { return std::make_unique<StallingFile>(stalls); };
    Recorded recorded{board.run(setup)};
    recorded.whole = goodSamples(setup.fileName) * 2 == recorded.run.result.bytes;
    const RecordedRun& run = recorded.run;
    std::printf("  code %d, %.1f MB saved%s; worst pass %.1f ms of the ring's %.0f ms, ring at most %.0f %% full\n",
                static_cast<int>(run.result.code), static_cast<double>(run.result.bytes) / 1e6,
                recorded.whole ? ", every sample checked" : " WITH A GAP", run.worstPass * 1e3, kRingSeconds * 1e3,
                run.worstLoad * 100.0);
    std::fflush(stdout);
    return recorded;
}

/// Returns whether everything went as it should.
bool measure() {
    std::printf("20 MS/s for 10 s, every 10th write takes 1 s\n");
    const Recorded fast = record(20e6, 10.0, {10, 0, 1000});
    const bool quick =
        fast.whole && fast.run.result.code == StopCode::StopMeasuring && fast.run.worstPass < kRingSeconds / 4.0;
    std::printf("20 MB/s for 40 s, every 40th write takes 3 s\n");
    const Recorded steady = record(10e6, 40.0, {40, 0, 3000});
    const bool nothingLost = steady.whole && steady.run.result.code == StopCode::StopMeasuring;
    std::printf("20 MB/s, one write takes 15 s\n");
    const Recorded stalled = record(10e6, 40.0, {0, 10, 15000});
    const bool saved = stalled.whole && stalled.run.result.code == StopCode::Error &&
                       stalled.run.result.detail == ErrorDetail::Overflow &&
                       stalled.run.result.bytes == 2 * stalled.run.result.overflowPosition;
    std::printf(
        "%s: a pass stays below a quarter of the ring\n%s: stalls of 3 s cost nothing\n"
        "%s: a stall of 15 s is an overflow at sample %llu, everything before it is saved\n",
        quick ? "ok" : "FAILED", nothingLost ? "ok" : "FAILED", saved ? "ok" : "FAILED",
        static_cast<unsigned long long>(stalled.run.result.overflowPosition));
    return quick && nothingLost && saved;
}

}  // namespace

}  // namespace tarno2::bench

int main() {
    try {
        return tarno2::bench::measure() ? 0 : 1;
    } catch (const std::exception& e) {
        std::fprintf(stderr, "!!!! %s\n", e.what());
        return 2;
    }
}
