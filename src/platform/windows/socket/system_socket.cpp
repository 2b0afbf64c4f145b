#include "platform/socket/system_socket.h"

#include <algorithm>
#include <array>
#include <limits>

#include "platform/clock.h"
#include "platform/socket.h"

namespace tarno2 {

namespace {

/// So long may a cancelled call go on.
constexpr uint64_t kSliceMilliseconds = 20;

}  // namespace

namespace system_socket {

OsError begin() {
    static const int result = [] {
        WSADATA data{};
        return WSAStartup(MAKEWORD(2, 2), &data);
    }();
    return OsError(result);
}

OsError lastError() {
    return OsError(WSAGetLastError());
}

OsError resolveError(int result) {
    return OsError(result);
}

bool wouldBlock(const OsError& error) {
    return error.code() == WSAEWOULDBLOCK || error.code() == WSAEINPROGRESS;
}

bool interrupted(const OsError& error) {
    return error.code() == WSAEINTR;
}

bool brokenOff(const OsError& error) {
    constexpr std::array kCodes = {WSAECONNRESET, WSAECONNABORTED, WSAESHUTDOWN,    WSAETIMEDOUT,
                                   WSAENETDOWN,   WSAENETUNREACH,  WSAEHOSTUNREACH, WSAENETRESET};
    return std::find(kCodes.begin(), kCodes.end(), error.code()) != kCodes.end();
}

OsError timedOut() {
    return OsError(WSAETIMEDOUT);
}

OsError cancelled() {
    return OsError(WSAECANCELLED);
}

namespace {

/// As the callers expect it: never waiting, and -1 when there is none.
intptr_t prepared(SOCKET socket) {
    static_assert(INVALID_SOCKET == ~SOCKET{0}, "-1 as a handle");
    u_long on = 1;
    if (socket != INVALID_SOCKET && ioctlsocket(socket, static_cast<long>(FIONBIO), &on) != 0) {
        closesocket(socket);
        return -1;
    }
    return static_cast<intptr_t>(socket);
}

}  // namespace

intptr_t make(int family, int type) {
    return prepared(WSASocketW(family, type, 0, nullptr, 0, WSA_FLAG_OVERLAPPED | WSA_FLAG_NO_HANDLE_INHERIT));
}

intptr_t accept(intptr_t listener) {
    return prepared(::accept(native(listener), nullptr, nullptr));
}

void claimAddress(intptr_t handle, int) {
    const BOOL on = TRUE;
    setsockopt(native(handle), SOL_SOCKET, SO_EXCLUSIVEADDRUSE, reinterpret_cast<const char*>(&on), sizeof on);
}

void close(intptr_t handle) {
    closesocket(native(handle));
}

void prepareDatagrams(intptr_t handle, int bytes) {
    setsockopt(native(handle), SOL_SOCKET, SO_RCVBUF, reinterpret_cast<const char*>(&bytes), sizeof bytes);
}

/// What the system dropped it does not tell here.
int64_t takeDatagram(intptr_t handle, void* data, size_t size, uint32_t&) {
    const auto length = static_cast<int>(std::min<size_t>(size, std::numeric_limits<int>::max()));
    const int got = recv(native(handle), static_cast<char*>(data), length, 0);
    return got < 0 && WSAGetLastError() == WSAEMSGSIZE ? length : got;
}

}  // namespace system_socket

void Socket::close() {
    if (isOpen()) {
        system_socket::close(handle_);
        handle_ = kClosed;
    }
}

OsError Socket::attach(intptr_t handle) {
    close();
    handle_ = handle;
    cancelled_ = false;
    cancel_.reset();
    if (!cancel_.valid()) {
        close();
        return OsError(WSAENOBUFS);
    }
    return {};
}

Socket::Waited Socket::wait(Until until, uint32_t milliseconds) const {
    const uint64_t deadline = tickCount() + milliseconds;
    for (;;) {
        if (cancel_.wait(0) == WaitResult::Signalled) {
            return Waited::Cancelled;
        }
        const uint64_t now = tickCount();
        const uint64_t slice = now < deadline ? std::min(deadline - now, kSliceMilliseconds) : 0;
        timeval time{0, static_cast<long>(slice * 1000)};
        fd_set ready;
        fd_set failed;  // a connection that was refused
        FD_ZERO(&ready);
        FD_ZERO(&failed);
        FD_SET(system_socket::native(handle_), &ready);
        FD_SET(system_socket::native(handle_), &failed);
        const bool reading = until == Until::Readable;
        const int result = select(0, reading ? &ready : nullptr, reading ? nullptr : &ready, &failed, &time);
        if (result < 0) {
            return Waited::Failed;
        }
        if (result > 0) {
            return Waited::Ready;
        }
        if (slice == 0 || tickCount() >= deadline) {
            return Waited::TimedOut;
        }
    }
}

}  // namespace tarno2
