#include "ui/shown_signal.h"

#include <algorithm>
#include <utility>

namespace tarno2 {

namespace {

// A paint takes no more than some milliseconds to sum up so much; what is left comes with the next one.
constexpr size_t kFetchBytes = size_t{8} << 20;
constexpr uint64_t kKeptBytes = uint64_t{64} << 10;  // smaller copies are had for nothing

/// A pointer that doesn't own.
std::shared_ptr<FrameSource> borrowed(FrameSource& frames) {
    return {std::shared_ptr<void>(), &frames};
}

}  // namespace

int32_t ShownSignal::channelNumber(size_t column) const {
    const uint32_t position = format_.channels[column].listPosition;
    return position < channels_.size() ? channels_[position] : static_cast<int32_t>(position);
}

LiveSignal::LiveSignal(LiveRecording recording)
    : ShownSignal(recording.format, recording.channels), recording_(std::move(recording)), history_(recording_.format) {
    DataWriter* writer = recording_.writer ? recording_.writer() : nullptr;
    if (writer != nullptr && recording_.everyFrameWritten) {
        readFrom(std::make_unique<RunningRecording>(*writer, format().frameBytes()));
    }
    if (writer != nullptr && recording_.records) {
        written_ = std::make_unique<WrittenRecords>(*writer, format().frameBytes());
    }
}

void LiveSignal::readFrom(std::unique_ptr<FrameSource> frames) {
    both_.reset();
    file_.reset();
    frames_ = std::move(frames);
    if (frames_) {
        file_ = std::make_unique<FileScreens>(*frames_, format());
        both_ = std::make_unique<RunningScreens>(history_, *file_);
    }
}

bool LiveSignal::fetch(LiveTap& tap) {
    return history_.take(tap, kFetchBytes);
}

void LiveSignal::leaveSession() {
    if (running_ && written_) {
        written_->leaveWriter();
    }
}

void LiveSignal::finish() {
    if (!running_) {
        return;
    }
    running_ = false;
    if (written_) {
        written_->close(recording_.fileName);
    }
    const bool fromFile = frames_ != nullptr;
    readFrom(nullptr);
    if (!fromFile) {
        return;
    }
    OpenProblem problem;
    auto recorded = RecordedFrames::open(recording_.fileName, problem);
    if (recorded && recorded->frameBytes() == format().frameBytes()) {
        readFrom(std::move(recorded));
    }
}

ScreenSource& LiveSignal::screens() {
    // The session may have been freed since the last paint, and its writer with it.
    if (running_ && both_ && recording_.writer() == nullptr) {
        finish();
    }
    return both_ ? static_cast<ScreenSource&>(*both_) : history_;
}

std::shared_ptr<FrameSource> LiveSignal::rawFrames(FrameSpan span) {
    if (fromFile()) {
        return borrowed(*frames_);
    }
    if (auto copy = newestCopy_.lock()) {
        if (copy->span().first <= span.first && span.end <= copy->span().end) {
            return copy;
        }
    }
    const bool large = span.count() * format().frameBytes() >= kKeptBytes;
    std::vector<std::byte> frames = large ? buffers_->take() : std::vector<std::byte>();
    if (!history_.copyRaw(span.first, span.end, frames)) {
        return nullptr;
    }
    auto copy = std::make_shared<FramesInMemory>(std::move(frames), format().frameBytes(), span.first,
                                                 large ? buffers_ : nullptr);
    if (large) {
        newestCopy_ = copy;
    }
    return copy;
}

uint64_t LiveSignal::firstRawFrame() const {
    return fromFile() ? 0 : history_.firstRawFrame();
}

RecordedSignal::RecordedSignal(std::unique_ptr<RecordedFrames> frames, Overview::Progress progress)
    : ShownSignal(frames->format(), frames->numbers()),
      frames_(std::move(frames)),
      overview_(*frames_, frames_->format(), std::move(progress)) {}

std::shared_ptr<FrameSource> RecordedSignal::rawFrames(FrameSpan /*span*/) {
    return borrowed(*frames_);
}

void WrittenRecords::leaveWriter() {
    const std::lock_guard lock(mutex_);
    writer_ = nullptr;
}

void WrittenRecords::close(const std::string& fileName) {
    OpenProblem problem;
    auto file = RecordedFrames::open(fileName, problem);
    const std::lock_guard lock(mutex_);
    writer_ = nullptr;
    file_ = file && file->frameBytes() == frameBytes_ ? std::move(file) : nullptr;
}

uint64_t WrittenRecords::frameCount() const {
    return file_ ? file_->frameCount() : writer_ != nullptr ? writer_->totalBytes() / frameBytes_ : 0;
}

uint64_t WrittenRecords::read(uint64_t firstFrame, uint64_t count, std::byte* out) {
    const std::lock_guard lock(mutex_);
    if (file_) {
        return file_->read(firstFrame, count, out);
    }
    return writer_ != nullptr ? writer_->readBack(firstFrame * frameBytes_, out, count * frameBytes_) / frameBytes_ : 0;
}

}  // namespace tarno2
