#include "records/record_description.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>

#include "platform/codepage1251.h"
#include "platform/paths.h"
#include "records/recorded_format.h"
#include "tests/support/temporary_folder.h"

namespace tarno2 {
namespace {

using test::readFile;
using test::TemporaryFolder;

/// The description's text in UTF-8 with plain line ends.
std::string writtenText(RecordDescription& description) {
    const TemporaryFolder folder;
    EXPECT_TRUE(description.writeForDataFile(folder.file("run_1.dat")));
    const std::string bytes = readFile(folder.file("run_1.txt"));
    std::string text;
    for (size_t i = 0; i < bytes.size(); ++i) {
        if (bytes[i] == '\r') {
            EXPECT_EQ(bytes.substr(i, 2), "\r\n");
            continue;
        }
        EXPECT_TRUE(bytes[i] != '\n' || (i > 0 && bytes[i - 1] == '\r'));
        text += bytes[i];
    }
    return cp1251ToUtf8(text);
}

void fill(RecordDescription& d) {
    EXPECT_TRUE(d.setDriverName("Simulator"));
    EXPECT_TRUE(d.setFrequency(96000.0));
    EXPECT_TRUE(d.setSynchronousChannels(0));
    EXPECT_TRUE(d.setDataCountPerChannel(5000000000U));
    EXPECT_TRUE(d.setPacketMode(1, 200.7, 0));
    EXPECT_TRUE(d.setBackwardOrder(0));
    EXPECT_TRUE(d.setDataFormat({2, 2, 0xFFFC, 14, 0, 3, 2, 1}));
    d.setCreateTime({2026, 2, 3, 4, 5, 6, 7, 8});
    EXPECT_TRUE(d.addChannelRange(5.0, -5.0));
    EXPECT_TRUE(d.addChannelRange(0.5, -0.5));
}

TEST(RecordDescription, WritesEveryKeyInOrder) {
    RecordDescription d;
    fill(d);
    for (uint64_t i = 0; i < 9; ++i) {
        const auto n = static_cast<uint32_t>(i);
        EXPECT_TRUE(d.addSynchroEvent({1000 * i, n, n + 1, 0, 1, -1, 0.25}));
    }
    EXPECT_EQ(writtenText(d), readFile(joinPath(TARNO2_GOLDEN, "description.txt")));
}

TEST(RecordDescription, WritesUnsetFieldsAsUndefinedAndKeepsThePacketFrequency) {
    RecordDescription d;
    fill(d);
    EXPECT_TRUE(d.setPacketMode(1, 100.0, 1));
    EXPECT_TRUE(d.addSynchroEvent({}));
    d.reset();
    const std::string text = writtenText(d);
    for (const char* line : {"\nCreateTime = \"Время 00:00:00 Дата 00.00.0000\"\n", "\nDriverName = \"\"\n",
                             "\nDataFormat = -1 , -1 , -1 , -1 , -1 , -1 , -1 , -1 \n", "\nFrequency = -inf\n",
                             "\nPacketMode = -1\n", "\nPacketFreq = 100\n", "\nExternalFreqMode = -1\n",
                             "\nSynchronousChannels = -1\n", "\nDataCountPerChannel = 0\n", "\nChannelNumber = 0\n"}) {
        EXPECT_NE(text.find(line), std::string::npos) << line << text;
    }
    EXPECT_EQ(text.find("ChannelsRange"), std::string::npos);
    EXPECT_TRUE(text.ends_with("\nSynchroEnable = 0\n\n")) << text;
}

TEST(RecordDescription, NarrowsThePacketFrequencyToEightBits) {
    const std::pair<double, const char*> cases[] = {
        {0.9, "0"},
        {100.0, "100"},
        {127.99, "127"},
        {128.0, "-128"},
        {200.7, "-56"},
        {256.0, "0"},
        {-1.5, "-1"},
        {-129.0, "127"},
        {1e300, "0"},
        {4294967301.0, "5"},
        {HUGE_VAL, "0"},
        {-HUGE_VAL, "0"},
        {std::numeric_limits<double>::quiet_NaN(), "0"},
    };
    for (const auto& [frequency, expected] : cases) {
        RecordDescription d;
        EXPECT_TRUE(d.setPacketMode(1, frequency, 0));
        EXPECT_NE(writtenText(d).find("\nPacketFreq = " + std::string(expected) + "\n"), std::string::npos)
            << frequency;
    }
}

TEST(RecordDescription, NamesItselfAfterTheDataFile) {
    const std::pair<const char*, const char*> cases[] = {
        {"rec_0001.dat", "rec_0001.txt"},
        {"a.b.dat", "a.b.txt"},
        {"folder.d/run", "folder.txt"},
        {"a.", "a.txt"},
        {"run", ".txt"},
        {".dat", ".txt"},
        {"..dat", "..txt"},
        {"", ".txt"},
    };
    for (const auto& [data, description] : cases) {
        EXPECT_EQ(RecordDescription::fileNameFor(data), description) << data;
    }
}

TEST(RecordDescription, TellsWhatFailed) {
    const TemporaryFolder folder;
    RecordDescription d;
    EXPECT_TRUE(d.setDriverName("Плата 中"));
    EXPECT_FALSE(d.setDriverName(""));
    EXPECT_EQ(d.status(), RecordDescription::BadArgument);
    EXPECT_FALSE(d.setFrequency(-1.0));
    EXPECT_EQ(d.status(), RecordDescription::BadArgument);
    EXPECT_TRUE(d.setFrequency(0.0));
    EXPECT_EQ(d.status(), RecordDescription::Ok);
    EXPECT_FALSE(d.writeForDataFile(""));
    EXPECT_EQ(d.status(), RecordDescription::BadArgument);
    const std::string file = folder.write("file", "");
    EXPECT_FALSE(d.writeForDataFile(file + "/below.dat"));
    EXPECT_EQ(d.status(), RecordDescription::CannotCreate);
    EXPECT_NE(writtenText(d).find("\nDriverName = \"Плата ?\"\n"), std::string::npos)
        << "a failed call changes nothing";
    d.clearDriverName();
    EXPECT_NE(writtenText(d).find("\nDriverName = \"\"\n"), std::string::npos);
}

TEST(RecordedFormat, ReadsBackWhatWasWritten) {
    const TemporaryFolder folder;
    const std::string data = folder.file("run.dat");
    RecordDescription d;
    fill(d);
    EXPECT_TRUE(d.setDataFormat({4, 8, INT32_MIN, 24, 0, 0xFF, 8, 0}));
    ASSERT_TRUE(d.writeForDataFile(data));
    RecordedFormat format;
    std::string missing = "?";
    ASSERT_TRUE(readRecordedFormat(RecordDescription::fileNameFor(data), format, missing)) << missing;
    EXPECT_EQ(missing, "");
    EXPECT_EQ(format.driverName, "Simulator");
    EXPECT_EQ(format.frequencyPerChannel, 48000.0);
    EXPECT_EQ(format.channelCount, 2U);
    EXPECT_EQ(format.frames, 5000000000U);
    EXPECT_EQ(format.ranges, (std::vector<std::pair<double, double>>{{5.0, -5.0}, {0.5, -0.5}}));
    EXPECT_EQ(format.layout.bytesPerSample, 4);
    EXPECT_EQ(format.layout.analogShift, 8);
    EXPECT_EQ(format.layout.analogMask, INT32_MIN);
    EXPECT_EQ(format.layout.analogBits, 24);
    EXPECT_EQ(format.layout.digitalMask, 0xFF);
    EXPECT_EQ(format.layout.digitalBits, 8);
    EXPECT_EQ(format.layout.analogSigned, 0);
}

TEST(RecordedFormat, NamesWhatIsMissingOrDamaged) {
    const TemporaryFolder folder;
    RecordDescription d;
    fill(d);
    ASSERT_TRUE(d.writeForDataFile(folder.file("run.dat")));
    const std::string good = readFile(folder.file("run.txt"));
    struct Case {
        const char* from;
        const char* to;
        const char* key;
    };
    const Case cases[] = {
        {"DataFormat", "Dataformat", "DataFormat"},
        {"DataFormat = 2 ,", "DataFormat = 3 ,", "DataFormat"},
        {"DataFormat = 2 ,", "DataFormat = 268435456 ,", "DataFormat"},
        {"DataFormat = 2 , 2", "DataFormat = 2 , 40", "DataFormat"},
        {"DataFormat = 2 , 2", "DataFormat = 2 , x", "DataFormat"},
        {"2 , 1 \r", "2 , 7 \r", "DataFormat"},
        {"Frequency = 48000", "Frequency = inf", "Frequency"},
        {"Frequency = 48000", "Frequency = -48000", "Frequency"},
        {"DataCountPerChannel =", "DataCountPerChannel = ;", "DataCountPerChannel"},
        {"ChannelNumber = 2", "ChannelNumber = 0", "ChannelNumber"},
        {"ChannelNumber = 2", "ChannelNumber = 4294967297", "ChannelNumber"},
        {"ChannelNumber = 2", "ChannelNumber = 4294967295", "ChannelNumber"},
        {"ChannelNumber = 2", "ChannelNumber = 4096", "ChannelsRange"},
        {"-0.500000", "", "ChannelsRange"},
        {"-0.500000", "nan", "ChannelsRange"},
    };
    for (const Case& c : cases) {
        std::string text = good;
        const size_t place = text.find(c.from);
        ASSERT_NE(place, std::string::npos) << c.from;
        text.replace(place, std::string(c.from).size(), c.to);
        RecordedFormat format;
        format.frames = 99;
        std::string missing;
        EXPECT_FALSE(readRecordedFormat(folder.write("damaged.txt", text), format, missing)) << c.to;
        EXPECT_EQ(missing, c.key) << c.to;
        EXPECT_EQ(format.frames, 99U);
    }
    RecordedFormat format;
    std::string missing = "?";
    EXPECT_FALSE(readRecordedFormat(folder.file("none.txt"), format, missing));
    EXPECT_EQ(missing, "");
}

}  // namespace
}  // namespace tarno2
