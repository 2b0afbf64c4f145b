#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace tarno2::drivers {

/// How samples become words: a code of `codeBits` bits with a sign above `lines` digital lines; without a code the
/// lines alone.
struct WordShape {
    uint32_t bytes = 4;
    uint32_t codeBits = 32;  ///< 0: no analog channels
    uint32_t lines = 0;      ///< 0: no digital lines

    /// With so many analog channels (or none) and lines; lines for which there is no room are left out.
    [[nodiscard]] static WordShape with(bool analog, uint32_t lines);
    [[nodiscard]] uint32_t codeShift() const { return codeBits == 0 ? 0 : lines == 0 ? 0 : 32 - codeBits; }
    [[nodiscard]] uint32_t linesMask() const { return lines >= 32 ? 0xFFFFFFFFU : (uint32_t{1} << lines) - 1; }
};

/// Puts frames together from packets of single channels, which come in any order. The lines of a frame stand in each of
/// its words.
class FrameAssembler {
public:
    /// `ranges` are the volts at the end of the code of each analog channel of a frame, in their order; `capacity` the
    /// frames of a channel that are kept at most.
    FrameAssembler(const WordShape& shape, std::vector<double> ranges, size_t capacity);

    /// Values of an analog channel, by its place in the frame, every `step`-th one. Beyond the range they are cut to
    /// its end, and what is no number is 0. False when more than the capacity would be kept.
    [[nodiscard]] bool addAnalog(size_t place, const float* values, size_t count, size_t step = 1);
    /// States of the lines, `unit` bytes each, line 0 in the lowest bit of the first.
    [[nodiscard]] bool addLogic(const uint8_t* states, size_t count, size_t unit);
    /// Frames of which all is there.
    [[nodiscard]] size_t complete() const;
    /// Writes at most so many of them; returns how many.
    size_t take(std::byte* destination, size_t frames);
    [[nodiscard]] size_t channels() const { return shape_.codeBits == 0 ? 1 : ranges_.size(); }

private:
    struct Column {
        std::vector<uint32_t> words;
        size_t taken = 0;
        [[nodiscard]] size_t size() const { return words.size() - taken; }
    };
    [[nodiscard]] bool makeRoom(Column& column, size_t count) const;
    [[nodiscard]] uint32_t codeOf(float value, double range) const;

    WordShape shape_;
    std::vector<double> ranges_;
    size_t capacity_;
    std::vector<Column> analog_;
    Column logic_;
};

}  // namespace tarno2::drivers
