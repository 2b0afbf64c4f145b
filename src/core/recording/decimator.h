#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace tarno2 {

/// Keeps the first frame of every N frames. A frame is handed on when the N frames that it stands for are complete, so
/// a group may begin in one block and end in another. Acquisition thread only.
class Decimator {
public:
    /// `largestBlock`: bytes of the largest block that will come; all room is made here.
    Decimator(uint32_t factor, uint64_t frameBytes, uint64_t largestBlock);

    /// The kept frames of a block of whole frames; valid until the next call.
    [[nodiscard]] std::span<const std::byte> process(std::span<const std::byte> block);

private:
    uint64_t factor_;
    uint64_t frameBytes_;
    uint64_t gathered_ = 0;         ///< frames of the current group
    std::vector<std::byte> first_;  ///< its first frame
    std::vector<std::byte> output_;
};

}  // namespace tarno2
