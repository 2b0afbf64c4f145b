// SPDX-License-Identifier: MIT

#ifndef TARNO2_DRIVER_DATA_EVENT_H
#define TARNO2_DRIVER_DATA_EVENT_H

#include <stdint.h>

#ifdef _WIN32
#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>
#else
#include <sys/eventfd.h>
#include <unistd.h>
#endif

namespace tarno2 {
namespace sdk {

/// The event that tells the host of another full half: a manual-reset event on Windows, an eventfd elsewhere.
class DataEvent {
public:
#ifdef _WIN32
    DataEvent() : handle_(CreateEventA(nullptr, TRUE, FALSE, nullptr)) {}
    ~DataEvent() {
        if (handle_ != nullptr) {
            CloseHandle(handle_);
        }
    }
    bool valid() const {
        return handle_ != nullptr;
    }
    void set() {
        SetEvent(handle_);
    }
    void reset() {
        ResetEvent(handle_);
    }
    /// As the host takes it: handles have 32 significant bits, also in 64-bit programs.
    uint32_t number() const {
        return static_cast<uint32_t>(reinterpret_cast<uintptr_t>(handle_));
    }

private:
    HANDLE handle_;
#else
    DataEvent() : descriptor_(eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC)) {}
    ~DataEvent() {
        if (valid()) {
            close(descriptor_);
        }
    }
    bool valid() const {
        return descriptor_ >= 0;
    }
    void set() {
        const uint64_t one = 1;
        const ssize_t done = write(descriptor_, &one, sizeof one);
        static_cast<void>(done);
    }
    void reset() {
        uint64_t count = 0;
        const ssize_t done = read(descriptor_, &count, sizeof count);
        static_cast<void>(done);
    }
    /// As the host takes it.
    uint32_t number() const {
        return static_cast<uint32_t>(descriptor_);
    }

private:
    int descriptor_;
#endif
    DataEvent(const DataEvent&);
    DataEvent& operator=(const DataEvent&);
};

}  // namespace sdk
}  // namespace tarno2

#endif  // TARNO2_DRIVER_DATA_EVENT_H
