#include "display/live_history.h"

#include <algorithm>
#include <cstring>
#include <deque>

#include "display/extremes_levels.h"
#include "display/screen_builder.h"

namespace tarno2 {

namespace {

constexpr size_t kLevels = 6;

std::vector<size_t> capacities(size_t bytes, const Extremes& extremes) {
    std::vector<size_t> entries(kLevels, bytes / kLevels / extremes.entryBytes());
    return entries;
}

}  // namespace

/// Frames that came one after the other.
struct Stretch {
    uint64_t first = 0;
    uint64_t end = 0;
};

struct LiveHistory::Parts {
    Parts(const SignalFormat& format, size_t bytes)
        : channels(format.channelCount()),
          extremes(Extremes::create(format)),
          levels(*extremes, ExtremesLevels::kFinestFrames, capacities(bytes, *extremes)),
          frameBytes(extremes->frameBytes()),
          capacity(std::max<uint64_t>(bytes / frameBytes, 1)),
          ring(new std::byte[capacity * frameBytes]),
          newest(extremes->entryBytes()),
          sinceReset(extremes->entryBytes()),
          block(extremes->entryBytes()) {}

    void keepRaw(uint64_t firstFrame, std::span<const std::byte> frames);
    void keepValues(std::span<const std::byte> frames);
    [[nodiscard]] size_t levelThatReaches(uint64_t first, uint64_t bucketFrames) const;
    void addRaw(ScreenBuilder& builder, uint64_t first, uint64_t last) const;
    void addLevel(ScreenBuilder& builder, size_t level, uint64_t first, uint64_t last);

    size_t channels;
    std::unique_ptr<Extremes> extremes;
    ExtremesLevels levels;
    size_t frameBytes;
    uint64_t capacity;  ///< frames in the ring
    std::unique_ptr<std::byte[]> ring;
    std::deque<Stretch> stretches;  ///< what of the ring is filled
    uint64_t firstSeen = 0;
    uint64_t end = 0;
    std::vector<std::byte> newest;
    std::vector<std::byte> sinceReset;
    std::vector<std::byte> block;
    bool begun = false;
    bool reset = true;  ///< the next frames start the extremes
};

LiveHistory::LiveHistory(const SignalFormat& format, size_t bytes) : parts_(std::make_unique<Parts>(format, bytes)) {}

LiveHistory::~LiveHistory() = default;

bool LiveHistory::take(LiveTap& tap, size_t limitBytes) {
    size_t taken = 0;
    while (taken < limitBytes && tap.take([&](uint64_t firstFrame, std::span<const std::byte> frames) {
        append(firstFrame, frames);
        taken += frames.size();
    })) {
    }
    return taken > 0;
}

void LiveHistory::append(uint64_t firstFrame, std::span<const std::byte> frames) {
    const uint64_t count = frames.size() / parts_->frameBytes;
    if (count == 0) {
        return;
    }
    if (!parts_->begun) {
        parts_->begun = true;
        parts_->firstSeen = firstFrame;
    }
    parts_->keepRaw(firstFrame, frames);
    parts_->levels.append(firstFrame, frames.data(), count);
    parts_->keepValues(frames);
}

void LiveHistory::Parts::keepRaw(uint64_t firstFrame, std::span<const std::byte> frames) {
    uint64_t count = frames.size() / frameBytes;
    if (stretches.empty() || stretches.back().end != firstFrame) {
        stretches.push_back({firstFrame, firstFrame});
    }
    end = firstFrame + count;
    stretches.back().end = end;
    const std::byte* from = frames.data();
    if (count > capacity) {
        from += (count - capacity) * frameBytes;
        firstFrame = end - capacity;
        count = capacity;
    }
    const uint64_t place = firstFrame % capacity;
    const uint64_t upToWrap = std::min(count, capacity - place);
    std::memcpy(ring.get() + place * frameBytes, from, upToWrap * frameBytes);
    std::memcpy(ring.get(), from + upToWrap * frameBytes, (count - upToWrap) * frameBytes);
    const uint64_t oldest = end - std::min(end, capacity);
    while (stretches.front().end <= oldest) {
        stretches.pop_front();
    }
    stretches.front().first = std::max(stretches.front().first, oldest);
}

void LiveHistory::Parts::keepValues(std::span<const std::byte> frames) {
    const size_t count = frames.size() / frameBytes;
    extremes->reduce(frames.data() + (count - 1) * frameBytes, 1, 1, newest.data());
    extremes->reduce(frames.data(), count, 1, block.data());
    if (reset) {
        sinceReset = block;
        reset = false;
    } else {
        extremes->merge(sinceReset.data(), block.data());
    }
}

uint64_t LiveHistory::frameCount() const {
    return parts_->end;
}

uint64_t LiveHistory::firstRawFrame() const {
    return parts_->stretches.empty() ? 0 : parts_->stretches.front().first;
}

bool LiveHistory::copyRaw(uint64_t first, uint64_t end, std::vector<std::byte>& out) const {
    const Parts& parts = *parts_;
    for (const Stretch& stretch : parts.stretches) {
        if (stretch.first > first || stretch.end < end || first >= end) {
            continue;
        }
        out.resize((end - first) * parts.frameBytes);
        const uint64_t place = first % parts.capacity;
        const uint64_t upToWrap = std::min(end - first, parts.capacity - place);
        std::memcpy(out.data(), parts.ring.get() + place * parts.frameBytes, upToWrap * parts.frameBytes);
        std::memcpy(out.data() + upToWrap * parts.frameBytes, parts.ring.get(),
                    out.size() - upToWrap * parts.frameBytes);
        return true;
    }
    out.clear();
    return false;
}

std::vector<ChannelValues> LiveHistory::values() const {
    std::vector<ChannelValues> values;
    for (size_t i = 0; parts_->begun && i < parts_->channels; ++i) {
        const Extremes& extremes = *parts_->extremes;
        ChannelValues value;
        value.newest = extremes.minimum(parts_->newest.data(), i);
        value.minimum = parts_->reset ? value.newest : extremes.minimum(parts_->sinceReset.data(), i);
        value.maximum = parts_->reset ? value.newest : extremes.maximum(parts_->sinceReset.data(), i);
        values.push_back(value);
    }
    return values;
}

void LiveHistory::resetExtremes() {
    parts_->reset = true;
}

bool LiveHistory::build(uint64_t first, uint64_t end, size_t buckets, Screen& screen) {
    screen.clear();
    Parts& parts = *parts_;
    const uint64_t wanted = bucketFramesFor(end - std::min(first, end), buckets);
    first = std::max(first, parts.firstSeen);
    end = std::min(end, parts.end);
    if (!parts.begun || first >= end) {
        return false;
    }
    if (wanted < ExtremesLevels::kFinestFrames && first >= firstRawFrame()) {
        ScreenBuilder builder(screen, *parts.extremes, wanted);
        parts.addRaw(builder, first / wanted * wanted, end);
        return builder.finish();
    }
    const size_t level = parts.levelThatReaches(first, wanted);
    ScreenBuilder builder(screen, *parts.extremes, wholeEntries(wanted, parts.levels.framesPerEntry(level)));
    parts.addLevel(builder, level, first, end);
    return builder.finish();
}

// A level with at least two entries a bucket, so that rounding to whole ones makes buckets little longer than asked
// for; or the finest of the longer ones that still have the first frame.
size_t LiveHistory::Parts::levelThatReaches(uint64_t first, uint64_t bucketFrames) const {
    size_t level = levels.levelFor(bucketFrames / 2);
    while (level + 1 < levels.count() && levels.oldest(level) * levels.framesPerEntry(level) > first) {
        ++level;
    }
    return level;
}

void LiveHistory::Parts::addRaw(ScreenBuilder& builder, uint64_t first, uint64_t last) const {
    for (const Stretch& stretch : stretches) {
        uint64_t frame = std::max(stretch.first, first);
        const uint64_t stop = std::min(stretch.end, last);
        while (frame < stop) {
            const uint64_t place = frame % capacity;
            const uint64_t count = std::min(stop - frame, capacity - place);
            builder.addFrames(frame, ring.get() + place * frameBytes, count);
            frame += count;
        }
    }
}

void LiveHistory::Parts::addLevel(ScreenBuilder& builder, size_t level, uint64_t first, uint64_t last) {
    const uint64_t frames = levels.framesPerEntry(level);
    const uint64_t begin = first / builder.bucketFrames() * builder.bucketFrames() / frames;
    for (uint64_t i = std::max(begin, levels.oldest(level)); i * frames < last; ++i) {
        if (const std::byte* entry = levels.find(level, i); entry != nullptr) {
            builder.addEntry(i * frames / builder.bucketFrames(), entry);
        }
    }
}

}  // namespace tarno2
