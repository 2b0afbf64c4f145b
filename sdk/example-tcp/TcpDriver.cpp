// SPDX-License-Identifier: MIT
//
// A driver for an instrument that sends its samples over TCP: two channels of signed 16-bit words, +-5 V, 1000 frames
// per second. It shows what a real source adds to sdk/example: a connection that can't be made, that breaks, that ends.

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include <tarno2/driver.h>

#ifdef _WIN32
#include <winsock2.h>
#include <ws2tcpip.h>
typedef SOCKET Socket;
#else
#include <netdb.h>
#include <sys/socket.h>
#include <unistd.h>
typedef int Socket;
#define INVALID_SOCKET (-1)
#define closesocket ::close
#endif

namespace {
const size_t kChannels = 2;

class TcpDriver : public tarno2::sdk::Driver {
public:
    TcpDriver() : Driver("ExampleTcp"), socket_(INVALID_SOCKET), stop_(false) {
        using tarno2::sdk::Setting;
        settings().add(Setting::text("Host", "127.0.0.1", "Address", "Адрес"));
        settings().add(Setting::integer("Port", 5025, 1, 65535, "Port", "Порт"));
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
        board.minimumRing = 1 << 16;  // what the network held up comes at once
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
        const bool connected = socket_ != INVALID_SOCKET &&
                               connect(socket_, found->ai_addr, static_cast<socklen_t>(found->ai_addrlen)) == 0;
        freeaddrinfo(found);
        if (!connected) {
            end();
            return fail("%s does not answer.", host.c_str());
        }
        stop_ = false;
        thread_ = std::thread(&TcpDriver::run, this);
        return true;
    }

    void end() override {
        stop_ = true;
        if (socket_ != INVALID_SOCKET) {
            shutdown(socket_, 2);  // both ways: a read that waits returns
        }
        if (thread_.joinable()) {
            thread_.join();
        }
        if (socket_ != INVALID_SOCKET) {
            closesocket(socket_);
        }
        socket_ = INVALID_SOCKET;
    }

private:
    void run() {
        const size_t atOnce = 20;  // frames: 20 ms
        int16_t words[atOnce * kChannels];
        std::vector<int16_t> samples;
        while (true) {
            const auto got = recv(socket_, reinterpret_cast<char*>(words), sizeof words, MSG_WAITALL);
            const size_t frames = got > 0 ? static_cast<size_t>(got) / sizeof(int16_t) / kChannels : 0;
            samples.clear();
            for (size_t frame = 0; frame < frames; ++frame) {
                for (size_t i = 0; i < channels_.size(); ++i) {
                    samples.push_back(words[frame * kChannels + static_cast<size_t>(channels_[i])]);
                }
            }
            push(samples.data(), samples.size());
            if (stop_ || frames < atOnce) {
                return gone(got < 0 ? kADCEndUnplugged : kADCEndOfSource, "The instrument closed the connection.");
            }
        }
    }

    std::vector<int32_t> channels_;
    Socket socket_;
    std::thread thread_;
    std::atomic<bool> stop_;
};
}  // namespace

TARNO2_DRIVER(TcpDriver)
