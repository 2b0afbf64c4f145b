#include "drivers/common/pump_driver.h"

#include <algorithm>

namespace tarno2::drivers {

namespace {

constexpr double kChunkSeconds = 0.02;  // as often as a view is drawn, and more
constexpr double kSmallestChunk = 64.0;
constexpr double kLargestChunk = 65536.0;  // samples

}  // namespace

bool PumpDriver::begin(const sdk::Board& board, const sdk::Measurement& measurement) {
    source_ = connect(board, measurement);
    if (source_ == nullptr) {
        return false;
    }
    channels_ = measurement.channels.size();
    const double samples = std::clamp(measurement.framesPerSecond() * kChunkSeconds * static_cast<double>(channels_),
                                      kSmallestChunk, kLargestChunk);
    const size_t half = ring().half() / channels_;
    chunk_ = std::clamp<size_t>(static_cast<size_t>(samples) / channels_, 1, half);
    fetched_ = 0;
    released_ = 0;
    buffer_.resize(chunk_ * channels_ * ring().bytesPerSample());
    stop_ = false;
    if (!thread_.create([this] { run(); })) {
        source_.reset();
        return fail("The system gave no thread.");
    }
    static_cast<void>(thread_.raisePriority());
    thread_.resume();
    return true;
}

void PumpDriver::end() {
    stop_ = true;
    source_->cancel();
    {
        const std::lock_guard lock(roomMutex_);
        roomMade_.notify_all();
    }
    thread_.join();
    source_.reset();
}

// A host that never asks for the count has done with what it fetched when it fetches more.
void PumpDriver::fetched() {
    release(fetched_);
    fetched_ = ring().fetched();
}

int32_t PumpDriver::Get(uint32_t code, void* result) noexcept {
    const int32_t answered = Driver::Get(code, result);
    if (code == kADCGetSamplesWritten) {
        release(ring().fetched());
    }
    return answered;
}

void PumpDriver::release(uint64_t position) {
    if (position > released_) {
        const std::lock_guard lock(roomMutex_);
        released_ = position;
        roomMade_.notify_all();
    }
}

/// How many samples the host can take. It asks for the count after it has fetched some, and until then what it fetched
/// still counts for it; and it takes a ring that is filled to ten elevenths for one that has run over.
size_t PumpDriver::roomForHost() const {
    const uint64_t samples = ring().samples();
    const uint64_t fullest = std::max(samples * 10 / 11, samples / 2 + 1) - 1;
    const uint64_t end = std::min(released_ + samples, ring().fetched() + fullest);
    return static_cast<size_t>(end - std::min(end, ring().written()));
}

void PumpDriver::run() {
    try {
        while (!stop_ && waitForRoom()) {
            const size_t frames = std::min(chunk_, roomForHost() / channels_);
            if (!take(source_->read(buffer_.data(), frames))) {
                return;
            }
        }
    } catch (const std::exception& e) {
        gone(kADCEndError, e.what());
    }
}

/// False when the measurement ends.
bool PumpDriver::waitForRoom() {
    std::unique_lock lock(roomMutex_);
    roomMade_.wait(lock, [this] { return stop_ || roomForHost() >= channels_; });
    return !stop_;
}

/// False when nothing follows.
bool PumpDriver::take(const SourceRead& read) {
    switch (read.kind) {
        case SourceRead::Kind::Frames:
            push(buffer_.data(), read.frames * channels_);
            return true;
        case SourceRead::Kind::Nothing:
            return true;
        case SourceRead::Kind::Lost:
            lost(read.lost);
            return false;
        case SourceRead::Kind::Ended:
            gone(kADCEndOfSource, read.text);
            return false;
        case SourceRead::Kind::Unplugged:
            gone(kADCEndUnplugged, read.text);
            return false;
        case SourceRead::Kind::Failed:
            break;
    }
    gone(kADCEndError, read.text);
    return false;
}

}  // namespace tarno2::drivers
