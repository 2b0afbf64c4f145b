#include <algorithm>
#include <gmock/gmock.h>

#include "sync/synchro_evaluator.h"
#include "tests/sync/rows.h"

namespace tarno2::test {

namespace {

enum Edge { kLeading = 0, kFalling = 1, kOff = 2 };

SynchroSettings triggered() {
    SynchroSettings settings;
    settings.SynchroAnalyzeMode = 2;
    settings.synchroOnAnalog = true;
    settings.SynchroAnalogMode = kLeading;
    settings.synchroCode = 5;
    return settings;
}

Change analog(Edge edge, int32_t code, int32_t channel = 0) {
    return [=](SynchroSettings& s) {
        s.SynchroAnalogMode = edge;
        s.synchroCode = code;
        s.SynchroAnalogChannelNumber = channel;
    };
}

Change port(Edge edge, int32_t bit) {
    return [=](SynchroSettings& s) {
        s.synchroOnAnalog = false;
        s.synchroOnPort = true;
        s.SynchroPortMode = edge;
        s.SynchroPortBit = bit;
    };
}

std::vector<Samples> cut(const Samples& stream, size_t words) {
    std::vector<Samples> blocks;
    for (size_t begin = 0; begin < stream.size(); begin += words) {
        const size_t end = std::min(begin + words, stream.size());
        blocks.emplace_back(stream.begin() + static_cast<std::ptrdiff_t>(begin),
                            stream.begin() + static_cast<std::ptrdiff_t>(end));
    }
    return blocks;
}

/// Checks a stream whole and in pieces of one frame and more; rows of this file have one block.
void checkStream(const Row& row) {
    for (const int width : {16, 32}) {
        if (row.width != 0 && row.width != width) {
            continue;
        }
        for (const size_t frames : {size_t{1000}, size_t{1}, size_t{2}, size_t{3}, size_t{5}}) {
            SCOPED_TRACE(std::string(row.name) + ", " + std::to_string(width) + " bits, blocks of " +
                         std::to_string(frames));
            SynchroSettings settings = triggered();
            row.change(settings);
            ConditionAnalyzer analyzer(settings, row.sizes, row.facts);
            Samples written;
            for (const Samples& block : cut(row.blocks[0], frames * row.channels)) {
                const Evaluated got = analyzeBlock(analyzer, width, block, row.channels, row.packed);
                EXPECT_EQ(got.result, 0);
                written.insert(written.end(), got.samples.begin(), got.samples.end());
            }
            EXPECT_EQ(written, row.written[0]);
        }
    }
}

}  // namespace

const Samples secondRises = {1, 1, 2, 2, 9, 3, 4, 9, 5, 8, 6, 7};
const Samples secondKept = {2, 2, 9, 3, 4, 9, 5, 8};

// Records here have two frames of prehistory and three of history unless the row says otherwise.
TEST(Synchronisation, WritesARecordForEachTrigger) {
    const Change usual = analog(kLeading, 5);
    const Row rows[] = {
        {"a record", usual, {{1, 2, 3, 9, 8, 7, 6}}, {{2, 3, 9, 8, 7}}},
        {"reaches the level exactly", usual, {{1, 2, 4, 5, 8, 7}}, {{2, 4, 5, 8, 7}}},
        {"the newest frames before the trigger", usual, {{1, 2, 3, 4, 3, 2, 1, 9, 8, 7}}, {{2, 1, 9, 8, 7}}},
        {"falls to the level", analog(kFalling, 5), {{9, 8, 7, 5, 4, 3}}, {{8, 7, 5, 4, 3}}},
        {"stays on the level", analog(kFalling, 5), {{5, 5, 5, 5, 5, 5, 5}}, {{}}},
        {"in the first prehistory", usual, {{1, 9, 8, 7, 6, 9, 9}}, {{}}},
        {"between the ring and the next frame", usual, {{1, 2, 9, 8, 7, 6}}, {{}}},
        {"history that does not end", usual, {{1, 2, 3, 9, 8}}, {{}}},
        {"second in the first's history", usual, {{1, 2, 3, 9, 1, 9, 1, 2, 3, 4, 4, 4}}, {{2, 3, 9, 1, 9}}},
        {"a prehistory first", usual, {{1, 2, 3, 9, 8, 7, 1, 9, 1, 1, 9, 6, 5}}, {{2, 3, 9, 8, 7, 1, 1, 9, 6, 5}}},
        sized({2, 0}, {"no history", usual, {{1, 2, 3, 9, 1, 2, 8, 3}}, {{2, 3, 1, 2}}}),
        sized({0, 2}, {"no prehistory", usual, {{1, 9, 8, 1, 9, 7, 9}}, {{9, 8, 9, 7}}}),
        sized({2, 2}, {"a channel", analog(kLeading, 5, 1), {secondRises}, {secondKept}, 2}),
        {"switched off", analog(kOff, 5), {{1, 2, 3, 9, 8, 7, 6}}, {{}}},
        {"no source", [](SynchroSettings& s) { s.synchroOnAnalog = false; }, {{1, 2, 3, 9, 8, 7, 6}}, {{}}},
        {"analog first",
         [](SynchroSettings& s) { s.synchroOnPort = true; },
         {{2, 2, 2, 3, 9, 8, 7}},
         {{2, 3, 9, 8, 7}}},
        {"threshold beyond 16 bits is not cut", analog(kLeading, 65541), {{1, 2, 3, 9, 8, 7, 6}}, {{}}},
        {"bit rises", port(kLeading, 1), {{0, 1, 1, 2, 4, 5}}, {{1, 1, 2, 4, 5}}},
        {"bit falls", port(kFalling, 1), {{2, 3, 2, 1, 4, 5}}, {{3, 2, 1, 4, 5}}},
        {"bit of the first word",
         port(kLeading, 0),
         {{0, 1, 0, 1, 0, 1, 1, 0, 2, 0, 3, 0}},
         {{0, 1, 0, 1, 1, 0, 2, 0, 3, 0}},
         2},
        of(shifted(0, 0, 4), {"bit behind a shift", port(kLeading, 1), {{0, 1, 2, 0x20, 4, 5}}, {{1, 2, 0x20, 4, 5}}}),
        {"bit switched off", port(kOff, 1), {{0, 1, 1, 2, 4, 5}}, {{}}},
    };
    for (const Row& row : rows) {
        checkStream(row);
    }
}

TEST(Synchronisation, ReadsTheWordAsTheBoardLaysItOut) {
    const Change usual = analog(kLeading, 6);
    const Row rows[] = {
        packed(shifted(0, 4), {"bit clear: the code", usual, {{1, 2, 0x5F, 0x60, 4, 3}}, {{2, 0x5F, 0x60, 4, 3}}}),
        packed(shifted(1, 4), {"bit set: the word", usual, {{1, 2, 5, 6, 4, 3}}, {{2, 5, 6, 4, 3}}}, 16),
        packed(shifted(1, 4),
               {"bit set: its low bits", usual, {{0x41, 0x42, 0x68, 0x16, 4, 3}}, {{0x42, 0x68, 0x16, 4, 3}}}, 32),
        of(shifted(0, 4), {"not packed: the word", usual, {{1, 2, 5, 6, 4, 3}}, {{2, 5, 6, 4, 3}}}),
        sized({2, 2}, of(backward(),
                         {"the second of two is the second", analog(kLeading, 5, 1), {secondRises}, {secondKept}, 2})),
        sized(
            {1, 3},
            of(backward(),
               {"the first lies in the next frame", analog(kLeading, 5), {{1, 2, 3, 4, 9, 8, 7, 6}}, {{3, 4, 9, 8}}})),
        sized({0, 2}, of(backward(), {"what is before a record is not compared with what is behind it",
                                      analog(kLeading, 5),
                                      {{1, 1, 1, 9, 8, 7, 9, 9, 9, 9, 9}},
                                      {{1, 9}}})),
    };
    for (const Row& row : rows) {
        checkStream(row);
    }
}

TEST(Synchronisation, AnEdgeTakesTwoSamplesOfItsChannel) {
    for (const Row& row : {Row{"falls below its first channel", analog(kFalling, 5, 1), {{9, 3, 1, 1, 1, 1}}, {{}}, 2},
                           Row{"its own first sample", analog(kFalling, 5, 1), {{1, 9, 1, 3, 1, 1}}, {{1, 3}}, 2},
                           Row{"a bit that is set from the first frame on", port(kLeading, 0), {{1, 1, 0}}, {{}}}}) {
        Row bare = row;
        bare.sizes = {0, 1};
        checkStream(bare);
    }
}

TEST(Synchronisation, TheThreadGetsWholeRecordsWithTheirEvents) {
    SynchroEvaluator evaluator(triggered(), {2, 3}, {4, 1, false, {}});
    const int32_t block[] = {1, 2, 3, 9, 8, 7, 1, 1, 1, 9, 9, 9};
    EvaluatedBlock out;
    EXPECT_EQ(evaluator.evaluate(std::as_bytes(std::span(block)), out), 0);
    EXPECT_EQ(out.recordFrames, 5U);
    EXPECT_EQ(out.data.size(), 5 * sizeof(int32_t));
    EXPECT_EQ(out.events.size(), 1U);
    const auto rest = out.rest;
    EXPECT_EQ(rest.size(), 6 * sizeof(int32_t)) << "the record's memory is used again once it is written";
    EXPECT_EQ(evaluator.evaluate(rest, out), 0);
    EXPECT_EQ(out.data.size(), 5 * sizeof(int32_t));
    EXPECT_EQ(out.events.size(), 1U);
    EXPECT_TRUE(out.rest.empty());
    EXPECT_FALSE(evaluator.takesWholeBlocks());
    EXPECT_EQ(evaluator.evaluate(std::as_bytes(std::span(block).first(2)), out), 0);
    EXPECT_TRUE(out.data.empty());
    EXPECT_TRUE(out.events.empty());

    SynchroEvaluator through({}, {}, {2, 1, false, {}});
    EXPECT_EQ(through.evaluate(std::as_bytes(std::span(block)), out), 0);
    EXPECT_EQ(out.data.data(), static_cast<const void*>(block));
    EXPECT_EQ(out.recordFrames, 0U);
    EXPECT_TRUE(out.rest.empty());
    EXPECT_TRUE(through.takesWholeBlocks());
}

}  // namespace tarno2::test
