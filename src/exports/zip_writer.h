#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "exports/export_sink.h"

namespace tarno2 {

/// A file in a zip archive.
struct ZipEntry {
    std::string name;
    uint64_t offset = 0;  ///< of its header in the archive, bytes
    uint32_t checksum = 0;
    uint32_t packed = 0;  ///< bytes in the archive
    uint32_t size = 0;    ///< bytes of what it holds
    bool deflated = false;
};

/// The list that ends an archive: its entries begin at `begin`. Numbers for which the form of 32 bits is too small
/// stand in that of 64.
[[nodiscard]] std::string zipDirectory(std::span<const ZipEntry> entries, uint64_t begin);

/// Writes a zip archive from its begin to its end, so that it needs no file. Files in it are below 4 GiB each. Its list
/// stays in memory until the end, about 100 bytes a file, and is then put together in twice as much.
class ZipWriter {
public:
    /// Packs a whole file into the archive. False when the sink failed. Throws std::bad_alloc.
    bool add(ExportSink& sink, const std::string& name, std::string_view contents);
    /// Ends the archive.
    bool finish(ExportSink& sink);
    /// What was added so far belongs together: `rescue` leaves all of what was added up to here, or none of it.
    void endGroup() { groups_.push_back(entries_.size()); }
    /// Likewise after the sink has failed, behind the last group that is whole. Where there is no room for the end the
    /// newest groups give way to it.
    bool rescue(ExportSink& sink);

private:
    std::vector<ZipEntry> entries_;
    std::vector<size_t> groups_;  ///< entries up to the end of each
    std::string packed_;
    uint64_t end_ = 0;  ///< bytes up to the end of the last file
};

}  // namespace tarno2
