#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "core/recording/live_tap.h"
#include "core/storage/mark_writer.h"
#include "display/file_screens.h"
#include "display/live_history.h"
#include "display/overview.h"
#include "display/record_stack.h"
#include "display/recorded.h"
#include "display/running_screens.h"
#include "display/screen.h"
#include "display/signal_format.h"
#include "measure/frame_blocks.h"
#include "measure/frame_span.h"

namespace tarno2 {

/// What the signal view shows at a time: the running recording, or one that was opened. Window thread.
class ShownSignal {
public:
    ShownSignal(SignalFormat format, std::vector<int32_t> channels)
        : format_(std::move(format)), channels_(std::move(channels)) {}
    virtual ~ShownSignal() = default;
    ShownSignal(const ShownSignal&) = delete;
    ShownSignal& operator=(const ShownSignal&) = delete;

    [[nodiscard]] const SignalFormat& format() const { return format_; }
    /// Number of the channel in that column of a frame: the physical one, or its place where nothing else is known.
    [[nodiscard]] int32_t channelNumber(size_t column) const;
    [[nodiscard]] virtual ScreenSource& screens() = 0;
    /// What gives the course of the whole signal without reading a file.
    [[nodiscard]] virtual ScreenSource& wholeCourse() = 0;
    /// Frames as they were recorded, for a worker on another thread; null when some of them are gone. Those of a file
    /// stay the signal's and go with it, those in memory are copied. Throws std::bad_alloc.
    [[nodiscard]] virtual std::shared_ptr<FrameSource> rawFrames(FrameSpan span) = 0;
    /// The oldest frame that `rawFrames` can give.
    [[nodiscard]] virtual uint64_t firstRawFrame() const = 0;
    /// The files' records of synchronisation, and their frames; null when there are none, or nobody knows.
    [[nodiscard]] virtual FrameSource* recordFrames() { return nullptr; }
    [[nodiscard]] virtual std::optional<TriggeredRecords> records() const { return std::nullopt; }
    /// What is drawn behind it, of the same frames, in about so many buckets; null: nothing. `changed` becomes true
    /// when it is other than before.
    [[nodiscard]] virtual const RecordStack* earlier(uint64_t /*first*/, uint64_t /*end*/, size_t /*buckets*/,
                                                     bool& /*changed*/) {
        return nullptr;
    }
    [[nodiscard]] const std::vector<int32_t>& channels() const { return channels_; }

private:
    SignalFormat format_;
    std::vector<int32_t> channels_;  ///< in the order of the channel list
};

/// What the view has to know of a recording that begins, or of a signal that is monitored.
struct LiveRecording {
    SignalFormat format;
    std::vector<int32_t> channels;            ///< physical numbers in the order of the channel list
    std::string fileName;                     ///< of the first data file; empty: nothing is kept
    std::optional<TriggeredRecords> records;  ///< that synchronisation puts into the file
    bool everyFrameWritten = true;            ///< false: synchronisation chooses, and the file has frames of its own
    /// The recording's writer; null once its session is gone. Asked before each use. Empty: there is none.
    std::function<DataWriter*()> writer;
    /// Likewise, what is marked in it.
    std::function<const MarkWriter*()> marks;
};

/// What a recording with synchronisation has put into its files: from its writer while it runs, from the closed file
/// afterwards.
class WrittenRecords final : public FrameSource {
public:
    WrittenRecords(DataWriter& writer, size_t frameBytes) : writer_(&writer), frameBytes_(frameBytes) {}

    /// The writer goes: nobody reads from it after this call.
    void leaveWriter();
    /// The recording is over.
    void close(const std::string& fileName);

    [[nodiscard]] size_t frameBytes() const override { return frameBytes_; }
    /// Window thread, as what changes the source; it waits for no reader.
    [[nodiscard]] uint64_t frameCount() const override;
    [[nodiscard]] uint64_t read(uint64_t firstFrame, uint64_t count, std::byte* out) override;

private:
    DataWriter* writer_;  ///< null once it is gone
    size_t frameBytes_;
    std::unique_ptr<RecordedFrames> file_;
    std::mutex mutex_;  ///< readers take turns
};

/// The running recording: its newest frames from memory, older ones from its file. When it is over the file is read as
/// a finished recording.
class LiveSignal final : public ShownSignal {
public:
    /// Throws std::bad_alloc.
    explicit LiveSignal(LiveRecording recording);

    /// Takes what has come since the last call, as much as a paint has time for. False when there was nothing.
    bool fetch(LiveTap& tap);
    /// The session of the recording goes, and its writer with it.
    void leaveSession();
    /// The recording is over: the frames of its file come from the closed file.
    void finish();
    [[nodiscard]] bool running() const { return running_; }
    [[nodiscard]] const std::string& fileName() const { return recording_.fileName; }
    /// What is marked in it; null once its session is gone.
    [[nodiscard]] const MarkWriter* marks() const { return recording_.marks ? recording_.marks() : nullptr; }
    [[nodiscard]] LiveHistory& history() { return history_; }
    [[nodiscard]] ScreenSource& screens() override;
    [[nodiscard]] ScreenSource& wholeCourse() override { return history_; }
    [[nodiscard]] std::shared_ptr<FrameSource> rawFrames(FrameSpan span) override;
    [[nodiscard]] uint64_t firstRawFrame() const override;
    [[nodiscard]] FrameSource* recordFrames() override { return written_.get(); }
    [[nodiscard]] std::optional<TriggeredRecords> records() const override { return recording_.records; }

private:
    [[nodiscard]] bool fromFile() const { return !running_ && frames_ != nullptr; }
    void readFrom(std::unique_ptr<FrameSource> frames);

    LiveRecording recording_;
    LiveHistory history_;
    std::shared_ptr<FrameBuffers> buffers_ = std::make_shared<FrameBuffers>();
    std::weak_ptr<FramesInMemory> newestCopy_;  ///< who works with the same frames shares it
    bool running_ = true;
    std::unique_ptr<FrameSource> frames_;
    std::unique_ptr<FileScreens> file_;
    std::unique_ptr<RunningScreens> both_;
    std::unique_ptr<WrittenRecords> written_;  ///< null without records
};

/// A finished recording with its overview.
class RecordedSignal final : public ShownSignal {
public:
    /// `progress` is called on a thread of the overview. Throws std::bad_alloc.
    RecordedSignal(std::unique_ptr<RecordedFrames> frames, Overview::Progress progress);

    [[nodiscard]] const RecordedFrames& frames() const { return *frames_; }
    [[nodiscard]] const Overview& overview() const { return overview_; }
    [[nodiscard]] ScreenSource& screens() override { return overview_; }
    [[nodiscard]] ScreenSource& wholeCourse() override { return overview_; }
    [[nodiscard]] std::shared_ptr<FrameSource> rawFrames(FrameSpan span) override;
    [[nodiscard]] uint64_t firstRawFrame() const override { return 0; }
    [[nodiscard]] FrameSource* recordFrames() override { return frames_.get(); }
    [[nodiscard]] std::optional<TriggeredRecords> records() const override { return frames_->records(); }

private:
    std::unique_ptr<RecordedFrames> frames_;
    Overview overview_;
};

}  // namespace tarno2
