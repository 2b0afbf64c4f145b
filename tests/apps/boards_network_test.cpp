// Recordings of what somebody sends over a network. The long ones, at the full rate, run by scripts/check-boards.sh.

#include <gtest/gtest.h>

#include "platform/file.h"
#include "platform/socket.h"
#include "tests/apps/board_bench.h"
#include "tests/support/counter_bytes.h"
#include "tests/support/paced_sender.h"

namespace tarno2::test {
namespace {

constexpr uint32_t kLong = 60'000;

/// A server that sends the counter for so long and closes the connection.
void recordFromServer(double rate, double seconds, uint32_t bytes) {
    constexpr uint32_t kChannels = 2;
    TcpListener listener;
    ASSERT_TRUE(listener.open({"127.0.0.1", 0}).ok());
    BoardBench bench("Network", kChannels, rate,
                     "Address=tcp://127.0.0.1:" + std::to_string(listener.localPort()) +
                         ";Format=" + (bytes == 2 ? "s16le" : "s32le"));
    bench.start();
    TcpStream stream;
    ASSERT_EQ(listener.accept(stream, kLong).end, ReadEnd::Data);
    const auto frames = static_cast<uint64_t>(rate * seconds);
    EXPECT_EQ(sendPaced(frames, rate,
                        [&](uint64_t first, uint64_t count) {
                            const std::string part = counterBytes(first * kChannels, count * kChannels, bytes);
                            return stream.write(part.data(), part.size(), kLong).ok();
                        }),
              frames);
    stream.close();
    bench.finish("Stop - By end of source");
    EXPECT_EQ(bench.checkCounterFile(bytes), frames * kChannels);
}

/// A sender of numbered packets, one of which is missing.
void recordPackets(double rate, uint32_t packets, uint32_t missing) {
    constexpr uint32_t kChannels = 2;
    constexpr uint32_t kFrames = 320;  // in a packet
    UdpReceiver probe;
    ASSERT_TRUE(probe.open({"127.0.0.1", 0}).ok());
    const uint16_t port = probe.localPort();
    probe.close();
    BoardBench bench("Network", kChannels, rate,
                     "Address=udp://127.0.0.1:" + std::to_string(port) + ";Sequence=u32le;Format=u16le");
    bench.start();
    UdpSender sender;
    ASSERT_TRUE(sender.open({"127.0.0.1", port}).ok());
    ASSERT_TRUE(waitUntil([&] { return fileExists(bench.rig().file("run.dat")); }));
    const auto packet = [&](uint32_t number) {
        std::string text;
        for (uint32_t byte = 0; byte < 4; ++byte) {
            text += static_cast<char>(number >> (8 * byte));
        }
        return text + counterBytes(uint64_t{number} * kFrames * kChannels, kFrames * kChannels, 2);
    };
    // The first one that is heard may be any one: it is sent until the file grows.
    const std::string first = packet(0);
    ASSERT_TRUE(waitUntil([&] {
        static_cast<void>(sender.send(first.data(), first.size()));
        return bench.rig().size("run.dat") > 0;
    }));
    sendPaced(packets - 1, rate / kFrames, [&](uint64_t begin, uint64_t count) {
        for (uint64_t i = begin + 1; i <= begin + count; ++i) {
            const std::string text = packet(static_cast<uint32_t>(i));
            if (i != missing) {
                static_cast<void>(sender.send(text.data(), text.size()));
            }
        }
        return true;
    });
    bench.finish("The board lost");
    const uint64_t position = uint64_t{missing} * kFrames * kChannels;
    EXPECT_EQ(bench.checkCounterFile(2), position);
    EXPECT_EQ(readFile(bench.rig().file("run.log")), "sample = " + std::to_string(position) + ", count = " +
                                                         std::to_string(kFrames * kChannels) + ", cause = board\r\n");
}

TEST(Boards, NetworkIsRecordedWholeUpToItsEnd) {
    recordFromServer(250e3, 2, 2);
    recordFromServer(50e3, 0.5, 4);
}

TEST(Boards, NetworkTellsWhichPacketsWereLost) {
    recordPackets(200e3, 700, 500);
}

TEST(DISABLED_Boards, NetworkAtFullRate16) {
    recordFromServer(2e6, 10, 2);
}

TEST(DISABLED_Boards, NetworkAtFullRate32) {
    recordFromServer(2e6, 10, 4);
}

TEST(DISABLED_Boards, NetworkPackets) {
    recordPackets(2e6, 62000, 61000);
}

}  // namespace
}  // namespace tarno2::test
