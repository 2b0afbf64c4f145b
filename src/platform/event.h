#pragma once

#include <cstdint>

#include "platform/os_error.h"

namespace tarno2 {

enum class WaitResult { Signalled, TimedOut, Failed };

inline constexpr uint32_t kWaitForever = 0xFFFFFFFFU;

/// A manual-reset event: once set it stays signalled, for every waiter, until it is reset.
///
/// It is also the form in which a driver hands over its data event: a 32-bit number that is a `HANDLE` on Windows and
/// an `eventfd` elsewhere. All operations may be called from any thread.
class Event {
public:
    /// Makes a new event, not signalled. `valid()` is false when the system has none left.
    Event();
    /// Takes part in an event that somebody else owns, by its number; it is not closed on destruction.
    static Event wrap(uint32_t number);
    ~Event();
    Event(Event&& other) noexcept;
    Event& operator=(Event&& other) noexcept;
    Event(const Event&) = delete;
    Event& operator=(const Event&) = delete;

    [[nodiscard]] bool valid() const;
    /// The number by which another library can take part in this event (see `wrap`).
    [[nodiscard]] uint32_t number() const;

    bool set();
    /// Makes the event not signalled and returns how often it was set since the last reset. Systems that do not count
    /// (Windows) return 1 for "at least once". 0 means that it was not signalled.
    uint64_t reset();
    /// Waits until the event is signalled, at most so many milliseconds (`kWaitForever`: without limit).
    [[nodiscard]] WaitResult wait(uint32_t milliseconds) const;

    /// Waits until at least one of two events is signalled; `first` and `second` say which when it returns Signalled.
    struct Either {
        WaitResult result = WaitResult::Failed;
        bool first = false;
        bool second = false;
        OsError error;  ///< why the wait failed
    };
    [[nodiscard]] static Either waitEither(const Event& a, const Event& b, uint32_t milliseconds);

private:
    struct Borrowed {};
    Event(Borrowed, uint32_t number);
    void close();

    intptr_t handle_;
    bool owned_;
};

}  // namespace tarno2
