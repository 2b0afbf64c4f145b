#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/storage/hand_over.h"
#include "core/storage/recording_journal.h"
#include "platform/event.h"
#include "platform/file.h"
#include "platform/thread.h"
#include "records/mark_list.h"

namespace tarno2 {

/// Writes what is marked while a recording runs: each mark is appended to the list and brought to the disk at once, by
/// a thread of its own, for which nobody waits. The file appears with the first mark. What goes wrong is told and ends
/// nothing: what the disk did not take is tried again.
class MarkWriter {
public:
    MarkWriter() = default;
    ~MarkWriter();
    MarkWriter(const MarkWriter&) = delete;
    MarkWriter& operator=(const MarkWriter&) = delete;

    /// For the recording with this first data file, whose name is held. False when there is no thread or memory: then
    /// nothing is marked. Window thread, once.
    [[nodiscard]] bool open(const std::string& dataName);

    // Window thread.
    /// The operator marks a moment; nothing when there is no room for it, or no recording any more.
    std::optional<RecordingMark> add(uint64_t frame, int64_t utc);
    /// What the operator says of it.
    void setText(RecordingMark mark);
    /// What he has typed of that so far, in case that the recording ends before he is done.
    void setDraft(RecordingMark mark);

    // Acquisition thread; neither waits nor allocates.
    /// Room for so many until the thread has taken them.
    static constexpr size_t kMostWaiting = 4096;
    static constexpr size_t kLongestNote = 240;  ///< bytes of a text; the rest of a longer one is left out
    /// A line of the port or the driver marks a frame, with a text in the system's code page. After some: `wake`.
    void note(MarkSource source, uint64_t frame, int64_t utc, std::string_view text);
    void wake() { static_cast<void>(wake_.set()); }

    /// Nothing more is marked: brings the list into its last form, or removes it when the recording is not `kept`.
    /// Returns how many marks are on the disk. The thread that closes the files.
    uint64_t finish(bool kept);

    // Any thread.
    /// Appends the marks from `seen` on, and counts them there: a mark whose text was told later comes once more.
    void read(size_t& seen, std::vector<RecordingMark>& marks) const;
    /// So many of them are on the disk.
    [[nodiscard]] size_t written() const { return written_.load(std::memory_order_acquire); }
    /// Marks that came too fast, or were too many.
    [[nodiscard]] uint64_t lost() const { return lost_.load(std::memory_order_relaxed); }
    /// The newest thing that went wrong, in English; empty when there was none since it was asked last.
    [[nodiscard]] std::string takeProblem();

private:
    struct Note {
        uint64_t number = 0;
        uint64_t frame = 0;
        int64_t utc = 0;
        MarkSource source = MarkSource::Line;
        uint8_t length = 0;
        char text[kLongestNote] = {};
    };

    [[nodiscard]] uint64_t takeNumber(uint64_t most);
    void run() noexcept;
    void take();
    void append();
    [[nodiscard]] OsError openFile();
    [[nodiscard]] OsError writeNew();
    void complete();
    void tell(const std::string& problem);

    std::string name_;
    Event wake_;
    Event done_;
    std::unique_ptr<HandOver<Note>> notes_;
    std::atomic<uint64_t> number_{0};
    std::atomic<uint64_t> lost_{0};
    std::atomic<size_t> written_{0};
    std::atomic<bool> finishing_{false};
    bool kept_ = false;   ///< the thread's once it is finishing
    uint64_t count_ = 0;  ///< the thread's until it is done

    mutable std::mutex mutex_;
    bool open_ = false;
    std::vector<RecordingMark> typed_;    ///< by the operator, not taken yet
    std::optional<RecordingMark> draft_;  ///< what he is typing
    std::vector<RecordingMark> log_;      ///< in the order of the lines; changed by the thread alone
    std::string problem_;                 ///< not told yet

    // Of the thread.
    File file_;
    uint64_t bytes_ = 0;  ///< of the file that are whole lines
    std::string lastProblem_;
    uint64_t triedAt_ = 0;  ///< when the disk took nothing, monotonic ns; 0: it takes

    Thread thread_;
};

/// Brings the marks of a recording that was cut off, of which so many frames are left, into the form that `finish`
/// gives them. What went wrong, empty when nothing did.
[[nodiscard]] std::string completeMarks(const RecordingJournal& journal, uint64_t frames);

}  // namespace tarno2
