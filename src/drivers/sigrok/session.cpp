#include "drivers/sigrok/session.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <glib.h>
#include <libsigrok/libsigrok.h>

#include "platform/clock.h"

namespace tarno2::drivers {

namespace {

constexpr double kKeptSeconds = 4.0;  // of what came and was not read
constexpr double kFewestFrames = 65536.0;
constexpr double kMostFrames = 1 << 26;
constexpr auto kPatience = std::chrono::milliseconds(200);

size_t capacityOf(const SessionPlan& plan) {
    return static_cast<size_t>(std::clamp(plan.framesPerSecond * kKeptSeconds, kFewestFrames, kMostFrames));
}

void receivePacket(const sr_dev_inst*, const sr_datafeed_packet* packet, void* session) {
    static_cast<Session*>(session)->receive(*packet);
}

}  // namespace

std::unique_ptr<Session> Session::start(const OpenDevice& device, const SessionPlan& plan, std::string& problem) {
    std::unique_ptr<Session> session(new Session(device, plan));
    return session->begin(problem) ? std::move(session) : nullptr;
}

Session::Session(const OpenDevice& device, const SessionPlan& plan)
    : device_(device),
      plan_(plan),
      name_(device.name()),
      assembler_(plan.shape, plan.ranges, plan.hold ? 1 : capacityOf(plan)),
      held_(plan.channels.size()) {}

bool Session::begin(std::string& problem) {
    const std::unique_lock lock = device_.library()->lock();
    device_.prepare(plan_.channels);
    int result = sr_session_new(device_.library()->context(), &session_);
    result = result == SR_OK ? sr_session_dev_add(session_, device_.device()) : result;
    result = result == SR_OK ? sr_session_datafeed_callback_add(session_, receivePacket, this) : result;
    if (result == SR_OK && !thread_.create([this] { run(); })) {
        problem = "The system gave no thread.";
        return false;
    }
    if (result == SR_OK) {
        static_cast<void>(thread_.raisePriority());
        thread_.resume();
        std::unique_lock started(mutex_);
        changed_.wait(started, [this] { return startResult_.has_value(); });
        result = *startResult_;
    }
    if (result != SR_OK) {
        problem = name_ + " can't be started: " + sr_strerror(result) + ".";
    }
    return result == SR_OK;
}

Session::~Session() {
    cancel();
    thread_.join();
    if (session_ != nullptr) {
        const std::unique_lock lock = device_.library()->lock();
        sr_session_destroy(session_);
    }
}

/// The session's events come to the thread that starts it, through a main context of its own.
void Session::run() {
    GMainContext* const context = g_main_context_new();
    g_main_context_push_thread_default(context);
    const int result = sr_session_start(session_);
    {
        const std::lock_guard lock(mutex_);
        startResult_ = result;
        changed_.notify_all();
    }
    if (result == SR_OK) {
        static_cast<void>(sr_session_run(session_));
    }
    g_main_context_pop_thread_default(context);
    g_main_context_unref(context);
    const std::lock_guard lock(mutex_);
    ended_ = true;
    changed_.notify_all();
}

void Session::cancel() noexcept {
    {
        const std::lock_guard lock(mutex_);
        if (cancelled_ || !startResult_.has_value() || *startResult_ != SR_OK) {
            return;
        }
        cancelled_ = true;
        changed_.notify_all();
        if (ended_) {
            return;
        }
    }
    static_cast<void>(sr_session_stop(session_));
}

void Session::receive(const sr_datafeed_packet& packet) {
    if (packet.type == SR_DF_ANALOG) {
        takeAnalog(*static_cast<const sr_datafeed_analog*>(packet.payload));
    } else if (packet.type == SR_DF_LOGIC) {
        takeLogic(*static_cast<const sr_datafeed_logic*>(packet.payload));
    } else if (packet.type == SR_DF_END) {
        const std::lock_guard lock(mutex_);
        ended_ = true;
        changed_.notify_all();
    }
}

/// A packet has the values of one channel or of several, frame by frame.
void Session::takeAnalog(const sr_datafeed_analog& packet) {
    const size_t channels = g_slist_length(packet.meaning->channels);
    values_.resize(packet.num_samples * channels);
    if (packet.num_samples == 0 || channels == 0 || sr_analog_to_float(&packet, values_.data()) != SR_OK) {
        return;
    }
    const std::lock_guard lock(mutex_);
    size_t index = 0;
    for (const GSList* each = packet.meaning->channels; each != nullptr; each = each->next, ++index) {
        for (size_t place = 0; place < plan_.channels.size(); ++place) {
            if (device_.analog()[static_cast<size_t>(plan_.channels[place])] != each->data) {
                continue;
            }
            if (plan_.hold) {
                held_[place] = values_[(packet.num_samples - 1) * channels + index];
            } else {
                overrun_ =
                    overrun_ || !assembler_.addAnalog(place, values_.data() + index, packet.num_samples, channels);
            }
        }
    }
    changed_.notify_all();
}

void Session::takeLogic(const sr_datafeed_logic& packet) {
    const std::lock_guard lock(mutex_);
    if (plan_.hold || overrun_ || packet.unitsize == 0) {
        return;
    }
    overrun_ = !assembler_.addLogic(static_cast<const uint8_t*>(packet.data), packet.length / packet.unitsize,
                                    packet.unitsize);
    changed_.notify_all();
}

SourceRead Session::endOfStream() {
    if (cancelled_) {
        return SourceRead::some(0);
    }
    if (overrun_) {
        return SourceRead::loss(0);
    }
    return plan_.limited ? SourceRead::end(SourceRead::Kind::Ended, name_ + " has sent what it was limited to.")
                         : SourceRead::end(SourceRead::Kind::Failed,
                                           name_ + " has stopped: it was unplugged, or it lost samples.");
}

SourceRead Session::read(std::byte* destination, size_t frames) {
    if (plan_.hold) {
        return readHeld(destination, frames);
    }
    std::unique_lock lock(mutex_);
    changed_.wait_for(lock, kPatience,
                      [this] { return assembler_.complete() > 0 || ended_ || overrun_ || cancelled_; });
    const size_t count = assembler_.take(destination, frames);
    return count > 0 || !(ended_ || overrun_ || cancelled_) ? SourceRead::some(count) : endOfStream();
}

/// Frames begin once each channel has a value, and come by the computer's clock.
SourceRead Session::readHeld(std::byte* destination, size_t frames) {
    std::unique_lock lock(mutex_);
    const auto over = [this] { return ended_ || cancelled_; };
    const auto known = [this] {
        return std::all_of(held_.begin(), held_.end(), [](const auto& value) { return value.has_value(); });
    };
    if (!changed_.wait_for(lock, kPatience, [&] { return over() || known(); })) {
        return SourceRead::some(0);
    }
    if (over()) {
        return endOfStream();
    }
    holdStart_ = holdStart_ == 0 ? monotonicNanoseconds() : holdStart_;
    const double periodNanoseconds = 1e9 / plan_.framesPerSecond;
    const auto due = [&] {
        return static_cast<uint64_t>(static_cast<double>(monotonicNanoseconds() - holdStart_) / periodNanoseconds) + 1;
    };
    const auto wait = std::min(
        static_cast<double>(heldFrames_) * periodNanoseconds - static_cast<double>(monotonicNanoseconds() - holdStart_),
        std::chrono::duration<double, std::nano>(kPatience).count());
    changed_.wait_for(lock, std::chrono::duration<double, std::nano>(std::max(wait, 0.0)), over);
    const uint64_t now = due();
    const size_t count = now > heldFrames_ ? static_cast<size_t>(std::min<uint64_t>(now - heldFrames_, frames)) : 0;
    for (size_t i = 0; i < count; ++i) {
        for (size_t place = 0; place < held_.size(); ++place) {
            static_cast<void>(assembler_.addAnalog(place, &*held_[place], 1));
        }
        static_cast<void>(assembler_.take(destination + i * held_.size() * plan_.shape.bytes, 1));
    }
    heldFrames_ += count;
    return over() && count == 0 ? endOfStream() : SourceRead::some(count);
}

}  // namespace tarno2::drivers
