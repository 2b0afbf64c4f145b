#include "core/storage/piece_writer.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "config/files/move_aside.h"
#include "config/files/recording_name.h"
#include "config/logs/debug_log.h"
#include "platform/c_locale.h"
#include "platform/file.h"
#include "platform/paths.h"

namespace tarno2 {

namespace {

constexpr uint64_t kReserveBytes = 64 * 1024;

}  // namespace

PieceWriter::~PieceWriter() {
    dropPrepared();
    if (checksums_) {
        checksums_->leave();
    }
}

void PieceWriter::open(const WriterSetup& setup, RecordDescription& description, RecordingJournal& journal) {
    setup_ = &setup;
    description_ = &description;
    journal_ = &journal;
    state_ = setup.journalState();
    passport_.open(setup.fileName, setup.passport);
    checksums_ = setup.checksums != nullptr ? setup.checksums->begin(setup.fileName) : nullptr;
}

OsError PieceWriter::make(uint32_t number, MadeFile& made) const {
    made.name = RecordingName(setup_->fileName).piece(number);
    made.file = setup_->makeFile();
    OsError error = made.file->create(made.name);
    if (error.alreadyExists()) {
        // Somebody made a file of that name while the recording ran: his is kept, and ours is made.
        const RecordingName theirs(made.name);
        static_cast<void>(moveAside(theirs, freeOldNumber(theirs)));
        error = made.file->create(made.name);
    }
    if (!error.ok()) {
        made.file.reset();
    }
    return error;
}

bool PieceWriter::begin(uint32_t number) {
    state_.piece.emplace();
    events_ = 0;
    description_->reset();
    if (!setup_->facts.describe(*description_)) {
        return fail("!!!!! What describes \"%s\" could not be kept: %s", "no memory");
    }
    if (!beginFile(number)) {
        return false;
    }
    if (number == 0) {
        if (const std::string problem = passport_.begin(); !problem.empty()) {
            notice(problem);
        }
    }
    return true;
}

bool PieceWriter::beginFile(uint32_t number) {
    state_.piece->number = number;
    journalIsOld_ = true;
    gone_ = false;
    fileBytes_ = 0;
    flushedBytes_ = 0;
    if (prepared_.file != nullptr && prepared_.file->named(prepared_.name) != Named::No) {
        current_ = std::exchange(prepared_, {});
    } else {
        dropPrepared();
        if (const OsError error = make(number, current_); !error.ok()) {
            return fail("!!!!! \"%s\" could not be made: %s", error.text());
        }
    }
    if (checksums_) {
        checksums_->pieceBegins(current_.name);
    }
    if (const OsError error = reserve_.hold(parentFolder(current_.name), kReserveBytes); !error.ok()) {
        DEBUG_LOG("No space could be reserved for the description: %s", error.text().c_str());
    }
    return true;
}

bool PieceWriter::fail(const char* what, const std::string& problem) {
    DEBUG_LOG(what, current_.name.c_str(), problem.c_str());
    if (problem_.empty()) {
        problem_ = problem;
    }
    return false;
}

bool PieceWriter::write(std::span<const std::byte> data) {
    updateJournal();
    size_t done = 0;
    const OsError error = current_.file->write(data.data(), data.size(), done);
    fileBytes_ += done;
    if (error.ok() && done == data.size()) {
        if (checksums_) {
            checksums_->written(fileBytes_);
        }
        return true;
    }
    cutToWholeFrames();
    return fail("!!!!! Write error in \"%s\": %s", error.ok() ? "only a part was taken" : error.text());
}

// A file that could not take all data ends with a torn frame: without it, it can be read like any other.
void PieceWriter::cutToWholeFrames() {
    const uint64_t whole = fileBytes_ / setup_->frameBytes() * setup_->frameBytes();
    if (const OsError cut = current_.file->truncate(whole); cut.ok()) {
        fileBytes_ = whole;
    } else {
        DEBUG_LOG("!!!!! \"%s\" could not be cut to whole frames: %s", current_.name.c_str(), cut.text().c_str());
    }
}

bool PieceWriter::flush() {
    if (current_.file == nullptr || flushedBytes_ == fileBytes_) {
        return true;
    }
    flushedBytes_ = fileBytes_;
    const OsError error = current_.file->flush();
    return error.ok() || fail("!!!!! \"%s\" could not be brought to the disk: %s", error.text());
}

bool PieceWriter::end() {
    if (current_.file == nullptr) {
        return true;
    }
    const bool whole = closeFile();
    current_ = {};
    description_->reset();
    return whole;
}

bool PieceWriter::closeFile() {
    lookForFile();
    // Of a file that is gone the system may tell anything.
    bool whole = gone_ || flush();
    if (const OsError error = current_.file->close(); !error.ok() && !gone_) {
        whole = fail("!!!!! Close error in \"%s\": %s", error.text());
    }
    reserve_.release();
    writtenBytes_ += fileBytes_;
    if (checksums_) {
        checksums_->pieceEnds(gone_ || fileBytes_ < setup_->frameBytes() ? 0 : fileBytes_);
    }
    if (gone_) {
        return whole;
    }
    if (fileBytes_ < setup_->frameBytes()) {
        unfinished_.removeEmpty(current_.name);
    } else {
        savedBytes_ += fileBytes_;
        ++savedFiles_;
        const uint64_t record = state_.piece->recordBytes;
        passport_.addPiece(current_.name, fileBytes_, setup_->frameBytes(),
                           record == 0 ? 0 : (fileBytes_ + record - 1) / record);
        if (!unfinished_.describe(current_.name, fileBytes_, state_, *description_)) {
            listUndescribed();
        }
    }
    if (const OsError error = flushFolder(parentFolder(current_.name)); !error.ok()) {
        DEBUG_LOG("The folder of \"%s\" could not be brought to the disk: %s", current_.name.c_str(),
                  error.text().c_str());
    }
    return whole;
}

void PieceWriter::lookForFile() {
    if (!gone_ && current_.file->named(current_.name) == Named::No) {
        gone_ = true;
        notice(formatText("\"%s\" was removed or renamed while it was recorded", current_.name.c_str()));
    }
}

void PieceWriter::notice(const std::string& what) {
    DEBUG_LOG("!!!!! %s", what.c_str());
    if (notice_.empty()) {
        notice_ = what;
    }
}

bool PieceWriter::lookAfterFiles() {
    if (current_.file == nullptr) {
        return true;
    }
    lookForFile();
    lookForJournal();
    return gone_ || flush();
}

// One that was removed no longer keeps others from this name, nor does it tell of these files.
void PieceWriter::lookForJournal() {
    if (!journal_->held() || journal_->named() != Named::No) {
        return;
    }
    notice(formatText("The journal \"%s\" was removed or renamed", journal_->name().c_str()));
    if (const OsError error = journal_->create(std::string(journal_->name()), state_); !error.ok()) {
        DEBUG_LOG("!!!!! No journal \"%s\": %s", journal_->name().c_str(), error.text().c_str());
    }
}

uint64_t PieceWriter::room() const {
    if (!gone_) {
        return std::numeric_limits<uint64_t>::max();
    }
    const uint64_t unit = state_.piece->recordBytes != 0 ? state_.piece->recordBytes : setup_->frameBytes();
    return (unit - fileBytes_ % unit) % unit;
}

bool PieceWriter::goOn(const LocalTime& createTime) {
    const bool whole = closeFile();
    PieceState& piece = *state_.piece;
    // Records to come have brought their events already.
    const uint64_t records = piece.recordBytes == 0 ? 0 : std::min(fileBytes_ / piece.recordBytes, events_);
    description_->dropSynchroEvents(records);
    events_ -= records;
    piece.firstEvent.point += records * piece.firstEvent.prehistory;
    piece.recordBytes = events_ == 0 ? 0 : piece.recordBytes;
    piece.createTime = createTime;
    current_ = {};
    if (!whole || !beginFile(piece.number + 1)) {
        return false;
    }
    DEBUG_LOG("Recording goes on in \"%s\"", current_.name.c_str());
    return true;
}

void PieceWriter::describeLate() {
    if (unfinished_.describeLate()) {
        listUndescribed();
    }
}

void PieceWriter::listUndescribed() {
    state_.undescribed = unfinished_.undescribedPieces();
    journalIsOld_ = true;
}

// Recording goes on without a journal, for what can't be measured again matters more.
void PieceWriter::updateJournal() {
    if (!journalIsOld_ || !journal_->held()) {
        return;
    }
    journalIsOld_ = false;
    OsError error = journal_->save(state_);
    if (error.ok()) {
        error = flushFolder(parentFolder(current_.name));
    }
    if (!error.ok()) {
        DEBUG_LOG("!!!!! The journal \"%s\" could not be brought up to date: %s", journal_->name().c_str(),
                  error.text().c_str());
    }
}

void PieceWriter::prepareNext(uint64_t left) {
    if (setup_->pieceBytes == 0 || current_.file == nullptr || prepared_.file != nullptr ||
        fileBytes_ + left < setup_->pieceBytes) {
        return;
    }
    if (const OsError error = make(number() + 1, prepared_); !error.ok()) {
        DEBUG_LOG("The file after \"%s\" can't be made yet: %s", current_.name.c_str(), error.text().c_str());
    }
}

void PieceWriter::dropPrepared() {
    if (prepared_.file != nullptr) {
        const Named named = prepared_.file->named(prepared_.name);
        static_cast<void>(prepared_.file->close());
        if (named == Named::Yes) {
            unfinished_.removeEmpty(prepared_.name);
        } else if (named == Named::Unknown) {
            unfinished_.removeEmptyLater(prepared_.name);
        }
        prepared_ = {};
    }
}

void PieceWriter::finishPassport(uint64_t accepted) {
    if (!problem_.empty()) {
        const uint64_t lost = (accepted - std::min(writtenBytes_, accepted)) / setup_->sampleWidth;
        passport_.setDiskFailure(problem_, {"disk", writtenBytes_ / setup_->sampleWidth, lost});
    }
    if (const std::string problem = passport_.finish(); !problem.empty()) {
        notice(problem);
    }
}

// The files are whole from here on, and nobody is waited for.
void PieceWriter::leaveToChecksums() {
    if (checksums_) {
        checksums_->finish(passport_.take());
        checksums_.reset();
    }
}

bool PieceWriter::finish(uint64_t accepted) {
    const bool described = finishFiles(accepted);
    leaveToChecksums();
    return described;
}

bool PieceWriter::finishFiles(uint64_t accepted) {
    dropPrepared();
    if (setup_->marks != nullptr) {
        passport_.setMarks(RecordingName(setup_->fileName).marks(), setup_->marks->finish(savedFiles_ > 0));
    }
    finishPassport(accepted);
    for (const std::string& problem : unfinished_.removeLate()) {
        notice(problem);
    }
    describeLate();
    if (unfinished_.allDescribed()) {
        if (const OsError error = journal_->remove(); !error.ok()) {
            notice(formatText("The journal \"%s\" could not be removed: %s", journal_->name().c_str(),
                              error.text().c_str()));
        }
        return true;
    }
    // What the journal tells of can be described later.
    if (journal_->held()) {
        state_.piece = state_.undescribed.back();
        state_.undescribed.pop_back();
        static_cast<void>(journal_->save(state_));
        journal_->release();
    }
    if (problem_.empty()) {
        problem_ = unfinished_.problem();
    }
    return false;
}

void PieceWriter::setCreateTime(const LocalTime& time) {
    state_.piece->createTime = time;
    journalIsOld_ = true;
}

void PieceWriter::addEvent(const SynchroEvent& event, uint64_t recordBytes) {
    if (state_.piece->recordBytes == 0) {
        state_.piece->recordBytes = recordBytes;
        state_.piece->firstEvent = event;
        journalIsOld_ = true;
    }
    ++events_;
    passport_.addTrigger(event.streamFrame);
    if (!description_->addSynchroEvent(event)) {
        notice(formatText("The description of \"%s\" lacks an event: no memory", current_.name.c_str()));
    }
}

}  // namespace tarno2
