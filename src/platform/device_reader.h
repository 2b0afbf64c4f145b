#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/event.h"
#include "platform/os_error.h"

namespace tarno2 {

/// Reads what a device file hands out, without hanging in the system for longer than it is told. POSIX alone.
///
/// One thread reads; any thread may cancel.
class DeviceReader {
public:
    /// Reads from this descriptor, which stays the caller's and is made a non-blocking one.
    explicit DeviceReader(int descriptor);
    /// Whether the system gave what is needed to be cancelled.
    [[nodiscard]] bool valid() const { return cancelled_.valid(); }

    enum class Outcome {
        Data,     ///< `done` bytes were read
        Nothing,  ///< there were none in that time, or the reader was cancelled
        Ended,    ///< the device hands out nothing more
        Failed    ///< `error` says why
    };
    struct Result {
        Outcome outcome = Outcome::Nothing;
        size_t done = 0;
        OsError error;
    };
    /// Waits for bytes, at most so many milliseconds, and reads what there is. A device that says nothing is asked all
    /// the same when the time is over: of one that has been taken away no other sign may come.
    [[nodiscard]] Result read(void* destination, size_t size, uint32_t milliseconds);
    /// A read that waits returns at once, and so does every later one.
    void cancel() noexcept { cancelled_.set(); }

private:
    Event device_;
    Event cancelled_;
};

}  // namespace tarno2
