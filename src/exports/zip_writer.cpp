#include "exports/zip_writer.h"

#include <algorithm>
#include <limits>
#include <new>
#include <utility>
#include <zlib.h>

#include "exports/little_endian.h"

namespace tarno2 {

namespace {

constexpr uint32_t kLocalHeader = 0x04034B50;
constexpr uint32_t kListedFile = 0x02014B50;
constexpr uint32_t kEnd = 0x06054B50;
constexpr uint32_t kEnd64 = 0x06064B50;
constexpr uint32_t kEnd64Locator = 0x07064B50;
constexpr uint64_t kEnd64Bytes = 56;
constexpr uint16_t kDeflate = 8;
constexpr uint16_t kPlainVersion = 20;
constexpr uint16_t kVersion64 = 45;
constexpr uint16_t kExtra64 = 1;
constexpr uint32_t kFull32 = std::numeric_limits<uint32_t>::max();
constexpr uint16_t kFull16 = std::numeric_limits<uint16_t>::max();
/// 1980-01-01, the first day that there is: an archive does not depend on when it was made.
constexpr uint32_t kFirstDay = 1U << 21U | 1U << 16U;
constexpr int kWindowBits = 15;
constexpr int kMemoryLevel = 8;

/// Bare deflate, as archives have it. What doesn't become smaller stays as it is: false.
bool deflated(std::string_view contents, std::string& packed) {
    z_stream stream{};
    if (deflateInit2(&stream, Z_BEST_SPEED, Z_DEFLATED, -kWindowBits, kMemoryLevel, Z_DEFAULT_STRATEGY) != Z_OK) {
        throw std::bad_alloc();
    }
    packed.resize(contents.size());
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(contents.data()));
    stream.avail_in = static_cast<uInt>(contents.size());
    stream.next_out = reinterpret_cast<Bytef*>(packed.data());
    stream.avail_out = static_cast<uInt>(packed.size());
    const bool whole = deflate(&stream, Z_FINISH) == Z_STREAM_END;
    packed.resize(stream.total_out);
    deflateEnd(&stream);
    return whole;
}

/// What local header and list tell in the same way.
std::string commonFields(const ZipEntry& entry, uint16_t version) {
    return littleEndian(version, 2) + littleEndian(0, 2) + littleEndian(entry.deflated ? kDeflate : 0, 2) +
           littleEndian(kFirstDay, 4) + littleEndian(entry.checksum, 4) + littleEndian(entry.packed, 4) +
           littleEndian(entry.size, 4) + littleEndian(entry.name.size(), 2);
}

std::string listedFile(const ZipEntry& entry) {
    const bool far = entry.offset >= kFull32;
    const uint16_t version = far ? kVersion64 : kPlainVersion;
    const std::string extra =
        far ? littleEndian(kExtra64, 2) + littleEndian(sizeof(uint64_t), 2) + littleEndian(entry.offset, 8) : "";
    return littleEndian(kListedFile, 4) + littleEndian(version, 2) + commonFields(entry, version) +
           littleEndian(extra.size(), 2) + littleEndian(0, 2 + 2 + 2 + 4) +
           littleEndian(far ? kFull32 : entry.offset, 4) + entry.name + extra;
}

}  // namespace

std::string zipDirectory(std::span<const ZipEntry> entries, uint64_t begin) {
    std::string list;
    for (const ZipEntry& entry : entries) {
        list += listedFile(entry);
    }
    const uint64_t bytes = list.size();
    const uint64_t count = entries.size();
    if (begin >= kFull32 || bytes >= kFull32 || count >= kFull16) {
        list += littleEndian(kEnd64, 4) + littleEndian(kEnd64Bytes - 12, 8) + littleEndian(kVersion64, 2) +
                littleEndian(kVersion64, 2) + littleEndian(0, 4 + 4) + littleEndian(count, 8) + littleEndian(count, 8) +
                littleEndian(bytes, 8) + littleEndian(begin, 8);
        list +=
            littleEndian(kEnd64Locator, 4) + littleEndian(0, 4) + littleEndian(begin + bytes, 8) + littleEndian(1, 4);
    }
    const uint64_t told = std::min<uint64_t>(count, kFull16);
    return list + littleEndian(kEnd, 4) + littleEndian(0, 2 + 2) + littleEndian(told, 2) + littleEndian(told, 2) +
           littleEndian(std::min<uint64_t>(bytes, kFull32), 4) + littleEndian(std::min<uint64_t>(begin, kFull32), 4) +
           littleEndian(0, 2);
}

bool ZipWriter::add(ExportSink& sink, const std::string& name, std::string_view contents) {
    ZipEntry entry;
    entry.name = name;
    entry.offset = sink.position();
    entry.checksum = static_cast<uint32_t>(
        crc32(0, reinterpret_cast<const Bytef*>(contents.data()), static_cast<uInt>(contents.size())));
    entry.size = static_cast<uint32_t>(contents.size());
    entry.deflated = deflated(contents, packed_);
    const std::string_view stored = entry.deflated ? std::string_view(packed_) : contents;
    entry.packed = static_cast<uint32_t>(stored.size());
    const std::string header =
        littleEndian(kLocalHeader, 4) + commonFields(entry, kPlainVersion) + littleEndian(0, 2) + name;
    if (!sink.write(header) || !sink.write(stored)) {
        return false;
    }
    entries_.push_back(std::move(entry));
    end_ = sink.position();
    return true;
}

bool ZipWriter::finish(ExportSink& sink) {
    return sink.write(zipDirectory(entries_, end_));
}

bool ZipWriter::rescue(ExportSink& sink) {
    while (true) {
        const size_t whole = groups_.empty() ? 0 : groups_.back();
        if (whole < entries_.size()) {
            end_ = entries_[whole].offset;
            entries_.resize(whole);
        }
        if (!sink.cutBack(end_)) {
            return false;
        }
        if (finish(sink) || groups_.empty()) {
            return sink.error().ok();
        }
        groups_.pop_back();
    }
}

}  // namespace tarno2
