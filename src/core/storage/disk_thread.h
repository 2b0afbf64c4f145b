#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>

#include "core/storage/cache_pool.h"
#include "core/storage/disk_margin.h"
#include "core/storage/hand_over.h"
#include "core/storage/piece_reader.h"
#include "core/storage/piece_writer.h"
#include "core/storage/writer_setup.h"
#include "platform/clock.h"
#include "platform/event.h"
#include "platform/thread.h"
#include "records/record_description.h"

namespace tarno2 {

/// Brings a recording from memory to the disk, so that only a disk that stalls for longer than the memory lasts can
/// hold the acquisition up. It writes whole caches, and parts of one when data have waited long enough; it begins and
/// ends pieces, keeps a margin of the disk free and has the system put everything on the disk every few seconds.
///
/// Made, started and destroyed on the window's thread; notes come from the thread that fills the pool.
class DiskThread {
public:
    explicit DiskThread(CachePool& pool);
    ~DiskThread();
    DiskThread(const DiskThread&) = delete;
    DiskThread& operator=(const DiskThread&) = delete;

    /// Makes the first file and starts the thread. False when that can't be: `problem`. All outlive the thread.
    [[nodiscard]] bool start(const WriterSetup& setup, RecordDescription& description, RecordingJournal& journal);

    // Notes to the bytes that are appended next, from the thread that appends them.
    /// The current file ends before them, and the next one begins.
    void beginPiece();
    /// One of the records to come has this event; a record has `recordBytes`.
    void addEvent(const SynchroEvent& event, uint64_t recordBytes);
    /// When the first of them came.
    void setCreateTime(const LocalTime& time);
    /// How the recording ended, for its passport; before `close`.
    void setEnd(PassportEnd end) { end_ = std::move(end); }

    /// Writes everything that is in the pool, ends the last piece and waits for it. Nothing may be appended any more.
    void close();

    /// Something did not reach the disk, and nothing more will. Any thread.
    [[nodiscard]] bool failed() const { return failed_.load(std::memory_order_acquire); }
    /// The disk is so full that the recording has to end. What the pool holds still fits. Any thread.
    [[nodiscard]] bool nearlyFull() const { return nearlyFull_.load(std::memory_order_relaxed); }
    /// The first failure, in the system's words; before `start` has succeeded and after `close`.
    [[nodiscard]] const std::string& problem() const { return pieces_.problem(); }
    /// What came of the files. After `close`.
    [[nodiscard]] const PieceWriter& pieces() const { return pieces_; }
    /// Files that were begun because the one before was removed or renamed. Any thread.
    [[nodiscard]] uint32_t extraFiles() const { return extraFiles_.load(std::memory_order_relaxed); }
    /// For the thread that looks at what was written.
    [[nodiscard]] PieceReader& reader() { return reader_; }

private:
    struct Note {
        enum class Kind : uint8_t { Piece, Event, CreateTime };
        Kind kind = Kind::Piece;
        uint64_t number = 0;  ///< Piece: the byte of the stream that it begins with; Event: bytes of a record
        SynchroEvent event;
        LocalTime time;
    };

    void push(const Note& note);
    void run() noexcept;
    [[nodiscard]] uint32_t untilNextLook() const;
    [[nodiscard]] bool restIsDue(uint64_t end);
    [[nodiscard]] bool bringToDisk(uint64_t end, bool rest);
    [[nodiscard]] bool write(uint64_t end, bool rest);
    [[nodiscard]] const Note* takeNotes();
    [[nodiscard]] bool nextPiece();
    [[nodiscard]] bool goOn();
    [[nodiscard]] bool lookAfterDisk();
    void fail();

    CachePool& pool_;
    HandOver<Note> notes_;
    PieceReader reader_;
    Thread thread_;
    Event closed_;
    std::atomic<bool> closing_{false};
    std::atomic<bool> failed_{false};
    std::atomic<bool> nearlyFull_{false};
    std::atomic<uint32_t> extraFiles_{0};
    PassportEnd end_;  ///< the thread's once it is closing

    // Of the thread, once it runs.
    PieceWriter pieces_;
    DiskMargin margin_;
    uint64_t sweepMs_ = 0;     ///< time between two looks at what waits
    uint64_t sweptAt_ = 0;     ///< of the last one
    uint64_t sweptBytes_ = 0;  ///< what had come by then
    uint64_t flushMs_ = 0;
    uint64_t flushedAt_ = 0;
    uint64_t describedAt_ = 0;
    double bytesPerSecond_ = 0.0;
};

}  // namespace tarno2
