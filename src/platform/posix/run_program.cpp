#include "platform/run_program.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <unistd.h>

namespace tarno2 {

namespace {

// A handler, not "ignored": programs that this one starts have the signals as they were.
void makeHarmless(int signal) {
    struct sigaction action {};
    if (sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_DFL) {
        action = {};
        action.sa_handler = [](int) {};
        action.sa_flags = SA_RESTART;
        sigaction(signal, &action, nullptr);
    }
}

}  // namespace

void prepareProcess() {
    for (int descriptor = STDIN_FILENO; descriptor <= STDERR_FILENO; ++descriptor) {
        // A new descriptor is the lowest one that is free. Where there are no devices the root folder holds the place.
        if (fcntl(descriptor, F_GETFD) < 0 && errno == EBADF && open("/dev/null", O_RDWR) < 0) {
            static_cast<void>(open("/", O_RDONLY | O_DIRECTORY));
        }
    }
    makeHarmless(SIGPIPE);
    makeHarmless(SIGXFSZ);
}

}  // namespace tarno2
