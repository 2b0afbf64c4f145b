#include "core/storage/passport_file.h"

#include <algorithm>
#include <utility>

#include "config/files/recording_name.h"
#include "core/storage/recovery_files.h"
#include "platform/clock.h"
#include "platform/file.h"
#include "platform/paths.h"
#include "platform/utf.h"
#include "records/found_passport.h"
#include "records/mark_list.h"
#include "records/passport_keys.h"

namespace tarno2 {

namespace {

std::string inWords(const std::string& name, const OsError& error) {
    return "\"" + name + "\" could not be written: " + error.text();
}

uint64_t recordsIn(uint64_t frames, uint32_t recordFrames) {
    return recordFrames == 0 ? 0 : (frames + recordFrames - 1) / recordFrames;
}

}  // namespace

void PassportFile::open(const std::string& dataName, std::optional<Passport> known) {
    name_ = RecordingName(dataName).passport();
    passport_ = std::move(known);
    if (passport_) {
        passport_->state = Passport::State::Recording;
    }
}

std::string PassportFile::begin() const {
    if (!passport_) {
        return {};
    }
    removeTemporaries(name_);
    return write();
}

std::string PassportFile::write() const {
    const OsError error = replaceWholeFile(name_, passportText(*passport_));
    return error.ok() ? std::string() : inWords(name_, error);
}

void PassportFile::addPiece(const std::string& name, uint64_t bytes, uint64_t frameBytes, uint64_t records) {
    if (passport_) {
        passport_->pieces.push_back({systemToUtf8(fileNameOf(name)), bytes / frameBytes, bytes, records, {}});
    }
}

void PassportFile::addTrigger(uint64_t streamFrame) {
    if (passport_ && passport_->triggers.size() < kMostPassportTriggers) {
        passport_->triggers.push_back(streamFrame);
    }
}

void PassportFile::setEnd(PassportEnd end) {
    if (passport_ && end.begun != 0) {
        passport_->start = end.begun;
        passport_->startOffset = utcOffsetMinutes(end.begun);
    }
    if (passport_) {
        passport_->end = std::move(end);
    }
}

void PassportFile::setMarks(const std::string& name, uint64_t count) {
    if (passport_ && count > 0) {
        passport_->marks = {systemToUtf8(fileNameOf(name)), count};
    }
}

void PassportFile::setDiskFailure(const std::string& words, const PassportLoss& loss) {
    if (passport_) {
        passport_->end.reason = "write error";
        passport_->end.words = words;
        if (loss.count > 0) {
            passport_->end.losses.push_back(loss);
        }
    }
}

std::optional<Passport> PassportFile::take() {
    return passport_ && passport_->state == Passport::State::Complete ? std::exchange(passport_, std::nullopt)
                                                                      : std::nullopt;
}

std::string PassportFile::finish() {
    if (!passport_) {
        return {};
    }
    if (passport_->pieces.empty()) {
        const OsError error = fileExists(name_) ? removeFile(name_) : OsError();
        return error.ok() ? std::string() : "\"" + name_ + "\" could not be removed: " + error.text();
    }
    passport_->state = Passport::State::Complete;
    passport_->triggers.resize(std::min<uint64_t>(passport_->triggers.size(), passport_->records()));
    return write();
}

std::string completePassport(const RecordingJournal& journal) {
    const RecordingName name(dataNameOf(journal));
    for (const std::string& replaced : {name.passport(), name.marks(), name.checksums()}) {
        removeTemporaries(replaced);
    }
    FoundPassport found = findPassport(name.passport());
    if (!found.error.ok()) {
        return "\"" + name.passport() + "\" could not be read: " + found.problem;
    }
    std::optional<Passport>& passport = found.passport;
    if (!passport || passport->state != Passport::State::Recording) {
        return {};
    }
    const uint64_t frameBytes = journal.state().frameBytes();
    const uint32_t last = journal.state().piece ? journal.state().piece->number : 0;
    OsError listed;
    for (const uint32_t k : piecesUpTo(name, last, &listed)) {
        const std::string piece = name.piece(k);
        const auto bytes = plainFileSize(piece);
        if (!bytes) {
            return "\"" + name.passport() + "\" stays as it was begun: \"" + piece + "\" could not be looked at";
        }
        if (const uint64_t frames = *bytes / frameBytes; frames > 0) {
            passport->pieces.push_back(
                {systemToUtf8(fileNameOf(piece)), frames, *bytes, recordsIn(frames, passport->recordFrames()), {}});
        }
    }
    if (!listed.ok()) {
        return "\"" + name.passport() + "\" stays as it was begun: its folder could not be read: " + listed.text();
    }
    passport->state = Passport::State::Recovered;
    passport->end = {0, utcMicroseconds(), "cut off", {}, {}, {}, {}};
    if (const FoundMarks marks = findMarks(name.marks()); marks.problem.empty() && !marks.marks.empty()) {
        passport->marks = {systemToUtf8(fileNameOf(name.marks())), marks.marks.size()};
    }
    const OsError error = passport->pieces.empty() ? removeFile(name.passport())
                                                   : replaceWholeFile(name.passport(), passportText(*passport));
    return error.ok() ? std::string() : inWords(name.passport(), error);
}

}  // namespace tarno2
