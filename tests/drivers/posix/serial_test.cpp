// Samples over a serial line, whose other end is this test.

#include <atomic>
#include <chrono>
#include <gtest/gtest.h>
#include <thread>

#include "drivers/serial/checksum.h"
#include "tests/drivers/streaming_rig.h"
#include "tests/support/counter_bytes.h"
#include "tests/support/pty.h"

namespace tarno2::test {
namespace {

using drivers::Checksum;

Wish channels(int32_t count) {
    return Wish::firstChannels(count, 10'000.0F, 4096);
}

struct Line {
    explicit Line(const std::string& settings)
        : rig(SERIAL_LIBRARY, "TARNO2_SERIAL", "Port=" + pty.name() + ";Rate=10000;" + settings) {}
    Pty pty;
    StreamingRig rig;
};

TEST(Serial, RecordsWholeFramesUntilThePortVanishes) {
    for (const uint32_t bytes : {2U, 4U}) {
        constexpr size_t kSamples = 20'000;
        Line line(std::string("Channels=4;Format=") + (bytes == 2 ? "u16le" : "s32le"));
        ASSERT_TRUE(line.rig.start(channels(4))) << line.rig.error();
        std::thread sender([&] {
            EXPECT_TRUE(line.pty.write(counterBytes(0, kSamples, bytes) + "torn"));
            line.rig.waitFor(kSamples);
            line.pty.unplug();
        });
        EXPECT_EQ(line.rig.readToEnd(), counterWords(0, kSamples, 8 * bytes));
        sender.join();
        EXPECT_EQ(line.rig.end().m_nCause, uint32_t{kADCEndUnplugged});
        EXPECT_EQ(line.rig.end().m_nPosition, uint64_t{kSamples});
        EXPECT_EQ(line.rig.error(), "The port is not there any more.");
        EXPECT_EQ(line.rig.driver().get<uint32_t>(kADCGetHotPlugPresence), 0U);
        line.rig.driver()->Stop();
        EXPECT_EQ(line.rig.driver()->Start(), 0);
        EXPECT_NE(line.rig.error().find("There is no serial port"), std::string::npos) << line.rig.error();
    }
}

/// A frame of one channel: start bytes, a counter, the sample, a CRC.
std::string frame(uint32_t number) {
    std::string text = std::string(1, static_cast<char>(number)) + counterBytes(number, 1, 2);
    std::byte sum[2];
    writeChecksum(Checksum::Crc16Ccitt,
                  checksum(Checksum::Crc16Ccitt, {reinterpret_cast<const std::byte*>(text.data()), text.size()}), sum);
    return "\xAB\xCD" + text + std::string(reinterpret_cast<const char*>(sum), 2);
}

TEST(Serial, LeavesDamagedFramesOutOrEndsWithThem) {
    for (const bool stops : {false, true}) {
        Line line(std::string("Format=u16le;Framing=frames;StartBytes=AB CD;Counter=1;Checksum=crc16-ccitt;OnDamage=") +
                  (stops ? "stop" : "skip"));
        ASSERT_TRUE(line.rig.start(channels(1))) << line.rig.error();
        std::string wire;
        std::vector<uint32_t> good;
        for (uint32_t i = 0; i < 5000; ++i) {
            std::string one = frame(i);
            if (i % 100 == 50) {
                one[i % one.size()] = static_cast<char>(one[i % one.size()] ^ 0x10);
            } else {
                good.push_back(i);
            }
            wire += one;
        }
        good.resize(stops ? 50 : good.size());
        std::thread sender([&, count = good.size()] {
            EXPECT_TRUE(line.pty.write(wire) || stops) << "who has ended reads no more";
            line.rig.waitFor(count);
            if (!stops) {
                line.pty.unplug();
            }
        });
        EXPECT_EQ(line.rig.readToEnd(), good);
        EXPECT_EQ(line.rig.end().m_nCause, stops ? uint32_t{kADCEndLost} : uint32_t{kADCEndUnplugged});
        EXPECT_EQ(line.rig.end().m_nLost, stops ? 1U : 0U);
        line.rig.driver()->Stop();
        sender.join();
        EXPECT_EQ(line.rig.setting("DamagedFrames"), stops ? "1" : "50");
        const std::string log = readFile(line.rig.folder().file("Serial.log"));
        EXPECT_NE(log.find(stops ? "50 frames recorded, 1 damaged" : "4950 frames recorded, 50 damaged"),
                  std::string::npos)
            << log;
        EXPECT_NE(log.find("the first after 50 frames"), std::string::npos) << log;
    }
}

TEST(Serial, TakesLinesOfTextFromADeviceThatIsToldToBegin) {
    Line line("Framing=text;Delimiter=semicolon;Channels=2;Range=5;StartCommand=GO\\r;StopCommand=\\x03END");
    ASSERT_TRUE(line.rig.start(channels(2))) << line.rig.error();
    EXPECT_EQ(line.pty.read(3), "GO\r");
    ASSERT_TRUE(line.pty.write("time;volts\n5;-5\n1.25\n2,5;0\n"));
    line.rig.waitFor(4);
    line.rig.driver()->Stop();
    EXPECT_EQ(line.pty.read(4),
              "\x03"
              "END");
    EXPECT_NE(line.rig.error().find("2 frames recorded, 1 damaged"), std::string::npos) << line.rig.error();
    ASSERT_EQ(line.rig.reader().fetch(4), 1);
    EXPECT_EQ(line.rig.reader().words(), (std::vector<uint32_t>{0x7FFFFFFF, 0x80000000, 0x3FFFFFFF, 0}));
}

TEST(Serial, MeasuresARateThatNobodyKnows) {
    Pty pty;
    StreamingRig rig(SERIAL_LIBRARY, "TARNO2_SERIAL", "Port=" + pty.name() + ";Rate=0;Channels=2;Format=s32le");
    std::atomic<bool> stop = false;
    std::thread sender([&] {
        for (uint64_t sample = 0; !stop && pty.write(counterBytes(sample, 200, 4)); sample += 200) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));  // the pace of the device
        }
    });
    EXPECT_TRUE(rig.start(channels(2))) << rig.error();
    EXPECT_GT(rig.reader().accepted().m_fFreqStart, 0.0F);
    EXPECT_TRUE(rig.reader().record(20'000));
    rig.driver()->Stop();
    stop = true;
    sender.join();
    // The frames of the measurement are gone, and what follows them is whole.
    const std::vector<uint32_t> words = rig.reader().words();
    EXPECT_EQ(words.front() % 2, 0U);
    for (size_t i = 1; i < words.size(); ++i) {
        ASSERT_EQ(words[i], words[i - 1] + 1) << i;
    }
}

TEST(Serial, SaysWhatIsWrong) {
    const TemporaryFolder folder;
    Pty pty;
    const struct {
        std::string settings;
        const char* words;
    } table[] = {
        {"Port=/dev/none", "There is no serial port /dev/none"},
        {"Port=" + folder.write("file", "x"), "can't be used"},
        {"Port=" + pty.name() + ";DataBits=7", "can't do 115200 baud"},
        {"Port=" + pty.name() + ";Rate=0", "Too few frames"},
        {"Port=x;Framing=frames;StartBytes=AA5", "two hexadecimal digits"},
        {"Port=x;Framing=morse", "\"morse\" is none of binary, text, frames."},
        {"Port=x;Bits=1", "at least 2"},
        {"Port=x;StartCommand=\\q", "a backslash begins"},
    };
    for (const auto& row : table) {
        StreamingRig rig(SERIAL_LIBRARY, "TARNO2_SERIAL", row.settings);
        const std::vector<std::string> boards = rig.driver().boards();
        const std::string before = rig.error();
        EXPECT_FALSE(!boards.empty() && rig.start(Wish::firstChannels(1, 1000.0F, 64))) << row.settings;
        EXPECT_NE((boards.empty() ? before : rig.error()).find(row.words), std::string::npos)
            << row.settings << ": " << before << rig.error();
    }
    Line line("");
    ASSERT_TRUE(line.rig.start(channels(1))) << line.rig.error();
    StreamingRig second(SERIAL_LIBRARY, "TARNO2_SERIAL", "Port=" + line.pty.name());
    EXPECT_FALSE(second.start(channels(1)));
    EXPECT_NE(second.error().find("in use by another program"), std::string::npos) << second.error();
}

TEST(Serial, StartsAndStopsAHundredTimes) {
    Line line("Format=u16le;Framing=frames;StartBytes=ABCD;Counter=1;Checksum=crc16-ccitt");
    std::string wire;
    for (uint32_t i = 0; i < 256; ++i) {
        wire += frame(i);
    }
    for (int i = 0; i < 100; ++i) {
        ASSERT_TRUE(line.rig.start(Wish::firstChannels(1, 10'000.0F, 64))) << line.rig.error();
        ASSERT_TRUE(line.pty.write(wire));
        ASSERT_TRUE(line.rig.reader().record(128));
        line.rig.driver()->Stop();
        ASSERT_EQ(line.rig.end().m_nCause, uint32_t{kADCEndNone});
    }
    EXPECT_EQ(line.rig.setting("DamagedFrames"), "0");
}

}  // namespace
}  // namespace tarno2::test
