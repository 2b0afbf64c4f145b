#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <utility>

#include "core/storage/passport_file.h"
#include "core/storage/recording_checksums.h"
#include "core/storage/recording_journal.h"
#include "core/storage/unfinished_files.h"
#include "core/storage/writer_setup.h"
#include "platform/clock.h"
#include "platform/disk_reserve.h"
#include "records/journal_text.h"
#include "records/record_description.h"

namespace tarno2 {

/// The files of a recording, one after the other: each is made, filled, and closed with its description beside it. The
/// first failure is remembered; what was written before it stays, cut to whole frames, and is described. A description
/// that can't be written is no failure until the end: it is tried again.
/// An object belongs to one thread at a time.
class PieceWriter {
public:
    PieceWriter() = default;
    ~PieceWriter();
    PieceWriter(const PieceWriter&) = delete;
    PieceWriter& operator=(const PieceWriter&) = delete;

    /// Before the first piece. All belong to the caller and outlive the pieces; the description is filled and emptied
    /// for each of them. A journal that is held is kept up to date: what it says is on the disk before the data are.
    void open(const WriterSetup& setup, RecordDescription& description, RecordingJournal& journal);

    // Each is false when it failed; `problem` tells why.
    /// Makes the file of piece `number`, moving files of other people that took its name out of the way.
    [[nodiscard]] bool begin(uint32_t number);
    [[nodiscard]] bool write(std::span<const std::byte> data);
    /// Has the system put on the disk what was written since the last time, and sees whether somebody has removed or
    /// renamed the file or the journal meanwhile. A journal is made anew; without the file recording has to `goOn`.
    [[nodiscard]] bool lookAfterFiles();
    /// How many more bytes the file takes: all of them; once it is gone, what completes its last frame or record.
    [[nodiscard]] uint64_t room() const;
    /// Lets go of a file that is gone, which has no `room` left, and goes on in the next one. `createTime`: of the
    /// first sample there.
    [[nodiscard]] bool goOn(const LocalTime& createTime);
    /// Tries once more to write the descriptions that could not be written.
    void describeLate();
    /// Closes and describes the file, all of it being on the disk then; removes one without a whole frame.
    [[nodiscard]] bool end();

    /// Makes the file of the next piece ahead of time once at most `left` bytes fit in this one. Failures count when
    /// the piece is begun.
    void prepareNext(uint64_t left);
    /// How the recording ended, for its passport; before `finish`.
    void setEnd(PassportEnd end) { passport_.setEnd(std::move(end)); }
    /// After the last piece: completes the passport, removes a file that was made ahead of time and not used, and the
    /// journal. False when a file could not be described: the journal stays then, so that it can be done later.
    /// `accepted`: bytes of the stream that were to be written.
    [[nodiscard]] bool finish(uint64_t accepted);

    /// Whether the disk keeps up, so that checksums may be computed beside it.
    void setRoom(bool room) {
        if (checksums_) {
            checksums_->setRoom(room);
        }
    }
    void addEvent(const SynchroEvent& event, uint64_t recordBytes);
    /// When the first sample of the current piece came.
    void setCreateTime(const LocalTime& time);

    [[nodiscard]] uint32_t number() const { return state_.piece ? state_.piece->number : 0; }
    /// Bytes in the files that were ended and are there, and their number.
    [[nodiscard]] uint64_t savedBytes() const { return savedBytes_; }
    [[nodiscard]] uint32_t savedFiles() const { return savedFiles_; }
    /// Bytes of the stream in all files that were ended, gone ones included.
    [[nodiscard]] uint64_t writtenBytes() const { return writtenBytes_; }
    /// The first failure, in the system's words.
    [[nodiscard]] const std::string& problem() const { return problem_; }
    /// The first thing that others did to the files; empty when there was none.
    [[nodiscard]] const std::string& notice() const { return notice_; }

private:
    struct MadeFile {
        std::unique_ptr<DataFile> file;
        std::string name;
    };
    [[nodiscard]] OsError make(uint32_t number, MadeFile& made) const;
    [[nodiscard]] bool beginFile(uint32_t number);
    [[nodiscard]] bool closeFile();
    [[nodiscard]] bool flush();
    void lookForFile();
    void lookForJournal();
    void notice(const std::string& what);
    bool fail(const char* what, const std::string& problem);
    void cutToWholeFrames();
    void listUndescribed();
    void updateJournal();
    void dropPrepared();
    void finishPassport(uint64_t accepted);
    void leaveToChecksums();
    [[nodiscard]] bool finishFiles(uint64_t accepted);

    const WriterSetup* setup_ = nullptr;
    RecordDescription* description_ = nullptr;
    MadeFile current_;
    MadeFile prepared_;    ///< of the next piece
    DiskReserve reserve_;  ///< what the description needs when the data have filled the disk
    uint64_t fileBytes_ = 0;
    uint64_t flushedBytes_ = 0;
    bool gone_ = false;    ///< the current file was removed or renamed
    uint64_t events_ = 0;  ///< that the description has
    uint64_t savedBytes_ = 0;
    uint64_t writtenBytes_ = 0;
    uint32_t savedFiles_ = 0;
    JournalState state_;
    RecordingJournal* journal_ = nullptr;
    bool journalIsOld_ = false;  ///< it does not tell of `state_` yet
    UnfinishedFiles unfinished_;
    PassportFile passport_;
    std::shared_ptr<RecordingChecksums> checksums_;  ///< null: none are computed
    std::string problem_;
    std::string notice_;
};

}  // namespace tarno2
