// Recorded files as boards.

#include <algorithm>
#include <limits>
#include <optional>

#include "platform/file.h"
#include "records/record_description.h"
#include "tests/drivers/driver_rig.h"
#include "tests/support/temporary_folder.h"

namespace tarno2::test {
namespace {

std::string number(uint64_t value, int bytes) {
    std::string text;
    for (int i = 0; i < bytes; ++i) {
        text += static_cast<char>(value >> (8 * i));
    }
    return text;
}

std::string chunk(const std::string& id, const std::string& contents, std::optional<uint32_t> size = {}) {
    return id + number(size.value_or(static_cast<uint32_t>(contents.size())), 4) + contents +
           (contents.size() % 2 == 1 ? std::string(1, '\0') : "");
}

std::string pcm(uint32_t channels, uint32_t rate, uint32_t bits = 16, uint32_t tag = 1) {
    return number(tag, 2) + number(channels, 2) + number(rate, 4) + number(rate * channels * bits / 8, 4) +
           number(channels * bits / 8, 2) + number(bits, 2);
}

std::string riff(const std::string& chunks) {
    return "RIFF" + number(chunks.size() + 4, 4) + "WAVE" + chunks;
}

/// The form for sizes of 64 bits, which stand in front.
std::string wave64(const char* id, uint64_t dataSize, const std::string& chunks) {
    const std::string sizes = number(0, 8) + number(dataSize, 8) + number(0, 8) + number(0, 4);
    return id + number(0xFFFFFFFF, 4) + "WAVE" + chunk("ds64", sizes) + chunks;
}

/// Samples that differ from each other, as bytes.
std::string samples(size_t count) {
    std::string bytes;
    for (size_t i = 0; i < count; ++i) {
        bytes += number(i * 7919 + 1, 2);
    }
    return bytes;
}

std::string text(const std::vector<uint8_t>& bytes) {
    return {bytes.begin(), bytes.end()};
}

/// Records what a replay gives until it ends or so many samples are there.
std::string play(const std::string& file, const std::string& settings, Wish wish, uint64_t count) {
    const TemporaryFolder folder;
    const ScopedEnvironment environment("TARNO2_REPLAY", settings);
    const ScopedEnvironment name("TARNO2_REPLAY_FILE", file);
    const LoadedDriver driver(REPLAY_LIBRARY, folder.path());
    EXPECT_EQ(driver->SelectBoard(1), 1) << driver.lastError();
    RingReader reader(driver, std::move(wish));
    EXPECT_TRUE(reader.ok()) << driver.lastError();
    EXPECT_EQ(driver->Start(), 1) << driver.lastError();
    EXPECT_TRUE(reader.record(count));
    return text(reader.bytes());
}

TEST(Replay, WavIsABoardOfItsChannelsAndRate) {
    const TemporaryFolder folder;
    const std::string file =
        folder.write("stereo.WAV", riff(chunk("fmt ", pcm(2, 48000)) + chunk("data", samples(200))));
    const ScopedEnvironment name("TARNO2_REPLAY_FILE", file);
    const LoadedDriver driver(REPLAY_LIBRARY, folder.path());
    ASSERT_EQ(driver.boards(), std::vector<std::string>{"001 Replay of stereo.WAV"});
    ASSERT_EQ(driver->SelectBoard(1), 1);
    EXPECT_EQ(driver.get<uint32_t>(kADCGetChannelCount), 2U);
    EXPECT_EQ(float{driver.get<ADCInputRange>(kADCGetInputRange).m_fRange}, 1.0F);
    EXPECT_EQ(uint32_t{driver.get<ADCSampleFormat>(kADCGetSampleFormat).m_nCodeBits}, 16U);
    float rates[2] = {};
    EXPECT_EQ(driver.get(kADCGetFrequencyList, ADCFloatList{2, 0, rates}).m_nCount, 1U);
    EXPECT_EQ(rates[0], 96000.0F);
    // A channel keeps its rate, so the total goes with the count.
    EXPECT_EQ(float{RingReader(driver, Wish::firstChannels(2, 5.0F, 64)).accepted().m_fFreqStart}, 96000.0F);
    EXPECT_EQ(float{RingReader(driver, Wish::firstChannels(1, 96000.0F, 64)).accepted().m_fFreqStart}, 48000.0F);
}

TEST(Replay, WavArrivesWhole) {
    const TemporaryFolder folder;
    const std::string data = samples(3 * 700);
    const std::string file = folder.write("three.wav", riff(chunk("fmt ", pcm(3, 8000)) + chunk("data", data)));
    for (const int32_t ring : {1, 60, 600, 1002, 4200, 100000}) {
        for (const char* pace : {"RealTime=0", "RealTime=1"}) {
            if (std::string(pace) == "RealTime=1" && ring < 4200) {
                continue;  // by the clock only where a late reader loses nothing
            }
            SCOPED_TRACE(testing::Message() << pace << ", ring " << ring);
            const std::string played = play(file, pace, Wish::firstChannels(3, 24000.0F, ring), 2100);
            EXPECT_EQ(played, data);
        }
    }
}

TEST(Replay, TellsItsEnd) {
    const TemporaryFolder folder;
    const std::string file = folder.write("a.wav", riff(chunk("fmt ", pcm(1, 8000)) + chunk("data", samples(100))));
    for (const int32_t ring : {64, 50}) {  // the end inside a half, and at its end
        const ScopedEnvironment environment("TARNO2_REPLAY", "RealTime=0");
        const ScopedEnvironment name("TARNO2_REPLAY_FILE", file);
        const LoadedDriver driver(REPLAY_LIBRARY, folder.path());
        ASSERT_EQ(driver->SelectBoard(1), 1);
        RingReader reader(driver, Wish::firstChannels(1, 8000.0F, ring));
        ASSERT_EQ(driver->Start(), 1);
        ASSERT_TRUE(reader.record(100));
        auto end = driver.get<ADCStreamEnd>(kADCGetStreamEnd);
        while (end.m_nCause == kADCEndNone && reader.waitForHalf() > 0) {
            end = driver.get<ADCStreamEnd>(kADCGetStreamEnd);
        }
        EXPECT_EQ(uint32_t{end.m_nCause}, uint32_t{kADCEndOfSource});
        EXPECT_EQ(uint64_t{end.m_nPosition}, 100U);
        EXPECT_EQ(driver.lastError(), "a.wav was played to its end.");
        driver->Stop();
        EXPECT_EQ(reader.written(), 100U);
    }
}

TEST(Replay, LoopsAndPicksChannels) {
    const TemporaryFolder folder;
    const std::string data = samples(4 * 50);
    const std::string file = folder.write("four.wav", riff(chunk("fmt ", pcm(4, 8000)) + chunk("data", data)));
    Wish wish = Wish::firstChannels(3, 24000.0F, 42);
    wish.channels = {3, 0, 0};
    std::string expected;
    for (size_t frame = 0; frame < 420; ++frame) {
        for (const int32_t channel : wish.channels) {
            expected += data.substr((frame % 50 * 4 + static_cast<size_t>(channel)) * 2, 2);
        }
    }
    EXPECT_EQ(play(file, "RealTime=0;Loop=1", wish, 420 * 3), expected);
    EXPECT_EQ(play(file, "RealTime=0;Loop=1", Wish::firstChannels(4, 32000.0F, 80), 1000).substr(0, 800), data + data);
}

TEST(Replay, OddWavFiles) {
    const std::string data = samples(90);
    const std::string fmt = chunk("fmt ", pcm(1, 8000));
    const std::string guid = number(1, 2) + std::string("\0\0\0\0\x10\0\x80\0\0\xAA\0\x38\x9B\x71", 14);
    const std::string extensible =
        chunk("fmt ", pcm(1, 8000, 16, 0xFFFE) + number(22, 2) + number(16, 2) + number(4, 4) + guid);
    const std::string floating = chunk("fmt ", pcm(1, 8000, 16, 0xFFFE) + number(22, 2) + number(16, 2) + number(4, 4) +
                                                   number(3, 2) + guid.substr(2));
    struct Case {
        const char* what;
        std::string file;
        std::optional<std::string> plays;  // the samples, or nothing when it is refused
    };
    const Case cases[] = {
        {"odd chunk before", riff(chunk("LIST", "abc") + fmt + chunk("data", data)), data},
        {"extensible", riff(extensible + chunk("data", data)), data},
        {"data cut off", riff(fmt + chunk("data", data, 5000)), data},
        {"cut inside a sample", riff(fmt + chunk("data", data + "x", 5000)).substr(0, 44 + 181), data},
        {"streamed, size unknown", riff(fmt + chunk("data", data, 0xFFFFFFFF)), data},
        {"64-bit sizes", wave64("RF64", 180, fmt + chunk("data", data + "more", 0xFFFFFFFF)), data},
        {"64-bit sizes beyond the end", wave64("BW64", uint64_t{5} << 32, fmt + chunk("data", data, 0xFFFFFFFF)), data},
        {"64-bit sizes cut off", wave64("RF64", 180, "").substr(0, 30), {}},
        {"streamed, size 0", riff(fmt + chunk("data", data, 0)), data},
        {"chunk after", riff(fmt + chunk("data", data) + chunk("LIST", "abcd")), data},
        {"empty file", "", {}},
        {"no RIFF", "RIFX" + std::string(60, 'x'), {}},
        {"no WAVE", "RIFF" + number(4, 4) + "AVI ", {}},
        {"no chunks", riff(""), {}},
        {"no data", riff(fmt), {}},
        {"no samples", riff(fmt + chunk("data", "")), {}},
        {"no format", riff(chunk("data", data)), {}},
        {"short format", riff(chunk("fmt ", "abcdefgh") + chunk("data", data)), {}},
        {"format cut off", riff(fmt).substr(0, 25), {}},
        {"12 bits", riff(chunk("fmt ", pcm(1, 8000, 12)) + chunk("data", data)), {}},
        {"floats of 16 bits", riff(floating + chunk("data", data)), {}},
        {"compressed", riff(chunk("fmt ", pcm(1, 8000, 16, 85)) + chunk("data", data)), {}},
        {"no channel", riff(chunk("fmt ", pcm(0, 8000)) + chunk("data", data)), {}},
        {"161 channels", riff(chunk("fmt ", pcm(161, 8000)) + chunk("data", samples(400))), {}},
        {"rate 0", riff(chunk("fmt ", pcm(1, 0)) + chunk("data", data)), {}},
        {"huge chunk", riff(chunk("junk", "", 0xFFFFFFFF) + fmt + chunk("data", data)), {}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        const TemporaryFolder folder;
        const std::string file = folder.write("case.wav", c.file);
        if (c.plays) {
            EXPECT_EQ(play(file, "RealTime=0", Wish::firstChannels(1, 8000.0F, 180), 90), *c.plays);
            continue;
        }
        const ScopedEnvironment name("TARNO2_REPLAY_FILE", file);
        const LoadedDriver driver(REPLAY_LIBRARY, folder.path());
        EXPECT_EQ(driver.settingsTaken(), 0);
        EXPECT_TRUE(driver.boards().empty());
        EXPECT_EQ(driver->SelectBoard(1), 0);
        EXPECT_NE(driver.lastError().find("case.wav"), std::string::npos) << driver.lastError();
    }
}

TEST(Replay, WavOfOtherSamples) {
    const auto floats = [](auto... values) {
        std::string bytes;
        const auto add = [&](auto value) { bytes.append(reinterpret_cast<const char*>(&value), sizeof value); };
        (add(values), ...);
        return bytes;
    };
    struct Case {
        std::string fmt;
        std::string data;
        uint32_t bits;
        std::vector<int32_t> words;
    };
    const std::string nan = number(0x7FC00000, 4);
    const Case cases[] = {
        {pcm(1, 8000, 8), std::string("\0\x7F\x80\xFF", 4), 8, {0, 127, 128, 255}},
        {pcm(1, 8000, 24), number(1, 3) + number(0xFFFFFF, 3) + number(0x800000, 3), 24, {1, -1, -0x800000}},
        {pcm(1, 8000, 32), number(1, 4) + number(0x80000000, 4), 32, {1, std::numeric_limits<int32_t>::min()}},
        {pcm(1, 8000, 32, 3),
         floats(0.5F, -1.0F, 1.0F, -7.0F) + nan,
         32,
         {1 << 30, std::numeric_limits<int32_t>::min(), 0x7FFFFFFF, std::numeric_limits<int32_t>::min(), 0}},
        {pcm(1, 8000, 64, 3), floats(-0.25, 1e300), 32, {-(1 << 29), 0x7FFFFFFF}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << c.bits << " bits, " << c.data.size() << " bytes");
        const TemporaryFolder folder;
        const std::string file = folder.write("other.wav", riff(chunk("fmt ", c.fmt) + chunk("data", c.data)));
        std::string expected;
        for (const int32_t word : c.words) {
            expected += number(static_cast<uint32_t>(word), c.bits == 8 ? 2 : 4);
        }
        EXPECT_EQ(play(file, "RealTime=0", Wish::firstChannels(1, 8000.0F, 64), c.words.size()), expected);
        const ScopedEnvironment name("TARNO2_REPLAY_FILE", file);
        const LoadedDriver driver(REPLAY_LIBRARY, folder.path());
        ASSERT_EQ(driver->SelectBoard(1), 1);
        EXPECT_EQ(uint32_t{driver.get<ADCSampleFormat>(kADCGetSampleFormat).m_nCodeBits}, c.bits);
    }
}

TEST(Replay, WavOfWideSamplesLoopsAndPicksChannels) {
    const TemporaryFolder folder;
    std::string data;
    for (uint32_t i = 0; i < 3 * 5000; ++i) {
        data += number(i, 3);
    }
    const std::string file = folder.write("three.wav", riff(chunk("fmt ", pcm(3, 8000, 24)) + chunk("data", data)));
    Wish wish = Wish::firstChannels(2, 16000.0F, 4000);
    wish.channels = {2, 0};
    std::string expected;
    for (uint32_t frame = 0; frame < 12000; ++frame) {
        expected += number(frame % 5000 * 3 + 2, 4) + number(frame % 5000 * 3, 4);
    }
    EXPECT_TRUE(play(file, "RealTime=0;Loop=1", wish, 24000) == expected);
}

/// A data file of 32-bit samples (24-bit codes below eight lines) in two channels, with its description.
std::string writeDataFile(const TemporaryFolder& folder, const std::string& data, uint8_t isSigned) {
    RecordDescription description;
    SampleLayout layout;
    layout.bytesPerSample = 4;
    layout.analogShift = 0;
    layout.analogMask = 0x00FFFFFF;
    layout.analogBits = 24;
    layout.digitalShift = 24;
    layout.digitalMask = static_cast<int32_t>(0xFF000000U);
    layout.digitalBits = 8;
    layout.analogSigned = isSigned;
    EXPECT_TRUE(description.setFrequency(20000.0) && description.setDataFormat(layout) &&
                description.setDriverName("Simulator") && description.setDataCountPerChannel(data.size() / 8) &&
                description.addChannelRange(2.5, -2.5) && description.addChannelRange(0.25, -0.25));
    std::string file = folder.write("run.dat", data);
    EXPECT_TRUE(description.writeForDataFile(file));
    return file;
}

TEST(Replay, DataFileWithItsDescription) {
    for (const uint8_t isSigned : {uint8_t{1}, uint8_t{0}}) {
        const TemporaryFolder folder;
        const std::string data = samples(2 * 2 * 333);
        const std::string file = writeDataFile(folder, data, isSigned);
        {
            const ScopedEnvironment name("TARNO2_REPLAY_FILE", file);
            const LoadedDriver driver(REPLAY_LIBRARY, folder.path());
            ASSERT_EQ(driver->SelectBoard(1), 1) << driver.lastError();
            const auto format = driver.get<ADCSampleFormat>(kADCGetSampleFormat);
            EXPECT_EQ(uint32_t{format.m_nBytes}, 4U);
            EXPECT_EQ(uint32_t{format.m_nDigitalMask}, 0xFF000000U);
            EXPECT_EQ(uint32_t{format.m_nFormatFlags}, 1U);
            EXPECT_EQ(int32_t{driver.get<ADCCodeRange>(kADCGetCodeRange).m_nMaximum}, isSigned ? 8388607 : 16777215);
            EXPECT_EQ(float{driver.get(kADCGetInputRange, ADCInputRange{1, 1, 0}).m_fRange}, 0.25F);
            EXPECT_EQ(driver.get<float>(kADCGetBoardFrequency), 20000.0F);
        }
        const std::string played = play(file, "RealTime=0", Wish::firstChannels(2, 20000.0F, 400), 666);
        EXPECT_EQ(played, data);
    }
}

TEST(Replay, FileFromSettingsAndProblemsByName) {
    const TemporaryFolder folder;
    folder.write("a.wav", riff(chunk("fmt ", pcm(1, 8000)) + chunk("data", samples(10))));
    folder.write("alone.dat", samples(10));
    folder.write("broken.dat", samples(10));
    folder.write("broken.txt", "ClassVersion = 1\r\n");
    struct Case {
        const char* settings;
        size_t boards;
        int32_t taken;
        const char* named;
    };
    const Case cases[] = {{"File = \"a.wav\"\r\n", 1, 1, ""},
                          {"File = a.wav\r\n", 0, 0, "quotes"},
                          {"Loop = 1\r\n", 0, 1, "File: choose"},
                          {"File = \"b.wav\"\r\n", 0, 0, "b.wav"},
                          {"File = \"alone.dat\"\r\n", 0, 0, "alone.txt"},
                          {"File = \"broken.dat\"\r\n", 0, 0, "missing"}};
    for (const Case& c : cases) {
        folder.write("Replay.cfg", c.settings);
        const LoadedDriver driver(REPLAY_LIBRARY, folder.path());
        EXPECT_EQ(driver.boards().size(), c.boards) << c.settings;
        EXPECT_EQ(driver.settingsTaken(), c.taken) << c.settings;
        EXPECT_NE(driver.lastError().find(c.named), std::string::npos) << driver.lastError();
    }
}

}  // namespace
}  // namespace tarno2::test
