#include "config/settings/config_work.h"

#include <array>
#include <clocale>
#include <cmath>
#include <gmock/gmock.h>
#include <limits>
#include <string>
#include <vector>

#include "tests/support/temporary_folder.h"

namespace tarno2::test {
namespace {

using testing::ElementsAre;

class ConfigWork : public testing::Test {
protected:
    /// What a file holds after the calls of `write`.
    template <typename Write>
    std::string written(Write write) {
        CConfigWork config;
        EXPECT_TRUE(config.Open(path_, true));
        write(config);
        EXPECT_TRUE(config.close());
        return readFile(path_);
    }
    TemporaryFolder folder_;
    std::string path_ = folder_.file("x.cfg");
};

TEST_F(ConfigWork, WritesEachPieceOfAnEntry) {
    struct Case {
        const char* key;
        const char* value;
        const char* comment;
        bool more;
        const char* text;  // null: refused
    };
    const Case cases[] = {{"K", "v", "c", false, "//c\r\nK = v\r\n"},
                          {"K", "v", "c", true, "//c\r\nK = v "},
                          {"K", "v", nullptr, false, "K = v\r\n"},
                          {"K", "v", nullptr, true, "K = v\r\n"},
                          {nullptr, "v", nullptr, false, "\\          v\r\n"},
                          {nullptr, "v", nullptr, true, "v "},
                          {nullptr, nullptr, nullptr, false, "\r\n"},
                          {nullptr, nullptr, nullptr, true, "\r\n\\          "},
                          {"K", nullptr, "c", false, nullptr},
                          {nullptr, "v", "c", true, nullptr},
                          {nullptr, nullptr, "c", false, nullptr},
                          {"K", nullptr, nullptr, false, nullptr}};
    for (const auto& [key, value, comment, more, text] : cases) {
        const std::string got =
            written([&, key = key, value = value, comment = comment, more = more, text = text](CConfigWork& config) {
                EXPECT_EQ(config.WriteEntry(key, value, comment, more), text != nullptr);
            });
        EXPECT_EQ(got, text == nullptr ? "" : text);
    }
    CConfigWork closed;
    EXPECT_FALSE(closed.WriteEntry("K", "v", "c", false));
}

TEST_F(ConfigWork, BreaksListsBeforeEveryEighthElement) {
    const char* const shapes[] = {"0 ", "0 1 2 3 4 5 6 7 ", "0 1 2 3 4 5 6 7 \r\n\\          8 ",
                                  "0 1 2 3 4 5 6 7 \r\n\\          8 9 10 11 12 13 14 15 \r\n\\          16 17 18 19 "};
    const size_t counts[] = {1, 8, 9, 20};
    for (size_t i = 0; i < std::size(counts); ++i) {
        std::vector<int32_t> values(counts[i]);
        for (size_t k = 0; k < values.size(); ++k) {
            values[k] = static_cast<int32_t>(k);
        }
        const std::string text =
            written([&](CConfigWork& config) { EXPECT_TRUE(config.WriteInt32Array("L", values, "list", false)); });
        EXPECT_EQ(text, std::string("//list\r\nL = ") + shapes[i] + "\r\n\r\n");
        CConfigWork reader;
        std::vector<int32_t> back(values.size(), -1);
        ASSERT_TRUE(reader.Open(path_, false));
        EXPECT_TRUE(reader.GetInt32Array("L", back));
        EXPECT_EQ(back, values);
    }
}

TEST_F(ConfigWork, EveryTypeReadsBack) {
    CConfigWork reader;
    const auto expectList = [&](auto write, auto get, const auto& values, auto... hex) {
        written([&](CConfigWork& config) { EXPECT_TRUE((config.*write)("list", values, "c", hex...)); });
        auto back = values;
        std::fill(back.begin(), back.end(), 0);
        ASSERT_TRUE(reader.Open(path_, false));
        EXPECT_TRUE((reader.*get)("list", back));
        EXPECT_EQ(back, values);
    };
    const auto expectValue = [&](auto write, auto get, auto value, auto... hex) {
        written([&](CConfigWork& config) { EXPECT_TRUE((config.*write)("value", value, "c", hex...)); });
        auto back = decltype(value){};
        ASSERT_TRUE(reader.Open(path_, false));
        EXPECT_TRUE((reader.*get)("value", back));
        EXPECT_EQ(back, value);
    };
    using C = CConfigWork;
    for (const bool hex : {false, true}) {
        expectValue(&C::WriteUInt8, &C::GetUInt8, uint8_t{200}, hex);
        expectValue(&C::WriteInt16, &C::GetInt16, int16_t{-300}, hex);
        expectValue(&C::WriteInt32, &C::GetInt32, int32_t{-70000}, hex);
        expectList(&C::WriteUInt8Array, &C::GetUInt8Array, std::vector<uint8_t>{0, 1, 127, 128, 255, 3, 4, 5, 6}, hex);
        expectList(&C::WriteInt8Array, &C::GetInt8Array, std::vector<int8_t>{-128, -1, 0, 127}, hex);
        expectList(&C::WriteInt16Array, &C::GetInt16Array, std::vector<int16_t>{-32768, -1, 0, 32767}, hex);
        expectList(&C::WriteInt32Array, &C::GetInt32Array, std::vector<int32_t>{INT32_MIN, -1, 0, INT32_MAX}, hex);
    }
    expectValue(&C::WriteFloat, &C::GetFloat, -1.5F);
    expectValue(&C::WriteDouble, &C::GetDouble, 16777217.25);
    expectList(&C::WriteFloatArray, &C::GetFloatArray, std::vector<float>{-0.5F, 1e6F});
    expectList(&C::WriteDoubleArray, &C::GetDoubleArray, std::vector<double>{double{0.1F}, 16777216.0});
}

TEST_F(ConfigWork, FindsValuesInTextsWrittenByHand) {
    struct Case {
        const char* text;
        const char* anywhere;     // value of "Base"; null when there is none
        const char* atLineStart;  // likewise, when the key must begin a line
    };
    const Case cases[] = {
        {"Base = 1\r\n", "1", "1"},
        {"Base=1\n", "1", "1"},
        {"Base = 1", nullptr, nullptr},
        {"Base = \r\nX = 2\r\n", nullptr, nullptr},
        {"Base = \t a\tb c \t\r\n", "ab c", "ab c"},
        {"//Base = 1\r\nBase = 2\r\n", "2", "2"},
        {"  //Base = 1\r\n  Base = 2\r\n", "2", nullptr},
        {"X = 1 // Base = 3\r\nBase = 2\r\n", "2", "2"},
        {"DataBase = 7\r\nBase = 2\r\n", "7", "2"},
        {"X = my Base = 4\r\nBase = 2\r\n", "4", "2"},
        {"BaseName = 7\r\nBase = 2\r\n", "2", "2"},
        {"Base\t= 7\r\nBase = 2\r\n", "2", "2"},
        {"Base = //host/folder\r\n", "//host/folder", "//host/folder"},
        {"Base is\r\nDrq = 5\r\n", "5", "5"},
        {"Base ", nullptr, nullptr},
        {"Base = 1\r\nBase = 2\r\n", "1", "1"},
        {"Base = 1 \\\r\n\\ 2\r\n", "1 \\", "1 \\"},
        {"base = 1\r\n", nullptr, nullptr},
        {"// never ends", nullptr, nullptr},
        {"Base = \xE4\xEE\xEC \xFF\r\n", "\xE4\xEE\xEC \xFF", "\xE4\xEE\xEC \xFF"},
        {"", nullptr, nullptr},
    };
    for (const auto& [text, anywhere, atLineStart] : cases) {
        SCOPED_TRACE(text);
        CConfigWork config;
        LineConfigReader lines;
        config.loadText(text);
        lines.loadText(text);
        std::string value = "kept";
        EXPECT_EQ(config.GetStringCopy("Base", value), anywhere != nullptr);
        EXPECT_EQ(value, anywhere == nullptr ? "kept" : anywhere);
        value = "kept";
        EXPECT_EQ(lines.GetStringCopy("Base", value), atLineStart != nullptr);
        EXPECT_EQ(value, atLineStart == nullptr ? "kept" : atLineStart);
        EXPECT_FALSE(config.GetStringCopy("", value));
    }
}

TEST_F(ConfigWork, ParsesNumbers) {
    constexpr int32_t kKept = 77;
    const std::pair<const char*, int32_t> integers[] = {
        {"0x10", 16},           {"x10", 16},    {"10", 10},         {"1x", kKept},
        {"-5 V", -5},           {"abc", kKept}, {"0xffffffff", -1}, {"0x1ffffffff", kKept},
        {"99999999999", kKept}, {"+3", 3}};
    for (const auto& [text, expected] : integers) {
        CConfigWork config;
        config.loadText(std::string("K = ") + text + "\r\nA = " + text + " 4\r\n");
        int32_t value = kKept;
        EXPECT_TRUE(config.GetInt32("K", value)) << text;
        EXPECT_EQ(value, expected) << text;
    }
    CConfigWork config;
    config.loadText("W = 65793\r\nR = 1,5\r\nN = nan\r\nB = 1e999\r\nA = 1 x 1e99 \t 2,5 0x3\r\nI = 1 z 3\r\n");
    uint8_t byte = 0;
    int16_t word = 0;
    double real = 0.0;
    EXPECT_TRUE(config.GetUInt8("W", byte) && config.GetInt16("W", word));
    EXPECT_EQ(byte, 1);
    EXPECT_EQ(word, 257);
    EXPECT_TRUE(config.GetDouble("R", real));
    EXPECT_EQ(real, 1.0) << "a decimal comma ends the number";
    EXPECT_TRUE(config.GetDouble("B", real));
    EXPECT_EQ(real, 1.0) << "out of range";
    EXPECT_TRUE(config.GetDouble("N", real));
    EXPECT_TRUE(std::isnan(real));
    std::array<double, 6> reals = {9, 9, 9, 9, 9, 9};
    EXPECT_FALSE(config.GetDoubleArray("A", reals)) << "one element is missing";
    EXPECT_THAT(reals, ElementsAre(1, 0, 0, 2, 0, 9));
    std::array<int32_t, 3> integersOfList = {7, 7, 7};
    EXPECT_TRUE(config.GetInt32Array("I", integersOfList));
    EXPECT_THAT(integersOfList, ElementsAre(1, 7, 3));
}

TEST_F(ConfigWork, ReadsListsOverSeveralLines) {
    CConfigWork config;
    config.loadText("A = a b\tc\r\n\\   d\n\\\\ e\r\n f\r\nB = 1\r\n");
    std::vector<std::string> values(6, "kept");
    EXPECT_FALSE(config.GetStringArrayCopy("A", values));
    EXPECT_THAT(values, ElementsAre("a", "b", "c", "d", "e", "kept"));
    EXPECT_TRUE(config.GetStringArrayCopy("A", std::span(values).first(2)));
    EXPECT_FALSE(config.GetStringArrayCopy("absent", values));
    EXPECT_EQ(config.FindRaw("A", false), " a b\tc\r");
    EXPECT_EQ(config.FindRaw("A", true), " a b\tc\r\n\\   d\n\\\\ e\r");
    std::array<int32_t, 0> none{};
    EXPECT_TRUE(config.GetInt32Array("B", none));
}

TEST_F(ConfigWork, CutsWhatExceedsTheRoom) {
    CConfigWork config;
    const std::string longText(1 << 20, 'x');
    config.loadText("K = " + longText + "\r\nA = " + longText + " b\r\n");
    std::array<char, 4> room = {'#', '#', '#', '#'};
    EXPECT_TRUE(config.GetString("K", std::span(room).first(3)));
    EXPECT_THAT(room, ElementsAre('x', 'x', '\0', '#'));
    EXPECT_TRUE(config.GetString("K", {}));
    std::string value;
    EXPECT_TRUE(config.GetStringCopy("K", value));
    EXPECT_EQ(value.size(), CConfigWork::kTextRoom - 1);
    std::array<std::string, 2> tokens;
    EXPECT_TRUE(config.GetStringArrayCopy("A", tokens));
    EXPECT_EQ(tokens[0].size(), CConfigWork::kTokenRoom - 1);
    EXPECT_EQ(tokens[1], "b");
}

TEST_F(ConfigWork, OpensFilesForOneUserAtATime) {
    CConfigWork config;
    EXPECT_FALSE(config.Open(path_, false)) << "there is none";
    EXPECT_FALSE(config.Open(folder_.path(), false)) << "a folder";
    EXPECT_FALSE(config.Open(folder_.file("no/such.cfg"), true));
    ASSERT_TRUE(config.Open(path_, true));
    CConfigWork second;
    EXPECT_FALSE(second.Open(path_, true));
    EXPECT_FALSE(second.Open(path_, false));
    EXPECT_TRUE(config.WriteInt32("K", 1, "c", false));
    ASSERT_TRUE(config.Open(path_, false)) << "the object serves another file";
    int32_t value = 0;
    EXPECT_TRUE(config.GetInt32("K", value));
    EXPECT_EQ(value, 1);
    EXPECT_FALSE(config.WriteInt32("K", 1, "c", false)) << "it is read now";
}

TEST_F(ConfigWork, TellsWhenTheDiskIsFull) {
    CConfigWork config;
    if (!config.Open("/dev/full", true)) {
        GTEST_SKIP() << "this system has no device that is always full";
    }
    EXPECT_FALSE(config.WriteInt32("K", 1, "c", false));
    EXPECT_FALSE(config.WriteInt32Array("A", std::vector<int32_t>(9), "c", false));
    EXPECT_FALSE(config.close());
}

TEST_F(ConfigWork, NumbersHaveAPointInEveryLocale) {
    const std::string before = std::setlocale(LC_ALL, nullptr);
    if (std::setlocale(LC_ALL, "ru_RU.UTF-8") == nullptr && std::setlocale(LC_ALL, "Russian") == nullptr) {
        GTEST_SKIP() << "no Russian locale here";
    }
    EXPECT_EQ(written([](CConfigWork& config) { config.WriteDouble("D", 0.5, "c"); }), "//c\r\nD = 0.500000\r\n\r\n");
    CConfigWork config;
    ASSERT_TRUE(config.Open(path_, false));
    double value = 0.0;
    config.GetDouble("D", value);
    EXPECT_EQ(value, 0.5);
    std::setlocale(LC_ALL, before.c_str());
}

}  // namespace
}  // namespace tarno2::test
