#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>

namespace tarno2 {

/// Edges of a digital line that are to be marked.
struct MarkedLine {
    int32_t line = -1;  ///< of the port, from 0; -1: none
    int32_t edge = 0;   ///< 0 rising, 1 falling, 2 both
};

/// Looks for the edges of one digital line in a stream of frames, block by block.
class LineEdges {
public:
    /// `mask`: the line's bit in the first word of a frame; `width`: bytes of a word, 2 or 4; `frameBytes`: of a frame.
    LineEdges(uint32_t mask, uint32_t width, size_t frameBytes, int32_t edge)
        : mask_(mask), width_(width), frameBytes_(frameBytes), edge_(edge) {}

    /// Calls `found` with each frame of the block, from 0, that has another level than the one before it. Blocks hold
    /// whole frames and follow each other.
    template <typename Found>
    void scan(std::span<const std::byte> block, Found found) {
        if (width_ == 4) {
            scanWords<uint32_t>(block, found);
        } else {
            scanWords<uint16_t>(block, found);
        }
    }

private:
    template <typename Word, typename Found>
    void scanWords(std::span<const std::byte> block, Found found) {
        const size_t frames = block.size() / frameBytes_;
        const auto levelOf = [&](size_t frame) {
            Word word = 0;
            std::memcpy(&word, block.data() + frame * frameBytes_, sizeof word);
            return (word & mask_) != 0;
        };
        if (frames == 0) {
            return;
        }
        bool level = begun_ ? high_ : levelOf(0);
        for (size_t frame = 0; frame < frames; ++frame) {
            if (levelOf(frame) != level) {
                level = !level;
                if (edge_ == 2 || level == (edge_ == 0)) {
                    found(frame);
                }
            }
        }
        high_ = level;
        begun_ = true;
    }

    uint32_t mask_;
    uint32_t width_;
    size_t frameBytes_;
    int32_t edge_;
    bool begun_ = false;
    bool high_ = false;  ///< the level of the last frame, once there was one
};

}  // namespace tarno2
