// SPDX-License-Identifier: MIT
//
// A driver for an instrument that sends its samples over TCP: two channels of signed 16-bit words, +-5 V, 1000 frames
// per second. It shows what a real source adds to sdk/example: a connection that can't be made, that breaks, that ends.

#include <algorithm>
#include <string>
#include <thread>
#include <vector>

#include <tarno2/driver.h>

#ifdef _WIN32
#include <winsock2.h>
#include <ws2tcpip.h>
typedef SOCKET Socket;
typedef u_long Flag;
#define poll WSAPoll
#else
#include <netdb.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>
typedef int Socket;
typedef int Flag;
#define INVALID_SOCKET (-1)
#define closesocket ::close
#define ioctlsocket ioctl
#endif

namespace {
const int kChannels = 2, kFrameBytes = 4;

class TcpDriver : public tarno2::sdk::Driver {
public:
    TcpDriver() : Driver("ExampleTcp"), socket_(INVALID_SOCKET) {
        settings().add(tarno2::sdk::Setting::text("Host", "127.0.0.1", "Address", "Адрес"));
        settings().add(tarno2::sdk::Setting::integer("Port", 5025, 1, 65535, "Port", "Порт"));
#ifdef _WIN32
        WSADATA data;
        static_cast<void>(WSAStartup(MAKEWORD(2, 2), &data));
#endif
    }

protected:
    std::vector<tarno2::sdk::Board> search(const tarno2::sdk::Settings& settings) override {
        tarno2::sdk::Board board;
        board.id = settings.text("Host");
        board.name = "Instrument at " + board.id + " (2 channels)";
        board.channels = kChannels;
        board.range = 5.0;
        board.perChannelFrequency = true;
        board.frequencies.push_back(1000.0F);
        board.minimumFrequency = board.maximumFrequency = board.usualFrequency = 1000.0F;
        return std::vector<tarno2::sdk::Board>(1, board);
    }

    bool begin(const tarno2::sdk::Board&, const tarno2::sdk::Measurement& measurement) override {
        channels_ = measurement.channels;
        addrinfo hints = addrinfo();
        hints.ai_socktype = SOCK_STREAM;
        addrinfo* found = nullptr;
        const std::string host = settings().text("Host"), port = std::to_string(settings().integer("Port"));
        if (getaddrinfo(host.c_str(), port.c_str(), &hints, &found) != 0) {
            return fail("There is no address \"%s\".", host.c_str());
        }
        socket_ = socket(found->ai_family, found->ai_socktype, found->ai_protocol);
        const bool connected = socket_ != INVALID_SOCKET && connectWithin(3000, *found);
        freeaddrinfo(found);
        if (!connected) {
            closesocket(socket_);
            return fail("%s does not answer on port %s within 3 s.", host.c_str(), port.c_str());
        }
        thread_ = std::thread(&TcpDriver::run, this);
        return true;
    }

    void end() override {
        shutdown(socket_, 2);  // both ways: a read that waits returns
        thread_.join();
        closesocket(socket_);
    }

private:
    bool connectWithin(int milliseconds, const addrinfo& to) {
        Flag on = 1, off = 0;
        ioctlsocket(socket_, FIONBIO, &on);  // `connect` returns at once
        connect(socket_, to.ai_addr, static_cast<socklen_t>(to.ai_addrlen));
        pollfd made = {socket_, POLLOUT, 0};
        return poll(&made, 1, milliseconds) == 1 && made.revents == POLLOUT && ioctlsocket(socket_, FIONBIO, &off) == 0;
    }

    void run() {
        int16_t words[20 * kChannels];  // 20 ms
        std::vector<int16_t> samples;
        while (const size_t room = waitForRoom()) {  // without it the connection holds what comes
            const auto most = static_cast<uint16_t>(std::min<size_t>(room / channels_.size(), 20) * kFrameBytes);
            const int got = static_cast<int>(recv(socket_, reinterpret_cast<char*>(words), most, MSG_WAITALL));
            samples.clear();
            for (int frame = 0; (frame + 1) * kFrameBytes <= got; ++frame) {
                for (size_t i = 0; i < channels_.size(); ++i) {
                    samples.push_back(words[frame * kChannels + channels_[i]]);
                }
            }
            push(samples.data(), samples.size());
            if (got < most) {
                return gone(got < 0 ? kADCEndUnplugged : kADCEndOfSource, "The instrument closed the connection.");
            }
        }
    }

    std::vector<int32_t> channels_;
    Socket socket_;
    std::thread thread_;
};
}  // namespace

TARNO2_DRIVER(TcpDriver)
