#pragma once

#include <atomic>
#include <cstdint>
#include <limits>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace tarno2::test {

struct FakeScanElement {
    std::string id;      ///< "voltage0"
    std::string format;  ///< "be:u12/16>>4"
    std::string scale;   ///< empty: it has none
    std::string offset;
};

/// The board of a `FakeIiod`, and what goes wrong with it.
struct FakeIioBoard {
    static constexpr uint64_t kNever = std::numeric_limits<uint64_t>::max();

    std::vector<FakeScanElement> elements;
    bool timestamp = false;              ///< one more element behind them: nanoseconds
    std::string rates = "[1 1 200000]";  ///< sampling_frequency_available; empty: neither it nor sampling_frequency
    bool needsTrigger = false;           ///< opens only once the trigger "fakeadc-dev0" was set
    bool paced = true;                   ///< by the clock; else as fast as it is asked
    uint64_t cutAfter = kNever;          ///< frames after which the connection breaks
    uint64_t goneAfter = kNever;         ///< frames after which the board is not there any more
    uint64_t silentAfter = kNever;       ///< frames after which nothing comes
    uint64_t loseAt = kNever;  ///< frame before which `loseFrames` are lost; their counters and times are left out
    uint64_t loseFrames = 0;
};

/// The code of a counter signal: the frame's number, 1000 more for each further element, cut to the code's bits.
[[nodiscard]] int64_t fakeCode(const std::string& format, size_t element, uint64_t frame);

/// A stand-in for the server of boards of the kernel's industrial I/O, for clients of version 0.x on the loopback. It
/// has one board, whose channels count, and as many connections as there are clients.
class FakeIiod {
public:
    /// Listens on a port of its own choice when `port` is 0. `uri()` is empty when it can't.
    explicit FakeIiod(FakeIioBoard board, uint16_t port = 0);
    ~FakeIiod();
    FakeIiod(const FakeIiod&) = delete;
    FakeIiod& operator=(const FakeIiod&) = delete;

    [[nodiscard]] std::string uri() const;
    /// What clients set.
    [[nodiscard]] double rate() const { return rate_.load(); }
    [[nodiscard]] std::string trigger() const;
    [[nodiscard]] uint32_t kernelBuffers() const { return kernelBuffers_.load(); }
    /// How often a buffer was opened and closed again.
    [[nodiscard]] uint32_t opened() const { return opened_.load(); }
    [[nodiscard]] uint32_t closed() const { return closed_.load(); }

private:
    class Connection;
    void listen();
    [[nodiscard]] std::string contextText() const;
    [[nodiscard]] std::string attribute(const std::vector<std::string>& words) const;
    bool setAttribute(const std::vector<std::string>& words, const std::string& value);

    FakeIioBoard board_;
    int listener_ = -1;
    uint16_t port_ = 0;
    std::atomic<bool> stopping_{false};
    std::atomic<double> rate_{1000.0};
    std::atomic<uint32_t> kernelBuffers_{0};
    std::atomic<uint32_t> opened_{0};
    std::atomic<uint32_t> closed_{0};
    mutable std::mutex mutex_;
    std::string trigger_;
    std::vector<std::unique_ptr<Connection>> connections_;
    std::thread thread_;
};

}  // namespace tarno2::test
