#include "platform/termination.h"

#include <csignal>
#include <memory>
#include <pthread.h>
#include <sys/signalfd.h>
#include <thread>
#include <unistd.h>
#include <utility>

#include "platform/event.h"

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
        if (descriptor_ >= 0) {
            thread_ = std::thread([this] { run(); });
        }
    }
    ~SignalThread() {
        end_.set();
        if (thread_.joinable()) {
            thread_.join();
            close(descriptor_);
        }
        pthread_sigmask(SIG_SETMASK, &previousMask_, nullptr);
    }
    SignalThread(const SignalThread&) = delete;
    SignalThread& operator=(const SignalThread&) = delete;

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
                callback_();
            }
        }
    }

    std::function<void()> callback_;
    sigset_t previousMask_{};
    int descriptor_ = -1;
    Event end_;
    std::thread thread_;
};

std::unique_ptr<SignalThread> watcher;

}  // namespace

TerminationWatcher::TerminationWatcher(std::function<void()> callback) {
    watcher = std::make_unique<SignalThread>(std::move(callback));
}

TerminationWatcher::~TerminationWatcher() {
    watcher.reset();
}

void TerminationWatcher::finished() {}

}  // namespace tarno2
