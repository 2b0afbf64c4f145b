#pragma once

#include "sync/block_evaluator.h"
#include "sync/condition_analyzer.h"

namespace tarno2 {

/// The frames of a recording as its board delivers them.
struct StreamFormat {
    uint32_t sampleWidth = 2;  ///< bytes, 2 or 4
    uint32_t channels = 1;
    bool packed = false;  ///< the port's bits share the word with the code
    SampleFacts facts;
    size_t largestBlock = 0;  ///< bytes
};

/// Lets the frames through that the synchronisation settings ask for.
class SynchroEvaluator final : public BlockEvaluator {
public:
    /// `settings` as `CheckSynchroParameters` gives them. All memory is reserved here; throws std::bad_alloc.
    SynchroEvaluator(const SynchroSettings& settings, const SynchroSizes& sizes, const StreamFormat& format);

    int32_t evaluate(std::span<const std::byte> block, EvaluatedBlock& out) override;
    [[nodiscard]] bool takesWholeBlocks() const override { return analyzer_.recordFrames() == 0; }
    [[nodiscard]] const ConditionAnalyzer& analyzer() const { return analyzer_; }

private:
    template <typename Word, typename Analyze>
    int32_t evaluateWords(std::span<const std::byte> block, EvaluatedBlock& out, Analyze analyze);

    StreamFormat format_;
    ConditionAnalyzer analyzer_;
};

}  // namespace tarno2
