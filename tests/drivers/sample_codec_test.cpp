// Bytes of samples as they come over a line, and the words that they become.

#include "drivers/common/sample_codec.h"

#include <cmath>
#include <cstring>
#include <gtest/gtest.h>
#include <limits>

#include "drivers/common/frame_assembler.h"

namespace tarno2::drivers {
namespace {

std::vector<std::byte> bytes(std::initializer_list<int> values) {
    std::vector<std::byte> result;
    for (const int value : values) {
        result.push_back(static_cast<std::byte>(value));
    }
    return result;
}

template <typename Float>
std::vector<std::byte> bytesOf(Float value, bool bigEndian) {
    std::vector<std::byte> result(sizeof value);
    std::memcpy(result.data(), &value, sizeof value);
    if (bigEndian) {
        std::reverse(result.begin(), result.end());
    }
    return result;
}

/// The first word of the samples, as the host understands it: code bits, sign.
int64_t codeIn(const WireFormat& format, const std::vector<std::byte>& in, double range = 1.0) {
    const SampleDecoder decoder(format, -range, range);
    std::vector<std::byte> words(4, std::byte{0x55});
    decoder.decode(in.data(), words.data(), 1);
    const ADCSampleFormat layout = sampleFormat(format);
    uint32_t word = 0;
    std::memcpy(&word, words.data(), layout.m_nBytes);
    const uint32_t code = word & layout.m_nCodeMask;
    const bool negative = layout.m_nSignedCodes != 0 && (code >> (layout.m_nCodeBits - 1)) != 0;
    return negative ? int64_t{code} - (int64_t{1} << layout.m_nCodeBits) : int64_t{code};
}

TEST(SampleCodec, KeepsTheCodesOfIntegers) {
    const struct {
        const char* format;
        std::vector<std::byte> in;
        int64_t code;
        int64_t lowest;
        int64_t highest;
        uint32_t wordBytes;
    } table[] = {
        {"u8", bytes({0xFE}), 254, 0, 255, 2},
        {"s8", bytes({0xFE}), -2, -128, 127, 2},
        {"u16le", bytes({0x34, 0xF2}), 0xF234, 0, 65535, 2},
        {"u16be", bytes({0xF2, 0x34}), 0xF234, 0, 65535, 2},
        {"s16le", bytes({0x00, 0x80}), -32768, -32768, 32767, 2},
        {"s16be", bytes({0x80, 0x01}), -32767, -32768, 32767, 2},
        {"u24le", bytes({0x56, 0x34, 0xF2}), 0xF23456, 0, 0xFFFFFF, 4},
        {"u24be", bytes({0xF2, 0x34, 0x56}), 0xF23456, 0, 0xFFFFFF, 4},
        {"s24le", bytes({0xFE, 0xFF, 0xFF}), -2, -0x800000, 0x7FFFFF, 4},
        {"s24be", bytes({0x80, 0x00, 0x01}), -0x7FFFFF, -0x800000, 0x7FFFFF, 4},
        {"s32le", bytes({0x01, 0x00, 0x00, 0x80}), -0x7FFFFFFFLL, -0x80000000LL, 0x7FFFFFFF, 4},
        {"s32be", bytes({0x12, 0x34, 0x56, 0x78}), 0x12345678, -0x80000000LL, 0x7FFFFFFF, 4},
        // Moved down by half: the host can't tell of codes above 0x7FFFFFFF.
        {"u32le", bytes({0x00, 0x00, 0x00, 0x00}), -0x80000000LL, -0x80000000LL, 0x7FFFFFFF, 4},
        {"u32be", bytes({0xFF, 0xFF, 0xFF, 0xFE}), 0x7FFFFFFE, -0x80000000LL, 0x7FFFFFFF, 4},
    };
    for (const auto& row : table) {
        const WireFormat* format = findWireFormat(row.format);
        ASSERT_NE(format, nullptr) << row.format;
        EXPECT_EQ(codeIn(*format, row.in), row.code) << row.format;
        EXPECT_EQ(codeRange(*format).m_nMinimum, row.lowest) << row.format;
        EXPECT_EQ(codeRange(*format).m_nMaximum, row.highest) << row.format;
        EXPECT_EQ(wordBytes(*format), row.wordBytes) << row.format;
    }
    EXPECT_EQ(findWireFormat("s17le"), nullptr);
    EXPECT_EQ(wireFormatNames().size(), std::size(table) + 4) << "the others are floating-point numbers";
}

TEST(SampleCodec, TellsOfConvertersWithFewerBits) {
    const WireFormat ten = findWireFormat("u16le")->withBits(10);
    EXPECT_EQ(codeRange(ten).m_nMaximum, 1023);
    EXPECT_EQ(sampleFormat(ten).m_nCodeMask, 1023U);
    EXPECT_EQ(codeIn(ten, bytes({0xFF, 0x03})), 1023);
    const WireFormat twelve = findWireFormat("s16be")->withBits(12);
    EXPECT_EQ(codeRange(twelve).m_nMinimum, -2048);
    EXPECT_EQ(codeIn(twelve, bytes({0xF8, 0x00})), -2048);
    const WireFormat plain = findWireFormat("u32le")->withBits(31);
    EXPECT_EQ(codeRange(plain).m_nMaximum, 0x7FFFFFFF);
    EXPECT_EQ(codeIn(plain, bytes({1, 0, 0, 0})), 1);
    EXPECT_EQ(findWireFormat("u8")->withBits(9).bits, 8U);
    EXPECT_EQ(findWireFormat("f32le")->withBits(9).bits, 32U);
}

TEST(SampleCodec, BringsVoltsIntoTheRange) {
    constexpr double kInfinite = std::numeric_limits<double>::infinity();
    constexpr int64_t kLowest = -0x80000000LL;
    const struct {
        double volts;
        int64_t code;
    } table[] = {
        {0.0, 0},        {2.5, 0x7FFFFFFF},       {-2.5, kLowest},       {1.25, 0x3FFFFFFF},     {3.0, 0x7FFFFFFF},
        {-3.0, kLowest}, {kInfinite, 0x7FFFFFFF}, {-kInfinite, kLowest}, {std::nan(""), kLowest}};
    for (const auto& row : table) {
        for (const bool bigEndian : {false, true}) {
            EXPECT_EQ(codeIn(*findWireFormat(bigEndian ? "f64be" : "f64le"), bytesOf(row.volts, bigEndian), 2.5),
                      row.code)
                << row.volts;
            const auto single = static_cast<float>(row.volts);
            EXPECT_EQ(codeIn(*findWireFormat(bigEndian ? "f32be" : "f32le"), bytesOf(single, bigEndian), 2.5), row.code)
                << row.volts;
        }
    }
    // And back, by the rule of the files: every voltage is met within half a code.
    for (const double volts : {-2.4999, -1e-9, 1e-3, 2.4}) {
        const auto code = static_cast<double>(codeIn(*findWireFormat("f64le"), bytesOf(volts, false), 2.5));
        EXPECT_NEAR(5.0 * (code + 2147483648.0) / 4294967295.0 - 2.5, volts, 5.0 / 4294967295.0);
    }
}

TEST(SampleCodec, KnowsWhichCodesThereAre) {
    EXPECT_EQ(wordOfCode(*findWireFormat("u8"), 255), 255U);
    EXPECT_FALSE(wordOfCode(*findWireFormat("u8"), 256));
    EXPECT_FALSE(wordOfCode(*findWireFormat("u8"), -1));
    EXPECT_EQ(wordOfCode(*findWireFormat("s16le"), -1), 0xFFFFFFFFU);
    EXPECT_EQ(wordOfCode(*findWireFormat("u32le"), 0xFFFFFFFF), 0x7FFFFFFFU);
}

/// What an assembler makes of these bytes when they come in pieces of this size.
std::vector<int> assembled(const std::string& wire, size_t piece, const std::vector<int32_t>& chosen, size_t& begun) {
    const SampleDecoder decoder(*findWireFormat("u8"), -1, 1);
    FrameAssembler assembler(FrameDecoder(decoder, 3, chosen), 4);
    std::vector<std::byte> words(4 * 3 * 2);
    std::vector<int> samples;
    for (size_t at = 0; at < wire.size();) {
        const std::span<std::byte> space = assembler.space(4);
        const size_t now = std::min({piece, space.size(), wire.size() - at});
        std::memcpy(space.data(), wire.data() + at, now);
        at += now;
        const size_t frames = assembler.take(now, words.data());
        for (size_t i = 0; i < frames * chosen.size(); ++i) {
            samples.push_back(static_cast<int>(words[2 * i]));
        }
    }
    begun = assembler.begun();
    return samples;
}

TEST(FrameAssembler, MakesWholeFramesOfAnyPieces) {
    std::string wire;
    std::vector<int> all;
    std::vector<int> some;
    for (int frame = 0; frame < 20; ++frame) {
        for (const int channel : {0, 1, 2}) {
            wire += static_cast<char>(frame * 3 + channel);
            all.push_back(frame * 3 + channel);
        }
        some.insert(some.end(), {frame * 3 + 2, frame * 3});
    }
    wire += "zz";
    for (const size_t piece : std::initializer_list<size_t>{1, 2, 3, 4, 7, 100}) {
        size_t begun = 0;
        EXPECT_EQ(assembled(wire, piece, {0, 1, 2}, begun), all) << piece;
        EXPECT_EQ(begun, 2U) << "what is left is no frame";
        EXPECT_EQ(assembled(wire, piece, {2, 0}, begun), some) << piece;
    }
}

}  // namespace
}  // namespace tarno2::drivers
