#include "platform/serial_port.h"

#include <cerrno>
#include <fcntl.h>
#include <linux/serial.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include "platform/posix/serial/line_settings.h"
#include "platform/posix/wait_ready.h"

namespace tarno2 {

namespace {

constexpr uint32_t kWriteMilliseconds = 1000;

/// What a terminal answers once its device is not there any more.
bool meansGone(int code) {
    return code == EIO || code == ENXIO || code == ENODEV || code == EPIPE;
}

}  // namespace

OsError SerialPort::open(const std::string& name, const SerialLine& line) {
    close();
    if (!cancel_.valid()) {
        return OsError(EMFILE);
    }
    cancel_.reset();
    const int port = ::open(name.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    if (port < 0) {
        return OsError::last();
    }
    handle_ = port;
    // The lock keeps another instance away, whoever runs it; the mode all other programs but root's.
    if (flock(port, LOCK_EX | LOCK_NB) != 0) {
        return settle(OsError(errno == EWOULDBLOCK ? EBUSY : errno));
    }
    if (OsError error = setLine(port, line); !error.ok()) {
        return settle(error);
    }
    if (ioctl(port, TIOCEXCL) != 0) {
        return settle(OsError::last());
    }
    before_ = {};
    static_cast<void>(countFaults(before_));
    return {};
}

OsError SerialPort::settle(OsError error) {
    close();
    return error;
}

void SerialPort::close() {
    if (isOpen()) {
        const auto port = static_cast<int>(handle_);
        ioctl(port, TIOCNXCL);
        ::close(port);
        handle_ = kClosed;
    }
}

TimedRead SerialPort::read(void* data, size_t size, uint32_t milliseconds) {
    const auto port = static_cast<int>(handle_);
    switch (waitReady(port, POLLIN, cancel_, milliseconds)) {
        case Ready::TimedOut:
            return {ReadEnd::TimedOut, 0, {}};
        case Ready::Cancelled:
            return {ReadEnd::Cancelled, 0, {}};
        case Ready::Failed:
            return {ReadEnd::Failed, 0, OsError::last()};
        case Ready::Yes:
            break;
    }
    const ssize_t got = ::read(port, data, size);
    if (got > 0) {
        return {ReadEnd::Data, static_cast<size_t>(got), {}};
    }
    if (got == 0) {
        return {ReadEnd::Gone, 0, {}};  // a line that hung up
    }
    if (errno == EAGAIN || errno == EINTR) {
        return {ReadEnd::TimedOut, 0, {}};
    }
    const OsError error = OsError::last();
    return {meansGone(error.code()) ? ReadEnd::Gone : ReadEnd::Failed, 0, error};
}

OsError SerialPort::write(const void* data, size_t size) {
    const auto port = static_cast<int>(handle_);
    const auto* bytes = static_cast<const char*>(data);
    for (size_t done = 0; done < size;) {
        const ssize_t taken = ::write(port, bytes + done, size - done);
        if (taken > 0) {
            done += static_cast<size_t>(taken);
        } else if (taken < 0 && errno != EAGAIN && errno != EINTR) {
            return OsError::last();
        } else if (waitReady(port, POLLOUT, cancel_, kWriteMilliseconds) != Ready::Yes) {
            return OsError(ETIMEDOUT);
        }
    }
    return {};
}

SerialPort::Faults SerialPort::faults() {
    Faults now = before_;
    static_cast<void>(countFaults(now));
    return {now.damaged - before_.damaged, now.overruns - before_.overruns};
}

bool SerialPort::countFaults(Faults& counted) {
    serial_icounter_struct counts{};
    if (ioctl(static_cast<int>(handle_), TIOCGICOUNT, &counts) != 0) {
        return false;
    }
    counted.damaged = static_cast<uint64_t>(counts.frame) + static_cast<uint64_t>(counts.parity);
    counted.overruns = static_cast<uint64_t>(counts.overrun) + static_cast<uint64_t>(counts.buf_overrun);
    return true;
}

}  // namespace tarno2
