// Frames and lines as they come over a serial port, damaged or not.

#include <cstring>
#include <gtest/gtest.h>
#include <random>
#include <string>

#include "drivers/serial/framing.h"
#include "drivers/serial/serial_plan.h"

namespace tarno2::drivers {
namespace {

struct Outcome {
    std::vector<int> firsts;  ///< the first sample of each good frame
    uint64_t lost = 0;
    friend bool operator==(const Outcome&, const Outcome&) = default;
};

void PrintTo(const Outcome& outcome, std::ostream* out) {
    *out << outcome.firsts.size() << " good";
    for (size_t i = 0; i < outcome.firsts.size() && i < 8; ++i) {
        *out << (i == 0 ? " (" : ", ") << outcome.firsts[i];
    }
    *out << "), " << outcome.lost << " lost";
}

/// Feeds a parser in pieces and then tells it that nothing follows.
Outcome parsed(FrameParser& parser, const std::string& wire, size_t piece = 1000) {
    Outcome outcome;
    std::vector<std::byte> words(64);
    const auto drain = [&] {
        for (;;) {
            const Parsed next = parser.next(words.data());
            if (next.kind == Parsed::Kind::More) {
                return;
            }
            outcome.lost += next.lost;
            if (next.kind == Parsed::Kind::Frame) {
                int16_t first = 0;
                std::memcpy(&first, words.data(), sizeof first);
                outcome.firsts.push_back(first);
            }
        }
    };
    for (size_t at = 0; at < wire.size(); at += piece) {
        const std::string part = wire.substr(at, piece);
        parser.feed({reinterpret_cast<const std::byte*>(part.data()), part.size()});
        drain();
    }
    parser.end();
    drain();
    return outcome;
}

const SampleDecoder kDecoder(*findWireFormat("s16le"), -10, 10);
constexpr uint32_t kChannels = 2;

std::string wordBytes16(int value) {
    return {static_cast<char>(value & 0xFF), static_cast<char>((value >> 8) & 0xFF)};
}

/// A frame as a device sends it: its first sample is `number`.
std::string frame(const MarkedFrames::Layout& layout, int number, int second = 0x55AA) {
    std::string text;
    for (const std::byte byte : layout.start) {
        text += static_cast<char>(byte);
    }
    const size_t start = layout.checksStart ? 0 : text.size();
    if (layout.hasCounter) {
        text += static_cast<char>(number);
    }
    text += wordBytes16(number) + wordBytes16(second);
    const auto* checked = reinterpret_cast<const std::byte*>(text.data());
    std::byte sum[4] = {};
    writeChecksum(layout.check, checksum(layout.check, {checked + start, text.size() - start}), sum);
    return text.append(reinterpret_cast<const char*>(sum), checksumBytes(layout.check));
}

MarkedFrames::Layout marked(Checksum check, bool counter = false) {
    return {{std::byte{0xAA}, std::byte{0x55}}, counter, check, false};
}

TEST(Checksum, IsWhatDevicesSend) {
    const std::string text = "123456789";
    const auto* bytes = reinterpret_cast<const std::byte*>(text.data());
    const struct {
        const char* name;
        uint32_t value;
        std::string stored;
    } table[] = {{"none", 0, ""},
                 {"sum8", 0xDD, "\xDD"},
                 {"xor8", 0x31, "\x31"},
                 {"crc8", 0xF4, "\xF4"},
                 {"crc16-modbus", 0x4B37, "\x37\x4B"},
                 {"crc16-ccitt", 0x29B1, "\x29\xB1"},
                 {"crc32", 0xCBF43926, "\x26\x39\xF4\xCB"}};
    for (const auto& row : table) {
        const Checksum kind = checksumOf(row.name);
        EXPECT_EQ(checksum(kind, {bytes, text.size()}), row.value) << row.name;
        std::byte stored[4] = {};
        writeChecksum(kind, row.value, stored);
        EXPECT_EQ(std::string(reinterpret_cast<char*>(stored), checksumBytes(kind)), row.stored) << row.name;
    }
}

// Five frames, of which something happens to some. Whatever the checksum, the second sample looks like start bytes.
TEST(MarkedFrames, LeavesOutWhatIsDamagedAndCountsIt) {
    for (const Checksum check : {Checksum::Sum8, Checksum::Crc8, Checksum::Crc16Modbus, Checksum::Crc32}) {
        for (const bool counter : {false, true}) {
            const MarkedFrames::Layout layout = marked(check, counter);
            const size_t size = frame(layout, 0).size();
            std::string whole;
            for (int i = 1; i <= 5; ++i) {
                whole += frame(layout, i);
            }
            const auto changed = [&](size_t place, size_t count, const std::string& with) {
                return std::string(whole).replace(place, count, with);
            };
            const struct {
                const char* what;
                std::string wire;
                Outcome expected;
            } table[] = {
                {"nothing", whole, {{1, 2, 3, 4, 5}, 0}},
                {"a changed sample", changed(2 * size + size / 2, 1, "\x13"), {{1, 2, 4, 5}, 1}},
                {"a changed start byte", changed(2 * size, 1, "\x13"), {{1, 2, 4, 5}, 1}},
                {"two of them", changed(2 * size + 1, size, std::string(size, '\x77')), {{1, 2, 5}, 2}},
                {"a byte too few", changed(2 * size + 3, 1, ""), {{1, 2, 4, 5}, 1}},
                {"a byte too many", changed(2 * size + 3, 0, "\x77"), {{1, 2, 4, 5}, 1}},
                {"cut off in the middle", changed(2 * size + 4, size - 4, ""), {{1, 2, 4, 5}, 1}},
                {"begun in the middle", whole.substr(3), {{2, 3, 4, 5}, 0}},
                {"ended in the middle", whole.substr(0, whole.size() - 2), {{1, 2, 3, 4}, 1}},
                {"noise before", "noise" + whole, {{1, 2, 3, 4, 5}, 0}},
                {"a frame gone without a trace",
                 changed(2 * size, size, ""),
                 {{1, 2, 4, 5}, counter ? uint64_t{1} : uint64_t{0}}},
            };
            for (const auto& row : table) {
                for (const size_t piece : std::initializer_list<size_t>{1, 5, 1000}) {
                    MarkedFrames parser(layout, kDecoder, kChannels);
                    EXPECT_EQ(parsed(parser, row.wire, piece), row.expected)
                        << row.what << ", check " << static_cast<int>(check) << ", counter " << counter << ", piece "
                        << piece;
                }
            }
        }
    }
}

TEST(MarkedFrames, KnowsFramesOfTheWrongLengthWithoutAChecksum) {
    const MarkedFrames::Layout layout = marked(Checksum::None);
    const std::string a = frame(layout, 1, 0);
    const std::string wire = a + frame(layout, 2, 0).erase(4, 1) + frame(layout, 3, 0) + frame(layout, 4, 0);
    MarkedFrames parser(layout, kDecoder, kChannels);
    EXPECT_EQ(parsed(parser, wire), (Outcome{{1, 3, 4}, 1}));
}

TEST(MarkedFrames, ChecksTheStartBytesTooWhereTheDeviceDoes) {
    MarkedFrames::Layout layout = marked(Checksum::Crc16Ccitt);
    layout.checksStart = true;
    const std::string wire = frame(layout, 1) + frame(layout, 2);
    MarkedFrames parser(layout, kDecoder, kChannels);
    EXPECT_EQ(parsed(parser, wire), (Outcome{{1, 2}, 0}));
    layout.checksStart = false;
    MarkedFrames other(layout, kDecoder, kChannels);
    EXPECT_EQ(parsed(other, wire), (Outcome{{}, 2}));
}

TEST(MarkedFrames, FindsExactlyTheGoodOnesOfALongDamagedStream) {
    std::mt19937 random(1);
    const auto below = [&](size_t limit) { return static_cast<size_t>(random() % limit); };
    for (const bool counter : {false, true}) {
        const MarkedFrames::Layout layout = marked(Checksum::Crc16Modbus, counter);
        std::string wire;
        Outcome expected;
        bool damagedBefore = true;  // the very first is good, and neighbours of damaged ones
        for (int i = 0; i < 30000; ++i) {
            std::string one = frame(layout, i, static_cast<int>(random()));
            damagedBefore = !damagedBefore && below(100) == 0;
            if (damagedBefore) {
                const size_t place = below(one.size());
                switch (below(3)) {
                    case 0:
                        one[place] = static_cast<char>(one[place] ^ (1 << below(8)));
                        break;
                    case 1:
                        one.erase(place, 1 + below(one.size() - place - (place == 0 ? 1 : 0)));
                        break;
                    default:
                        one.insert(2 + place % (one.size() - 2), 1,
                                   static_cast<char>(static_cast<unsigned char>(one[place]) + 1 + below(100)));
                }
                ++expected.lost;
            } else {
                expected.firsts.push_back(static_cast<int16_t>(i));
            }
            wire += one;
        }
        wire += frame(layout, 30000);
        expected.firsts.push_back(30000);
        MarkedFrames parser(layout, kDecoder, kChannels);
        EXPECT_EQ(parsed(parser, wire, 777), expected);
    }
}

TEST(MarkedFrames, KeepsLittleOfEndlessNoise) {
    MarkedFrames parser(marked(Checksum::Crc32), kDecoder, kChannels);
    const std::vector<std::byte> noise(4096, std::byte{0xAA});
    std::vector<std::byte> words(4);
    for (int i = 0; i < 100; ++i) {
        parser.feed(noise);
        EXPECT_EQ(parser.next(words.data()).kind, Parsed::Kind::More);
        EXPECT_LT(parser.held(), 100U);
    }
}

TEST(TextFrames, TakesLinesOfNumbersAndCountsTheOthers) {
    const struct {
        const char* what;
        char delimiter;
        std::string wire;  // after a first line, whose beginning may be missing
        Outcome expected;
    } table[] = {
        {"plain", ',', "1,2\n3,4\r\n", {{1, 3}, 0}},
        {"blanks and signs", ',', " +1 , -2 \n-7,0\n\n", {{1, -7}, 0}},
        {"runs of blanks", ' ', "  1   2\n3\t 4 \n", {{1, 3}, 0}},
        {"tabs", '\t', "1\t2\n", {{1}, 0}},
        {"too few", ';', "1\n2;3\n", {{2}, 1}},
        {"too many", ';', "1;2;3\n2;3\n", {{2}, 1}},
        {"garbage", ',', "1,x\n1,2y\n,2\n1,\n0x1,2\n--1,2\n5,6\n", {{5}, 6}},
        {"no such code", ',', "32768,0\n1.5,0\n-32768,0\n", {{-32768}, 2}},
        {"an unfinished line", ',', "1,2\n3,4", {{1}, 0}},
        {"an endless line", ',', std::string(40000, '1') + "\n1,2\n", {{1}, 1}},
    };
    for (const auto& row : table) {
        for (const size_t piece : std::initializer_list<size_t>{7, 1000}) {
            TextFrames parser({row.delimiter, false}, kDecoder, kChannels);
            EXPECT_EQ(parsed(parser, "2,3\n" + row.wire, piece), row.expected) << row.what;
        }
    }
}

TEST(TextFrames, TakesVolts) {
    const SampleDecoder decoder(*findWireFormat("f64le"), -10, 10);
    TextFrames parser({';', true}, decoder, kChannels);
    const std::string wire = "\n5;-1.25e0\n2,5;nan\n2,5;inf\n-10;11\n";
    parser.feed({reinterpret_cast<const std::byte*>(wire.data()), wire.size()});
    int32_t words[2] = {};
    auto* out = reinterpret_cast<std::byte*>(words);
    ASSERT_EQ(parser.next(out).kind, Parsed::Kind::Frame);
    EXPECT_EQ(words[0], codeOfFraction(0.5));
    EXPECT_EQ(words[1], codeOfFraction(-0.125));
    EXPECT_EQ(parser.next(out).kind, Parsed::Kind::Damaged);
    EXPECT_EQ(parser.next(out).kind, Parsed::Kind::Damaged);
    ASSERT_EQ(parser.next(out).kind, Parsed::Kind::Frame);
    EXPECT_EQ(words[0], -2147483647 - 1);
    EXPECT_EQ(words[1], 2147483647);
}

TEST(SerialPlan, ReadsCommandsWithEscapes) {
    std::string bytes;
    EXPECT_TRUE(unescape("GO\\r\\n\\x02\\\\", bytes));
    EXPECT_EQ(bytes, "GO\r\n\x02\\");
    for (const char* bad : {"\\", "\\q", "\\x1", "\\xZZ"}) {
        EXPECT_FALSE(unescape(bad, bytes)) << bad;
    }
}

}  // namespace
}  // namespace tarno2::drivers
