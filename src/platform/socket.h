#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string>

#include "platform/event.h"
#include "platform/os_error.h"
#include "platform/timed_read.h"

namespace tarno2 {

/// An end of a connection. A host is a name or an address, IPv4 or IPv6 (without brackets); an empty one stands for all
/// interfaces of this machine where something is waited for.
struct Endpoint {
    std::string host;
    uint16_t port = 0;
};

/// What all sockets here have in common: the system's handle, closed on destruction, and how a wait is ended.
/// All operations but `cancel` belong to one thread at a time.
class Socket {
public:
    Socket() = default;
    Socket(const Socket&) = delete;
    Socket& operator=(const Socket&) = delete;

    void close();
    [[nodiscard]] bool isOpen() const { return handle_ != kClosed; }
    /// Ends a call that waits, and each later one that would. Any thread.
    void cancel() {
        cancelled_ = true;
        cancel_.set();
    }
    /// The port at this end, which the system has chosen when 0 was asked for.
    [[nodiscard]] uint16_t localPort() const;

protected:
    ~Socket() { close(); }
    enum class Kind { Stream, Datagrams };
    enum class Until { Readable, Writable };
    enum class Waited { Ready, TimedOut, Cancelled, Failed };

    OsError openBound(const Endpoint& local, Kind kind);
    OsError attach(intptr_t handle);
    [[nodiscard]] Waited wait(Until until, uint32_t milliseconds) const;
    TimedRead receive(void* data, size_t size, uint32_t milliseconds, uint32_t* dropped);

    static constexpr intptr_t kClosed = -1;
    intptr_t handle_ = kClosed;

private:
    TimedRead receiveNow(void* data, size_t size, uint32_t* dropped);

    std::atomic<bool> cancelled_{false};
    Event cancel_;
};

/// A TCP connection.
class TcpStream : public Socket {
public:
    /// Connects to the first address of the host that answers; waits at most so long for all of them together
    /// (a name that has to be looked up may take longer). An error when nobody does.
    OsError connect(const Endpoint& remote, uint32_t milliseconds);
    /// Waits until there are bytes, at most so long, and takes up to `size` of them.
    TimedRead read(void* data, size_t size, uint32_t milliseconds) {
        return receive(data, size, milliseconds, nullptr);
    }
    /// Sends all bytes; waits at most so long for the other side to take some.
    OsError write(const void* data, size_t size, uint32_t milliseconds);
    /// Ends the connection so that the other side sees it as broken off (a reset).
    void abort();

private:
    friend class TcpListener;
    OsError connectTo(const void* address, uint32_t milliseconds);
};

/// Waits for somebody who connects.
class TcpListener : public Socket {
public:
    OsError open(const Endpoint& local);
    /// Waits for one connection, at most so long. `Data`: `stream` has it.
    TimedRead accept(TcpStream& stream, uint32_t milliseconds);
};

/// Receives datagrams of whoever sends some.
class UdpReceiver : public Socket {
public:
    /// With a receive buffer as large as the system grants, up to some megabytes.
    OsError open(const Endpoint& local);
    /// Waits for a datagram, at most so long. One that is longer than `size` is cut. An empty one gives 0 bytes.
    TimedRead read(void* data, size_t size, uint32_t milliseconds);
    /// Datagrams that the system had no room for before the one that was read last, as far as it tells (Linux).
    [[nodiscard]] uint64_t dropped() const { return dropped_; }

private:
    uint64_t dropped_ = 0;
    uint32_t counted_ = 0;
};

/// Sends datagrams to one receiver.
class UdpSender : public Socket {
public:
    OsError open(const Endpoint& remote);
    OsError send(const void* data, size_t size);
};

}  // namespace tarno2
