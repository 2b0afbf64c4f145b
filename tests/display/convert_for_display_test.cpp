#include "display/convert_for_display.h"

#include <gmock/gmock.h>

namespace tarno2 {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;

/// Both converters behind one name.
template <typename Word>
int32_t convert(DisplayConverter& converter, const std::vector<Word>& raw, size_t channels, int32_t mode,
                const DigitalSettings& digital, std::vector<Word>& out, size_t& columns, std::vector<int32_t>& colors) {
    const Word* samples = nullptr;
    size_t count = 0;
    const auto call = [&](auto function) {
        return function(converter, raw.data(), raw.size(), &samples, &count, channels, &columns, mode, digital,
                        std::vector<int32_t>{0xA, 0xB}, &colors);
    };
    int32_t result = 0;
    if constexpr (sizeof(Word) == 2) {
        result = call(ConvertForDisplay16);
    } else {
        result = call(ConvertForDisplay32);
    }
    out.assign(samples, samples + count);
    return result;
}

template <typename Word>
std::vector<Word> shown(const SampleWordFormat& word, const std::vector<Word>& raw, int32_t mode, size_t channels = 1,
                        const DigitalSettings& digital = {}) {
    DisplayConverter converter{word, true, {}, {}};
    std::vector<Word> out;
    size_t columns = 0;
    std::vector<int32_t> colors;
    EXPECT_EQ(convert(converter, raw, channels, mode, digital, out, columns, colors), 1);
    EXPECT_EQ(colors.size(), columns);
    return out;
}

TEST(ConvertForDisplay, TakesTheCodeOutOfEveryFormat) {
    // Width, flags, code shift, port shift, signed; word, its code.
    struct Case {
        SampleWordFormat word;
        int64_t raw, code;
    };
    const Case cases[] = {
        {{2, 0, 4, 0, true}, 0x7FF5, 0x7FF},
        {{2, 0, 4, 0, true}, -32768 + 3, -2048},
        {{2, 0, 4, 0, false}, -1, 0xFFF},
        {{2, 0, 4, 0, false}, 0x1235, 0x123},
        {{2, 0, 0, 0, false}, -2, -2},  // 0xFFFE: the bits of an unsigned number
        {{2, 1, 0, 12, true}, 0x3800, -2048},
        {{2, 1, 0, 12, true}, 0x57FF, 2047},
        {{2, 1, 0, 12, false}, 0x3800, 2048},
        {{2, 1, 0, 12, false}, -1, 4095},
        {{2, 1, 0, 16, true}, -5, -5},
        {{2, 1, 0, 0, true}, 0x1234, 0},
        {{4, 0, 8, 0, true}, -0x7FFFFF00LL, -0x7FFFFF},
        {{4, 0, 8, 0, true}, 0x123456FF, 0x123456},
        {{4, 0, 8, 0, false}, -1, 0xFFFFFF},
        {{4, 0, 8, 0, false}, 0x123456FF, 0x123456},
        {{4, 1, 0, 24, true}, 0x01800000, -0x800000},
        {{4, 1, 0, 24, true}, 0x027FFFFF, 0x7FFFFF},
        {{4, 1, 0, 24, false}, 0x01800000, 0x800000},
        {{4, 1, 0, 24, false}, -1, 0xFFFFFF},
        {{4, 1, 0, 32, true}, -7, -7},
    };
    for (const Case& c : cases) {
        if (c.word.sampleWidth == 2) {
            EXPECT_THAT(shown<int16_t>(c.word, {static_cast<int16_t>(c.raw)}, 0),
                        ElementsAre(static_cast<int16_t>(c.code)));
        } else {
            EXPECT_THAT(shown<int32_t>(c.word, {static_cast<int32_t>(c.raw)}, 0),
                        ElementsAre(static_cast<int32_t>(c.code)));
        }
    }
}

DigitalSettings lines(int32_t fullScale, std::vector<DigitalLineSettings> first) {
    DigitalSettings digital;
    digital.fullScaleCode = fullScale;
    std::copy(first.begin(), first.end(), digital.lines.begin());
    return digital;
}

TEST(ConvertForDisplay, DrawsLinesByLevelAndAmplitude) {
    // Two lines below the code; line 0 is 1, line 1 is 0, then the other way round.
    const std::vector<int16_t> raw{0x0041, 0x0042};
    const auto digital = lines(2047, {{-1000, 1000, 1}, {100, 500, 2}});
    // -2047 + 2047, trunc(204.7); -2047, trunc(204.7 + 1023).
    EXPECT_THAT(shown<int16_t>({2, 0, 2, 0, true}, raw, 2, 1, digital), ElementsAre(0, 204, -2047, 1227));
    // 0 + 2047, trunc(1100 * 0.001 * 2047 * 0.5 = 1125.85); 0, trunc(1125.85 + 1023).
    EXPECT_THAT(shown<int16_t>({2, 0, 2, 0, false}, raw, 2, 1, digital), ElementsAre(2047, 1125, 0, 2148));
    // The same lines above the code, in words of either width.
    EXPECT_THAT(shown<int16_t>({2, 1, 0, 14, true}, {0x4001, -0x7FFF}, 2, 1, digital),
                ElementsAre(0, 204, -2047, 1227));
    EXPECT_THAT(shown<int32_t>({4, 1, 0, 30, false}, {0x40000001, -0x7FFFFFFF}, 2, 1, digital),
                ElementsAre(2047, 1125, 0, 2148));
}

TEST(ConvertForDisplay, KeepsTheAmplitudeAsA16BitNumber) {
    const SampleWordFormat word{4, 0, 1, 0, true};
    // 40000 becomes 40000 - 65536; 8388607 = 0x7FFFFF becomes 0xFFFF = -1.
    EXPECT_THAT(shown<int32_t>(word, {1}, 2, 1, lines(40000, {{0, 1000, 0}})), ElementsAre(-25536));
    EXPECT_THAT(shown<int32_t>(word, {1}, 2, 1, lines(8388607, {{1000, 1000, 0}})), ElementsAre(8388606));
    // A full 16-bit scale of unsigned codes comes out whole again.
    EXPECT_THAT(shown<int16_t>({2, 0, 1, 0, false}, {1}, 2, 1, lines(65535, {{-1000, 1000, 0}})),
                ElementsAre(static_cast<int16_t>(65535)));
}

TEST(ConvertForDisplay, PutsTheColumnsTogether) {
    DisplayConverter converter{{2, 0, 2, 0, true}, true, {}, {}};
    const auto digital = lines(1000, {{0, 100, 0xC}, {500, 100, 0xD}});
    // Two frames of two channels and a part of a third; lines come from the first sample of a frame.
    const std::vector<int16_t> raw{0x11, 0x2F, -3, -8, 0x7F};
    struct Case {
        int32_t mode;
        size_t columns;
        std::vector<int16_t> samples;
        std::vector<int32_t> colors;
    };
    for (const Case& c : {Case{0, 2, {4, 11, -1, -2}, {0xA, 0xB}},
                          Case{1, 4, {4, 11, 100, 500, -1, -2, 100, 500}, {0xA, 0xB, 0xC, 0xD}},
                          Case{2, 2, {100, 500, 100, 500}, {0xC, 0xD}}, Case{3, 2, {4, 11, -1, -2}, {0xA, 0xB}},
                          Case{-1, 2, {4, 11, -1, -2}, {0xA, 0xB}}}) {
        std::vector<int16_t> out;
        size_t columns = 0;
        std::vector<int32_t> colors;
        EXPECT_EQ(convert(converter, raw, 2, c.mode, digital, out, columns, colors), 1);
        EXPECT_EQ(columns, c.columns);
        EXPECT_THAT(out, ElementsAreArray(c.samples));
        EXPECT_EQ(colors, c.colors);
    }
}

TEST(ConvertForDisplay, CountsLines) {
    struct Case {
        SampleWordFormat word;
        uint32_t lines;
    };
    for (const Case& c : {Case{{2, 0, 0, 12, true}, 0}, Case{{2, 0, 4, 12, true}, 4}, Case{{2, 1, 4, 12, true}, 4},
                          Case{{2, 1, 0, 16, true}, 0}, Case{{2, 1, 0, 99, true}, 0}, Case{{4, 1, 0, 24, true}, 8},
                          Case{{4, 1, 0, 0, true}, 32}, Case{{4, 0, 40, 0, true}, 32}}) {
        EXPECT_EQ(c.word.digitalLines(), c.lines);
    }
    EXPECT_TRUE(shown<int16_t>({2, 0, 0, 0, true}, {1, 2, 3}, 2).empty());
}

TEST(ConvertForDisplay, TellsWhatIsMissing) {
    DisplayConverter converter;
    const std::vector<int16_t> raw{1, 2};
    const int16_t* samples = raw.data();
    size_t count = 7;
    size_t columns = 7;
    std::vector<int32_t> colors;
    const auto call = [&](const int16_t* words, size_t size, const int16_t** out, size_t* outCount, size_t channels,
                          size_t* outColumns, std::vector<int32_t>* outColors) {
        return ConvertForDisplay16(converter, words, size, out, outCount, channels, outColumns, 0, {}, {}, outColors);
    };
    EXPECT_EQ(call(raw.data(), 2, nullptr, &count, 1, &columns, &colors), -1);
    EXPECT_EQ(call(raw.data(), 2, &samples, nullptr, 1, &columns, &colors), -1);
    EXPECT_EQ(call(raw.data(), 2, &samples, &count, 1, nullptr, &colors), -1);
    EXPECT_EQ(call(raw.data(), 2, &samples, &count, 1, &columns, nullptr), -1);
    EXPECT_EQ(call(nullptr, 2, &samples, &count, 1, &columns, &colors), -2);
    EXPECT_EQ(samples, nullptr);
    EXPECT_EQ(count + columns, 0U);
    EXPECT_EQ(call(raw.data(), 0, &samples, &count, 1, &columns, &colors), -2);
    EXPECT_EQ(call(raw.data(), 2, &samples, &count, 0, &columns, &colors), -2);
}

TEST(ConvertForDisplay, PassesBlocksThroughWhileOff) {
    DisplayConverter converter{{2, 0, 4, 0, true}, false, {}, {}};
    const std::vector<int16_t> raw{0x1235, 5, 6};
    const int16_t* samples = nullptr;
    size_t count = 0;
    size_t columns = 0;
    std::vector<int32_t> colors;
    EXPECT_EQ(ConvertForDisplay16(converter, raw.data(), 3, &samples, &count, 1, &columns, 2, {}, {}, &colors), 1);
    EXPECT_EQ(samples, raw.data());
    EXPECT_EQ(count, 3U);
    EXPECT_EQ(columns, 1U);
}

}  // namespace
}  // namespace tarno2
