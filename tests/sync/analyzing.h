#pragma once

#include <cstdint>
#include <vector>

#include "sync/condition_analyzer.h"
#include "tests/sync/plain_model.h"

namespace tarno2::test {

inline SynchroSettings analysis() {
    SynchroSettings settings;
    settings.SynchroAnalyzeMode = 1;
    return settings;
}

/// Hands a block of samples of that width (16 or 32 bits) to the evaluator, record by record.
inline Evaluated analyzeBlock(ConditionAnalyzer& analyzer, int width, const std::vector<int32_t>& block,
                              size_t channels, bool packed) {
    Evaluated out;
    // A copy of exactly the block's size: a read beyond it is found out.
    const std::vector<int16_t> words(block.begin(), width == 16 ? block.end() : block.begin());
    size_t taken = 0;
    do {
        size_t count = 0;
        size_t channelsOut = 0;
        if (width == 16) {
            const int16_t* kept = nullptr;
            out.result = Analyze16(analyzer, words.data() + taken, words.size() - taken, &kept, &count, channels,
                                   &channelsOut, packed);
            out.samples.insert(out.samples.end(), kept, kept + count);
        } else {
            const int32_t* kept = nullptr;
            out.result = Analyze32(analyzer, block.data() + taken, block.size() - taken, &kept, &count, channels,
                                   &channelsOut, packed);
            out.samples.insert(out.samples.end(), kept, kept + count);
        }
        out.events.insert(out.events.end(), analyzer.events().begin(), analyzer.events().end());
        taken += analyzer.samplesTaken();
    } while (taken < block.size() && out.result == 0);
    return out;
}

}  // namespace tarno2::test
