#pragma once

#include <functional>
#include <gtest/gtest.h>
#include <string>

#include "tests/sync/analyzing.h"

namespace tarno2::test {

using Samples = std::vector<int32_t>;
using Change = std::function<void(SynchroSettings&)>;

/// One recording, worked out by hand. `width` 0: it is the same for 16 and 32 bits.
struct Row {
    const char* name;
    Change change;
    std::vector<Samples> blocks;
    std::vector<Samples> written;  ///< one a block
    size_t channels = 1;
    int32_t lastResult = 0;  ///< of the last block; those before give 0
    SampleFacts facts = {};
    bool packed = false;
    int width = 0;
    SynchroSizes sizes = {2, 3};
};

inline SampleFacts shifted(uint32_t formatFlags, uint32_t codeShift, uint32_t portShift = 0) {
    return {formatFlags, codeShift, portShift, false};
}

inline SampleFacts backward() {
    return {0, 0, 0, true};
}

/// The same row for words of that layout.
inline Row of(const SampleFacts& facts, Row row, bool packed = false, int width = 0) {
    row.facts = facts;
    row.packed = packed;
    row.width = width;
    return row;
}

inline Row packed(const SampleFacts& facts, Row row, int width = 0) {
    return of(facts, std::move(row), true, width);
}

/// The same row for words of that width alone.
inline Row only(int width, Row row) {
    return of({}, std::move(row), false, width);
}

/// The same row with other sizes of the record.
inline Row sized(const SynchroSizes& sizes, Row row) {
    row.sizes = sizes;
    return row;
}

inline void checkRow(const Row& row, const SynchroSettings& base) {
    for (const int width : {16, 32}) {
        if (row.width != 0 && row.width != width) {
            continue;
        }
        SCOPED_TRACE(std::string(row.name) + ", " + std::to_string(width) + " bits");
        SynchroSettings settings = base;
        row.change(settings);
        ConditionAnalyzer analyzer(settings, row.sizes, row.facts);
        ASSERT_EQ(row.blocks.size(), row.written.size());
        for (size_t i = 0; i < row.blocks.size(); ++i) {
            const Evaluated got = analyzeBlock(analyzer, width, row.blocks[i], row.channels, row.packed);
            EXPECT_EQ(got.samples, row.written[i]) << "block " << i;
            EXPECT_EQ(got.result, i + 1 == row.blocks.size() ? row.lastResult : 0) << "block " << i;
        }
    }
}

}  // namespace tarno2::test
