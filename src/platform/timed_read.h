#pragma once

#include <cstddef>

#include "platform/os_error.h"

namespace tarno2 {

/// What a read that waits for bytes of a port or a connection came to.
enum class ReadEnd {
    Data,       ///< there are some
    TimedOut,   ///< none came, and nothing else happened
    Cancelled,  ///< another thread asked for an end
    Closed,     ///< the other side has closed the connection: all that it sent was read
    Gone,       ///< the port was pulled out, the connection was broken off
    Failed
};

struct TimedRead {
    ReadEnd end = ReadEnd::Failed;
    size_t bytes = 0;  ///< with `Data`, at least 1 (a datagram may be empty)
    OsError error;     ///< with `Gone` and `Failed`, where the system tells
};

}  // namespace tarno2
