#include "core/recording_journal.h"

namespace tarno2 {

namespace {

constexpr int kAttempts = 10;

}  // namespace

OsError RecordingJournal::hold(const std::string& name, FileMode mode) {
    OsError error;
    // Its owner may remove it between our opening and our lock: then the file that we hold has no name any more.
    for (int i = 0; i < kAttempts; ++i) {
        error = file_.open(name, mode, FileAccess::ReadWrite, FileShare::None);
        if (!error.ok() || file_.isNamed(name)) {
            break;
        }
        file_.close();
    }
    name_ = name;
    return error;
}

OsError RecordingJournal::read(std::string& contents) {
    // A byte more than a journal has shows one that is too long.
    contents.resize(2 * kJournalHalf + 1);
    size_t done = 0;
    OsError error = file_.seek(0);
    if (error.ok()) {
        error = file_.read(contents.data(), contents.size(), done);
    }
    contents.resize(error.ok() ? done : 0);
    return error;
}

OsError RecordingJournal::begin(const JournalState& state) {
    OsError error = file_.truncate(0);
    for (const uint64_t sequence : {0U, 1U}) {
        if (error.ok()) {
            JournalState first = state;
            first.sequence = sequence;
            error = put(first);
        }
    }
    return error.ok() ? file_.flush() : error;
}

OsError RecordingJournal::save(JournalState& state) {
    ++state.sequence;
    const OsError error = put(state);
    return error.ok() ? file_.flush() : error;
}

// Odd and even states have a half each.
OsError RecordingJournal::put(const JournalState& state) {
    const auto text = journalText(state);
    if (!text) {
        return OsError::tooLarge();
    }
    OsError error = file_.seek(state.sequence % 2 * kJournalHalf);
    size_t done = 0;
    return error.ok() ? file_.write(text->data(), text->size(), done) : error;
}

void RecordingJournal::remove() {
    if (!held()) {
        return;
    }
    // Where an open file can be removed this leaves nobody a moment to take it; elsewhere it has to be closed first.
    if (!removeFile(name_).ok()) {
        file_.close();
        removeFile(name_);
    }
    file_.close();
}

}  // namespace tarno2
