#include "core/piece_writer.h"

#include <bit>
#include <utility>

#include "config/debug_log.h"
#include "config/file_naming.h"
#include "platform/file.h"
#include "platform/paths.h"

namespace tarno2 {

namespace {

constexpr uint64_t kReserveBytes = 64 * 1024;

int32_t setBits(int32_t mask, uint32_t sampleWidth) {
    const uint32_t word = sampleWidth >= 4 ? 0xFFFFFFFFU : 0xFFFFU;
    return std::popcount(static_cast<uint32_t>(mask) & word);
}

OsError flushClosedFile(const std::string& name) {
    File file;
    const OsError error = file.open(name, FileMode::OpenExisting, FileAccess::Write, FileShare::ReadWrite);
    return error.ok() ? file.flush() : error;
}

}  // namespace

PieceWriter::~PieceWriter() {
    dropPrepared();
}

void PieceWriter::open(const WriterSetup& setup, RecordDescription& description) {
    setup_ = &setup;
    description_ = &description;
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
    number_ = number;
    fileBytes_ = 0;
    flushedBytes_ = 0;
    createTime_.reset();
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
    SampleLayout layout = setup_->facts.layout;
    layout.analogBits = setBits(layout.analogMask, setup_->sampleWidth);
    layout.digitalBits = setBits(layout.digitalMask, setup_->sampleWidth);
    description_->setDataFormat(layout);
    description_->setDataCountPerChannel(fileBytes_ / setup_->frameBytes());
    if (recordBytes_ != 0) {
        // Records that did not reach the file, or that the size limit left out, have no event.
        description_->keepSynchroEvents((fileBytes_ + recordBytes_ - 1) / recordBytes_);
    }
    if (createTime_) {
        description_->setCreateTime(*createTime_);
    }
    const std::string name = RecordDescription::fileNameFor(current_.name);
    if (!description_->writeForDataFile(current_.name)) {
        DEBUG_LOG("!!!!! Description of \"%s\" not written, status = %d", current_.name.c_str(),
                  static_cast<int>(description_->status()));
        // Half a description would mislead its reader.
        removeFile(name);
        return fail("!!!!! \"%s\": %s", "the description could not be written");
    }
    const OsError error = flushClosedFile(name);
    return error.ok() || fail("!!!!! Description of \"%s\" could not be brought to the disk: %s", error.text());
}

void PieceWriter::prepareNext(uint64_t left) {
    if (setup_->pieceBytes == 0 || current_.file == nullptr || prepared_.file != nullptr ||
        fileBytes_ + left < setup_->pieceBytes) {
        return;
    }
    if (const OsError error = make(number_ + 1, prepared_); !error.ok()) {
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

void PieceWriter::addEvent(const SynchroEvent& event, uint64_t recordBytes) {
    recordBytes_ = recordBytes;
    description_->addSynchroEvent(event);
}

}  // namespace tarno2
