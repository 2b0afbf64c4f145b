#include "display/screen_builder.h"

#include <algorithm>

namespace tarno2 {

void Screen::clear() {
    words.clear();
    runs.clear();
    rows = 0;
    bucketFrames = 1;
    provisional = false;
}

uint64_t bucketFramesFor(uint64_t frames, size_t buckets) {
    const uint64_t most = std::max<size_t>(buckets, 1);
    return frames / 2 + frames % 2 <= most ? 1 : (frames - 1) / most + 1;
}

uint64_t wholeEntries(uint64_t frames, uint64_t framesPerEntry) {
    return (frames + framesPerEntry - 1) / framesPerEntry * framesPerEntry;
}

ScreenBuilder::ScreenBuilder(Screen& screen, Extremes& extremes, uint64_t bucketFrames)
    : screen_(screen),
      extremes_(extremes),
      entry_(extremes.entryBytes()),
      other_(extremes.entryBytes()),
      rows_(2 * extremes.frameBytes()) {
    screen_.clear();
    screen_.bucketFrames = bucketFrames;
}

void ScreenBuilder::addFrames(uint64_t firstFrame, const std::byte* frames, uint64_t count) {
    if (!screen_.pairs()) {
        addRows(firstFrame, frames, count);
        return;
    }
    while (count > 0) {
        const uint64_t inside = firstFrame % bucketFrames();
        const uint64_t taken = std::min(bucketFrames() - inside, count);
        extremes_.reduce(frames, taken, 1, other_.data());
        addEntry(firstFrame / bucketFrames(), other_.data());
        firstFrame += taken;
        frames += taken * extremes_.frameBytes();
        count -= taken;
    }
}

void ScreenBuilder::addEntry(uint64_t bucket, const std::byte* entry) {
    if (open_ && bucket == bucket_) {
        extremes_.merge(entry_.data(), entry);
        return;
    }
    endBucket();
    std::copy_n(entry, entry_.size(), entry_.begin());
    bucket_ = bucket;
    open_ = true;
}

bool ScreenBuilder::finish() {
    endBucket();
    return screen_.rows > 0;
}

void ScreenBuilder::endBucket() {
    if (open_) {
        extremes_.toFrames(entry_.data(), rows_.data());
        addRows(bucket_ * bucketFrames(), rows_.data(), 2);
        open_ = false;
    }
}

void ScreenBuilder::addRows(uint64_t firstFrame, const std::byte* rows, size_t count) {
    const auto endOf = [this](const Screen::Run& run) {
        return run.firstFrame + run.rows / screen_.rowsPerBucket() * bucketFrames();
    };
    if (screen_.runs.empty() || endOf(screen_.runs.back()) != firstFrame) {
        screen_.runs.push_back({firstFrame, screen_.rows, 0});
    }
    screen_.words.insert(screen_.words.end(), rows, rows + count * extremes_.frameBytes());
    screen_.runs.back().rows += count;
    screen_.rows += count;
}

}  // namespace tarno2
