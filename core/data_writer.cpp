#include "core/data_writer.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <new>
#include <utility>

#include "config/debug_log.h"
#include "config/file_naming.h"
#include "platform/paths.h"

namespace tarno2 {

namespace {

constexpr uint64_t kReserveBytes = 64 * 1024;

int32_t setBits(int32_t mask, uint32_t sampleWidth) {
    const uint32_t word = sampleWidth >= 4 ? 0xFFFFFFFFU : 0xFFFFU;
    return std::popcount(static_cast<uint32_t>(mask) & word);
}

}  // namespace

DataWriter::DataWriter() : cache_(new (std::nothrow) std::byte[kCacheBytes]) {}

DataWriter::~DataWriter() {
    Close();
}

int32_t DataWriter::open(const WriterSetup& setup, RecordDescription& description) {
    if (!ready()) {
        return -1;
    }
    if (setup.fileName.empty()) {
        return -2;
    }
    if (setup.frameBytes() == 0) {
        return -3;
    }
    setup_ = setup;
    if (setup_.pieceBytes != 0) {
        const uint64_t frame = setup_.frameBytes();
        setup_.pieceBytes = std::max(setup_.pieceBytes / frame, uint64_t{1}) * frame;
    }
    description_ = &description;
    if (const OsError error = createFoldersFor(setup_.fileName); !error.ok()) {
        openError_ = error.text();
        return -5;
    }
    MovedAside moved = moveEarlierRecordingAside(setup_.fileName);
    movedAside_ = std::move(moved.names);
    if (!moved.error.ok()) {
        openError_ = moved.error.text();
        return -5;
    }
    return beginFile(0) ? 0 : -5;
}

void DataWriter::setCreateTime(const LocalTime& time) {
    createTime_ = time;
}

uint64_t DataWriter::millisecondsOf(uint64_t bytes) const {
    if (!(setup_.bytesPerSecond > 0.0)) {
        return 0;
    }
    return static_cast<uint64_t>(std::min(static_cast<double>(bytes) * 1000.0 / setup_.bytesPerSecond, 1e12));
}

int32_t DataWriter::Write(const std::byte* data, uint64_t size, uint64_t unitBytes,
                          std::span<const SynchroEvent> events) {
    if (failed_ || !write_.isOpen()) {
        return -1;
    }
    bool limitReached = false;
    if (setup_.limitBytes != 0 && totalBytes() + size > setup_.limitBytes) {
        size = setup_.limitBytes - totalBytes();
        limitReached = true;
    }
    const uint64_t unit = std::max<uint64_t>(unitBytes, 1);
    recordBytes_ = events.empty() ? recordBytes_ : unit;
    while (size > 0) {
        uint64_t part = size;
        if (setup_.pieceBytes != 0) {
            if (!nextPieceFor(std::min(unit, size), size)) {
                return -1;
            }
            // A piece holds whole units; a unit larger than a piece has a piece of its own.
            const uint64_t room = setup_.pieceBytes > pieceFill_ ? setup_.pieceBytes - pieceFill_ : 0;
            part = std::min(size, std::max(room / unit, uint64_t{1}) * unit);
        }
        events = enterEvents(events, (part + unit - 1) / unit);
        if (!put(data, part, limitReached && part == size)) {
            return -1;
        }
        data += part;
        size -= part;
    }
    const bool full = setup_.limitBytes != 0 && totalBytes() >= setup_.limitBytes;
    return limitReached || full ? 1 : 0;
}

// Returns the events that are left.
std::span<const SynchroEvent> DataWriter::enterEvents(std::span<const SynchroEvent> events, uint64_t records) {
    const auto entered = static_cast<size_t>(std::min<uint64_t>(records, events.size()));
    for (const SynchroEvent& event : events.first(entered)) {
        description_->addSynchroEvent(event);
    }
    return events.subspan(entered);
}

std::byte* DataWriter::room(uint64_t size) {
    return cacheFill_ + size < kCacheBytes ? cache_.get() + cacheFill_ : nullptr;
}

// `bytesLeft`: what is still to be written of a block that ends about now, so that its first sample came that much
// earlier.
bool DataWriter::nextPieceFor(uint64_t unitBytes, uint64_t bytesLeft) {
    if (pieceFill_ == 0 || pieceFill_ + unitBytes <= setup_.pieceBytes) {
        return true;
    }
    if (!endFile()) {
        return false;
    }
    if (!beginFile(fileCount())) {
        failed_ = true;
        writeError_ = openError_;
        return false;
    }
    setCreateTime(localTime(millisecondsOf(bytesLeft)));
    return true;
}

// `last`: the size limit cut this block short. When the cache has to be written in the same pass, such a block is left
// out, so that a recording by size ends on what was gathered.
bool DataWriter::put(const std::byte* data, uint64_t size, bool last) {
    const bool through = cacheFill_ + size >= kCacheBytes;
    if (through) {
        if (!writeThrough(cache_.get(), cacheFill_)) {
            return false;
        }
        cacheFill_ = 0;
        if (last) {
            return true;
        }
        if (!writeThrough(data, size)) {
            return false;
        }
    } else {
        // A block that was read into `room` is in its place already, unless a new piece has begun since.
        if (data != cache_.get() + cacheFill_) {
            std::memmove(cache_.get() + cacheFill_, data, size);
        }
        cacheFill_ += size;
    }
    pieceFill_ += size;
    totalBytes_.store(totalBytes() + size, std::memory_order_relaxed);
    if (through) {
        flushedBytes_.store(totalBytes(), std::memory_order_release);
    }
    return true;
}

bool DataWriter::writeThrough(const std::byte* data, uint64_t size) {
    if (size == 0) {
        return true;
    }
    size_t done = 0;
    const OsError error = write_.write(data, size, done);
    fileBytes_ += done;
    if (!error.ok() || done != size) {
        fail(error);
        return false;
    }
    return true;
}

// What is on the disk ends with a torn frame: cut it off, so that the file can be read like any other.
void DataWriter::fail(const OsError& error) {
    failed_ = true;
    writeError_ = error.text();
    cacheFill_ = 0;
    const uint64_t whole = fileBytes_ / setup_.frameBytes() * setup_.frameBytes();
    if (const OsError cut = write_.truncate(whole); cut.ok()) {
        fileBytes_ = whole;
    } else {
        DEBUG_LOG("!!!!! \"%s\" could not be cut to whole frames: %s", currentName_.c_str(), cut.text().c_str());
    }
    DEBUG_LOG("!!!!! Write error in \"%s\": %s", currentName_.c_str(), writeError_.c_str());
}

bool DataWriter::Close() {
    if (!write_.isOpen()) {
        return !failed_;
    }
    endFile();
    return !failed_;
}

uint64_t DataWriter::readBack(uint64_t offset, std::byte* out, uint64_t size) {
    const uint64_t end = flushedBytes_.load(std::memory_order_acquire);
    size = offset < end ? std::min(size, end - offset) : 0;
    uint64_t done = 0;
    while (done < size) {
        const uint64_t got = readPiece(offset + done, out + done, size - done);
        if (got == 0) {
            break;
        }
        done += got;
    }
    return done;
}

uint64_t DataWriter::readPiece(uint64_t offset, std::byte* out, uint64_t size) {
    uint64_t start = 0;
    uint32_t number = 0;
    {
        const std::scoped_lock lock(startsMutex_);
        const auto next = std::upper_bound(pieceStarts_.begin(), pieceStarts_.end(), offset);
        number = static_cast<uint32_t>(next - pieceStarts_.begin()) - 1;
        start = pieceStarts_[number];
        size = next == pieceStarts_.end() ? size : std::min(size, *next - offset);
    }
    if (!read_.isOpen() || readNumber_ != number) {
        readNumber_ = number;
        if (!read_
                 .open(pieceName(setup_.fileName, number), FileMode::OpenExisting, FileAccess::Read,
                       FileShare::ReadWrite)
                 .ok()) {
            return 0;
        }
    }
    size_t done = 0;
    if (read_.seek(offset - start).ok()) {
        static_cast<void>(read_.read(out, size, done));
    }
    return done;
}

bool DataWriter::createFile(const std::string& name) {
    OsError error = write_.open(name, FileMode::CreateNew, FileAccess::Write, FileShare::ReadWrite);
    if (error.alreadyExists()) {
        // Somebody made a file of that name while the recording ran: his is kept, and ours is made.
        static_cast<void>(moveEarlierRecordingAside(name));
        error = write_.open(name, FileMode::CreateNew, FileAccess::Write, FileShare::ReadWrite);
    }
    if (error.ok()) {
        currentName_ = name;
        fileCount_.store(fileCount() + 1, std::memory_order_relaxed);
        const std::scoped_lock lock(startsMutex_);
        pieceStarts_.push_back(totalBytes());
    }
    openError_ = error.text();
    return error.ok();
}

bool DataWriter::beginFile(uint32_t number) {
    pieceFill_ = 0;
    fileBytes_ = 0;
    cacheFill_ = 0;
    createTime_.reset();
    description_->reset();
    setup_.facts.describe(*description_);
    if (!createFile(pieceName(setup_.fileName, number))) {
        return false;
    }
    if (const OsError error = reserve_.hold(parentFolder(currentName_), kReserveBytes); !error.ok()) {
        DEBUG_LOG("No space could be reserved for the description: %s", error.text().c_str());
    }
    return true;
}

bool DataWriter::endFile() {
    if (!failed_ && cacheFill_ > 0) {
        if (writeThrough(cache_.get(), cacheFill_)) {
            cacheFill_ = 0;
        }
    }
    if (const OsError error = write_.close(); !error.ok() && !failed_) {
        failed_ = true;
        writeError_ = error.text();
        DEBUG_LOG("!!!!! Close error in \"%s\": %s", currentName_.c_str(), writeError_.c_str());
    }
    flushedBytes_.store(totalBytes(), std::memory_order_release);
    reserve_.release();
    if (fileBytes_ < setup_.frameBytes()) {
        removeFile(currentName_);
    } else if (!describeFile()) {
        failed_ = true;
    }
    description_->reset();
    return !failed_;
}

bool DataWriter::describeFile() {
    SampleLayout layout = setup_.facts.layout;
    layout.analogBits = setBits(layout.analogMask, setup_.sampleWidth);
    layout.digitalBits = setBits(layout.digitalMask, setup_.sampleWidth);
    description_->setDataFormat(layout);
    description_->setDataCountPerChannel(fileBytes_ / setup_.frameBytes());
    if (recordBytes_ != 0) {
        // Records that did not reach the file, or that the size limit left out, have no event.
        description_->keepSynchroEvents((fileBytes_ + recordBytes_ - 1) / recordBytes_);
    }
    if (createTime_) {
        description_->setCreateTime(*createTime_);
    }
    if (description_->writeForDataFile(currentName_)) {
        return true;
    }
    DEBUG_LOG("!!!!! Description of \"%s\" not written, status = %d", currentName_.c_str(),
              static_cast<int>(description_->status()));
    if (writeError_.empty()) {
        writeError_ = "the description could not be written";
    }
    // Half a description would mislead its reader.
    removeFile(RecordDescription::fileNameFor(currentName_));
    return false;
}

}  // namespace tarno2
