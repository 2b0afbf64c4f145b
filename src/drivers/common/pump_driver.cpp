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
    buffer_.resize(chunk_ * channels_ * ring().bytesPerSample());
    if (!thread_.create([this] { run(); })) {
        source_.reset();
        return fail("The system gave no thread.");
    }
    static_cast<void>(thread_.raisePriority());
    thread_.resume();
    return true;
}

void PumpDriver::end() {
    source_->cancel();
    thread_.join();
    source_.reset();
}

void PumpDriver::run() {
    try {
        for (size_t room = waitForRoom(); room > 0; room = waitForRoom()) {
            if (!take(source_->read(buffer_.data(), std::min(chunk_, room / channels_)))) {
                return;
            }
        }
    } catch (const std::exception& e) {
        gone(kADCEndError, e.what());
    }
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
