#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <mutex>
#include <optional>
#include <span>
#include <string>

#include "platform/file.h"
#include "platform/sha256.h"
#include "records/passport.h"

namespace tarno2 {

/// The checksums of one recording's data files, computed from the files by a thread of their own: while they are
/// written it follows the writer, as long as what was written is still in the system's memory and the writer has room;
/// what it could not follow it reads after the end. Then the list of checksums is written and the passport completed.
class RecordingChecksums {
public:
    /// `dataName`: the first data file of a recording that is about to be written.
    explicit RecordingChecksums(std::string dataName) : dataName_(std::move(dataName)) {}
    RecordingChecksums(const RecordingChecksums&) = delete;
    RecordingChecksums& operator=(const RecordingChecksums&) = delete;

    [[nodiscard]] const std::string& dataName() const { return dataName_; }

    // The thread that writes the files.
    void pieceBegins(const std::string& name) noexcept;
    /// So many bytes of the current piece were given to the system.
    void written(uint64_t bytes) { written_.store(bytes, std::memory_order_relaxed); }
    /// The current piece has so many bytes; 0: there is no such file.
    void pieceEnds(uint64_t bytes) noexcept;
    /// Whether the writer keeps up, so that somebody else may have a little of the machine.
    void setRoom(bool room) { room_.store(room, std::memory_order_relaxed); }
    /// All files are there. `passport`: as it stands beside them.
    void finish(std::optional<Passport> passport);
    /// The writer is gone; a recording that is not finished by then gets no checksums.
    void leave() { left_.store(true, std::memory_order_release); }

    // Any thread.
    [[nodiscard]] bool room() const { return room_.load(std::memory_order_relaxed); }
    [[nodiscard]] bool finished() const { return finished_.load(std::memory_order_acquire); }
    [[nodiscard]] bool left() const { return left_.load(std::memory_order_acquire); }
    /// Bytes that were to be read when the recording was finished, and how many of them were.
    [[nodiscard]] uint64_t lateBytes() const { return lateBytes_.load(std::memory_order_relaxed); }
    [[nodiscard]] uint64_t lateDone() const { return lateDone_.load(std::memory_order_relaxed); }

    // The thread that computes.
    /// Reads on a little. False when there is nothing to read now.
    [[nodiscard]] bool step(std::span<std::byte> buffer);
    /// Writes down what is known. What went wrong, in English; empty when every data file has its checksum.
    [[nodiscard]] std::string complete();

private:
    struct Piece {
        std::string name;
        // Guarded by the mutex.
        uint64_t bytes = 0;  ///< once it has ended
        bool ended = false;
        // Of the thread that computes.
        uint64_t done = 0;
        bool behind = false;  ///< it is read after the end
        bool failed = false;
        Sha256 hash;
        File file;
        std::string sha256;
    };

    [[nodiscard]] Piece* next(uint64_t& limit);
    [[nodiscard]] static bool completes(Piece& piece, uint64_t limit);
    void read(Piece& piece, uint64_t limit, std::span<std::byte> buffer);
    void countLate();
    [[nodiscard]] bool isStillThere();
    [[nodiscard]] std::string writeList();
    [[nodiscard]] std::string completePassport();

    const std::string dataName_;
    std::mutex mutex_;
    std::deque<Piece> pieces_;  ///< grows at its end alone, so that a piece stays where it is
    bool pieceOpen_ = false;    ///< the last one is being written; like the next, guarded by the mutex
    bool lacksPiece_ = false;   ///< there was no memory for one
    std::atomic<uint64_t> written_{0};
    std::atomic<bool> room_{true};
    std::atomic<bool> finished_{false};
    std::atomic<bool> left_{false};
    std::atomic<uint64_t> lateBytes_{0};
    std::atomic<uint64_t> lateDone_{0};
    std::optional<Passport> passport_;  ///< the computing thread's once it is finished
    bool late_ = false;                 ///< the computing thread has seen that it is finished
    size_t first_ = 0;                  ///< pieces before it are done with
    File identity_;                     ///< the first piece, by which the recording is known again
    std::string problem_;
};

}  // namespace tarno2
