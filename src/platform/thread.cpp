#include "platform/thread.h"

#include <cstdio>
#include <exception>
#include <new>
#include <utility>

namespace tarno2 {

namespace {

void runGuarded(const std::function<void()>& body) noexcept {
    try {
        body();
    } catch (const std::bad_alloc&) {
        std::fputs("A thread ended: not enough memory\n", stderr);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "A thread ended: %s\n", error.what());
    } catch (...) {
        std::fputs("A thread ended by an unknown error\n", stderr);
    }
}

}  // namespace

Thread::Thread() = default;

Thread::~Thread() {
    join();
}

Thread::Thread(Thread&& other) noexcept = default;

Thread& Thread::operator=(Thread&& other) noexcept {
    if (this != &other) {
        join();
        state_ = std::move(other.state_);
    }
    return *this;
}

bool Thread::joinable() const {
    return state_ != nullptr;
}

bool Thread::create(std::function<void()> body) {
    join();
    try {
        return launch([body = std::move(body)] { runGuarded(body); });
    } catch (const std::bad_alloc&) {
        return false;
    }
}

const char* describe(PriorityResult result) {
    switch (result) {
        case PriorityResult::Realtime:
            return "real-time priority";
        case PriorityResult::Raised:
            return "raised priority";
        case PriorityResult::Unchanged:
            break;
    }
    return "normal priority";
}

}  // namespace tarno2
