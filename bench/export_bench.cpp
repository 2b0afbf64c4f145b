// The conversion to text against a plain fprintf loop that writes the same bytes, and against copying the text.

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
#include "platform/file.h"
#include "records/text_conversion.h"

namespace tarno2::bench {

namespace {

constexpr size_t kPairs = 5;
constexpr uint32_t kChannels = 8;
constexpr double kLeastOfCopy = 0.5;

void check(OsError error) {
    if (!error.ok()) {
        throw std::runtime_error(error.text());
    }
}

struct Recording {
    std::string data;
    std::string text;
    std::string copy;
    ConversionInputs inputs;
    ExportFormat format;
};

/// Random codes: 14 bits of 16, or 24 of 32.
Recording makeRecording(const ScratchFolder& folder, uint32_t bytesPerSample, size_t frames, bool volts) {
    Recording recording{folder.file("run.dat"), folder.file("run.csv"), folder.file("copy.csv"), {}, {}};
    ConversionInputs& inputs = recording.inputs;
    inputs.bytesPerSample = bytesPerSample;
    inputs.channelCount = kChannels;
    inputs.codeBits = bytesPerSample == 2 ? 14 : 24;
    inputs.codeShift = bytesPerSample == 2 ? 2 : 8;
    inputs.codeMaximum = static_cast<double>((1U << (inputs.codeBits - 1)) - 1);
    inputs.codeMinimum = -inputs.codeMaximum - 1.0;
    inputs.ranges.assign(kChannels, {5.0, -5.0});
    inputs.frequency = 48000.0;
    recording.format.firstColumn = FirstColumn::Seconds;
    recording.format.volts = volts;
    recording.format.divider = ";";

    std::mt19937_64 random(1);
    std::vector<uint64_t> words(frames * inputs.frameBytes() / sizeof(uint64_t));
    std::generate(words.begin(), words.end(), std::ref(random));
    File file;
    size_t done = 0;
    check(file.open(recording.data, FileMode::CreateAlways, FileAccess::Write, FileShare::None));
    check(file.write(words.data(), words.size() * sizeof(uint64_t), done));
    check(file.close());
    return recording;
}

double convert(const Recording& recording) {
    ConversionProgress progress;
    const std::atomic<bool> stop{false};
    const Stopwatch watch;
    const auto result =
        convertToText(recording.data, recording.text, recording.format, recording.inputs, progress, stop);
    if (result.status != ConversionResult::Finished) {
        throw std::runtime_error(describe(result));
    }
    return watch.seconds();
}

/// The loop that everybody writes first: read a sample, print it.
double printLoop(const Recording& recording) {
    const ConversionInputs& inputs = recording.inputs;
    const Stopwatch watch;
    FILE* const from = std::fopen(recording.data.c_str(), "rb");
    FILE* const to = std::fopen(recording.copy.c_str(), "wb");
    if (from == nullptr || to == nullptr) {
        throw std::runtime_error("a file of the plain loop can't be opened");
    }
    uint64_t frame = 0;
    std::vector<uint8_t> samples(inputs.frameBytes());
    while (std::fread(samples.data(), samples.size(), 1, from) == 1) {
        std::fprintf(to, "%.*f", recording.format.timePrecision, static_cast<double>(frame++) / inputs.frequency);
        for (uint32_t channel = 0; channel < inputs.channelCount; ++channel) {
            const uint8_t* const sample = &samples[size_t{channel} * inputs.bytesPerSample];
            uint32_t word = sample[0] | static_cast<uint32_t>(sample[1]) << 8;
            if (inputs.bytesPerSample == 4) {
                word |= static_cast<uint32_t>(sample[2]) << 16 | static_cast<uint32_t>(sample[3]) << 24;
            }
            const int64_t code = inputs.code(word);
            const double value = recording.format.volts ? inputs.volts(channel, code) : static_cast<double>(code);
            std::fprintf(to, ";%.*f", recording.format.voltagePrecision, value);
        }
        std::fputs("\r\n", to);
    }
    std::fclose(from);
    std::fclose(to);
    return watch.seconds();
}

/// Reads and writes the text in blocks of 1 MiB.
double copyLoop(const Recording& recording) {
    std::vector<char> block(size_t{1} << 20);
    const Stopwatch watch;
    File from;
    File to;
    check(from.open(recording.text, FileMode::OpenExisting, FileAccess::Read, FileShare::ReadWrite));
    check(to.open(recording.copy, FileMode::CreateAlways, FileAccess::Write, FileShare::None));
    size_t got = block.size();
    while (got == block.size()) {
        size_t done = 0;
        check(from.read(block.data(), block.size(), got));
        check(to.write(block.data(), got, done));
    }
    check(to.close());
    return watch.seconds();
}

bool print(const std::string& what, const Ratio& ratio, double least) {
    const bool fast = ratio.median >= least;
    std::printf("%-50s %7.2f   (%.2f to %.2f)   least %4.1f %s\n", what.c_str(), ratio.median, ratio.lowest,
                ratio.highest, least, fast ? "ok" : "TOO SLOW");
    std::fflush(stdout);
    return fast;
}

bool compare(uint32_t bytesPerSample, bool volts, size_t frames, double leastOfPrint) {
    const ScratchFolder folder;
    const Recording recording = makeRecording(folder, bytesPerSample, frames, volts);
    const auto converted = [&] { return convert(recording); };
    const std::string kind =
        std::string(volts ? "volts, " : "codes, ") + std::to_string(bytesPerSample * 8) + " bits: export / ";
    const bool fast = print(kind + "fprintf",
                            alternating(
                                converted, [&] { return printLoop(recording); }, kPairs),
                            leastOfPrint);
    const double seconds = convert(recording);
    uint64_t bytes = 0;
    File text;
    check(text.open(recording.text, FileMode::OpenExisting, FileAccess::Read, FileShare::ReadWrite));
    check(text.size(bytes));
    check(text.close());
    const bool asFastAsCopy = print(kind + "copy",
                                    alternating(
                                        converted, [&] { return copyLoop(recording); }, kPairs),
                                    bytesPerSample == 2 ? kLeastOfCopy : 0.0);
    std::printf("    %.0f MB in %.2f s, %.0f MB/s\n", static_cast<double>(bytes) * 1e-6, seconds,
                static_cast<double>(bytes) * 1e-6 / seconds);
    return fast && asFastAsCopy;
}

/// Returns the program's exit status.
int measure() {
    constexpr size_t kFrames = 2'000'000;
    constexpr double kLeast16 = 10.0;
    constexpr double kLeast32 = 4.0;
    try {
        std::printf("Ratios of speed, median of %zu alternating pairs (lowest to highest)\n", kPairs);
        bool fast = compare(2, false, kFrames, kLeast16);
        fast = compare(2, true, kFrames, kLeast16) && fast;
        fast = compare(4, false, kFrames, kLeast32) && fast;
        fast = compare(4, true, kFrames, kLeast32) && fast;
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
