#include "display/overview.h"

#include <algorithm>
#include <new>
#include <utility>
#include <vector>

#include "display/extremes_levels.h"
#include "display/file_screens.h"
#include "display/screen_builder.h"
#include "platform/clock.h"
#include "platform/thread.h"

namespace tarno2 {

namespace {

constexpr size_t kReadBytes = size_t{512} << 10;
constexpr size_t kSampleBytes = size_t{16} << 10;
constexpr size_t kSamples = 2048;  ///< of the whole recording, at the most
constexpr size_t kFirstSamples = 32;
constexpr uint64_t kSamplingMs = 1000;
constexpr uint64_t kProgressMs = 40;

uint64_t entriesOf(uint64_t frames, uint64_t framesPerEntry) {
    return (frames + framesPerEntry - 1) / framesPerEntry;
}

uint64_t finestFrames(uint64_t frames, size_t entryBytes, size_t bytes) {
    // At least one entry, however wide it is.
    const uint64_t most = bytes / entryBytes * (ExtremesLevels::kRatio - 1) / ExtremesLevels::kRatio;
    uint64_t finest = ExtremesLevels::kFinestFrames;
    while (entriesOf(frames, finest) > std::max<uint64_t>(most, 1)) {
        finest *= 2;
    }
    return finest;
}

std::vector<size_t> capacities(uint64_t frames, uint64_t finest) {
    std::vector<size_t> result;
    do {
        result.push_back(static_cast<size_t>(std::max<uint64_t>(entriesOf(frames, finest), 1)));
        finest *= ExtremesLevels::kRatio;
    } while (result.back() > ExtremesLevels::kRatio);
    return result;
}

}  // namespace

/// The building thread writes the levels and the samples; the atomic counters hand over what is finished in them.
struct Overview::Parts {
    Parts(FrameSource& source, const SignalFormat& format, Progress callback, size_t bytes)
        : frames(source),
          total(source.frameCount()),
          progress(std::move(callback)),
          extremes(Extremes::create(format)),
          levels(*extremes, finestFrames(total, extremes->entryBytes(), bytes),
                 capacities(total, finestFrames(total, extremes->entryBytes(), bytes))),
          samples(kSamples * extremes->entryBytes()),
          block(std::max(kReadBytes / source.frameBytes(), size_t{1}) * source.frameBytes()),
          fileScreens(source, format) {}

    void run();
    void takeSamples();
    [[nodiscard]] bool takeSample(size_t slot);
    void readAll();
    void tell();
    void addEntries(ScreenBuilder& builder, size_t level, uint64_t first, uint64_t& end) const;
    [[nodiscard]] bool addSamples(ScreenBuilder& builder, uint64_t first, uint64_t end) const;

    FrameSource& frames;
    uint64_t total;
    Progress progress;
    std::unique_ptr<Extremes> extremes;
    ExtremesLevels levels;
    std::vector<std::byte> samples;  ///< slot i stands for the frames from i / kSamples of all on
    std::vector<std::byte> block;
    FileScreens fileScreens;
    uint64_t toldMs = 0;
    std::atomic<size_t> sampleCount{0};  ///< a power of two: so many evenly spaced slots are filled
    std::atomic<uint64_t> done{0};
    std::atomic<bool> complete{false};
    std::atomic<bool> failed{false};
    std::atomic<bool> stop{false};
    Thread thread;
};

Overview::Overview(FrameSource& frames, const SignalFormat& format, Progress progress, size_t bytes)
    : parts_(std::make_unique<Parts>(frames, format, std::move(progress), bytes)) {
    if (parts_->thread.create([this] { parts_->run(); })) {
        parts_->thread.resume();
    } else {
        parts_->failed = true;
        parts_->complete = true;
    }
}

Overview::~Overview() {
    parts_->stop = true;
    parts_->thread.join();
}

uint64_t Overview::frameCount() const {
    return parts_->total;
}

uint64_t Overview::framesDone() const {
    return parts_->done.load(std::memory_order_acquire);
}

bool Overview::usable() const {
    return parts_->sampleCount.load(std::memory_order_acquire) > 0 || complete();
}

bool Overview::complete() const {
    return parts_->complete.load(std::memory_order_acquire);
}

bool Overview::failed() const {
    return parts_->failed.load(std::memory_order_acquire);
}

void Overview::Parts::run() {
    try {
        takeSamples();
        readAll();
    } catch (const std::bad_alloc&) {
        failed.store(true, std::memory_order_release);
    }
    if (!stop) {
        levels.finish();
        complete.store(true, std::memory_order_release);
        if (progress) {
            progress();
        }
    }
}

// Twice as many samples in each round, for a second at the most.
void Overview::Parts::takeSamples() {
    const uint64_t begin = tickCount();
    for (size_t count = kFirstSamples; count <= kSamples; count *= 2) {
        const size_t step = kSamples / count;
        for (size_t slot = 0; slot < kSamples; slot += step) {
            const bool takenBefore = count > kFirstSamples && slot / step % 2 == 0;
            if (!takenBefore && (stop || tickCount() - begin > kSamplingMs || !takeSample(slot))) {
                return;
            }
        }
        sampleCount.store(count, std::memory_order_release);
        tell();
    }
}

bool Overview::Parts::takeSample(size_t slot) {
    const uint64_t first = total / kSamples * slot + total % kSamples * slot / kSamples;
    const uint64_t most = std::max<uint64_t>(kSampleBytes / frames.frameBytes(), 1);
    const uint64_t count = std::min({most, total - first, block.size() / frames.frameBytes()});
    if (count == 0 || frames.read(first, count, block.data()) < count) {
        return false;
    }
    extremes->reduce(block.data(), count, 1, samples.data() + slot * extremes->entryBytes());
    return true;
}

void Overview::Parts::readAll() {
    uint64_t frame = 0;
    while (frame < total && !stop) {
        const uint64_t count = std::min<uint64_t>(total - frame, block.size() / frames.frameBytes());
        const uint64_t read = frames.read(frame, count, block.data());
        levels.append(frame, block.data(), read);
        frame += read;
        done.store(frame, std::memory_order_release);
        if (read < count) {
            failed.store(true, std::memory_order_release);
            return;
        }
        tell();
    }
}

void Overview::Parts::tell() {
    const uint64_t now = tickCount();
    if (progress && now - toldMs >= kProgressMs) {
        toldMs = now;
        progress();
    }
}

bool Overview::build(uint64_t first, uint64_t end, size_t buckets, Screen& screen) {
    screen.clear();
    Parts& parts = *parts_;
    const uint64_t range = end - std::min(first, end);
    const uint64_t wanted = bucketFramesFor(range, buckets);
    end = std::min(end, parts.total);
    if (first >= end) {
        return false;
    }
    if (wanted < parts.levels.framesPerEntry(0) && parts.fileScreens.readsWhole(range)) {
        return parts.fileScreens.build(first, end, buckets, screen);
    }
    // At least two entries a bucket: rounding to whole ones makes buckets little longer than asked for.
    const size_t level = parts.levels.levelFor(wanted / 2);
    ScreenBuilder builder(screen, *parts.extremes, wholeEntries(wanted, parts.levels.framesPerEntry(level)));
    uint64_t exactEnd = end;
    parts.addEntries(builder, level, first, exactEnd);
    const bool sampled = exactEnd < end && !complete() && parts.addSamples(builder, std::max(first, exactEnd), end);
    const bool any = builder.finish();
    screen.provisional = sampled;
    return any;
}

// Adds what is exact and lowers `end` to where that ends.
void Overview::Parts::addEntries(ScreenBuilder& builder, size_t level, uint64_t first, uint64_t& end) const {
    const bool closed = complete.load(std::memory_order_acquire);
    const uint64_t read = done.load(std::memory_order_acquire);
    const uint64_t entryFrames = levels.framesPerEntry(level);
    const uint64_t entries = closed ? entriesOf(read, entryFrames) : read / entryFrames;
    const uint64_t begin = first / builder.bucketFrames() * builder.bucketFrames() / entryFrames;
    const uint64_t last = std::min(entries, entriesOf(end, entryFrames));
    for (uint64_t i = begin; i < last; ++i) {
        builder.addEntry(i * entryFrames / builder.bucketFrames(), levels.settled(level, i));
    }
    end = std::min(end, entries * entryFrames);
}

// Shows the rest by the samples nearest before. False when there are none yet.
bool Overview::Parts::addSamples(ScreenBuilder& builder, uint64_t first, uint64_t end) const {
    const size_t count = sampleCount.load(std::memory_order_acquire);
    if (count == 0) {
        return false;
    }
    const uint64_t bucketFrames = builder.bucketFrames();
    for (uint64_t bucket = first / bucketFrames; bucket * bucketFrames < end; ++bucket) {
        const double part = static_cast<double>(bucket * bucketFrames) / static_cast<double>(total);
        const size_t slot = static_cast<size_t>(part * static_cast<double>(count)) * (kSamples / count);
        builder.addEntry(bucket, samples.data() + slot * extremes->entryBytes());
    }
    return true;
}

}  // namespace tarno2
