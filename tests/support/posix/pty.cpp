#include "tests/support/pty.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

namespace tarno2::test {

Pty::Pty() : line_(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC | O_NONBLOCK)) {
    char name[256] = {};
    EXPECT_TRUE(line_ >= 0 && grantpt(line_) == 0 && unlockpt(line_) == 0 && ptsname_r(line_, name, sizeof name) == 0);
    name_ = name;
    // Nothing is echoed, nor made of the bytes, before the port is opened. The port keeps its settings.
    termios settings{};
    EXPECT_EQ(tcgetattr(line_, &settings), 0);
    cfmakeraw(&settings);
    EXPECT_EQ(tcsetattr(line_, TCSANOW, &settings), 0);
}

Pty::~Pty() {
    unplug();
}

void Pty::unplug() {
    if (line_ >= 0) {
        close(line_);
        line_ = -1;
    }
}

bool Pty::waitFor(short events) const {
    pollfd ready{line_, events, 0};
    if (poll(&ready, 1, 60'000) <= 0) {
        return false;
    }
    // A port that was closed takes nothing more, but what it has sent is there.
    return (ready.revents & events) != 0 && (events == POLLIN || (ready.revents & POLLHUP) == 0);
}

bool Pty::write(std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t done = ::write(line_, bytes.data(), bytes.size());
        if (done > 0) {
            bytes.remove_prefix(static_cast<size_t>(done));
        } else if (errno != EAGAIN || !waitFor(POLLOUT)) {
            return false;
        }
    }
    return true;
}

std::string Pty::read(size_t bytes) {
    std::string text;
    while (text.size() < bytes && waitFor(POLLIN)) {
        char part[256];
        const ssize_t got = ::read(line_, part, std::min(sizeof part, bytes - text.size()));
        if (got > 0) {
            text.append(part, static_cast<size_t>(got));
        }
    }
    return text;
}

}  // namespace tarno2::test
