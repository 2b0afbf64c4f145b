// Exports to WAV and NPY against copying what they have written.

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <exception>
#include <functional>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include "bench/alternating.h"
#include "bench/scratch_folder.h"
#include "bench/stopwatch.h"
#include "exports/export_recording.h"
#include "platform/file.h"

namespace tarno2::bench {

namespace {

constexpr size_t kPairs = 5;
constexpr double kLeastOfCopy = 0.5;
constexpr size_t kBytes = size_t{200} << 20;

void check(OsError error) {
    if (!error.ok()) {
        throw std::runtime_error(error.text());
    }
}

/// Random words of four channels.
ExportTask makeTask(const ScratchFolder& folder, const char* form, uint32_t codeBits, uint32_t lines) {
    ExportTask task;
    task.row = findExporter(form);
    task.dataFile = folder.file("run.dat");
    task.outputName = folder.file("run.out");
    task.replace = true;
    task.inputs.channelCount = 4;
    task.inputs.bytesPerSample = codeBits <= 16 ? 2 : 4;
    task.inputs.codeBits = codeBits;
    task.inputs.codeShift = codeBits == 24 ? 0 : lines;
    task.inputs.digitalLines = lines;
    task.inputs.digitalShift = codeBits == 24 ? 24 : 0;
    task.inputs.digitalMask = ((1U << lines) - 1) << task.inputs.digitalShift;
    task.inputs.codeMinimum = -1.0;
    task.inputs.codeMaximum = 1.0;
    task.inputs.ranges.assign(task.inputs.channelCount, {5.0, -5.0});
    task.inputs.frequency = 48000.0;
    return task;
}

double exportOnce(const ExportTask& task) {
    ConversionProgress progress;
    ExportNotes notes;
    const std::atomic<bool> stop{false};
    const Stopwatch watch;
    const ConversionResult result = exportRecording(task, progress, stop, notes);
    if (result.status != ConversionResult::Finished) {
        throw std::runtime_error(describe(result));
    }
    return watch.seconds();
}

/// Reads and writes the output in blocks, as cp does.
double copyOnce(const ExportTask& task, const std::string& copy) {
    std::vector<char> block(size_t{1} << 18);
    const Stopwatch watch;
    File from;
    File to;
    check(from.open(task.outputName, FileMode::OpenExisting, FileAccess::Read, FileShare::ReadWrite));
    check(to.open(copy, FileMode::CreateAlways, FileAccess::Write, FileShare::None));
    for (size_t got = block.size(); got == block.size();) {
        size_t done = 0;
        check(from.read(block.data(), block.size(), got));
        check(to.write(block.data(), got, done));
    }
    check(to.close());
    return watch.seconds();
}

bool compare(const ScratchFolder& folder, const char* form, uint32_t codeBits, uint32_t lines) {
    const ExportTask task = makeTask(folder, form, codeBits, lines);
    const Ratio ratio =
        alternating([&] { return exportOnce(task); }, [&] { return copyOnce(task, folder.file("copy")); }, kPairs);
    const bool fast = ratio.median >= kLeastOfCopy;
    std::printf("%s, %2u bits, %u lines: export / copy %7.2f   (%.2f to %.2f)   least %4.1f %s\n", form, codeBits,
                lines, ratio.median, ratio.lowest, ratio.highest, kLeastOfCopy, fast ? "ok" : "TOO SLOW");
    std::fflush(stdout);
    return fast;
}

/// Returns the program's exit status.
int measure() {
    try {
        const ScratchFolder folder;
        std::mt19937_64 random(1);
        std::vector<uint64_t> words(kBytes / sizeof(uint64_t));
        std::generate(words.begin(), words.end(), std::ref(random));
        File data;
        size_t done = 0;
        check(data.open(folder.file("run.dat"), FileMode::CreateAlways, FileAccess::Write, FileShare::None));
        check(data.write(words.data(), kBytes, done));
        check(data.close());
        std::printf("Ratios of speed, median of %zu alternating pairs (lowest to highest)\n", kPairs);
        bool fast = true;
        for (const char* const form : {"wav", "npy"}) {
            fast = compare(folder, form, 16, 0) && fast;
            fast = compare(folder, form, 14, 2) && fast;
            fast = compare(folder, form, 24, 8) && fast;
        }
        return fast ? 0 : 1;
    } catch (const std::exception& e) {
        std::fprintf(stderr, "!!!! %s\n", e.what());
        return 2;
    }
}

}  // namespace

}  // namespace tarno2::bench

int main() {
    return tarno2::bench::measure();
}
