#include "platform/socket.h"

#include <algorithm>
#include <memory>

#include "platform/clock.h"
#include "platform/socket/system_socket.h"

namespace tarno2 {

namespace {

namespace sys = system_socket;

constexpr int kDatagramBuffer = 16 << 20;
constexpr size_t kLargestTransfer = size_t{1} << 20U;

using Addresses = std::unique_ptr<addrinfo, decltype(&freeaddrinfo)>;

OsError resolve(const Endpoint& endpoint, int type, int flags, Addresses& addresses) {
    if (OsError error = sys::begin(); !error.ok()) {
        return error;
    }
    addrinfo hints{};
    hints.ai_family = AF_UNSPEC;
    hints.ai_socktype = type;
    hints.ai_flags = flags | AI_NUMERICSERV;
    addrinfo* found = nullptr;
    const std::string port = std::to_string(endpoint.port);
    const int result =
        getaddrinfo(endpoint.host.empty() ? nullptr : endpoint.host.c_str(), port.c_str(), &hints, &found);
    addresses.reset(found);
    return result == 0 ? OsError() : sys::resolveError(result);
}

void setOption(intptr_t handle, int level, int option, int value) {
    setsockopt(sys::native(handle), level, option, reinterpret_cast<const char*>(&value), sizeof value);
}

}  // namespace

uint16_t Socket::localPort() const {
    sockaddr_storage address{};
    socklen_t length = sizeof address;
    if (getsockname(sys::native(handle_), reinterpret_cast<sockaddr*>(&address), &length) != 0) {
        return 0;
    }
    return ntohs(address.ss_family == AF_INET6 ? reinterpret_cast<const sockaddr_in6*>(&address)->sin6_port
                                               : reinterpret_cast<const sockaddr_in*>(&address)->sin_port);
}

/// Binds to the local address. Without a host to all interfaces, by IPv6 and IPv4 alike where the machine has both.
OsError Socket::openBound(const Endpoint& local, Kind kind) {
    const int type = kind == Kind::Stream ? SOCK_STREAM : SOCK_DGRAM;
    Addresses addresses(nullptr, &freeaddrinfo);
    if (OsError error = resolve(local, type, AI_PASSIVE, addresses); !error.ok()) {
        return error;
    }
    OsError error;
    for (const int family : {AF_INET6, AF_INET}) {
        for (const addrinfo* address = addresses.get(); address != nullptr; address = address->ai_next) {
            if (address->ai_family != family) {
                continue;
            }
            const intptr_t handle = sys::make(address->ai_family, address->ai_socktype);
            if (handle == kClosed) {
                error = sys::lastError();
                continue;
            }
            if (error = attach(handle); !error.ok()) {
                continue;
            }
            sys::claimAddress(handle, type);
            setOption(handle, IPPROTO_IPV6, IPV6_V6ONLY, 0);
            if (bind(sys::native(handle), address->ai_addr, static_cast<socklen_t>(address->ai_addrlen)) == 0) {
                return {};
            }
            error = sys::lastError();
            close();
        }
    }
    return error;
}

TimedRead Socket::receive(void* data, size_t size, uint32_t milliseconds, uint32_t* dropped) {
    const uint64_t deadline = tickCount() + milliseconds;
    for (;;) {
        if (cancelled_) {
            return {ReadEnd::Cancelled, 0, {}};
        }
        const TimedRead got = receiveNow(data, size, dropped);
        if (got.end != ReadEnd::TimedOut) {
            return got;
        }
        const uint64_t now = tickCount();
        switch (wait(Until::Readable, now < deadline ? static_cast<uint32_t>(deadline - now) : 0)) {
            case Waited::TimedOut:
                return {ReadEnd::TimedOut, 0, {}};
            case Waited::Failed:
                return {ReadEnd::Failed, 0, sys::lastError()};
            case Waited::Cancelled:
            case Waited::Ready:
                break;
        }
    }
}

TimedRead Socket::receiveNow(void* data, size_t size, uint32_t* dropped) {
    const int64_t got = dropped != nullptr ? sys::takeDatagram(handle_, data, size, *dropped)
                                           : recv(sys::native(handle_), static_cast<char*>(data),
                                                  static_cast<sys::Length>(std::min(size, kLargestTransfer)), 0);
    if (got > 0 || (got == 0 && dropped != nullptr)) {
        return {ReadEnd::Data, static_cast<size_t>(got), {}};
    }
    if (got == 0) {
        return {ReadEnd::Closed, 0, {}};
    }
    const OsError error = sys::lastError();
    if (sys::wouldBlock(error) || sys::interrupted(error)) {
        return {ReadEnd::TimedOut, 0, {}};
    }
    return {sys::brokenOff(error) ? ReadEnd::Gone : ReadEnd::Failed, 0, error};
}

OsError TcpStream::connect(const Endpoint& remote, uint32_t milliseconds) {
    close();
    Addresses addresses(nullptr, &freeaddrinfo);
    OsError error = resolve(remote, SOCK_STREAM, 0, addresses);
    if (!error.ok()) {
        return error;
    }
    const uint64_t deadline = tickCount() + milliseconds;
    for (const addrinfo* address = addresses.get(); address != nullptr; address = address->ai_next) {
        const uint64_t now = tickCount();
        error = connectTo(address, now < deadline ? static_cast<uint32_t>(deadline - now) : 0);
        if (error.ok()) {
            setOption(handle_, IPPROTO_TCP, TCP_NODELAY, 1);
            return {};
        }
        close();
    }
    return error;
}

OsError TcpStream::connectTo(const void* to, uint32_t milliseconds) {
    const auto& address = *static_cast<const addrinfo*>(to);
    const intptr_t handle = sys::make(address.ai_family, address.ai_socktype);
    if (handle == kClosed) {
        return sys::lastError();
    }
    if (OsError error = attach(handle); !error.ok()) {
        return error;
    }
    if (::connect(sys::native(handle), address.ai_addr, static_cast<socklen_t>(address.ai_addrlen)) == 0) {
        return {};
    }
    if (const OsError error = sys::lastError(); !sys::wouldBlock(error)) {
        return error;
    }
    switch (wait(Until::Writable, milliseconds)) {
        case Waited::TimedOut:
            return sys::timedOut();
        case Waited::Cancelled:
            return sys::cancelled();
        case Waited::Failed:
            return sys::lastError();
        case Waited::Ready:
            break;
    }
    int code = 0;
    socklen_t length = sizeof code;
    getsockopt(sys::native(handle), SOL_SOCKET, SO_ERROR, reinterpret_cast<char*>(&code), &length);
    return OsError(code);
}

OsError TcpStream::write(const void* data, size_t size, uint32_t milliseconds) {
    const auto* bytes = static_cast<const char*>(data);
    while (size > 0) {
#if defined(MSG_NOSIGNAL)
        constexpr int kFlags = MSG_NOSIGNAL;
#else
        constexpr int kFlags = 0;
#endif
        const int64_t sent =
            send(sys::native(handle_), bytes, static_cast<sys::Length>(std::min(size, kLargestTransfer)), kFlags);
        if (sent > 0) {
            bytes += sent;
            size -= static_cast<size_t>(sent);
            continue;
        }
        const OsError error = sys::lastError();
        if (sys::interrupted(error)) {
            continue;
        }
        if (!sys::wouldBlock(error)) {
            return error;
        }
        switch (wait(Until::Writable, milliseconds)) {
            case Waited::Ready:
                break;
            case Waited::TimedOut:
                return sys::timedOut();
            case Waited::Cancelled:
                return sys::cancelled();
            case Waited::Failed:
                return sys::lastError();
        }
    }
    return {};
}

void TcpStream::abort() {
    const linger none{1, 0};
    setsockopt(sys::native(handle_), SOL_SOCKET, SO_LINGER, reinterpret_cast<const char*>(&none), sizeof none);
    close();
}

OsError TcpListener::open(const Endpoint& local) {
    close();
    if (OsError error = openBound(local, Kind::Stream); !error.ok()) {
        return error;
    }
    if (listen(sys::native(handle_), 1) == 0) {
        return {};
    }
    const OsError error = sys::lastError();
    close();
    return error;
}

TimedRead TcpListener::accept(TcpStream& stream, uint32_t milliseconds) {
    stream.close();
    const uint64_t deadline = tickCount() + milliseconds;
    for (;;) {
        const uint64_t now = tickCount();
        switch (wait(Until::Readable, now < deadline ? static_cast<uint32_t>(deadline - now) : 0)) {
            case Waited::TimedOut:
                return {ReadEnd::TimedOut, 0, {}};
            case Waited::Cancelled:
                return {ReadEnd::Cancelled, 0, {}};
            case Waited::Failed:
                return {ReadEnd::Failed, 0, sys::lastError()};
            case Waited::Ready:
                break;
        }
        const intptr_t handle = sys::accept(handle_);
        if (handle != kClosed) {
            const OsError error = stream.attach(handle);
            return {error.ok() ? ReadEnd::Data : ReadEnd::Failed, 0, error};
        }
        // Who connected may have gone again.
        const OsError error = sys::lastError();
        if (!sys::wouldBlock(error) && !sys::interrupted(error) && !sys::brokenOff(error)) {
            return {ReadEnd::Failed, 0, error};
        }
    }
}

OsError UdpReceiver::open(const Endpoint& local) {
    close();
    dropped_ = 0;
    counted_ = 0;
    OsError error = openBound(local, Kind::Datagrams);
    if (error.ok()) {
        sys::prepareDatagrams(handle_, kDatagramBuffer);
    }
    return error;
}

TimedRead UdpReceiver::read(void* data, size_t size, uint32_t milliseconds) {
    uint32_t counted = counted_;
    const TimedRead got = receive(data, size, milliseconds, &counted);
    dropped_ += counted - counted_;  // the system's count may wrap
    counted_ = counted;
    return got;
}

OsError UdpSender::open(const Endpoint& remote) {
    close();
    Addresses addresses(nullptr, &freeaddrinfo);
    OsError error = resolve(remote, SOCK_DGRAM, 0, addresses);
    for (const addrinfo* address = addresses.get(); address != nullptr && !isOpen(); address = address->ai_next) {
        const intptr_t handle = sys::make(address->ai_family, address->ai_socktype);
        if (handle == kClosed) {
            error = sys::lastError();
            continue;
        }
        error = attach(handle);
        if (error.ok() &&
            ::connect(sys::native(handle), address->ai_addr, static_cast<socklen_t>(address->ai_addrlen)) != 0) {
            error = sys::lastError();
            close();
        }
    }
    return error;
}

OsError UdpSender::send(const void* data, size_t size) {
    for (;;) {
        const int64_t sent =
            ::send(sys::native(handle_), static_cast<const char*>(data), static_cast<sys::Length>(size), 0);
        if (sent >= 0) {
            return {};
        }
        const OsError error = sys::lastError();
        if (!sys::wouldBlock(error) || wait(Until::Writable, 1000) != Waited::Ready) {
            return error;
        }
    }
}

}  // namespace tarno2
