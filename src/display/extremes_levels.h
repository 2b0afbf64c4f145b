#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "display/extremes.h"

namespace tarno2 {

/// Minima and maxima of a growing stream of frames on several levels, each 16 times as coarse as the one before. Entry
/// `i` of a level stands for its frames from `i * framesPerEntry` on, however the stream was divided or broken. Each
/// level keeps its newest entries. Appending and looking belong to one thread, but for `settled`.
class ExtremesLevels {
public:
    static constexpr uint64_t kRatio = 16;
    /// Frames of an entry of the finest level, where memory is enough for it.
    static constexpr uint64_t kFinestFrames = 16;

    /// `capacities`: entries to keep, one a level, the finest first. `extremes` outlives it. Throws std::bad_alloc.
    ExtremesLevels(Extremes& extremes, uint64_t finestFrames, const std::vector<size_t>& capacities);

    /// Takes frames that begin at that number, at or after the end of the last ones.
    void append(uint64_t firstFrame, const std::byte* frames, uint64_t count);
    /// The stream has ended: entries that are not full are closed too.
    void finish();

    [[nodiscard]] size_t count() const { return levels_.size(); }
    [[nodiscard]] uint64_t framesPerEntry(size_t level) const { return levels_[level].frames; }
    /// The oldest entry that a level may still have.
    [[nodiscard]] uint64_t oldest(size_t level) const;
    /// An entry, that which is being filled included; null when there is none. Valid until the next call.
    [[nodiscard]] const std::byte* find(size_t level, uint64_t index);
    /// Where a closed entry lies. A thread that was told that `append` went past it may read it there while other
    /// entries are appended, as long as none was dropped.
    [[nodiscard]] const std::byte* settled(size_t level, uint64_t index) const;
    /// The coarsest level whose entries are no longer than that; the finest when none is.
    [[nodiscard]] size_t levelFor(uint64_t frames) const;

private:
    struct Level {
        uint64_t frames = 0;
        size_t capacity = 0;
        std::unique_ptr<std::byte[]> entries;
        std::vector<bool> present;
        uint64_t end = 0;  ///< one past the newest closed entry
        bool open = false;
        uint64_t openIndex = 0;
        std::vector<std::byte> openEntry;
    };

    [[nodiscard]] std::byte* place(const Level& level, uint64_t index) const;
    void appendWhole(uint64_t firstEntry, const std::byte* frames, uint64_t count);
    void add(size_t number, uint64_t index, const std::byte* entry, bool last);
    void close(size_t number);
    void passOn(size_t number, uint64_t index, const std::byte* entry);
    static void skipTo(Level& level, uint64_t index);

    Extremes& extremes_;
    std::vector<Level> levels_;
    std::vector<std::byte> scratch_;
};

}  // namespace tarno2
