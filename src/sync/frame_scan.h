#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "sync/condition.h"

namespace tarno2 {

/// Frames from `first` up to, but not including, `end`.
struct FrameRange {
    size_t first = 0;
    size_t end = 0;
    [[nodiscard]] bool empty() const { return first >= end; }
};

/// The whole frames of a block.
template <typename Word>
struct FrameBlock {
    const Word* words = nullptr;
    size_t channels = 1;
    size_t frames = 0;

    [[nodiscard]] size_t size() const { return frames * channels; }
    [[nodiscard]] const Word* frame(size_t number) const { return words + number * channels; }

    /// Those frames of the range whose word at `place` has an index from 0 up to, but not including, `limit`.
    [[nodiscard]] FrameRange askable(FrameRange range, int64_t place, size_t limit) const {
        const auto step = static_cast<int64_t>(channels);
        const int64_t low = place < 0 ? (step - 1 - place) / step : 0;
        const int64_t room = static_cast<int64_t>(limit) - place;
        const int64_t high = room > 0 ? (room + step - 1) / step : 0;
        return {std::max(range.first, static_cast<size_t>(low)), std::min(range.end, static_cast<size_t>(high))};
    }
    /// The word at `place` of a frame; the index has to lie in the block.
    [[nodiscard]] Word word(size_t frame, int64_t place) const {
        return words[static_cast<int64_t>(frame * channels) + place];
    }
};

/// The first index from `begin` on that hits; `end` when none does. Whole stretches are looked through without a branch
/// an index, so that the compiler can ask several words at once.
template <typename Word, typename Hit>
size_t findIndex(size_t begin, size_t end, Hit hit) {
    constexpr size_t kStretch = 512;
    for (size_t next = begin; begin < end; begin = next) {
        next = std::min(begin + kStretch, end);
        Word any = 0;
        for (size_t i = begin; i < next; ++i) {
            any = static_cast<Word>(any | static_cast<Word>(hit(i)));
        }
        if (any != 0) {
            break;
        }
    }
    while (begin < end && !hit(begin)) {
        ++begin;
    }
    return begin;
}

/// Calls `use` with the distance between words of neighbouring frames: known to the compiler where frames have one
/// word, so that it can load several at once.
template <typename Use>
auto withStride(size_t channels, Use use) {
    return channels == 1 ? use(std::integral_constant<size_t, 1>{}) : use(channels);
}

/// The first frame of the range that meets the condition; its end when none does. Every frame has to be askable.
template <typename Width>
size_t findMet(const FrameBlock<typename Width::Word>& block, FrameRange range, const Condition<Width>& condition) {
    if (range.empty()) {
        return range.end;
    }
    using Word = typename Width::Word;
    const Word* words = block.words + condition.place();
    return withStride(block.channels, [&](auto stride) {
        return condition.with([&](auto met) {
            return findIndex<Word>(range.first, range.end, [=](size_t i) { return met(words[i * stride]); });
        });
    });
}

/// The first frame of the range that meets the condition while the one before it does not; `previous` is the word
/// before the first. The range's end when there is none. Every frame has to be askable.
template <typename Width>
size_t findEdge(const FrameBlock<typename Width::Word>& block, FrameRange range, const Condition<Width>& condition,
                typename Width::Word previous) {
    if (range.empty()) {
        return range.end;
    }
    if (condition.met(block.word(range.first, condition.place())) && !condition.met(previous)) {
        return range.first;
    }
    using Word = typename Width::Word;
    const Word* words = block.words + condition.place();
    return withStride(block.channels, [&](auto stride) {
        return condition.with([&](auto met) {
            return findIndex<Word>(range.first + 1, range.end, [=](size_t i) {
                const auto is = static_cast<int>(met(words[i * stride]));
                const auto wasNot = static_cast<int>(!met(words[(i - 1) * stride]));
                return (is & wasNot) != 0;
            });
        });
    });
}

/// Copies a frame of `size` bytes without a call, whatever its size.
template <typename Word>
void copyFrame(std::byte* to, const std::byte* from, size_t size) {
    constexpr size_t kStep = 16;
    if (size < kStep) {
        for (size_t i = 0; i < size; i += sizeof(Word)) {
            std::memcpy(to + i, from + i, sizeof(Word));
        }
        return;
    }
    for (size_t i = 0; i + kStep < size; i += kStep) {
        std::memcpy(to + i, from + i, kStep);
    }
    std::memcpy(to + size - kStep, from + size - kStep, kStep);
}

/// Copies the frames of the range that meet the condition one behind the other to `out`, which has room for the whole
/// range. Every frame has to be askable. Returns the bytes that were kept. Frames are copied whether kept or not, and
/// the next goes over those that were not: no branch hangs on the signal.
template <typename Width>
size_t keepMet(const FrameBlock<typename Width::Word>& block, FrameRange range, const Condition<Width>& condition,
               std::byte* out) {
    using Word = typename Width::Word;
    if (range.empty()) {
        return 0;
    }
    const Word* words = block.words + condition.place();
    return withStride(block.channels, [&](auto stride) {
        return condition.with([&](auto met) {
            const size_t frameBytes = stride * sizeof(Word);
            size_t kept = 0;
            for (size_t frame = range.first; frame < range.end; ++frame) {
                const size_t start = frame * stride;
                copyFrame<Word>(out + kept, reinterpret_cast<const std::byte*>(block.words + start), frameBytes);
                kept += met(words[start]) ? frameBytes : 0;
            }
            return kept;
        });
    });
}

}  // namespace tarno2
