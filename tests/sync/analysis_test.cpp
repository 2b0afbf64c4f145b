#include <numeric>

#include "tests/sync/rows.h"

namespace tarno2::test {

namespace {

enum Level { kAbove = 0, kBelow = 1 };
enum Bit { kOne = 0, kZero = 1 };

Change start(int32_t mode, int32_t code, int32_t channel = 0) {
    return [=](SynchroSettings& s) {
        s.startAnalogEnabled = true;
        s.AnalyzeAnalogStartMode = mode;
        s.AnalyzeAnalogStartChannel = channel;
        s.startCode = code;
    };
}

Change write(Level mode, int32_t code, int32_t channel = 0) {
    return [=](SynchroSettings& s) {
        s.writeAnalogEnabled = true;
        s.AnalyzeAnalogWriteMode = mode;
        s.AnalyzeAnalogWriteChannel = channel;
        s.writeCode = code;
    };
}

Change stop(Level mode, int32_t code, int32_t channel = 0) {
    return [=](SynchroSettings& s) {
        s.stopAnalogEnabled = true;
        s.AnalyzeAnalogStopMode = mode;
        s.AnalyzeAnalogStopChannel = channel;
        s.stopCode = code;
    };
}

/// Analysis by the port with a start, a write or a stop condition.
Change port(char stage, Bit mode, int32_t bit) {
    return [=](SynchroSettings& s) {
        s.analysisOnAnalog = false;
        s.analysisOnPort = true;
        (stage == 'a' ? s.portStartEnabled : stage == 'w' ? s.portWriteEnabled : s.portStopEnabled) = true;
        (stage == 'a' ? s.AnalyzePortStartMode : stage == 'w' ? s.AnalyzePortWriteMode : s.AnalyzePortStopMode) = mode;
        (stage == 'a' ? s.AnalyzePortStartBit : stage == 'w' ? s.AnalyzePortWriteBit : s.AnalyzePortStopBit) = bit;
    };
}

Change both(const Change& first, const Change& second) {
    return [=](SynchroSettings& s) {
        first(s);
        second(s);
    };
}

void nothing(SynchroSettings& /*settings*/) {}

/// 250 frames of four channels whose words are 0 but for one.
Samples oneIn1000(size_t index) {
    Samples block(1000, 0);
    block[index] = 9;
    return block;
}

Samples from(const Samples& block, size_t first, size_t end) {
    return {block.begin() + static_cast<std::ptrdiff_t>(first), block.begin() + static_cast<std::ptrdiff_t>(end)};
}

}  // namespace

TEST(Analysis, KeepsWhatItsConditionsAskFor) {
    const Row rows[] = {
        {"no condition: all but the last frame", nothing, {{1, 2, 3}, {4, 5}}, {{1, 2}, {4}}},
        {"starts above, strictly, and goes on", start(kAbove, 5), {{1, 5, 6, 7, 8}, {0, 1, 2}}, {{6, 7}, {0, 1}}},
        {"starts below, strictly", start(kBelow, 5), {{7, 5, 4, 9, 9}}, {{4, 9}}},
        {"starts in a later block", start(kAbove, 5), {{1, 2}, {3, 9, 8, 7}}, {{}, {9, 8}}},
        {"blocks of one frame hold nothing but may start", start(kAbove, 5), {{6}, {7}, {1, 2}}, {{}, {}, {1}}},
        {"writes above", write(kAbove, 5), {{6, 1, 7, 5, 8, 9}}, {{6, 7, 8}}},
        {"writes below", write(kBelow, 5), {{6, 1, 7, 5, 2, 1}}, {{1, 2}}},
        {"writes whole frames", write(kAbove, 5, 1), {{1, 6, 2, 5, 3, 7, 4, 8}}, {{1, 6, 3, 7}}, 2},
        {"stops above", stop(kAbove, 5), {{1, 2, 5, 3}, {1, 2, 3, 6, 4}}, {{1, 2, 5}, {1, 2}}, 1, 1},
        {"stops below", stop(kBelow, 5), {{6, 7, 5, 4, 9}}, {{6, 7}}, 1, 1},
        {"starts and stops", both(start(kAbove, 5), stop(kBelow, 0)), {{1, 6, 7, 8, -1, 9}}, {{6, 7}}, 1, 1},
        {"stops at the frame that starts", both(start(kAbove, 5), stop(kAbove, 6)), {{1, 2, 7, 8}}, {{}}, 1, 1},
        {"stops at once", stop(kAbove, 5), {{6, 7, 8}}, {{}}, 1, 1},
        {"stops at the second frame", stop(kAbove, 5), {{1, 7, 8}}, {{}}, 1, 1},
        {"stop before the start is none", both(start(kAbove, 5), stop(kBelow, 0)), {{-1, 6, 7, 8}}, {{6, 7}}},
        {"a last part of a frame is left out", nothing, {{1, 2, 3, 4, 5}}, {{1, 2}}, 2},
        {"less than a frame", nothing, {{1}, {1, 2, 3, 4}}, {{}, {1, 2}}, 2},
        {"a mode that there is not", start(3, 5), {{1, 6, 4}}, {{}}},
        {"no source", [](SynchroSettings& s) { s.analysisOnAnalog = false; }, {{1, 2, 3}}, {{}}},
        {"analog comes first",
         both(start(kAbove, 5), [](SynchroSettings& s) { s.analysisOnPort = true; }),
         {{1, 6, 7}},
         {{6}}},
        only(16, {"threshold of 16 bits", start(kAbove, 65541), {{1, 6, 7}}, {{6}}}),
        only(32, {"threshold of 32 bits", start(kAbove, 65541), {{1, 65542, 7}}, {{65542}}}),
        only(16, {"nothing is above the largest word", start(kAbove, 32767), {{1, 32767, 7}}, {{}}}),
        only(32, {"all are below what is beyond", start(kBelow, INT32_MAX), {{1, 2}}, {{1}}}),
    };
    for (const Row& row : rows) {
        checkRow(row, analysis());
    }
}

TEST(Analysis, LooksForStartAndStopInAPartOfTheBlock) {
    const Samples at62 = oneIn1000(248);
    const Samples at62Third = oneIn1000(250);
    const Samples at61Third = oneIn1000(246);
    Samples tail = oneIn1000(400);
    const Row rows[] = {
        {"first channel, last frame looked at", start(kAbove, 5), {at62}, {from(at62, 248, 996)}, 4},
        {"third channel, the same frame", start(kAbove, 5, 2), {at62Third}, {{}}, 4},
        {"third channel, the frame before", start(kAbove, 5, 2), {at61Third}, {from(at61Third, 244, 996)}, 4},
        {"stop beyond", stop(kAbove, 5), {tail}, {from(tail, 0, 996)}, 4},
        {"stop within", stop(kAbove, 5), {at62}, {from(at62, 0, 244)}, 4, 1},
        {"write looks everywhere", write(kAbove, 5), {tail}, {from(tail, 400, 404)}, 4},
        {"three frames, second channel", start(kAbove, 5, 1), {{0, 0, 0, 9, 0, 0}}, {{}}, 2},
        {"three frames, first channel", start(kAbove, 5), {{0, 0, 9, 0, 0, 0}}, {{9, 0}}, 2},
    };
    for (const Row& row : rows) {
        checkRow(row, analysis());
    }
}

TEST(Analysis, ReadsTheWordAsTheBoardLaysItOut) {
    // In packed words 0x5F and 0x60 have the codes 5 and 6 above four lines of the port.
    const Row rows[] = {
        {"format bit set: the code", start(kAbove, 5), {{0x5F, 0x60, 0x61}}, {{0x60}}, 1, 0, shifted(1, 4), true},
        {"the code below", start(kBelow, -1), {{0, -0x10, -0x11, 7}}, {{-0x11}}, 1, 0, shifted(1, 4), true},
        {"format bit clear: the word", start(kAbove, 0x5E), {{0x5E, 0x5F, 0x61}}, {{0x5F}}, 1, 0, shifted(2, 4), true},
        {"not packed: the word", start(kAbove, 0x5E), {{0x5E, 0x5F, 0x61}}, {{0x5F}}, 1, 0, shifted(1, 4)},
        {"low 20 bits", start(kBelow, 0), {{5, 0x180000, 7}}, {{0x180000}}, 1, 0, shifted(0, 4), true, 32},
        {"low 16 bits", start(kBelow, 0), {{5, 0x18000, 7}}, {{0x18000}}, 1, 0, shifted(0, 0), true, 32},
        {"shift modulo 32", start(kAbove, 5), {{0x5F, 0x60, 0x61}}, {{0x60}}, 1, 0, shifted(1, 36), true},
        of(backward(),
           {"the second of three is the last", write(kAbove, 5, 1), {{7, 7, 0, 0, 0, 7, 0, 0, 0}}, {{0, 0, 7}}, 3}),
        of(backward(), {"the first lies in the next frame", write(kAbove, 5), {{0, 1, 9, 2, 0, 3}}, {{0, 1}}, 2}),
        of(backward(), {"and nowhere for the last frame", start(kAbove, 5), {{9}, {9, 9, 8}}, {{}, {9, 9}}}),
    };
    for (const Row& row : rows) {
        checkRow(row, analysis());
    }
}

TEST(Analysis, AsksBitsOfThePort) {
    const Row rows[] = {
        {"starts at 1", port('a', kOne, 1), {{0, 1, 2, 0, 0}}, {{2, 0}}},
        {"starts at 0", port('a', kZero, 1), {{2, 3, 1, 2, 0}}, {{1, 2}}},
        {"writes at 1", port('w', kOne, 0), {{1, 2, 3, 4, 5}}, {{1, 3}}},
        {"writes at 0", port('w', kZero, 0), {{1, 2, 3, 4, 5}}, {{2, 4}}},
        {"stops at 1", port('s', kOne, 2), {{1, 2, 3, 4, 5}}, {{1, 2}}, 1, 1},
        {"stops at 0", port('s', kZero, 0), {{1, 3, 5, 4, 5}}, {{1, 3}}, 1, 1},
        of(backward(), {"asks the first word", port('w', kOne, 0), {{1, 0, 0, 1, 1, 0, 0, 0}}, {{1, 0, 1, 0}}, 2}),
        of(shifted(0, 4, 4), {"behind a shift", port('a', kOne, 1), {{0x10, 0x02, 0x20, 0}}, {{0x20}}}),
        only(16, {"bit 16 of 16 is never set", port('a', kOne, 16), {{-1, 1, 2}}, {{}}}),
        only(32, {"bit 16 of 32", port('a', kOne, 16), {{1, 0x10000, 2}}, {{0x10000}}}),
        of(shifted(0, 4, 4), {"beyond 16 bits: the sign", port('a', kOne, 13), {{1, 0x7FFF, -2, 2}}, {{-2}}}, false,
           16),
    };
    for (const Row& row : rows) {
        checkRow(row, analysis());
    }
}

TEST(Analysis, BadCallsGiveNothing) {
    ConditionAnalyzer analyzer(analysis(), {}, {});
    const int32_t block[] = {1, 2, 3, 4};
    const int32_t* words = block;
    size_t count = 7;
    size_t channels = 7;
    const auto call = [&](const int32_t* samples, size_t samplesCount, size_t channelCount) {
        words = block;
        count = channels = 7;
        return Analyze32(analyzer, samples, samplesCount, &words, &count, channelCount, &channels, false);
    };
    for (const int32_t result : {call(nullptr, 4, 1), call(block, 0, 1), call(block, 4, 0)}) {
        EXPECT_EQ(result, -2);
        EXPECT_EQ(words, nullptr);
        EXPECT_EQ(count, 0U);
        EXPECT_EQ(channels, 0U);
    }
    EXPECT_EQ(Analyze32(analyzer, block, 4, nullptr, &count, 1, &channels, false), -1);
    EXPECT_EQ(Analyze32(analyzer, block, 4, &words, nullptr, 1, &channels, false), -1);
    EXPECT_EQ(Analyze32(analyzer, block, 4, &words, &count, 1, nullptr, false), -1);
    EXPECT_EQ(call(block, 4, 1), 0);
    EXPECT_EQ(count, 3U);

    // More samples than a record can have.
    SynchroSettings synchro;
    synchro.SynchroAnalyzeMode = 2;
    ConditionAnalyzer large(synchro, {INT32_MAX, INT32_MAX}, {});
    EXPECT_EQ(Analyze32(large, block, 4, &words, &count, 4, &channels, false), -3);
    EXPECT_EQ(words, nullptr);
    EXPECT_EQ(count + channels, 0U);
}

}  // namespace tarno2::test
