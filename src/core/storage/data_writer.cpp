#include "core/storage/data_writer.h"

#include <algorithm>
#include <utility>

#include "config/logs/debug_log.h"
#include "core/storage/recording_place.h"

namespace tarno2 {

namespace {

constexpr size_t kFewestCaches = CachePool::kReadyAtOnce;

}  // namespace

DataWriter::DataWriter() : disk_(pool_) {
    ready_ = pool_.reserve(kFewestCaches) == kFewestCaches;
}

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
    const size_t caches = std::max<uint64_t>((setup_.bufferBytes + kCacheBytes - 1) / kCacheBytes, kFewestCaches);
    // What the other half is for: the view, what waits in the system's own memory, and whoever else works here.
    const size_t affordable = std::max<uint64_t>(setup_.memoryRoom() / 2 / kCacheBytes, kFewestCaches);
    if (pool_.reserve(std::min(caches, affordable)) < kFewestCaches) {
        return -1;
    }
    if (bufferBytes() < caches * kCacheBytes) {
        DEBUG_LOG("!!!!! The write buffer got %llu bytes of %llu", static_cast<unsigned long long>(bufferBytes()),
                  static_cast<unsigned long long>(caches * kCacheBytes));
    }
    PlaceFindings findings = preparePlace(setup_, journal_);
    movedAside_ = std::move(findings.movedAside);
    if (!findings.problem.empty()) {
        openError_ = std::move(findings.problem);
        return findings.nameTaken ? -6 : -5;
    }
    open_ = disk_.start(setup_, description, journal_);
    openError_ = disk_.problem();
    if (!open_ && openError_.empty()) {
        openError_ = "The system has no thread or memory left for the disk.";
    }
    fileCount_.store(open_ ? 1 : 0, std::memory_order_relaxed);
    return open_ ? 0 : -5;
}

void DataWriter::setCreateTime(const LocalTime& time) {
    disk_.setCreateTime(time);
}

uint64_t DataWriter::millisecondsOf(uint64_t bytes) const {
    if (!(setup_.bytesPerSecond > 0.0)) {
        return 0;
    }
    return static_cast<uint64_t>(std::min(static_cast<double>(bytes) * 1000.0 / setup_.bytesPerSecond, 1e12));
}

int32_t DataWriter::Write(const std::byte* data, uint64_t size, uint64_t unitBytes,
                          std::span<const SynchroEvent> events) {
    if (!open_ || disk_.failed()) {
        return -1;
    }
    bool limitReached = false;
    const bool largerThanCache = size >= kCacheBytes;
    if (setup_.limitBytes != 0 && totalBytes() + size > setup_.limitBytes) {
        size = setup_.limitBytes - totalBytes();
        limitReached = true;
    }
    const uint64_t unit = std::max<uint64_t>(unitBytes, 1);
    while (size > 0) {
        uint64_t part = size;
        if (setup_.pieceBytes != 0) {
            nextPieceFor(std::min(unit, size), size);
            // A piece holds whole units; a unit larger than a piece has a piece of its own.
            const uint64_t room = setup_.pieceBytes > pieceFill_ ? setup_.pieceBytes - pieceFill_ : 0;
            part = std::min(size, std::max(room / unit, uint64_t{1}) * unit);
        }
        events = enterEvents(events, (part + unit - 1) / unit, unit);
        if (!put(data, part, limitReached && part == size && !largerThanCache)) {
            return -1;
        }
        data += part;
        size -= part;
    }
    const bool full = setup_.limitBytes != 0 && totalBytes() >= setup_.limitBytes;
    return limitReached || full || diskNearlyFull() ? 1 : 0;
}

// Returns the events that are left.
std::span<const SynchroEvent> DataWriter::enterEvents(std::span<const SynchroEvent> events, uint64_t records,
                                                      uint64_t unit) {
    const auto entered = static_cast<size_t>(std::min<uint64_t>(records, events.size()));
    for (const SynchroEvent& event : events.first(entered)) {
        disk_.addEvent(event, unit);
    }
    return events.subspan(entered);
}

// `bytesLeft`: what is still to be written of a block that ends about now, so that its first sample came that much
// earlier.
void DataWriter::nextPieceFor(uint64_t unitBytes, uint64_t bytesLeft) {
    if (pieceFill_ == 0 || pieceFill_ + unitBytes <= setup_.pieceBytes) {
        return;
    }
    pieceFill_ = 0;
    cacheFill_ = 0;
    disk_.beginPiece();
    disk_.setCreateTime(localTime(millisecondsOf(bytesLeft)));
    fileCount_.fetch_add(1, std::memory_order_relaxed);
}

// Blocks count as gathered in a cache that is written when one would fill it, and then together with it. `leaveOut`: a
// block that the size limit cut short is left out when it would fill the cache, so that the recording ends on what was
// gathered. A block that is larger than the cache gathers nothing, and is written as far as the limit goes.
bool DataWriter::put(const std::byte* data, uint64_t size, bool leaveOut) {
    const bool fills = cacheFill_ + size >= kCacheBytes;
    cacheFill_ = fills ? 0 : cacheFill_ + size;
    if (fills && leaveOut) {
        return true;
    }
    pieceFill_ += size;
    return pool_.append(data, size);
}

bool DataWriter::Close() {
    open_ = false;
    disk_.close();
    return !disk_.failed();
}

uint64_t DataWriter::readBack(uint64_t offset, std::byte* out, uint64_t size) {
    uint64_t done = 0;
    while (done < size) {
        uint64_t part = pool_.look(offset + done, out + done, size - done);
        if (part == 0) {
            const uint64_t onDisk = pool_.emptied();
            const uint64_t left = offset + done < onDisk ? onDisk - offset - done : 0;
            part = left == 0 ? 0 : disk_.reader().read(offset + done, out + done, std::min(size - done, left));
        }
        if (part == 0) {
            break;
        }
        done += part;
    }
    return done;
}

uint64_t DataWriter::waitingBytes() const {
    const uint64_t taken = pool_.emptied();
    return totalBytes() - taken;
}

}  // namespace tarno2
