// What stands in the settings, and frames from packets of single channels.

#include "drivers/sigrok/frame_assembler.h"

#include <cstring>
#include <gmock/gmock.h>
#include <limits>

#include "drivers/sigrok/device_spec.h"

namespace tarno2::drivers {
namespace {

using testing::ElementsAre;

std::string spelled(const DeviceSpec& device) {
    std::string text = device.driver;
    for (const KeyValue& option : device.options) {
        text += " [" + option.key + "|" + option.value + "]";
    }
    return text;
}

TEST(DeviceSpec, ReadsWhatTheToolsTake) {
    const auto devices = readDevices(
        " demo:analog_channels=4:logic_channels=8  fx2lafw:conn=1.2 "
        "scpi-dmm:conn=tcp-raw/10.0.0.7:5555:serialcomm=9600/8n1");
    ASSERT_TRUE(devices.has_value());
    std::vector<std::string> all;
    for (const DeviceSpec& device : *devices) {
        all.push_back(spelled(device));
    }
    EXPECT_THAT(all, ElementsAre("demo [analog_channels|4] [logic_channels|8]", "fx2lafw [conn|1.2]",
                                 "scpi-dmm [conn|tcp-raw/10.0.0.7:5555] [serialcomm|9600/8n1]"));
    EXPECT_TRUE(readDevices("")->empty());
    for (const char* bad : {":conn=1", "demo:analog_channels", "demo:=4"}) {
        EXPECT_FALSE(readDevices(bad).has_value()) << bad;
    }

    const auto options = readOptions("Logic:pattern=incremental samplerate=1m trigger=a:b");
    ASSERT_TRUE(options.has_value());
    ASSERT_EQ(options->size(), 3U);
    EXPECT_EQ((*options)[0].group + "|" + (*options)[0].option.key, "Logic|pattern");
    EXPECT_EQ((*options)[1].group + "|" + (*options)[1].option.value, "|1m");
    EXPECT_EQ((*options)[2].group + "|" + (*options)[2].option.value, "|a:b");
    EXPECT_FALSE(readOptions("pattern").has_value());
}

TEST(WordShape, FindsRoomForCodesAndLines) {
    struct Row {
        bool analog;
        uint32_t lines;
        WordShape shape;
        uint32_t shift;
        uint32_t mask;
    };
    const Row rows[] = {{false, 1, {2, 0, 1}, 0, 0x1},       {false, 16, {2, 0, 16}, 0, 0xFFFF},
                        {false, 17, {4, 0, 17}, 0, 0x1FFFF}, {false, 34, {4, 0, 31}, 0, 0x7FFFFFFF},
                        {true, 0, {4, 32, 0}, 0, 0},         {true, 5, {4, 24, 5}, 8, 0x1F},
                        {true, 8, {4, 24, 8}, 8, 0xFF},      {true, 9, {4, 16, 9}, 16, 0x1FF},
                        {true, 34, {4, 16, 16}, 16, 0xFFFF}};
    for (const Row& row : rows) {
        SCOPED_TRACE(testing::Message() << row.analog << " " << row.lines);
        const WordShape shape = WordShape::with(row.analog, row.lines);
        EXPECT_EQ(shape.bytes, row.shape.bytes);
        EXPECT_EQ(shape.codeBits, row.shape.codeBits);
        EXPECT_EQ(shape.lines, row.shape.lines);
        EXPECT_EQ(shape.codeShift(), row.shift);
        EXPECT_EQ(shape.linesMask(), row.mask);
    }
}

std::vector<uint32_t> takeAll(FrameAssembler& assembler, size_t most = 1000) {
    std::vector<uint32_t> words(most * assembler.channels());
    words.resize(assembler.take(reinterpret_cast<std::byte*>(words.data()), most) * assembler.channels());
    return words;
}

TEST(FrameAssembler, MakesAFrameWhenAllChannelsHaveOne) {
    FrameAssembler assembler(WordShape::with(true, 8), {8.0, 4.0}, 6);
    const float first[] = {1.0F, -8.0F, 99.0F};
    const float second[] = {-99.0F, 0.0F, std::numeric_limits<float>::quiet_NaN(), 4.0F};
    const uint8_t lines[] = {0x81, 0xFF, 0x02, 0xFF, 0x03, 0xFF};
    EXPECT_TRUE(assembler.addAnalog(1, second, 4));
    EXPECT_TRUE(assembler.addAnalog(0, first, 3));
    EXPECT_EQ(assembler.complete(), 0U);
    EXPECT_TRUE(assembler.addLogic(lines, 3, 2));
    EXPECT_EQ(assembler.complete(), 3U);
    EXPECT_THAT(takeAll(assembler, 1), ElementsAre(0x10000081U, 0x80000081U));
    EXPECT_THAT(takeAll(assembler), ElementsAre(0x80000002U, 0x00000002U, 0x7FFFFF03U, 0x00000003U));

    // One value of the second channel is left, and the frames behind it go on where they were.
    EXPECT_TRUE(assembler.addAnalog(0, first, 1));
    EXPECT_TRUE(assembler.addLogic(lines, 1, 2));
    EXPECT_THAT(takeAll(assembler), ElementsAre(0x10000081U, 0x7FFFFF81U));

    // Every second value of a packet of two channels.
    const float both[] = {1.0F, 2.0F, 3.0F, 4.0F};
    EXPECT_TRUE(assembler.addAnalog(0, both, 2, 2));
    EXPECT_TRUE(assembler.addAnalog(1, both + 1, 2, 2));
    EXPECT_TRUE(assembler.addLogic(lines, 2, 2));
    EXPECT_THAT(takeAll(assembler), ElementsAre(0x10000081U, 0x40000081U, 0x30000002U, 0x7FFFFF02U));

    EXPECT_TRUE(assembler.addLogic(lines, 3, 2));
    EXPECT_TRUE(assembler.addLogic(lines, 3, 2));
    EXPECT_FALSE(assembler.addLogic(lines, 1, 2));
}

TEST(FrameAssembler, PutsLinesAloneIntoShortWords) {
    FrameAssembler assembler(WordShape::with(false, 12), {}, 100);
    const uint8_t lines[] = {0x34, 0xF2, 0x78, 0x56};
    EXPECT_TRUE(assembler.addLogic(lines, 2, 2));
    uint16_t words[3] = {};
    EXPECT_EQ(assembler.take(reinterpret_cast<std::byte*>(words), 3), 2U);
    EXPECT_THAT(words, ElementsAre(0x0234, 0x0678, 0));
}

}  // namespace
}  // namespace tarno2::drivers
