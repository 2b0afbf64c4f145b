#pragma once

#include <cstdint>
#include <vector>

#include "sync/condition_analyzer.h"
#include "tests/sync/plain_model.h"

namespace tarno2::test {

/// Hands a block of samples of that width (16 or 32 bits) to the evaluator.
inline Evaluated analyzeBlock(ConditionAnalyzer& analyzer, int width, const std::vector<int32_t>& block,
                              size_t channels, bool packed) {
    Evaluated out;
    size_t count = 0;
    size_t channelsOut = 0;
    if (width == 16) {
        // A copy of exactly the block's size: a read beyond it is found out.
        const std::vector<int16_t> words(block.begin(), block.end());
        const int16_t* kept = nullptr;
        out.result = Analyze16(analyzer, words.data(), words.size(), &kept, &count, channels, &channelsOut, packed);
        out.samples.assign(kept, kept + count);
    } else {
        const int32_t* kept = nullptr;
        out.result = Analyze32(analyzer, block.data(), block.size(), &kept, &count, channels, &channelsOut, packed);
        out.samples.assign(kept, kept + count);
    }
    out.events.assign(analyzer.events().begin(), analyzer.events().end());
    return out;
}

}  // namespace tarno2::test
