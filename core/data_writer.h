#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "core/recording_facts.h"
#include "platform/clock.h"
#include "platform/disk_reserve.h"
#include "platform/file.h"
#include "records/record_description.h"

namespace tarno2 {

/// Where and how a recording is written.
struct WriterSetup {
    std::string fileName;      ///< of the first piece
    uint32_t sampleWidth = 2;  ///< bytes
    uint32_t channelCount = 1;
    uint64_t limitBytes = 0;      ///< size limit of all pieces together; 0: none
    uint64_t pieceBytes = 0;      ///< size of a piece, cut down to whole frames; 0: one file
    double bytesPerSecond = 0.0;  ///< of the kept stream, to date the pieces by; 0: not known
    RecordingFacts facts;

    [[nodiscard]] uint64_t frameBytes() const { return uint64_t{sampleWidth} * channelCount; }
};

/// Writes a recording into headerless files of interleaved samples, with a description beside each.
///
/// Small blocks are gathered in a cache and written in large ones. When a piece is full the next one is begun; data
/// that must stay together (a triggered record) are not divided. After a failed write the file at hand is cut back to
/// whole frames and nothing more is written. Made and opened on the window's thread, then used by the acquisition
/// thread alone; the counters may be read by any thread.
class DataWriter {
public:
    static constexpr size_t kCacheBytes = 0x300000;

    DataWriter();
    ~DataWriter();
    DataWriter(const DataWriter&) = delete;
    DataWriter& operator=(const DataWriter&) = delete;

    /// The cache could be allocated.
    [[nodiscard]] bool ready() const { return cache_ != nullptr; }

    /// Makes the folders and the first file, moving an earlier recording of that name out of the way. `description` is
    /// filled for each piece and belongs to the caller; it must outlive the writer's `Close`.
    /// 0, or -1 no memory, -2 no file name, -3 a frame size of 0, -5 a folder or file could not be made (`openError`).
    [[nodiscard]] int32_t open(const WriterSetup& setup, RecordDescription& description);
    [[nodiscard]] const std::string& openError() const { return openError_; }
    /// New names of the files that `open` moved out of the way.
    [[nodiscard]] const std::vector<std::string>& movedAside() const { return movedAside_; }
    /// Create time of the file at hand. Pieces take the time of their first sample by themselves.
    void setCreateTime(const LocalTime& time);
    /// How long the kept stream takes for so many bytes; 0 when its rate is not known.
    [[nodiscard]] uint64_t millisecondsOf(uint64_t bytes) const;

    /// Takes `size` bytes of whole frames. `unitBytes`: what must stay in one file, a frame or a record.
    /// `events`: one a record, entered in the description of the file that the record goes into.
    /// 0: go on; 1: the size limit is reached; -1: a write failed, now or earlier.
    [[nodiscard]] int32_t Write(const std::byte* data, uint64_t size, uint64_t unitBytes,
                                std::span<const SynchroEvent> events = {});
    /// Where a block of `size` bytes may be put so that the next `Write`, given this place, need not copy it; null when
    /// such a block does not go through the cache.
    [[nodiscard]] std::byte* room(uint64_t size);
    /// Writes what is left in the cache, then the description; closes the files and deletes one without samples.
    /// False when something did not reach the disk.
    bool Close();

    /// Copies up to `size` bytes of the recording from byte `offset` on, counted over all its pieces from sample 0,
    /// also such as are not on the disk yet. Returns how many were copied: fewer at the end of what was accepted, 0
    /// beyond it. One thread beside the writing one, at any time between `open` and destruction; it never delays the
    /// writer.
    [[nodiscard]] uint64_t readBack(uint64_t offset, std::byte* out, uint64_t size);

    /// Bytes accepted so far, those in the cache included. Any thread.
    [[nodiscard]] uint64_t totalBytes() const { return totalBytes_.load(std::memory_order_relaxed); }
    /// Bytes accepted when the cache was last written. Any thread.
    [[nodiscard]] uint64_t flushedBytes() const { return flushedBytes_.load(std::memory_order_relaxed); }
    /// Files begun so far. Any thread.
    [[nodiscard]] uint32_t fileCount() const { return fileCount_.load(std::memory_order_relaxed); }
    /// The system's words for the write that failed.
    [[nodiscard]] const std::string& writeError() const { return writeError_; }

private:
    [[nodiscard]] bool beginFile(uint32_t number);
    [[nodiscard]] bool createFile(const std::string& name);
    bool endFile();
    [[nodiscard]] bool describeFile();
    [[nodiscard]] bool nextPieceFor(uint64_t unitBytes, uint64_t bytesLeft);
    std::span<const SynchroEvent> enterEvents(std::span<const SynchroEvent> events, uint64_t records);
    [[nodiscard]] bool put(const std::byte* data, uint64_t size, bool last);
    [[nodiscard]] bool writeThrough(const std::byte* data, uint64_t size);
    void fail(const OsError& error);
    [[nodiscard]] uint64_t readPiece(uint64_t offset, std::byte* out, uint64_t size);

    WriterSetup setup_;
    RecordDescription* description_ = nullptr;
    std::unique_ptr<std::byte[]> cache_;
    size_t cacheFill_ = 0;
    File write_;
    DiskReserve reserve_;  ///< what the description needs when the data have filled the disk
    std::string currentName_;
    std::optional<LocalTime> createTime_;
    uint64_t pieceFill_ = 0;    ///< bytes accepted for the file at hand
    uint64_t fileBytes_ = 0;    ///< bytes that are really in it
    uint64_t recordBytes_ = 0;  ///< of a record with an event; 0: there was none
    bool failed_ = false;
    std::string openError_;
    std::vector<std::string> movedAside_;
    std::string writeError_;
    std::mutex startsMutex_;  ///< taken once a piece
    std::vector<uint64_t> pieceStarts_;
    File read_;  ///< of the reading thread, as is the number of the piece that it has open
    uint32_t readNumber_ = 0;
    std::atomic<uint64_t> totalBytes_{0};
    std::atomic<uint64_t> flushedBytes_{0};
    std::atomic<uint32_t> fileCount_{0};
};

}  // namespace tarno2
