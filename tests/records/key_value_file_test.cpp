#include "records/key_value_file.h"

#include <array>
#include <atomic>
#include <clocale>
#include <cmath>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <optional>
#include <thread>
#include <vector>

#include "tests/support/temporary_folder.h"

namespace tarno2 {
namespace {

using test::readFile;
using test::TemporaryFolder;

KeyValueFile reading(std::string_view text) {
    KeyValueFile file;
    file.readText(text);
    return file;
}

/// What `write` puts into a file.
template <typename Write>
std::string written(Write write) {
    const TemporaryFolder folder;
    KeyValueFile file;
    EXPECT_TRUE(file.createForWriting(folder.file("out.txt")));
    EXPECT_TRUE(write(file));
    EXPECT_TRUE(file.close());
    return readFile(folder.file("out.txt"));
}

TEST(KeyValueFileWriter, WritesEveryScalarForm) {
    EXPECT_EQ(written([](KeyValueFile& f) {
                  return f.writeComment("Ё") && f.writeEmptyLine() && f.writeInt8("A", -1) &&
                         f.writeInt8("B", 10, "c", true) && f.writeInt8("C", -1, {}, true) &&
                         f.writeUInt32("D", UINT32_MAX) && f.writeUInt32("E", 0xBEEF, {}, true) &&
                         f.writeUInt64("F", UINT64_MAX) && f.writeUInt64("G", 0xABCDEF0123456789U, {}, true) &&
                         f.writeDouble("H", -0.5) && f.writeString("I", "a b", "Имя");
              }),
              ";\xA8\r\n\r\n"
              "A = -1\r\n\r\n"
              ";c\r\nB = 0x0A\r\n\r\n"
              "C = 0xFF\r\n\r\n"
              "D = 4294967295\r\n\r\n"
              "E = 0x0000BEEF\r\n\r\n"
              "F = 18446744073709551615\r\n\r\n"
              "G = 0xABCDEF0123456789\r\n\r\n"
              "H = -0.500000\r\n\r\n"
              ";\xC8\xEC\xFF\r\nI = \"a b\"\r\n\r\n");
}

TEST(KeyValueFileWriter, WrapsArraysUnderTheirFirstValue) {
    const std::array<int32_t, 5> numbers = {1, -2, 3, 4, 5};
    const std::array<double, 4> limits = {5.0, -5.0, 2.5, -2.5};
    EXPECT_EQ(written([&](KeyValueFile& f) {
                  bool ok = f.writeInt32Array("Five", numbers) &&
                            f.writeInt32Array("Hex", std::span(numbers).first(2), "c", true) &&
                            f.writeInt32Array("Four", std::span(numbers).first(4)) &&
                            f.writeArray("Big", 2, {}, [](uint64_t i) { return std::to_string(UINT64_MAX - i); });
                  f.setValuesPerLine(2);
                  ok = ok && f.writeDoubleArray("Range", limits) && f.writeDoubleArray("None", {});
                  f.setValuesPerLine(0);
                  return ok && f.writeDoubleArray("Again", limits);
              }),
              "Five = 1 , -2 , 3 , 4 ,\\\r\n"
              "       5 \r\n\r\n"
              ";c\r\nHex = 0x00000001 , 0xFFFFFFFE \r\n\r\n"
              "Four = 1 , -2 , 3 , 4 \r\n\r\n"
              "Big = 18446744073709551615 , 18446744073709551614 \r\n\r\n"
              "Range = 5.000000 , -5.000000 ,\\\r\n"
              "        2.500000 , -2.500000 \r\n\r\n"
              "None = \r\n\r\n"
              "Again = 5.000000 , -5.000000 , 2.500000 , -2.500000 \r\n\r\n");
}

TEST(KeyValueFileWriter, ReportsWhatDoesNotReachAFile) {
    const TemporaryFolder folder;
    KeyValueFile file;
    EXPECT_FALSE(file.createForWriting(folder.path()));
    EXPECT_FALSE(file.writeUInt32("Key", 1));
    EXPECT_FALSE(file.close());
    EXPECT_TRUE(file.close()) << "a failure is reported once";
}

TEST(KeyValueFileWriter, ReplacesOnlyWhatItHasWrittenItself) {
    const struct {
        const char* earlier;
        bool replaced;
    } cases[] = {{"", true},      {";fi", true},       {";first", true}, {";first\r\nK = 1\r\n", true},
                 {"; fi", false}, {"my notes", false}, {" ", false}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.earlier);
        const TemporaryFolder folder;
        const std::string name = folder.write("out.txt", c.earlier);
        KeyValueFile file;
        EXPECT_EQ(file.createForWriting(name, ";first"), c.replaced);
        EXPECT_EQ(file.writeError().alreadyExists(), !c.replaced);
        file.writeEmptyLine();
        EXPECT_EQ(file.close(), c.replaced);
        EXPECT_EQ(readFile(name), c.replaced ? "\r\n" : c.earlier);
    }
}

TEST(KeyValueFileReader, NormalisesTextOnItsWay) {
    struct Case {
        const char* what;
        std::string_view text;
        const char* value;  ///< of key K; null when it must not be found
    };
    const Case cases[] = {
        {"plain", "K = \"v\"\r\n", "v"},
        {"no blanks, no line end", "K=\"v\"", "v"},
        {"comment after the value", "K = \"v\" ; \"w\"\r\n", "v"},
        {"comment inside quotes is text", "K = \"a;b\"\r\n", "a;b"},
        {"quotes in a comment do not count", "; \" \r\nK = \"v\"\r\n", "v"},
        {"backslash in a comment does not continue it", "; path C:\\\r\nK = \"v\"\r\n", "v"},
        {"open quote ends with its line", "J = \"a\r\nK = \"v\"\r\n", "v"},
        {"blanks before a key", " \t K\t \t= \"v\"\r\n", "v"},
        {"tabs in quotes become spaces, runs stay", "K = \"a\t  b\"\r\n", "a   b"},
        {"escaped quote and backslash", "K = \"a\\\"b\\\\\"\r\n", "a\"b\\"},
        {"escaped quote does not open a comment", "K = \"a\\\";b\"\r\n", "a\";b"},
        {"continued before the value", "K = \\\r\n   \"v\"\r\n", "v"},
        {"continued in quotes, one more space each", "K = \"a\\\r\n b\"\r\n", "a  b"},
        {"continued before =", "K \\\r\n = \"v\"\r\n", "v"},
        {"lone CR is dropped", "K\r = \"a\rb\"\r\n", "ab"},
        {"lone LF before = is passed over", "K \n= \"v\"\r\n", "v"},
        {"lone LF ends no key", "K\n= \"v\"\r\n", nullptr},
        {"lone LF is no line end where CR is used", "J = 1\nK = \"v\"\r\n", nullptr},
        {"LF ends lines where no CR is", "; c\nJ = 1\nK = \\\n \"v\"\nL = 2\n", "v"},
        {"text after the quoted part", "K = \"v\" rest\r\n", "v"},
        {"first wins", "K = \"1\"\r\nK = \"2\"\r\n", "1"},
        {"first decides though it has no =", "K\r\nK = \"v\"\r\n", nullptr},
        {"first decides though text stands before =", "K x = \"1\"\r\nK = \"v\"\r\n", nullptr},
        {"longer key is another one", "Key = \"1\"\r\nK = \"v\"\r\n", "v"},
        {"case tells", "k = \"1\"\r\n", nullptr},
        {"key in a comment", ";K = \"1\"\r\n", nullptr},
        {"key inside a line", "J K = \"1\"\r\n", nullptr},
        {"no closing quote", "K = \"v\r\n", nullptr},
        {"backslash before the end", "K = \"v\\", nullptr},
        {"backslash takes a lone CR", "K = \"v\\\rw\"\r\n", nullptr},
        {"no quotes", "K = v\r\n", nullptr},
        {"empty value", "K =\r\n", nullptr},
        {"empty string", "K = \"\"\r\n", ""},
        {"empty text", "", nullptr},
        {"key at the end", "K", nullptr},
        {"zero bytes", std::string_view("\0\0\r\nK = \"v\"\0\r\n", 14), "v"},
    };
    for (const Case& c : cases) {
        std::string value;
        EXPECT_EQ(reading(c.text).readString("K", value, "default"), c.value != nullptr) << c.what;
        EXPECT_STREQ(value.c_str(), c.value == nullptr ? "default" : c.value) << c.what;
    }
}

TEST(KeyValueFileReader, TakesTheLongestValidNumber) {
    struct Case {
        const char* text;
        std::optional<int64_t> decimal;
        std::optional<int64_t> hexadecimal;
        std::optional<uint32_t> natural;
    };
    const Case cases[] = {
        {"10", 10, 16, 10U},
        {"+7 V", 7, 7, 7U},
        {"-1", -1, -1, UINT32_MAX},
        {"0x1F", 0, 31, 0U},
        {"0X", 0, 0, 0U},
        {"0xg", 0, 0, 0U},
        {"12,5", 12, 18, 12U},
        {"2147483647", INT32_MAX, std::nullopt, 2147483647U},
        {"2147483648", std::nullopt, std::nullopt, 2147483648U},
        {"-2147483648", INT32_MIN, std::nullopt, 2147483648U},
        {"4294967296", std::nullopt, std::nullopt, std::nullopt},
        {"FFFFFFFF", std::nullopt, -1, std::nullopt},
        {"99999999999999999999999", std::nullopt, std::nullopt, std::nullopt},
        {"x", std::nullopt, std::nullopt, std::nullopt},
        {"- 1", std::nullopt, std::nullopt, std::nullopt},
        {"+-1", std::nullopt, std::nullopt, std::nullopt},
        {"", std::nullopt, std::nullopt, std::nullopt},
    };
    for (const Case& c : cases) {
        const KeyValueFile file = reading("N = " + std::string(c.text) + "\r\n");
        int32_t number = 0;
        EXPECT_EQ(file.readInt32("N", number, 77), c.decimal.has_value()) << c.text;
        EXPECT_EQ(number, c.decimal.value_or(77)) << c.text;
        EXPECT_EQ(file.readInt32("N", number, 77, true), c.hexadecimal.has_value()) << c.text;
        EXPECT_EQ(number, c.hexadecimal.value_or(77)) << c.text;
        uint32_t natural = 0;
        EXPECT_EQ(file.readUInt32("N", natural, 77), c.natural.has_value()) << c.text;
        EXPECT_EQ(natural, c.natural.value_or(77U)) << c.text;
    }
    uint64_t big = 0;
    EXPECT_TRUE(reading("N = 18446744073709551615").readUInt64("N", big, 1));
    EXPECT_EQ(big, UINT64_MAX);
    EXPECT_FALSE(reading("N = 18446744073709551616").readUInt64("N", big, 1));
    EXPECT_EQ(big, 1U);
}

TEST(KeyValueFileReader, ReadsRealsWithAPointWhateverTheLocale) {
    const std::string before = std::setlocale(LC_ALL, nullptr);
    std::setlocale(LC_ALL, "ru_RU.UTF-8");
    struct Case {
        const char* text;
        std::optional<double> value;
    };
    const Case cases[] = {
        {"0.5", 0.5},      {" +1e3 Hz", 1000.0}, {"-.25", -0.25},       {"0,5", 0.0},
        {"1e", 1.0},       {"5.", 5.0},          {"0x10", 0.0},         {"1e999", std::nullopt},
        {"inf", HUGE_VAL}, {".", std::nullopt},  {"--1", std::nullopt}, {"", std::nullopt},
    };
    for (const Case& c : cases) {
        double value = 0.0;
        EXPECT_EQ(reading("N =" + std::string(c.text)).readDouble("N", value, 7.0), c.value.has_value()) << c.text;
        EXPECT_EQ(value, c.value.value_or(7.0)) << c.text;
    }
    EXPECT_EQ(written([](KeyValueFile& f) { return f.writeDouble("N", 0.5); }), "N = 0.500000\r\n\r\n");
    std::setlocale(LC_ALL, before.c_str());
}

TEST(KeyValueFileReader, CountsWhatDoesNotFitIntoAList) {
    const KeyValueFile file = reading("L = 1, x, 2 , ,3,\\\r\n  4 ; five\r\nE =\r\nR = 1.5, oops, -2\r\n");
    std::array<int32_t, 3> numbers = {9, 9, 9};
    uint32_t count = 0;
    EXPECT_TRUE(file.readInt32Array("L", std::span(numbers).first(2), count));
    EXPECT_EQ(count, 4U);
    EXPECT_THAT(numbers, testing::ElementsAre(1, 2, 9));
    EXPECT_TRUE(file.readInt32Array("E", numbers, count));
    EXPECT_EQ(count, 0U);
    EXPECT_FALSE(file.readInt32Array("Missing", numbers, count));
    std::array<double, 2> reals = {};
    EXPECT_TRUE(file.readDoubleArray("R", reals, count));
    EXPECT_EQ(count, 2U);
    EXPECT_THAT(reals, testing::ElementsAre(1.5, -2.0));
    EXPECT_TRUE(reading("L = 10,0x1f,g").readInt32Array("L", numbers, count, true));
    EXPECT_EQ(count, 2U);
    EXPECT_EQ(numbers[1], 31);
}

TEST(KeyValueFileReader, RefusesWhatIsNoFileOrTooLarge) {
    const TemporaryFolder folder;
    KeyValueFile file;
    uint32_t value = 0;
    const std::string good = folder.write("good.txt", "K = 5\r\n");
    ASSERT_TRUE(file.openForReading(good));
    EXPECT_TRUE(file.readUInt32("K", value, 0));
    EXPECT_FALSE(file.openForReading(folder.path()));
    EXPECT_FALSE(file.readUInt32("K", value, 0)) << "nothing is held after a failure";
    EXPECT_FALSE(file.openForReading(folder.file("missing.txt")));

    EXPECT_TRUE(file.openForReading(folder.write("empty.txt", "")));
    std::string large = "K = 7\r\n" + std::string(20'971'520 - 7, ' ');
    ASSERT_TRUE(file.openForReading(folder.write("largest.txt", large)));
    EXPECT_TRUE(file.readUInt32("K", value, 0));
    EXPECT_EQ(value, 7U);
    large += ' ';
    EXPECT_FALSE(file.openForReading(folder.write("large.txt", large)));

    EXPECT_EQ(file.readError().text(), OsError::tooLarge().text());
    EXPECT_FALSE(file.openForReading(folder.file("missing.txt")));
    EXPECT_TRUE(file.readError().notFound());
    EXPECT_TRUE(file.openForReading(good));
    EXPECT_TRUE(file.readError().ok());
}

TEST(KeyValueFileReader, ManyReadOneFileAtOnce) {
    const TemporaryFolder folder;
    const std::string name = folder.write("run.txt", "K = 5\r\n");
    std::atomic<int> refused{0};
    std::vector<std::thread> readers(8);
    for (std::thread& reader : readers) {
        reader = std::thread([&] {
            for (int i = 0; i < 500; ++i) {
                refused += KeyValueFile().openForReading(name) ? 0 : 1;
            }
        });
    }
    for (std::thread& reader : readers) {
        reader.join();
    }
    EXPECT_EQ(refused, 0);
}

}  // namespace
}  // namespace tarno2
