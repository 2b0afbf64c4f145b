#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "records/record_description.h"

namespace tarno2 {

/// What is to be written of a block.
struct EvaluatedBlock {
    std::span<const std::byte> data;  ///< valid until the next call; whole frames
    uint32_t recordFrames = 0;        ///< 0: may be divided between files at any frame; else the data are whole records
                                      ///< of so many frames, each of which stays in one file
    std::span<const SynchroEvent> events;  ///< one a record, in order; valid as long as the data
    std::span<const std::byte> rest;       ///< of the block: to be handed over once the data are written
};

/// Decides which frames of the stream reach the file. One object serves one recording, on its acquisition thread.
class BlockEvaluator {
public:
    BlockEvaluator() = default;
    virtual ~BlockEvaluator() = default;
    BlockEvaluator(const BlockEvaluator&) = delete;
    BlockEvaluator& operator=(const BlockEvaluator&) = delete;

    /// Takes the next block of whole frames, never empty. 0: go on; 1: stop the recording once `out` is written;
    /// negative: an error, nothing to write.
    virtual int32_t evaluate(std::span<const std::byte> block, EvaluatedBlock& out) = 0;
    /// What it gives out may be written to where the block stands: it has no rest.
    [[nodiscard]] virtual bool takesWholeBlocks() const { return true; }
};

/// Every frame is written: blocks go through without a copy.
class PassThrough final : public BlockEvaluator {
public:
    int32_t evaluate(std::span<const std::byte> block, EvaluatedBlock& out) override;
};

}  // namespace tarno2
