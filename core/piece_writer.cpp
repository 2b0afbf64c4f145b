#include "core/piece_writer.h"

#include <utility>

#include "config/debug_log.h"
#include "config/file_naming.h"
#include "core/piece_description.h"
#include "platform/file.h"
#include "platform/paths.h"

namespace tarno2 {

namespace {

constexpr uint64_t kReserveBytes = 64 * 1024;

}  // namespace

PieceWriter::~PieceWriter() {
    dropPrepared();
}

void PieceWriter::open(const WriterSetup& setup, RecordDescription& description, RecordingJournal& journal) {
    setup_ = &setup;
    description_ = &description;
    journal_ = &journal;
    state_ = setup.journalState();
}

OsError PieceWriter::make(uint32_t number, MadeFile& made) const {
    made.name = pieceName(setup_->fileName, number);
    made.file = setup_->makeFile();
    OsError error = made.file->create(made.name);
    if (error.alreadyExists()) {
        // Somebody made a file of that name while the recording ran: his is kept, and ours is made.
        static_cast<void>(moveEarlierRecordingAside(made.name));
        error = made.file->create(made.name);
    }
    if (!error.ok()) {
        made.file.reset();
    }
    return error;
}

bool PieceWriter::begin(uint32_t number) {
    state_.piece.emplace().number = number;
    journalIsOld_ = true;
    fileBytes_ = 0;
    flushedBytes_ = 0;
    description_->reset();
    setup_->facts.describe(*description_);
    if (prepared_.file != nullptr) {
        current_ = std::exchange(prepared_, {});
    } else if (const OsError error = make(number, current_); !error.ok()) {
        return fail("!!!!! \"%s\" could not be made: %s", error.text());
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
    bool whole = flush();
    if (const OsError error = current_.file->close(); !error.ok()) {
        whole = fail("!!!!! Close error in \"%s\": %s", error.text());
    }
    reserve_.release();
    if (fileBytes_ < setup_->frameBytes()) {
        removeFile(current_.name);
    } else {
        savedBytes_ += fileBytes_;
        whole = describe() && whole;
    }
    if (const OsError error = flushFolder(parentFolder(current_.name)); !error.ok()) {
        DEBUG_LOG("The folder of \"%s\" could not be brought to the disk: %s", current_.name.c_str(),
                  error.text().c_str());
    }
    current_ = {};
    description_->reset();
    return whole;
}

bool PieceWriter::describe() {
    const std::string problem = describeDataFile(current_.name, fileBytes_, state_, *description_);
    undescribed_ = undescribed_ || !problem.empty();
    return problem.empty() || fail("!!!!! \"%s\": %s", problem);
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
        static_cast<void>(prepared_.file->close());
        removeFile(prepared_.name);
        prepared_ = {};
    }
}

void PieceWriter::finish() {
    dropPrepared();
    if (undescribed_) {
        journal_->release();
    } else {
        journal_->remove();
    }
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
    description_->addSynchroEvent(event);
}

}  // namespace tarno2
