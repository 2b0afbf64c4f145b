// Recordings of what a device sends over a serial line. The long ones, at the full rate, run by
// scripts/check-boards.sh.

#include <filesystem>
#include <gtest/gtest.h>

#include "drivers/serial/checksum.h"
#include "platform/paths.h"
#include "tests/apps/board_bench.h"
#include "tests/support/counter_bytes.h"
#include "tests/support/paced_sender.h"
#include "tests/support/pty.h"

namespace tarno2::test {
namespace {

using drivers::Checksum;

constexpr uint32_t kChannels = 4;

/// The name of the line for the program that records from it.
std::string portName(const Pty& line) {
    if (!BoardBench::underWine()) {
        return line.name();
    }
    const std::string link = environmentVariable("WINEPREFIX").value_or("") + "/dosdevices/com11";
    std::filesystem::remove(link);
    std::filesystem::create_symlink(line.name(), link);
    return "COM11";
}

/// Waits until the file has so many bytes, then pulls the port out.
void unplugWhenRecorded(BoardBench& bench, Pty& line, uint64_t bytes) {
    EXPECT_TRUE(waitUntil([&] { return bench.rig().size("run.dat") >= bytes; }));
    line.unplug();
    bench.finish("Stop - ");
}

void recordPlain(double rate, double seconds, uint32_t bytes) {
    Pty line;
    BoardBench bench("Serial", kChannels, rate,
                     "Port=" + portName(line) + ";Format=" + (bytes == 2 ? "s16le" : "s32le"));
    bench.start();
    const auto frames = static_cast<uint64_t>(rate * seconds);
    EXPECT_EQ(sendPaced(frames, rate,
                        [&](uint64_t first, uint64_t count) {
                            return line.write(counterBytes(first * kChannels, count * kChannels, bytes));
                        }),
              frames);
    unplugWhenRecorded(bench, line, frames * kChannels * bytes);
    EXPECT_EQ(bench.checkCounterFile(bytes), frames * kChannels);
}

/// A frame of the device: two start bytes, the counter's samples, a CRC. One in a hundred is hurt, each in another way.
std::string deviceFrame(uint64_t number, bool& hurt) {
    std::string text = counterBytes(number * kChannels, kChannels, 2);
    std::byte sum[2];
    writeChecksum(Checksum::Crc16Modbus,
                  checksum(Checksum::Crc16Modbus, {reinterpret_cast<const std::byte*>(text.data()), text.size()}), sum);
    text = "\xAA\x55" + text + std::string(reinterpret_cast<const char*>(sum), 2);
    hurt = number % 100 == 99;
    const size_t place = number / 100 % (text.size() - 2) + 2;
    if (hurt && number % 3 == 0) {
        text[place - 2] = static_cast<char>(text[place - 2] ^ (1 << number / 700 % 8));
    } else if (hurt && number % 3 == 1) {
        text.erase(place, 1 + number / 1200 % 4);
    } else if (hurt) {
        text.insert(place, 1, static_cast<char>(text[place] + 1));
    }
    return text;
}

void recordDamaged(double rate, double seconds) {
    Pty line;
    BoardBench bench("Serial", kChannels, rate,
                     "Port=" + portName(line) + ";Format=u16le;Framing=frames;Checksum=crc16-modbus");
    bench.start();
    const auto frames = static_cast<uint64_t>(rate * seconds);
    std::string expected;
    uint64_t hurtFrames = 0;
    sendPaced(frames, rate, [&](uint64_t first, uint64_t count) {
        std::string wire;
        for (uint64_t i = first; i < first + count; ++i) {
            bool hurt = false;
            wire += deviceFrame(i, hurt);
            hurtFrames += hurt ? 1 : 0;
            expected += hurt ? "" : counterBytes(i * kChannels, kChannels, 2);
        }
        return line.write(wire);
    });
    // The last one is hurt: what follows it tells the parser so.
    bool hurt = false;
    EXPECT_TRUE(line.write(deviceFrame(frames, hurt) + deviceFrame(frames + 1, hurt)));
    expected += counterBytes(frames * kChannels, 2 * kChannels, 2);
    unplugWhenRecorded(bench, line, expected.size());
    EXPECT_TRUE(readFile(bench.rig().file("run.dat")) == expected) << bench.rig().size("run.dat");
    EXPECT_EQ(numberAfter(readFile(bench.rig().file("Serial.log")), "frames recorded, "), hurtFrames);
}

TEST(Boards, SerialIsRecordedWholeUntilItIsPulledOut) {
    recordPlain(5e3, 2, 2);
    recordPlain(1e3, 0.5, 4);
}

TEST(Boards, SerialLeavesDamagedFramesOut) {
    recordDamaged(5e3, 2);
}

TEST(DISABLED_Boards, SerialAtFullRate16) {
    recordPlain(10e3, 10, 2);
}

TEST(DISABLED_Boards, SerialAtFullRate32) {
    recordPlain(10e3, 10, 4);
}

TEST(DISABLED_Boards, SerialDamaged) {
    recordDamaged(10e3, 10);
}

}  // namespace
}  // namespace tarno2::test
