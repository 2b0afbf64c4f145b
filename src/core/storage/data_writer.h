#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "core/storage/cache_pool.h"
#include "core/storage/disk_thread.h"
#include "core/storage/recording_journal.h"
#include "core/storage/writer_setup.h"
#include "platform/clock.h"
#include "records/record_description.h"

namespace tarno2 {

/// Writes a recording into headerless files of interleaved samples, with a description beside each.
///
/// Blocks are gathered in caches, which a thread of its own writes in large pieces. When a file is full the next one is
/// begun; data that must stay together (a triggered record) are not divided. After a failed write the current file is
/// cut back to whole frames and nothing more is written. Made, opened and destroyed on the window's thread, in between
/// used by the acquisition thread alone; the counters may be read by any thread.
class DataWriter {
public:
    /// What is gathered before it goes to the disk in one go.
    static constexpr size_t kCacheBytes = CachePool::kCacheBytes;

    DataWriter();
    ~DataWriter();
    DataWriter(const DataWriter&) = delete;
    DataWriter& operator=(const DataWriter&) = delete;

    /// The least memory for caches is allocated.
    [[nodiscard]] bool ready() const { return ready_; }

    /// Makes the folders and the first file, moving an earlier recording of that name out of the way. `description` is
    /// filled for each piece and belongs to the caller; it must outlive the writer's `Close`. Less memory than
    /// `setup.bufferBytes` is logged, no failure.
    /// 0, or -1 no memory, -2 no file name, -3 a frame size of 0, -5 a folder or file could not be made (`openError`),
    /// -6 the name is somebody else's: another program is writing files of it, or no journal can stand there.
    [[nodiscard]] int32_t open(const WriterSetup& setup, RecordDescription& description);
    [[nodiscard]] const std::string& openError() const { return openError_; }
    /// Of the first data file.
    [[nodiscard]] const std::string& fileName() const { return setup_.fileName; }
    /// New names of the files that `open` moved out of the way.
    [[nodiscard]] const std::vector<std::string>& movedAside() const { return movedAside_; }
    /// Memory for what waits for the disk, as much as there is or will be soon. Any thread.
    [[nodiscard]] uint64_t bufferBytes() const { return pool_.capacity(); }
    /// Create time of the current file. Pieces take the time of their first sample by themselves.
    void setCreateTime(const LocalTime& time);
    /// How long the kept stream takes for so many bytes; 0 when its rate is not known.
    [[nodiscard]] uint64_t millisecondsOf(uint64_t bytes) const;

    /// Takes `size` bytes of whole frames. `unitBytes`: what must stay in one file, a frame or a record.
    /// `events`: one a record, entered in the description of the file that the record goes into. Waits only while all
    /// memory is full of what the disk has not taken.
    /// 0: go on; 1: the size limit is reached, or the disk is nearly full; -1: a write failed, now or earlier.
    [[nodiscard]] int32_t Write(const std::byte* data, uint64_t size, uint64_t unitBytes,
                                std::span<const SynchroEvent> events = {});
    /// Where a block of `size` bytes may be put so that the next `Write`, given this place, need not copy it; null when
    /// such a block does not fit in the current cache.
    [[nodiscard]] std::byte* room(uint64_t size) { return pool_.room(size); }
    /// How the recording ended, for its passport; before `Close`.
    void setEnd(PassportEnd end) { disk_.setEnd(std::move(end)); }
    /// Writes what is left in memory, then the description; closes the files and deletes one without samples.
    /// False when something did not reach the disk.
    bool Close();

    /// Copies up to `size` bytes of the recording from byte `offset` on, counted over all its pieces from sample 0,
    /// also such as are not on the disk yet. Returns how many were copied: fewer at the end of what was accepted, 0
    /// beyond it. One thread beside the writing one, at any time between `open` and destruction; it never delays the
    /// writer.
    [[nodiscard]] uint64_t readBack(uint64_t offset, std::byte* out, uint64_t size);

    /// Bytes accepted so far, those in memory included. Any thread.
    [[nodiscard]] uint64_t totalBytes() const { return pool_.filled(); }
    /// Bytes accepted that the disk has not taken. Any thread.
    [[nodiscard]] uint64_t waitingBytes() const;
    /// Files begun so far. Any thread.
    [[nodiscard]] uint32_t fileCount() const { return fileCount_.load(std::memory_order_relaxed) + disk_.extraFiles(); }
    /// The disk is so full that the recording has to end. Any thread.
    [[nodiscard]] bool diskNearlyFull() const { return disk_.nearlyFull(); }
    /// What is there after `Close`: bytes in the files, less than `totalBytes` when a write failed or somebody removed
    /// a file, and the number of files that are left.
    [[nodiscard]] uint64_t savedBytes() const { return disk_.pieces().savedBytes(); }
    [[nodiscard]] uint32_t savedFiles() const { return disk_.pieces().savedFiles(); }
    /// Bytes of the recording that did reach a file, from the first one on. After `Close`.
    [[nodiscard]] uint64_t writtenBytes() const { return disk_.pieces().writtenBytes(); }
    /// What others did to the files while they were recorded; empty when there was nothing. After `Close`.
    [[nodiscard]] const std::string& notice() const { return disk_.pieces().notice(); }
    /// The system's words for the write that failed. After `Close`.
    [[nodiscard]] const std::string& writeError() const { return disk_.problem(); }

private:
    void nextPieceFor(uint64_t unitBytes, uint64_t bytesLeft);
    std::span<const SynchroEvent> enterEvents(std::span<const SynchroEvent> events, uint64_t records, uint64_t unit);
    [[nodiscard]] bool put(const std::byte* data, uint64_t size, bool leaveOut);

    WriterSetup setup_;
    bool ready_ = false;
    bool open_ = false;
    uint64_t cacheFill_ = 0;  ///< of a cache that is written whenever a block would fill it
    uint64_t pieceFill_ = 0;  ///< bytes accepted for the current file
    std::string openError_;
    std::vector<std::string> movedAside_;
    std::atomic<uint32_t> fileCount_{0};
    RecordingJournal journal_;
    CachePool pool_;
    DiskThread disk_;
};

}  // namespace tarno2
