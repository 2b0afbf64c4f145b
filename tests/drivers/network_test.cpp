// Samples that are sent over this machine's own interface.

#include <gtest/gtest.h>
#include <thread>

#include "platform/paths.h"
#include "platform/socket.h"
#include "tests/drivers/streaming_rig.h"
#include "tests/support/counter_bytes.h"

namespace tarno2::test {
namespace {

constexpr uint32_t kLong = 60'000;  // a wait for so long has failed the test

Wish twoChannels(float frequency = 100'000.0F, int32_t ring = 4096) {
    return Wish::firstChannels(2, frequency, ring);
}

/// A driver that connects to this test.
struct Client {
    explicit Client(const std::string& settings, const std::string& host = "127.0.0.1") {
        EXPECT_TRUE(listener.open({host, 0}).ok());
        const std::string name = host.find(':') != std::string::npos ? "[" + host + "]" : host;
        rig.emplace(NETWORK_LIBRARY, "TARNO2_NETWORK",
                    "Address=tcp://" + name + ":" + std::to_string(listener.localPort()) + ";Channels=2;Rate=100000;" +
                        settings);
    }
    /// Starts the driver, whose connection is `stream` then.
    void start(const Wish& wish) {
        ASSERT_TRUE(rig->start(wish)) << rig->error();
        ASSERT_EQ(listener.accept(stream, kLong).end, ReadEnd::Data);
    }
    TcpListener listener;
    TcpStream stream;
    std::optional<StreamingRig> rig;
};

void sendInPieces(TcpStream& stream, const std::string& bytes) {
    for (size_t at = 0, piece = 1; at < bytes.size(); at += piece, piece = piece * 3 % 4099 + 1) {
        ASSERT_TRUE(stream.write(bytes.data() + at, std::min(piece, bytes.size() - at), kLong).ok());
    }
}

TEST(Network, RecordsWholeFramesUpToTheOrderlyEnd) {
    const struct {
        const char* format;
        uint32_t bytes;
        const char* host;
        const char* torn;
    } table[] = {{"s16le", 2, "127.0.0.1", ""}, {"s32le", 4, "127.0.0.1", "abc"}, {"u16le", 2, "::1", "abc"}};
    for (const auto& row : table) {
        TcpListener probe;
        if (!probe.open({row.host, 0}).ok()) {
            continue;  // no IPv6 here
        }
        constexpr size_t kSamples = 30'002;
        Client client(std::string("Format=") + row.format, row.host);
        client.start(twoChannels());
        std::thread sender([&] {
            sendInPieces(client.stream, counterBytes(0, kSamples, row.bytes) + row.torn);
            client.stream.close();
        });
        EXPECT_EQ(client.rig->readToEnd(), counterWords(0, kSamples, 8 * row.bytes)) << row.format;
        sender.join();
        EXPECT_EQ(client.rig->end().m_nCause, uint32_t{kADCEndOfSource});
        EXPECT_EQ(client.rig->end().m_nPosition, uint64_t{kSamples});
        const std::string words = *row.torn != '\0' ? "middle of a frame: 3 bytes" : "closed the connection.";
        EXPECT_NE(client.rig->error().find(words), std::string::npos) << client.rig->error();
        client.rig->driver()->Stop();
    }
}

TEST(Network, RecordsTheChosenChannelsAtTheSendersRate) {
    Client client("");
    Wish wish = twoChannels(5000.0F);
    wish.channels = {1};
    wish.gains = {1};
    client.start(wish);
    EXPECT_EQ(client.rig->reader().accepted().m_fFreqStart, 100'000.0F);
    EXPECT_EQ(client.rig->driver().get<uint32_t>(kADCGetPerChannelFrequency), 1U);
    ASSERT_TRUE(client.stream.write("a1b2c3d4", 8, kLong).ok());
    client.stream.close();
    EXPECT_EQ(client.rig->readToEnd(), (std::vector<uint32_t>{0x3262, 0x3464}));
}

TEST(Network, TellsAConnectionThatWasBrokenOff) {
    Client client("");
    client.start(twoChannels());
    const std::string bytes = counterBytes(0, 1000, 2) + "x";
    ASSERT_TRUE(client.stream.write(bytes.data(), bytes.size(), kLong).ok());
    client.rig->waitFor(1000);
    client.stream.abort();
    EXPECT_EQ(client.rig->readToEnd(), counterWords(0, 1000));
    if (kPathSeparator == '\\' && client.rig->end().m_nCause == kADCEndOfSource) {
        GTEST_SKIP() << "Wine tells of a connection that was broken off and of one that was closed alike";
    }
    EXPECT_EQ(client.rig->end().m_nCause, uint32_t{kADCEndUnplugged});
    EXPECT_NE(client.rig->error().find("broken off"), std::string::npos) << client.rig->error();
}

uint16_t freePort(bool datagrams) {
    if (datagrams) {
        UdpReceiver receiver;
        EXPECT_TRUE(receiver.open({"127.0.0.1", 0}).ok());
        return receiver.localPort();
    }
    TcpListener listener;
    EXPECT_TRUE(listener.open({"127.0.0.1", 0}).ok());
    return listener.localPort();
}

TEST(Network, WaitsForASenderThatConnects) {
    const uint16_t port = freePort(false);
    StreamingRig rig(
        NETWORK_LIBRARY, "TARNO2_NETWORK",
        "Address=tcp-listen://127.0.0.1:" + std::to_string(port) + ";Channels=2;Rate=100000;ConnectWait=60");
    std::thread sender([&] {
        TcpStream stream;
        while (!stream.connect({"127.0.0.1", port}, kLong).ok()) {
            std::this_thread::yield();
        }
        const std::string bytes = counterBytes(0, 2000, 2);
        EXPECT_TRUE(stream.write(bytes.data(), bytes.size(), kLong).ok());
    });
    EXPECT_TRUE(rig.start(twoChannels())) << rig.error();
    EXPECT_EQ(rig.readToEnd(), counterWords(0, 2000));
    sender.join();
    rig.driver()->Stop();
}

TEST(Network, TunesAReceiverAndTakesItsSamples) {
    TcpListener listener;
    ASSERT_TRUE(listener.open({"127.0.0.1", 0}).ok());
    std::string commands(20, ' ');
    std::thread receiver([&] {
        TcpStream stream;
        EXPECT_EQ(listener.accept(stream, kLong).end, ReadEnd::Data);
        EXPECT_TRUE(stream.write("RTL0\0\0\0\5\0\0\0\35", 12, kLong).ok());
        for (size_t got = 0; got < commands.size();) {
            const TimedRead read = stream.read(commands.data() + got, commands.size() - got, kLong);
            ASSERT_EQ(read.end, ReadEnd::Data);
            got += read.bytes;
        }
        EXPECT_TRUE(stream.write("\x7F\x80\x00\xFF", 4, kLong).ok());
    });
    StreamingRig rig(NETWORK_LIBRARY, "TARNO2_NETWORK",
                     "Address=rtl_tcp://127.0.0.1:" + std::to_string(listener.localPort()) +
                         ";Rate=2048000;CentreFrequency=433920000;Gain=19.7");
    EXPECT_TRUE(rig.start(twoChannels())) << rig.error();
    EXPECT_EQ(rig.readToEnd(), (std::vector<uint32_t>{0x7F, 0x80, 0, 0xFF}));
    receiver.join();
    EXPECT_EQ(commands, std::string("\1\x19\xDD\x18\x00\2\x00\x1F\x40\x00\3\0\0\0\1\4\0\0\0\xC5", 20));
    rig.driver()->Stop();
}

std::string packet(uint32_t number, uint64_t firstSample, size_t samples = 100) {
    std::string text;
    for (uint32_t byte = 0; byte < 4; ++byte) {
        text += static_cast<char>(number >> (24 - 8 * byte));
    }
    return text + counterBytes(firstSample, samples, 2);
}

TEST(Network, SeesByTheNumbersWhichPacketsAreMissing) {
    const struct {
        const char* what;
        std::vector<std::string> packets;  // the ring gets what comes before a loss
        uint64_t position;
        uint64_t lost;
        uint32_t cause;
    } table[] = {
        {"three are missing", {packet(7, 0), packet(8, 100), packet(12, 500)}, 200, 300, kADCEndLost},
        {"across the end of the numbers",
         {packet(0xFFFFFFFF, 0), packet(0, 100), packet(3, 400)},
         200,
         200,
         kADCEndLost},
        {"sizes differ, so nobody knows how much",
         {packet(1, 0), packet(2, 100, 50), packet(4, 200)},
         150,
         0,
         kADCEndLost},
        {"a repeated one and a late one",
         {packet(7, 0), packet(7, 0), packet(8, 100), packet(6, 0), packet(9, 200), packet(11, 400)},
         300,
         100,
         kADCEndLost},
        {"one that is no frames", {packet(7, 0), packet(8, 100) + "x"}, 100, 0, kADCEndError},
    };
    for (const auto& row : table) {
        const uint16_t port = freePort(true);
        StreamingRig rig(NETWORK_LIBRARY, "TARNO2_NETWORK",
                         "Address=udp://127.0.0.1:" + std::to_string(port) + ";Channels=2;Rate=1000;Sequence=u32be");
        ASSERT_TRUE(rig.start(twoChannels())) << rig.error();
        UdpSender sender;
        ASSERT_TRUE(sender.open({"127.0.0.1", port}).ok());
        for (const std::string& one : row.packets) {
            ASSERT_TRUE(sender.send(one.data(), one.size()).ok());
        }
        EXPECT_EQ(rig.readToEnd(), counterWords(0, row.position)) << row.what;
        EXPECT_EQ(rig.end().m_nCause, row.cause) << row.what;
        EXPECT_EQ(rig.end().m_nPosition, row.position) << row.what;
        EXPECT_EQ(rig.end().m_nLost, row.lost) << row.what;
        rig.driver()->Stop();
    }
}

TEST(Network, SaysWhatIsWrong) {
    const std::string nobody = std::to_string(freePort(false));
    const struct {
        std::string settings;
        const char* words;
    } table[] = {
        {"", "choose where the samples come from"},
        {"Address=http://x:1", "begins with none of"},
        {"Address=tcp://x", "does not end with host:port"},
        {"Address=tcp://x:0", "does not end with host:port"},
        {"Address=tcp://x:65536", "does not end with host:port"},
        {"Address=tcp://::1:5", "does not end with host:port"},
        {"Address=tcp://:5", "names no host"},
        {"Address=udp://:5;Format=s12", "\"s12\" is none of s16le"},
        {"Address=udp://:5;Sequence=u8", "\"u8\" is none of none"},
        {"Address=udp://:5;Gain=much;Rate=1", "neither a number of dB"},
        {"Address=rtl_tcp://h:5;Rate=0", "has to be told its rate"},
        {"Address=udp://:5;Rate=0", "rate of the sender is not known"},
        {"Address=tcp://127.0.0.1:" + nobody, "There is no connection to 127.0.0.1"},
        {"Address=tcp-listen://127.0.0.1:" + nobody + ";ConnectWait=0.1", "Nobody has connected to port "},
    };
    for (const auto& row : table) {
        StreamingRig rig(NETWORK_LIBRARY, "TARNO2_NETWORK", row.settings);
        const std::vector<std::string> boards = rig.driver().boards();
        const std::string before = rig.error();
        const bool started = !boards.empty() && rig.start(Wish::firstChannels(1, 1000.0F, 64));
        EXPECT_FALSE(started) << row.settings;
        EXPECT_NE((boards.empty() ? before : rig.error()).find(row.words), std::string::npos)
            << row.settings << ": " << before << rig.error();
    }
}

TEST(Network, TakesASenderOfUnknownRateForAnExternalClock) {
    Client client("Rate=0");
    client.rig.emplace(NETWORK_LIBRARY, "TARNO2_NETWORK",
                       "Address=tcp://127.0.0.1:" + std::to_string(client.listener.localPort()) + ";Rate=0");
    Wish wish = Wish::firstChannels(1, 0.0F, 4096);
    wish.startOf = kADCStartExternal;
    client.start(wish);
    sendInPieces(client.stream, counterBytes(0, 10'000, 2));
    client.stream.close();
    EXPECT_EQ(client.rig->readToEnd(), counterWords(0, 10'000));
}

TEST(Network, StartsAndStopsAHundredTimes) {
    Client client("");
    const std::string bytes = counterBytes(0, 4096, 2);
    for (int i = 0; i < 100; ++i) {
        client.start(twoChannels());
        ASSERT_TRUE(client.stream.write(bytes.data(), bytes.size(), kLong).ok());
        ASSERT_TRUE(client.rig->reader().record(2048));
        client.rig->driver()->Stop();
        ASSERT_EQ(client.rig->reader().words(), counterWords(0, client.rig->reader().position()));
        ASSERT_EQ(client.rig->end().m_nCause, uint32_t{kADCEndNone});
    }
}

}  // namespace
}  // namespace tarno2::test
