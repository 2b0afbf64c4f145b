// Formats of scan elements, lists of rates and times of frames.

#include "drivers/iio/scan_layout.h"

#include <cstring>
#include <gmock/gmock.h>

#include "drivers/iio/timestamp_watch.h"

namespace tarno2::drivers {
namespace {

using testing::ElementsAre;

ScanFormat scan(bool isSigned, uint32_t bits, uint32_t length, uint32_t shift = 0, bool bigEndian = false) {
    return {.bits = bits, .length = length, .shift = shift, .isSigned = isSigned, .bigEndian = bigEndian};
}

TEST(ScanLayout, ReadsEveryFormatIntoOneWord) {
    struct Row {
        ScanFormat format;
        std::vector<uint8_t> field;
        int64_t code;       // of the word
        double ofTheBoard;  // what the board means by it
    };
    const Row rows[] = {
        {scan(true, 16, 16), {0x34, 0x92}, -28108, -28108},
        {scan(true, 16, 16, 0, true), {0x34, 0x92}, 0x3492, 0x3492},
        {scan(false, 12, 16, 4, true), {0xFE, 0xD7}, 0xFED, 0xFED},
        {scan(true, 12, 16, 4, true), {0xFE, 0xD7}, -19, -19},
        {scan(true, 24, 32), {0x01, 0x00, 0x80, 0xFF}, -8388607, -8388607},
        {scan(true, 24, 32, 8), {0x77, 0x01, 0x00, 0x80}, -8388607, -8388607},
        {scan(false, 8, 8), {0xFF}, 255, 255},
        {scan(true, 7, 8, 1), {0x81}, -64, -64},
        {scan(true, 32, 32, 0, true), {0x80, 0, 0, 1}, -2147483647, -2147483647},
        {scan(false, 32, 32), {0, 0, 0, 0x80}, 0, 2147483648.0},
        {scan(false, 32, 32), {0, 0, 0, 0}, -2147483648, 0},
        {scan(true, 64, 64), {0, 0, 0, 0, 0xFE, 0xFF, 0xFF, 0xFF}, -2, -8589934592.0},
        {scan(true, 40, 64, 8), {9, 0, 0, 0, 0x80, 0xFF, 9, 9}, -8388608, -2147483648.0},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(testing::Message() << row.format.bits << "/" << row.format.length << ">>" << row.format.shift);
        ASSERT_TRUE(isReadable(row.format));
        std::vector<std::byte> source(3 + 2 * 16);
        std::memcpy(source.data() + 3 + 16, row.field.data(), row.field.size());
        std::byte destination[2 * 6] = {};
        convertChannel(row.format, source.data() + 3, 16, 2, 4, destination, 6);
        int32_t word = 0;
        std::memcpy(&word, destination + 6, sizeof word);
        EXPECT_EQ(word, row.code);
        EXPECT_EQ(deviceCode(row.format, word), row.ofTheBoard);
        if (row.format.bits <= 16) {
            convertChannel(row.format, source.data() + 3, 16, 2, 2, destination, 2);
            int16_t shortWord = 0;
            std::memcpy(&shortWord, destination + 2, sizeof shortWord);
            EXPECT_EQ(shortWord, row.code);
        }
    }
    EXPECT_FALSE(isReadable(scan(true, 24, 24)));
    EXPECT_FALSE(isReadable(scan(true, 14, 16, 4)));
    EXPECT_FALSE(isReadable(scan(true, 0, 16)));
}

TEST(ScanLayout, FindsTheSmallestWordForAllChannels) {
    struct Row {
        std::vector<ScanFormat> formats;
        uint32_t bytes;
        bool isSigned;
        int32_t minimum;
        int32_t maximum;
    };
    const Row rows[] = {
        {{scan(true, 16, 16)}, 2, true, -32768, 32767},
        {{scan(false, 12, 16)}, 2, false, 0, 4095},
        {{scan(false, 16, 16)}, 2, false, 0, 65535},
        {{scan(true, 16, 16), scan(false, 12, 16)}, 2, true, -32768, 32767},
        {{scan(true, 8, 8), scan(false, 12, 16)}, 2, true, -4096, 4095},
        {{scan(true, 16, 16), scan(false, 16, 16)}, 4, true, -65536, 65535},
        {{scan(true, 24, 32), scan(true, 16, 16)}, 4, true, -8388608, 8388607},
        {{scan(false, 32, 32)}, 4, true, INT32_MIN, INT32_MAX},
        {{scan(true, 64, 64)}, 4, true, INT32_MIN, INT32_MAX},
    };
    for (const Row& row : rows) {
        const ScanWord word = wordFor(row.formats);
        EXPECT_EQ(word.bytes, row.bytes) << row.maximum;
        EXPECT_EQ(word.isSigned, row.isSigned) << row.maximum;
        EXPECT_EQ(word.minimum, row.minimum);
        EXPECT_EQ(word.maximum, row.maximum);
    }
}

TEST(ScanLayout, ReadsListsAndLimitsOfRates) {
    const std::optional<ScanRates> list = readRates("8000 1.5 48000\n");
    ASSERT_TRUE(list.has_value());
    EXPECT_THAT(list->values, ElementsAre(1.5, 8000, 48000));
    const std::optional<ScanRates> limits = readRates("[1 0.5 1000.25]");
    ASSERT_TRUE(limits.has_value());
    EXPECT_TRUE(limits->values.empty());
    EXPECT_EQ(limits->minimum, 1.0);
    EXPECT_EQ(limits->maximum, 1000.25);
    for (const char* bad : {"", " ", "fast", "100 slow", "[1 2]", "[9 1 1]", "0", "-5"}) {
        EXPECT_FALSE(readRates(bad).has_value()) << bad;
    }
}

/// Times of frames a microsecond apart, with what `change` makes of them.
template <typename Change>
std::vector<int64_t> times(size_t from, size_t count, Change change) {
    std::vector<int64_t> result;
    for (size_t i = from; i < from + count; ++i) {
        result.push_back(change(static_cast<int64_t>(i)));
    }
    return result;
}

TEST(TimestampWatch, FindsLossesAndForgivesJitter) {
    const auto even = [](int64_t i) { return 1000 * i; };
    const auto jitter = [](int64_t i) { return 1000 * i + (i % 16 == 5 ? 3500 : i % 16 == 6 ? 2600 : 0); };
    const auto drift = [](int64_t i) { return 1005 * i; };
    const auto burst = [](int64_t i) { return i / 50 * 50000; };
    const auto lossInside = [](int64_t i) { return 1000 * (i < 150 ? i : i + 7); };
    const auto lossBetween = [](int64_t i) { return 1000 * (i < 100 ? i : i + 1); };
    const auto lossLast = [](int64_t i) { return 1000 * (i < 199 ? i : i + 2); };
    struct Row {
        const char* name;
        int64_t (*time)(int64_t);
        int64_t frame;  // in the second block of 100 frames; below 0: no loss
        uint64_t lost;
    };
    const Row rows[] = {{"even", even, -1, 0},    {"jitter", jitter, -1, 0},     {"drift", drift, -1, 0},
                        {"burst", burst, -1, 0},  {"inside", lossInside, 50, 7}, {"between", lossBetween, 0, 1},
                        {"last", lossLast, 99, 2}};
    for (const Row& row : rows) {
        TimestampWatch watch(1e6);
        EXPECT_FALSE(watch.look(times(0, 100, row.time)).has_value()) << row.name;
        const std::optional<TimestampWatch::Loss> loss = watch.look(times(100, 100, row.time));
        ASSERT_EQ(loss.has_value(), row.frame >= 0) << row.name;
        if (loss.has_value()) {
            EXPECT_EQ(loss->frame, static_cast<size_t>(row.frame)) << row.name;
            EXPECT_EQ(loss->frames, row.lost) << row.name;
        }
    }
}

}  // namespace
}  // namespace tarno2::drivers
