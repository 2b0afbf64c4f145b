#include "core/storage/disk_thread.h"

#include <algorithm>

#include "config/logs/debug_log.h"
#include "platform/paths.h"

namespace tarno2 {

namespace {

/// The disk is looked after at least so often, however long data may wait for it.
constexpr uint64_t kLookPeriodMs = 500;
/// Checksums are computed while at most this part of the memory holds what the disk has not taken.
constexpr uint64_t kRoomShare = 4;
/// That may wait for the disk: ten seconds of 3000 records each.
constexpr size_t kMostNotes = 32768;

}  // namespace

DiskThread::DiskThread(CachePool& pool) : pool_(pool), notes_(kMostNotes) {}

DiskThread::~DiskThread() {
    close();
    thread_.join();
}

bool DiskThread::start(const WriterSetup& setup, RecordDescription& description, RecordingJournal& journal) {
    // What came just after a look waits for the one after the next; the rest of the time is for the disk.
    sweepMs_ = std::max<uint64_t>(uint64_t{setup.longestWaitMs} * 2 / 5, 1);
    flushMs_ = setup.flushPeriodMs;
    bytesPerSecond_ = setup.bytesPerSecond;
    reader_.open(setup.fileName);
    pieces_.open(setup, description, journal);
    if (setup.keepDiskMargin) {
        margin_.watch(parentFolder(setup.fileName), setup.bytesPerSecond);
    }
    if (!pieces_.begin(0)) {
        static_cast<void>(pieces_.finish(0));
        return false;
    }
    reader_.pieceBegins(0);
    sweptAt_ = flushedAt_ = tickCount();
    if (!closed_.valid() || !thread_.create([this] { run(); })) {
        DEBUG_LOG("!!!!! The disk thread could not be made");
        static_cast<void>(pieces_.end());
        static_cast<void>(pieces_.finish(0));
        return false;
    }
    thread_.resume();
    return true;
}

void DiskThread::beginPiece() {
    Note note;
    note.number = pool_.filled();
    push(note);
}

void DiskThread::addEvent(const SynchroEvent& event, uint64_t recordBytes) {
    push({Note::Kind::Event, recordBytes, event, {}});
}

void DiskThread::setCreateTime(const LocalTime& time) {
    push({Note::Kind::CreateTime, 0, {}, time});
}

// As with the data, only a disk that has stalled for long makes the acquisition wait.
void DiskThread::push(const Note& note) {
    if (notes_.halfFull()) {
        pool_.wake();
    }
    while (!notes_.push(note) && !failed()) {
        sleepMilliseconds(1);
    }
}

void DiskThread::close() {
    if (thread_.joinable()) {
        closing_.store(true, std::memory_order_release);
        pool_.wake();
        static_cast<void>(closed_.wait(kWaitForever));
    }
}

void DiskThread::run() noexcept {
    try {
        bool closing = false;
        while (!closing) {
            pool_.waitFilled(failed() ? kWaitForever : untilNextLook());
            closing = closing_.load(std::memory_order_acquire);
            const uint64_t end = pool_.filled();
            if (!failed() && (!bringToDisk(end, restIsDue(end) || closing) || !lookAfterDisk())) {
                fail();
            }
        }
        const bool ended = pieces_.end();
        pieces_.setEnd(std::move(end_));
        if (!pieces_.finish(pool_.filled()) || !ended) {
            fail();
        }
    } catch (...) {
        DEBUG_LOG("!!!!! The disk thread ended early");
        fail();
    }
    closed_.set();
}

uint32_t DiskThread::untilNextLook() const {
    const uint64_t elapsed = tickCount() - sweptAt_;
    return static_cast<uint32_t>(std::min(elapsed < sweepMs_ ? sweepMs_ - elapsed : 0, kLookPeriodMs));
}

// A cache that fills within two looks is written whole; what came before the last look has waited long enough.
bool DiskThread::restIsDue(uint64_t end) {
    const uint64_t now = tickCount();
    if (now - sweptAt_ < sweepMs_) {
        return false;
    }
    const bool due = pool_.emptied() < sweptBytes_;
    sweptAt_ = now;
    sweptBytes_ = end;
    return due;
}

// Writes the stream up to `end`, with the borders of pieces in between; without `rest` only whole caches at the end.
bool DiskThread::bringToDisk(uint64_t end, bool rest) {
    for (;;) {
        const Note* piece = takeNotes();
        if (piece == nullptr || piece->number > end) {
            return write(end, rest);
        }
        if (!write(piece->number, true) || !nextPiece()) {
            return false;
        }
    }
}

bool DiskThread::write(uint64_t end, bool rest) {
    for (;;) {
        pieces_.setRoom(pool_.filled() - pool_.emptied() <= pool_.capacity() / kRoomShare);
        const std::span<const std::byte> data = pool_.pending(end);
        const bool wholeCache = (pool_.emptied() + data.size()) % CachePool::kCacheBytes == 0;
        if (data.empty() || (!rest && !wholeCache)) {
            return true;
        }
        const auto part = static_cast<size_t>(std::min<uint64_t>(data.size(), pieces_.room()));
        if (part == 0) {
            if (!goOn()) {
                return false;
            }
            continue;
        }
        if (!pieces_.write(data.first(part))) {
            return false;
        }
        pool_.take(part);
        if (!lookAfterDisk()) {
            return false;
        }
    }
}

// Enters what is known of the current piece. Returns the note that begins the next one, null when none has come.
const DiskThread::Note* DiskThread::takeNotes() {
    for (const Note* note = notes_.front(); note != nullptr; note = notes_.front()) {
        switch (note->kind) {
            case Note::Kind::Piece:
                return note;
            case Note::Kind::Event:
                pieces_.addEvent(note->event, note->number);
                break;
            case Note::Kind::CreateTime:
                pieces_.setCreateTime(note->time);
                break;
        }
        notes_.pop();
    }
    return nullptr;
}

bool DiskThread::nextPiece() {
    const uint64_t start = notes_.front()->number;
    notes_.pop();
    if (!pieces_.end() || !pieces_.begin(pieces_.number() + 1)) {
        return false;
    }
    reader_.pieceBegins(start);
    return true;
}

// The file is gone, its last frame or record complete: what follows goes into the next one.
bool DiskThread::goOn() {
    const uint64_t start = pool_.emptied();
    const auto waiting = static_cast<double>(pool_.filled() - start);
    const double waitedMs = bytesPerSecond_ > 0.0 ? waiting * 1000.0 / bytesPerSecond_ : 0.0;
    if (!pieces_.goOn(localTime(static_cast<uint64_t>(waitedMs)))) {
        return false;
    }
    extraFiles_.fetch_add(1, std::memory_order_relaxed);
    reader_.pieceBegins(start);
    return true;
}

// After every write and every look, so at least as often as the looks are.
bool DiskThread::lookAfterDisk() {
    if (margin_.reached(pool_.emptied(), pool_.filled() - pool_.emptied())) {
        nearlyFull_.store(true, std::memory_order_relaxed);
    }
    pieces_.prepareNext(pool_.capacity());
    const uint64_t now = tickCount();
    if (now - describedAt_ >= kLookPeriodMs) {
        describedAt_ = now;
        pieces_.describeLate();
    }
    if (now - flushedAt_ < flushMs_) {
        return true;
    }
    flushedAt_ = now;
    return pieces_.lookAfterFiles();
}

void DiskThread::fail() {
    failed_.store(true, std::memory_order_release);
    pool_.abandon();
}

}  // namespace tarno2
