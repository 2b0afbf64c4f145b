#include "core/storage/mark_writer.h"

#include <algorithm>
#include <map>
#include <new>
#include <span>
#include <utility>

#include "config/files/recording_name.h"
#include "config/logs/debug_log.h"
#include "core/storage/recovery_files.h"
#include "platform/clock.h"
#include "platform/paths.h"
#include "platform/utf.h"
#include "records/found_passport.h"

namespace tarno2 {

namespace {

/// What the disk did not take is tried again after this time.
constexpr uint32_t kRetryMs = 1000;

/// One line a mark, the last one of each, by number.
std::vector<RecordingMark> lastLines(std::span<const RecordingMark> log) {
    std::map<uint64_t, const RecordingMark*> byNumber;
    for (const RecordingMark& mark : log) {
        byNumber[mark.number] = &mark;
    }
    std::vector<RecordingMark> marks;
    marks.reserve(byNumber.size());
    for (const auto& [number, mark] : byNumber) {
        marks.push_back(*mark);
    }
    return marks;
}

/// Whether what stands there without a journal's piece is of a recording that had no sample yet, not of an earlier one.
bool hasBegun(const RecordingName& name) {
    const FoundPassport found = findPassport(name.passport());
    return found.passport && found.passport->state == Passport::State::Recording && piecesUpTo(name, 0).empty();
}

}  // namespace

MarkWriter::~MarkWriter() {
    finish(true);
    thread_.join();
}

bool MarkWriter::open(const std::string& dataName) {
    name_ = RecordingName(dataName).marks();
    try {
        notes_ = std::make_unique<HandOver<Note>>(kMostWaiting);
    } catch (const std::bad_alloc&) {
        return false;
    }
    if (!wake_.valid() || !done_.valid() || !thread_.create([this] { run(); })) {
        return false;
    }
    thread_.resume();
    const std::scoped_lock lock(mutex_);
    open_ = true;
    return true;
}

uint64_t MarkWriter::takeNumber(uint64_t most) {
    if (number_.load(std::memory_order_relaxed) < most) {
        if (const uint64_t number = number_.fetch_add(1, std::memory_order_relaxed) + 1; number <= kMostMarks) {
            return number;
        }
    }
    lost_.fetch_add(1, std::memory_order_relaxed);
    return 0;
}

std::optional<RecordingMark> MarkWriter::add(uint64_t frame, int64_t utc) {
    const std::scoped_lock lock(mutex_);
    if (!open_) {
        return std::nullopt;
    }
    typed_.reserve(typed_.size() + 1);
    const bool room = typed_.size() < kMostWaiting;
    const RecordingMark mark{room ? takeNumber(kMostMarks) : 0, frame, utc, MarkSource::Operator, {}};
    if (mark.number == 0) {
        lost_.fetch_add(room ? 0 : 1, std::memory_order_relaxed);
        return std::nullopt;
    }
    typed_.push_back(mark);
    wake();
    return mark;
}

void MarkWriter::setText(RecordingMark mark) {
    mark.text = cleanMarkText(mark.text);
    const std::scoped_lock lock(mutex_);
    draft_.reset();
    if (open_ && !mark.text.empty()) {
        typed_.push_back(std::move(mark));
        wake();
    }
}

void MarkWriter::setDraft(RecordingMark mark) {
    mark.text = cleanMarkText(mark.text);
    const std::scoped_lock lock(mutex_);
    draft_ = mark.text.empty() ? std::nullopt : std::optional(std::move(mark));
}

void MarkWriter::note(MarkSource source, uint64_t frame, int64_t utc, std::string_view text) {
    if (notes_ == nullptr || !notes_->hasRoom()) {
        lost_.fetch_add(1, std::memory_order_relaxed);
        return;
    }
    Note note;
    note.number = takeNumber(kMostMarks - kOperatorsMarks);
    note.frame = frame;
    note.utc = utc;
    note.source = source;
    note.length = static_cast<uint8_t>(text.copy(note.text, kLongestNote));
    if (note.number != 0) {
        static_cast<void>(notes_->push(note));
    }
}

uint64_t MarkWriter::finish(bool kept) {
    {
        const std::scoped_lock lock(mutex_);
        if (!open_) {
            return count_;
        }
        open_ = false;
    }
    kept_ = kept;
    finishing_.store(true, std::memory_order_release);
    wake();
    static_cast<void>(done_.wait(kWaitForever));
    return count_;
}

void MarkWriter::read(size_t& seen, std::vector<RecordingMark>& marks) const {
    const std::scoped_lock lock(mutex_);
    marks.insert(marks.end(), log_.begin() + static_cast<std::ptrdiff_t>(std::min(seen, log_.size())), log_.end());
    seen = log_.size();
}

std::string MarkWriter::takeProblem() {
    const std::scoped_lock lock(mutex_);
    return std::exchange(problem_, {});
}

// Once, however often the same thing goes wrong.
void MarkWriter::tell(const std::string& problem) {
    if (problem == lastProblem_) {
        return;
    }
    DEBUG_LOG("!!!!! \"%s\": %s", name_.c_str(), problem.c_str());
    lastProblem_ = problem;
    const std::scoped_lock lock(mutex_);
    problem_ = problem;
}

void MarkWriter::run() noexcept {
    bool last = false;
    while (!last) {
        const bool waiting = written() < log_.size();
        static_cast<void>(wake_.wait(waiting ? kRetryMs : kWaitForever));
        static_cast<void>(wake_.reset());
        last = finishing_.load(std::memory_order_acquire);
        try {
            take();
            append();
            if (last) {
                complete();
            }
        } catch (const std::bad_alloc&) {
            DEBUG_LOG("!!!!! No memory for marks");
        }
    }
    static_cast<void>(done_.set());
}

void MarkWriter::take() {
    const std::scoped_lock lock(mutex_);
    const auto before = static_cast<std::ptrdiff_t>(log_.size());
    log_.insert(log_.end(), typed_.begin(), typed_.end());
    typed_.clear();
    for (const Note* note = notes_->front(); note != nullptr; note = notes_->front()) {
        const std::string text(note->text, note->length);
        log_.push_back({note->number, note->frame, note->utc, note->source, cleanMarkText(systemToUtf8(text))});
        notes_->pop();
    }
    if (finishing_.load(std::memory_order_acquire) && draft_) {
        log_.push_back(*std::exchange(draft_, std::nullopt));
    }
    // Where a crash tears the list, none of lower numbers is missing.
    std::ranges::stable_sort(log_.begin() + before, log_.end(), {}, &RecordingMark::number);
}

/// The file that is open, or a new one when there is none or somebody took it away.
OsError MarkWriter::openFile() {
    if (file_.isOpen() && file_.named(name_) != Named::No) {
        return {};
    }
    file_.close();
    bytes_ = 0;
    written_.store(0, std::memory_order_release);
    // Who could remove it by this would keep those from opening it who want to look at the marks meanwhile.
    OsError error = file_.open(name_, FileMode::CreateNew, FileAccess::ReadWrite, FileShare::Read);
    if (error.ok()) {
        error = flushFolder(parentFolder(name_));
    }
    return error;
}

OsError MarkWriter::writeNew() {
    std::string text = bytes_ == 0 ? marksHeader() : std::string();
    for (size_t i = written(); i < log_.size(); ++i) {
        text += markLine(log_[i]);
    }
    size_t done = 0;
    OsError error = file_.write(text.data(), text.size(), done);
    if (error.ok()) {
        error = file_.flush();
    }
    if (error.ok()) {
        bytes_ += text.size();
        written_.store(log_.size(), std::memory_order_release);
    } else {
        // What is tried again begins where whole lines end.
        if (!file_.truncate(bytes_).ok()) {
            static_cast<void>(file_.seek(bytes_));
        }
    }
    return error;
}

void MarkWriter::append() {
    if (log_.size() == written()) {
        return;
    }
    // However often it is woken meanwhile: a full disk has others to serve.
    const uint64_t now = monotonicNanoseconds();
    if (triedAt_ != 0 && now - triedAt_ < kRetryMs * kNanosecondsPerMillisecond &&
        !finishing_.load(std::memory_order_acquire)) {
        return;
    }
    OsError error = openFile();
    if (error.ok()) {
        error = writeNew();
    }
    triedAt_ = error.ok() ? 0 : std::max<uint64_t>(now, 1);
    if (error.ok()) {
        lastProblem_.clear();
    } else {
        tell(error.text());
    }
}

// What was appended is whole already: in its last form each mark has one line, and they stand in their order.
void MarkWriter::complete() {
    if (!file_.isOpen()) {
        return;
    }
    const bool ours = file_.named(name_) != Named::No;
    file_.close();
    if (!ours) {
        tell("it was removed or renamed");
        return;
    }
    if (!kept_) {
        if (const OsError error = removeFile(name_); !error.ok()) {
            tell(error.text());
        }
        return;
    }
    const std::vector<RecordingMark> marks = lastLines(std::span(log_).first(written()));
    count_ = marks.size();
    const std::string text = marksText(marks);
    if (text.size() != bytes_ || !std::ranges::is_sorted(log_, {}, &RecordingMark::number)) {
        if (const OsError error = replaceWholeFile(name_, text); !error.ok()) {
            tell(error.text());
        }
    }
}

std::string completeMarks(const RecordingJournal& journal, uint64_t frames) {
    const RecordingName name(dataNameOf(journal));
    const FoundMarks found = findMarks(name.marks());
    if (!found.there || !found.problem.empty()) {
        return !found.there ? std::string() : "\"" + name.marks() + "\" stays as it is: " + found.problem;
    }
    OsError error;
    if (frames > 0 && !found.marks.empty()) {
        const std::string text = marksText(found.marks);
        error = text == found.text ? OsError() : replaceWholeFile(name.marks(), text);
    } else if (frames > 0 || journal.state().piece || hasBegun(name)) {
        error = removeFile(name.marks());
    }
    return error.ok() ? std::string() : "\"" + name.marks() + "\": " + error.text();
}

}  // namespace tarno2
