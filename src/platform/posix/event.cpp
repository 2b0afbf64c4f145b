#include "platform/event.h"

#include <atomic>
#include <cerrno>
#include <ctime>
#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include "platform/clock.h"

namespace tarno2 {

namespace {

/// What a thread wrote before `set` is seen by one that found the event signalled. The system call has that effect in
/// practice, but only an atomic says so to the compiler.
std::atomic<uint32_t> setCount{0};

/// A system that is short of memory for a moment is asked again, so many times.
constexpr int kAttempts = 20;
constexpr timespec kPause{0, 1'000'000};

/// poll with a time-out that interruptions do not stretch. Returns what poll returns.
int pollUntil(pollfd* fds, nfds_t count, uint32_t milliseconds) {
    const bool forever = milliseconds == kWaitForever;
    const uint64_t deadline =
        forever || milliseconds == 0 ? 0 : monotonicNanoseconds() + milliseconds * kNanosecondsPerMillisecond;
    uint64_t left = milliseconds * kNanosecondsPerMillisecond;
    for (int attempts = 0;;) {
        timespec timeout{};
        timeout.tv_sec = static_cast<time_t>(left / kNanosecondsPerSecond);
        timeout.tv_nsec = static_cast<long>(left % kNanosecondsPerSecond);
        const int result = ppoll(fds, count, forever ? nullptr : &timeout, nullptr);
        const bool again = result < 0 && (errno == EINTR || (errno == ENOMEM && ++attempts < kAttempts));
        if (!again) {
            setCount.load(std::memory_order_acquire);
            return result;
        }
        if (errno == ENOMEM) {
            nanosleep(&kPause, nullptr);
        }
        if (!forever) {
            const uint64_t now = deadline == 0 ? 0 : monotonicNanoseconds();
            left = now < deadline ? deadline - now : 0;
        }
    }
}

pollfd readable(intptr_t handle) {
    return {static_cast<int>(handle), POLLIN, 0};
}

bool broken(const pollfd& fd) {
    return (fd.revents & ~POLLIN) != 0;
}

Event::Either failed(OsError error) {
    Event::Either either;
    either.error = error;
    return either;
}

}  // namespace

Event::Event() : handle_(eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC)), owned_(true) {}

void Event::close() {
    if (owned_ && valid()) {
        ::close(static_cast<int>(handle_));
    }
}

bool Event::valid() const {
    return handle_ >= 0;
}

bool Event::set() {
    setCount.fetch_add(1, std::memory_order_release);
    const uint64_t one = 1;
    ssize_t written = 0;
    do {
        written = write(static_cast<int>(handle_), &one, sizeof one);
    } while (written < 0 && errno == EINTR);
    return written == sizeof one || (written < 0 && errno == EAGAIN);  // a full counter is signalled already
}

uint64_t Event::reset() {
    uint64_t count = 0;
    ssize_t got = 0;
    do {
        // An event that a driver made may be a blocking one: only read what is there.
        if (wait(0) != WaitResult::Signalled) {
            return 0;
        }
        got = read(static_cast<int>(handle_), &count, sizeof count);
    } while (got < 0 && errno == EINTR);
    return got == sizeof count ? count : 0;
}

WaitResult Event::wait(uint32_t milliseconds) const {
    if (!valid()) {
        return WaitResult::Failed;
    }
    pollfd fd = readable(handle_);
    const int result = pollUntil(&fd, 1, milliseconds);
    if (result < 0 || broken(fd)) {
        return WaitResult::Failed;
    }
    return result == 0 ? WaitResult::TimedOut : WaitResult::Signalled;
}

Event::Either Event::waitEither(const Event& a, const Event& b, uint32_t milliseconds) {
    if (!a.valid() || !b.valid()) {
        return failed(OsError(EBADF));
    }
    pollfd fds[] = {readable(a.handle_), readable(b.handle_)};
    const int result = pollUntil(fds, 2, milliseconds);
    if (result < 0) {
        return failed(OsError::last());
    }
    if (broken(fds[0]) || broken(fds[1])) {
        return failed(OsError(EBADF));
    }
    return {result == 0 ? WaitResult::TimedOut : WaitResult::Signalled, fds[0].revents != 0, fds[1].revents != 0, {}};
}

}  // namespace tarno2
