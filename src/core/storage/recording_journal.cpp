#include "core/storage/recording_journal.h"

#include <mutex>
#include <set>
#include <utility>

#include "config/files/file_naming.h"
#include "platform/paths.h"
#include "records/file_extensions.h"

namespace tarno2 {

namespace {

using HeldName = std::multiset<std::string>::const_iterator;

constexpr int kAttempts = 10;

/// What an open file is, by its contents. Nothing when it can't be read.
std::optional<JournalFound> judge(File& file, const std::string& name, JournalState& state) {
    uint64_t size = 0;
    if (!file.size(size).ok()) {
        return std::nullopt;
    }
    if (size == 0 && name.ends_with(kJournalExtension)) {
        return JournalFound::NotBegun;
    }
    std::string contents(2 * kJournalHalf, '\0');
    size_t done = 0;
    if (size != contents.size()) {
        return JournalFound::Foreign;
    }
    if (!file.seek(0).ok() || !file.read(contents.data(), contents.size(), done).ok() || done != contents.size()) {
        return std::nullopt;
    }
    auto read = readJournal(contents);
    if (!read) {
        return JournalFound::Foreign;
    }
    state = std::move(*read);
    return JournalFound::Ours;
}

std::optional<JournalFound> judge(const OsError& error, const std::string& name) {
    if (error.inUse()) {
        return JournalFound::InUse;
    }
    if (error.notFound()) {
        return JournalFound::Nothing;
    }
    bool found = false;
    if (const OsError looked = findFile(name, found); looked.ok() && !found) {
        return JournalFound::Nothing;
    }
    return !found || isPlainFile(name) ? std::nullopt : std::optional(JournalFound::Foreign);
}

std::optional<JournalFound> lookAt(const std::string& name, JournalState& state) {
    File file;
    const OsError error = file.openPlain(name, FileMode::OpenExisting, FileAccess::Read, FileShare::ReadWrite);
    return error.ok() ? judge(file, name, state) : judge(error, name);
}

/// The journals that this program holds, by their names without folder: two spellings of a folder are one.
class HeldJournals {
public:
    HeldName add(const std::string& name) {
        const std::scoped_lock lock(mutex_);
        return names_.insert(fileNameOf(name));
    }
    void remove(HeldName name) noexcept {
        const std::scoped_lock lock(mutex_);
        names_.erase(name);
    }
    bool contains(const std::string& name) {
        const std::scoped_lock lock(mutex_);
        return names_.contains(fileNameOf(name));
    }

private:
    std::mutex mutex_;
    std::multiset<std::string> names_;
};

HeldJournals& heldJournals() {
    static HeldJournals journals;
    return journals;
}

}  // namespace

bool RecordingJournal::isHeldHere(const std::string& name) {
    return heldJournals().contains(name);
}

void RecordingJournal::setHeld(bool held) {
    if (held && !heldName_) {
        heldName_ = heldJournals().add(name_);
    } else if (!held && heldName_) {
        heldJournals().remove(*heldName_);
        heldName_.reset();
    }
}

void RecordingJournal::release() {
    setHeld(false);
    static_cast<void>(file_.close());
}

std::optional<JournalFound> RecordingJournal::look(const std::string& name) {
    JournalState state;
    return lookAt(name, state);
}

JournalFound RecordingJournal::takeExisting(const std::string& name) {
    release();
    name_ = name;
    // Its owner may remove it between our opening and our lock: then the file that we hold has no name any more.
    for (int i = 0; i < kAttempts; ++i) {
        const JournalFound seen = lookAt(name, state_).value_or(JournalFound::Foreign);
        if (seen != JournalFound::Ours && seen != JournalFound::NotBegun) {
            return seen;
        }
        const OsError error =
            file_.openPlain(name, FileMode::OpenExisting, FileAccess::ReadWriteRemove, FileShare::None);
        if (!error.ok() && !error.notFound()) {
            return judge(error, name).value_or(JournalFound::Foreign);
        }
        if (error.ok() && file_.named(name) == Named::Yes) {
            const JournalFound held = judge(file_, name, state_).value_or(JournalFound::Foreign);
            if (held == JournalFound::Foreign) {
                release();
                return held;
            }
            sequence_ = state_.sequence;
            setHeld(true);
            return held;
        }
        release();
    }
    return JournalFound::InUse;
}

OsError RecordingJournal::create(const std::string& name, const JournalState& state) {
    std::string contents;
    for (const uint64_t sequence : {0U, 1U}) {
        JournalState first = state;
        first.sequence = sequence_ = sequence;
        const auto half = journalText(first);
        if (!half) {
            return OsError::tooLarge();
        }
        contents += *half;
    }
    release();
    name_ = name;
    const OsError error = file_.createWhole(name, contents);
    // Where it could not appear locked, another program may have taken it for one that was left behind.
    if (error.ok() && file_.named(name) == Named::No) {
        release();
        return create(name, state);
    }
    setHeld(error.ok());
    return error;
}

OsError RecordingJournal::begin(const JournalState& state) {
    const OsError error = save(state);
    return error.ok() ? save(state) : error;
}

// Odd and even states have a half each.
OsError RecordingJournal::save(const JournalState& state) {
    JournalState next = state;
    next.sequence = sequence_ + 1;
    const auto text = journalText(next);
    if (!text) {
        return OsError::tooLarge();
    }
    size_t done = 0;
    OsError error = file_.seek(next.sequence % 2 * kJournalHalf);
    if (error.ok()) {
        error = file_.write(text->data(), text->size(), done);
    }
    if (error.ok()) {
        error = file_.flush();
    }
    if (error.ok()) {
        sequence_ = next.sequence;  // else the same half is tried again: the other one is whole
    }
    return error;
}

OsError RecordingJournal::remove() {
    if (!held()) {
        return {};
    }
    const OsError error = file_.removeNamed(name_);
    release();
    return error.notFound() ? OsError() : error;
}

}  // namespace tarno2
