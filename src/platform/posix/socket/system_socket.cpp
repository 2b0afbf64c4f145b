#include "platform/socket/system_socket.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <poll.h>

#include "platform/posix/wait_ready.h"
#include "platform/socket.h"

namespace tarno2 {

namespace system_socket {

OsError begin() {
    return {};
}

OsError lastError() {
    return OsError::last();
}

OsError resolveError(int result) {
    switch (result) {
        case EAI_SYSTEM:
            return OsError::last();
        case EAI_MEMORY:
            return OsError(ENOMEM);
        default:
            return OsError(EHOSTUNREACH);
    }
}

bool wouldBlock(const OsError& error) {
    return error.code() == EAGAIN || error.code() == EINPROGRESS;
}

bool interrupted(const OsError& error) {
    return error.code() == EINTR;
}

bool brokenOff(const OsError& error) {
    constexpr std::array kCodes = {ECONNRESET, ECONNABORTED, EPIPE,        ETIMEDOUT,
                                   ENETDOWN,   ENETUNREACH,  EHOSTUNREACH, ENETRESET};
    return std::find(kCodes.begin(), kCodes.end(), error.code()) != kCodes.end();
}

OsError timedOut() {
    return OsError(ETIMEDOUT);
}

OsError cancelled() {
    return OsError(ECANCELED);
}

intptr_t make(int family, int type) {
    return socket(family, type | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
}

intptr_t accept(intptr_t listener) {
    return accept4(native(listener), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC);
}

void claimAddress(intptr_t handle, int type) {
    const int on = type == SOCK_STREAM ? 1 : 0;  // with datagrams it would mean that two may have the same port
    setsockopt(native(handle), SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
}

void close(intptr_t handle) {
    ::close(native(handle));
}

void prepareDatagrams(intptr_t handle, int bytes) {
    // Beyond the system's limit only for who may.
    if (setsockopt(native(handle), SOL_SOCKET, SO_RCVBUFFORCE, &bytes, sizeof bytes) != 0) {
        setsockopt(native(handle), SOL_SOCKET, SO_RCVBUF, &bytes, sizeof bytes);
    }
    const int on = 1;
    setsockopt(native(handle), SOL_SOCKET, SO_RXQ_OVFL, &on, sizeof on);
}

int64_t takeDatagram(intptr_t handle, void* data, size_t size, uint32_t& dropped) {
    iovec part{data, size};
    alignas(cmsghdr) std::array<char, CMSG_SPACE(sizeof(uint32_t))> control{};
    msghdr message{};
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    message.msg_control = control.data();
    message.msg_controllen = control.size();
    const ssize_t got = recvmsg(native(handle), &message, 0);
    for (cmsghdr* header = CMSG_FIRSTHDR(&message); got >= 0 && header != nullptr;
         header = CMSG_NXTHDR(&message, header)) {
        if (header->cmsg_level == SOL_SOCKET && header->cmsg_type == SO_RXQ_OVFL) {
            std::memcpy(&dropped, CMSG_DATA(header), sizeof dropped);
        }
    }
    return got;
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
        return OsError(EMFILE);
    }
    return {};
}

Socket::Waited Socket::wait(Until until, uint32_t milliseconds) const {
    const short events = until == Until::Readable ? POLLIN : POLLOUT;
    switch (waitReady(system_socket::native(handle_), events, cancel_, milliseconds)) {
        case Ready::Yes:
            return Waited::Ready;
        case Ready::TimedOut:
            return Waited::TimedOut;
        case Ready::Cancelled:
            return Waited::Cancelled;
        case Ready::Failed:
            break;
    }
    return Waited::Failed;
}

}  // namespace tarno2
