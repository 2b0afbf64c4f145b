// Connections and datagrams over this machine's own interface.

#include "platform/socket.h"

#include <gtest/gtest.h>
#include <string>
#include <thread>

#include "platform/paths.h"

namespace tarno2 {
namespace {

constexpr uint32_t kLong = 60'000;  // a wait for so long has failed the test

std::string readAll(TcpStream& stream, ReadEnd& end) {
    std::string all;
    for (;;) {
        char part[1000];
        const TimedRead got = stream.read(part, sizeof part, kLong);
        if (got.end != ReadEnd::Data) {
            end = got.end;
            return all;
        }
        all.append(part, got.bytes);
    }
}

/// Both ends of a connection.
struct Connection {
    explicit Connection(const std::string& host) {
        EXPECT_TRUE(listener.open({host, 0}).ok());
        const Endpoint to{host.empty() ? "127.0.0.1" : host, listener.localPort()};
        EXPECT_TRUE(sender.connect(to, kLong).ok()) << host;
        EXPECT_EQ(listener.accept(receiver, kLong).end, ReadEnd::Data);
    }
    TcpListener listener;
    TcpStream sender;
    TcpStream receiver;
};

bool hasIpv6() {
    TcpListener listener;
    return listener.open({"::1", 0}).ok();
}

TEST(Socket, CarriesAllBytesAndThenTellsThatTheOtherSideHasClosed) {
    for (const char* host : {"127.0.0.1", "", "::1"}) {
        if (std::string(host) == "::1" && !hasIpv6()) {
            continue;
        }
        Connection connection(host);
        std::string sent(3'000'000, ' ');
        for (size_t i = 0; i < sent.size(); ++i) {
            sent[i] = static_cast<char>(i * 7 / 5);
        }
        std::thread writer([&] {
            EXPECT_TRUE(connection.sender.write(sent.data(), sent.size(), kLong).ok());
            connection.sender.close();
        });
        ReadEnd end = ReadEnd::Data;
        EXPECT_EQ(readAll(connection.receiver, end), sent) << host;
        EXPECT_EQ(end, ReadEnd::Closed);
        writer.join();
    }
}

TEST(Socket, TellsAConnectionThatWasBrokenOffFromOneThatWasClosed) {
    Connection connection("127.0.0.1");
    char byte = 'x';
    ASSERT_TRUE(connection.sender.write(&byte, 1, kLong).ok());
    ASSERT_EQ(connection.receiver.read(&byte, 1, kLong).end, ReadEnd::Data);
    connection.sender.abort();
    const TimedRead got = connection.receiver.read(&byte, 1, kLong);
    if (kPathSeparator == '\\' && got.end == ReadEnd::Closed) {
        GTEST_SKIP() << "Wine tells of both alike";
    }
    EXPECT_EQ(got.end, ReadEnd::Gone);
    EXPECT_FALSE(got.error.ok());
}

TEST(Socket, EndsAWaitWhenTheTimeIsOverOrAnotherThreadAsksForIt) {
    Connection connection("127.0.0.1");
    char byte = 0;
    EXPECT_EQ(connection.receiver.read(&byte, 1, 0).end, ReadEnd::TimedOut);
    std::thread other([&] { connection.receiver.cancel(); });
    EXPECT_EQ(connection.receiver.read(&byte, 1, kLong).end, ReadEnd::Cancelled);
    other.join();
    EXPECT_EQ(connection.receiver.read(&byte, 1, kLong).end, ReadEnd::Cancelled) << "for good";

    TcpListener listener;
    ASSERT_TRUE(listener.open({"127.0.0.1", 0}).ok());
    TcpStream stream;
    EXPECT_EQ(listener.accept(stream, 0).end, ReadEnd::TimedOut);
    listener.cancel();
    EXPECT_EQ(listener.accept(stream, kLong).end, ReadEnd::Cancelled);
}

TEST(Socket, RefusesWhatCantBe) {
    TcpListener listener;
    ASSERT_TRUE(listener.open({"127.0.0.1", 0}).ok());
    const uint16_t port = listener.localPort();
    ASSERT_NE(port, 0);
    TcpListener second;
    EXPECT_FALSE(second.open({"127.0.0.1", port}).ok()) << "the port is taken";
    listener.close();
    TcpStream stream;
    EXPECT_FALSE(stream.connect({"127.0.0.1", port}, kLong).ok()) << "nobody listens";
    EXPECT_FALSE(stream.isOpen());
    EXPECT_FALSE(stream.connect({"name.invalid", port}, kLong).ok());
}

TEST(Socket, ReceivesDatagramsOneByOne) {
    UdpReceiver receiver;
    ASSERT_TRUE(receiver.open({"127.0.0.1", 0}).ok());
    UdpReceiver second;
    EXPECT_FALSE(second.open({"127.0.0.1", receiver.localPort()}).ok()) << "two would share what comes";
    UdpSender sender;
    ASSERT_TRUE(sender.open({"127.0.0.1", receiver.localPort()}).ok());
    for (const std::string packet : {"one", "", "three", "cut"}) {
        ASSERT_TRUE(sender.send(packet.data(), packet.size()).ok());
    }
    char bytes[5];
    for (const std::string expected : {"one", "", "three"}) {
        const TimedRead got = receiver.read(bytes, sizeof bytes, kLong);
        ASSERT_EQ(got.end, ReadEnd::Data);
        EXPECT_EQ(std::string(bytes, got.bytes), expected);
    }
    const TimedRead cut = receiver.read(bytes, 2, kLong);
    EXPECT_EQ(cut.end, ReadEnd::Data);
    EXPECT_EQ(std::string(bytes, cut.bytes), "cu");
    receiver.cancel();
    EXPECT_EQ(receiver.read(bytes, sizeof bytes, kLong).end, ReadEnd::Cancelled);
    EXPECT_EQ(receiver.dropped(), 0U);
}

}  // namespace
}  // namespace tarno2
