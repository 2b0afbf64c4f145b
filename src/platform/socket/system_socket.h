#pragma once

// The system's sockets, whose calls have the same names everywhere, and the little in which they differ.

#if defined(_WIN32)
#include <winsock2.h>
// Not before it.
#include <mswsock.h>
#include <ws2tcpip.h>
#else
#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>
#endif

#include <cstddef>
#include <cstdint>

#include "platform/os_error.h"

namespace tarno2::system_socket {

#if defined(_WIN32)
using Native = SOCKET;
using Length = int;
#else
using Native = int;
using Length = size_t;
#endif

[[nodiscard]] inline Native native(intptr_t handle) {
    return static_cast<Native>(handle);
}

/// Has to be called before anything else; an error when there is no network at all.
OsError begin();
/// The error of the last call of this thread on a socket.
[[nodiscard]] OsError lastError();
/// The error of a name that was not resolved, by what getaddrinfo returned.
[[nodiscard]] OsError resolveError(int result);
[[nodiscard]] bool wouldBlock(const OsError& error);
[[nodiscard]] bool interrupted(const OsError& error);
/// The connection was broken off, by the other side or on the way.
[[nodiscard]] bool brokenOff(const OsError& error);
[[nodiscard]] OsError timedOut();
[[nodiscard]] OsError cancelled();
/// A new socket whose calls don't wait, and which programs started by this one do not get; -1: none.
[[nodiscard]] intptr_t make(int family, int type);
[[nodiscard]] intptr_t accept(intptr_t listener);
/// Has a socket that will be bound share its address with nobody, but get a port at once that was just given up.
void claimAddress(intptr_t handle, int type);
void close(intptr_t handle);
/// Makes the receive buffer as large as the system grants, up to `bytes`, and has it count what it dropped.
void prepareDatagrams(intptr_t handle, int bytes);
/// Takes a datagram; returns its length (at most `size`), or -1. `dropped` gets how many the socket had no room for
/// until it came.
[[nodiscard]] int64_t takeDatagram(intptr_t handle, void* data, size_t size, uint32_t& dropped);

}  // namespace tarno2::system_socket
