#include "platform/termination.h"

#include <csignal>
#include <cstdio>
#include <exception>
#include <memory>
#include <optional>
#include <pthread.h>
#include <sys/signalfd.h>
#include <unistd.h>
#include <utility>

#include "platform/clock.h"
#include "platform/event.h"
#include "platform/thread.h"

namespace tarno2 {

namespace {

/// The signals that ask for an end. nohup has hangups ignored, and that is respected.
sigset_t terminationSignals() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    struct sigaction hangup {};
    if (sigaction(SIGHUP, nullptr, &hangup) == 0 && hangup.sa_handler != SIG_IGN) {
        sigaddset(&signals, SIGHUP);
    }
    return signals;
}

class SignalThread {
public:
    explicit SignalThread(std::function<void()> callback) : callback_(std::move(callback)) {
        const sigset_t signals = terminationSignals();
        pthread_sigmask(SIG_BLOCK, &signals, &previousMask_);
        descriptor_ = signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK);
        watching_ = descriptor_ >= 0 && end_.valid() && thread_.create([this] { run(); });
        if (watching_) {
            thread_.resume();
        } else {
            pthread_sigmask(SIG_SETMASK, &previousMask_, nullptr);
        }
    }
    ~SignalThread() {
        end_.set();
        thread_.join();
        if (descriptor_ >= 0) {
            close(descriptor_);
        }
        pthread_sigmask(SIG_SETMASK, &previousMask_, nullptr);
    }
    SignalThread(const SignalThread&) = delete;
    SignalThread& operator=(const SignalThread&) = delete;

    [[nodiscard]] bool watching() const { return watching_; }

private:
    void run() {
        const Event arrived = Event::wrap(static_cast<uint32_t>(descriptor_));
        for (;;) {
            const auto which = Event::waitEither(arrived, end_, kWaitForever);
            if (which.result != WaitResult::Signalled || which.second) {
                return;
            }
            signalfd_siginfo signal{};
            if (read(descriptor_, &signal, sizeof signal) == sizeof signal) {
                take(static_cast<int>(signal.ssi_signo));
            }
        }
    }

    void take(int signal) {
        const uint64_t now = tickCount();
        if (askedAt_ && now - *askedAt_ >= TerminationWatcher::kPatienceMs) {
            endBy(signal);
        }
        if (!askedAt_) {
            askedAt_ = now;
        }
        try {
            callback_();
        } catch (const std::exception& error) {
            // The next request ends the program all the same.
            std::fprintf(stderr, "The request to end was not taken: %s\n", error.what());
        }
    }

    // As if nobody watched.
    static void endBy(int signal) {
        std::fputs("Asked to end once more: the program ends at once, unfinished recordings can be recovered\n",
                   stderr);
        std::signal(signal, SIG_DFL);
        sigset_t signals;
        sigemptyset(&signals);
        sigaddset(&signals, signal);
        pthread_sigmask(SIG_UNBLOCK, &signals, nullptr);
        raise(signal);
    }

    std::function<void()> callback_;
    sigset_t previousMask_{};
    int descriptor_ = -1;
    bool watching_ = false;
    std::optional<uint64_t> askedAt_;
    Event end_;
    Thread thread_;
};

std::unique_ptr<SignalThread> watcher;

}  // namespace

TerminationWatcher::TerminationWatcher(std::function<void()> callback) {
    watcher = std::make_unique<SignalThread>(std::move(callback));
}

TerminationWatcher::~TerminationWatcher() {
    watcher.reset();
}

bool TerminationWatcher::watching() const {
    return watcher->watching();
}

// A signal does not tell why it was sent.
bool TerminationWatcher::systemEnds() const {
    return false;
}

void TerminationWatcher::finished() {}

}  // namespace tarno2
