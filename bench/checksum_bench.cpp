// What checksums cost a recording, and how fast recordings are verified.

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <stdexcept>
#include <string>

#include "bench/alternating.h"
#include "bench/scratch_folder.h"
#include "bench/simulated_board.h"
#include "bench/stopwatch.h"
#include "core/storage/checksum_thread.h"
#include "platform/paths.h"

namespace tarno2::bench {

namespace {

constexpr uint64_t kFileBytes = uint64_t{320} << 20U;
constexpr double kLeastWay = 0.95;
constexpr double kLeastVerify = 0.5;

void require(bool holds, const std::string& what) {
    if (!holds) {
        throw std::runtime_error(what);
    }
}

void print(const char* what, const Ratio& ratio) {
    std::printf("%-58s %6.3f   (%.3f to %.3f)\n", what, ratio.median, ratio.lowest, ratio.highest);
    std::fflush(stdout);
}

/// The whole way to the disk with checksums against the same without. `late`: gets the part of the bytes that had to be
/// read after the end.
Ratio compareWay(Pace pace, size_t pairs, double& late) {
    const ScratchFolder folder;
    const uint64_t half = uint64_t{pace == Pace::RealTime ? 20U : 4U} << 20U;
    SimulatedBoard board(folder.path(), 160, half, pace);
    const uint64_t bytes = board.wholeHalves(kFileBytes);
    late = 0.0;
    const auto record = [&](ChecksumThread* checksums) {
        WriterSetup setup;
        setup.fileName = folder.file("run.dat");
        setup.limitBytes = bytes;
        setup.bufferBytes = uint64_t{256} << 20U;
        setup.checksums = checksums;
        const RecordedRun run = board.run(setup);
        require(run.result.bytes == bytes, "the recording ended early");
        if (checksums != nullptr) {
            if (const auto progress = checksums->progress()) {
                late = std::max(late, static_cast<double>(progress->bytes) / static_cast<double>(bytes));
            }
            require(checksums->wait(60000), "the checksums take too long");
        }
        folder.clear();
        return run.seconds;
    };
    ChecksumThread checksums;
    return alternating([&] { return record(&checksums); }, [&] { return record(nullptr); }, pairs);
}

/// A recording that is verified against `sha256sum` of its data file, both from the system's memory.
Ratio compareVerify() {
    const ScratchFolder folder;
    SimulatedBoard board(folder.path(), 160, uint64_t{4} << 20U);
    const uint64_t bytes = board.wholeHalves(kFileBytes);
    ChecksumThread checksums;
    WriterSetup setup;
    setup.fileName = folder.file("run.dat");
    setup.limitBytes = bytes;
    setup.checksums = &checksums;
    require(board.run(setup).result.bytes == bytes && checksums.wait(60000), "the recording ended early");
    const auto timed = [](const std::string& command) {
        const Stopwatch watch;
        require(std::system(command.c_str()) == 0, command + ": failed");
        return watch.seconds();
    };
    const std::string file = '\'' + setup.fileName + '\'';
    const std::string verify = '\'' + joinPath(TARNO2_BIN, "tarno2-verify") + "' -q " + file;
    return alternating([&] { return timed(verify); }, [&] { return timed("sha256sum " + file + " >/dev/null"); });
}

int measure() {
    std::printf("Ratios of speed, medians of alternating pairs (lowest to highest)\n");
    double late = 0.0;
    const Ratio realTime = compareWay(Pace::RealTime, 5, late);
    print("whole way with checksums / without, 80 MB/s in real time", realTime);
    std::printf("    read after the end: %.1f %%\n", late * 100.0);
    print("whole way with checksums / without, as fast as it goes", compareWay(Pace::Reader, 9, late));
    std::printf("    read after the end: %.1f %%\n", late * 100.0);
    const Ratio verify = compareVerify();
    print("tarno2-verify / sha256sum", verify);
    const bool fast = realTime.median >= kLeastWay && verify.median >= kLeastVerify;
    std::printf("%s: %.2f and %.2f are asked\n", fast ? "ok" : "TOO SLOW", kLeastWay, kLeastVerify);
    return fast ? 0 : 1;
}

}  // namespace

}  // namespace tarno2::bench

int main() {
    try {
        return tarno2::bench::measure();
    } catch (const std::exception& error) {
        std::fprintf(stderr, "!!!! %s\n", error.what());
        return 2;
    }
}
