#include "display/extremes_levels.h"

#include <algorithm>
#include <cstring>

namespace tarno2 {

ExtremesLevels::ExtremesLevels(Extremes& extremes, uint64_t finestFrames, const std::vector<size_t>& capacities)
    : extremes_(extremes), levels_(capacities.size()), scratch_(extremes.entryBytes()) {
    uint64_t frames = finestFrames;
    for (size_t i = 0; i < levels_.size(); ++i, frames *= kRatio) {
        Level& level = levels_[i];
        level.frames = frames;
        level.capacity = std::max<size_t>(capacities[i], 1);
        // Left as it is: pages that no entry reaches take no memory.
        level.entries.reset(new std::byte[level.capacity * extremes.entryBytes()]);
        level.present.resize(level.capacity);
        level.openEntry.resize(extremes.entryBytes());
    }
}

void ExtremesLevels::append(uint64_t firstFrame, const std::byte* frames, uint64_t count) {
    const uint64_t finest = levels_[0].frames;
    while (count > 0) {
        const uint64_t index = firstFrame / finest;
        const uint64_t inside = firstFrame % finest;
        uint64_t taken = std::min(finest - inside, count);
        if (taken == finest) {
            taken = count / finest * finest;
            appendWhole(index, frames, count / finest);
        } else {
            extremes_.reduce(frames, taken, 1, scratch_.data());
            add(0, index, scratch_.data(), inside + taken == finest);
        }
        firstFrame += taken;
        frames += taken * extremes_.frameBytes();
        count -= taken;
    }
}

void ExtremesLevels::finish() {
    for (size_t i = 0; i < levels_.size(); ++i) {
        close(i);
    }
}

uint64_t ExtremesLevels::oldest(size_t level) const {
    const Level& asked = levels_[level];
    return asked.end - std::min<uint64_t>(asked.end, asked.capacity);
}

const std::byte* ExtremesLevels::find(size_t level, uint64_t index) {
    const Level& asked = levels_[level];
    if (index < asked.end) {
        return index >= oldest(level) && asked.present[index % asked.capacity] ? place(asked, index) : nullptr;
    }
    // The newest frames: what finer levels have not passed on yet belongs to them as well.
    const std::byte* found = nullptr;
    for (size_t i = 0; i <= level; ++i) {
        const Level& finer = levels_[i];
        if (!finer.open || finer.openIndex * finer.frames / asked.frames != index) {
            continue;
        }
        if (found == nullptr) {
            std::copy(finer.openEntry.begin(), finer.openEntry.end(), scratch_.begin());
            found = scratch_.data();
        } else {
            extremes_.merge(scratch_.data(), finer.openEntry.data());
        }
    }
    return found;
}

const std::byte* ExtremesLevels::settled(size_t level, uint64_t index) const {
    return place(levels_[level], index);
}

size_t ExtremesLevels::levelFor(uint64_t frames) const {
    size_t level = 0;
    while (level + 1 < levels_.size() && levels_[level + 1].frames <= frames) {
        ++level;
    }
    return level;
}

std::byte* ExtremesLevels::place(const Level& level, uint64_t index) const {
    return level.entries.get() + index % level.capacity * extremes_.entryBytes();
}

// Whole entries of the finest level are made where they stay.
void ExtremesLevels::appendWhole(uint64_t firstEntry, const std::byte* frames, uint64_t count) {
    Level& finest = levels_[0];
    close(0);
    skipTo(finest, firstEntry);
    while (count > 0) {
        const uint64_t index = finest.end;
        const uint64_t run = std::min<uint64_t>(count, finest.capacity - index % finest.capacity);
        std::byte* entries = place(finest, index);
        extremes_.reduce(frames, finest.frames, run, entries);
        finest.end += run;
        for (uint64_t i = 0; i < run; ++i) {
            finest.present[(index + i) % finest.capacity] = true;
            passOn(0, index + i, entries + i * extremes_.entryBytes());
        }
        frames += run * finest.frames * extremes_.frameBytes();
        count -= run;
    }
}

// Widens the entry that is being filled; `last`: nothing will be added to it any more.
void ExtremesLevels::add(size_t number, uint64_t index, const std::byte* entry, bool last) {
    Level& level = levels_[number];
    if (level.open && level.openIndex != index) {
        close(number);
    }
    if (level.open) {
        extremes_.merge(level.openEntry.data(), entry);
    } else {
        std::memcpy(level.openEntry.data(), entry, level.openEntry.size());
        level.openIndex = index;
        level.open = true;
    }
    if (last) {
        close(number);
    }
}

void ExtremesLevels::close(size_t number) {
    Level& level = levels_[number];
    if (!level.open) {
        return;
    }
    level.open = false;
    skipTo(level, level.openIndex);
    std::memcpy(place(level, level.openIndex), level.openEntry.data(), level.openEntry.size());
    level.present[level.openIndex % level.capacity] = true;
    ++level.end;
    passOn(number, level.openIndex, level.openEntry.data());
}

void ExtremesLevels::passOn(size_t number, uint64_t index, const std::byte* entry) {
    if (number + 1 < levels_.size()) {
        add(number + 1, index / kRatio, entry, index % kRatio == kRatio - 1);
    }
}

// Entries that the stream passed over are absent.
void ExtremesLevels::skipTo(Level& level, uint64_t index) {
    const uint64_t skipped = std::min<uint64_t>(index - level.end, level.capacity);
    for (uint64_t i = index - skipped; i < index; ++i) {
        level.present[i % level.capacity] = false;
    }
    level.end = index;
}

}  // namespace tarno2
