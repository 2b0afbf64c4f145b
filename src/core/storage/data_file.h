#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "platform/file.h"

namespace tarno2 {

/// A data file as its writer sees it. The program's one is the system's; a test may put one between that is slow, full
/// or broken. An object belongs to one thread at a time.
class DataFile {
public:
    DataFile() = default;
    virtual ~DataFile() = default;
    DataFile(const DataFile&) = delete;
    DataFile& operator=(const DataFile&) = delete;

    /// Makes the file; fails (alreadyExists) when the name is taken. Others may read it meanwhile; it is locked, so
    /// that nobody moves it aside or recovers it.
    virtual OsError create(const std::string& name) = 0;
    /// Appends; `done` gets how many bytes were taken, also on failure.
    virtual OsError write(const std::byte* data, size_t size, size_t& done) = 0;
    virtual OsError truncate(uint64_t size) = 0;
    /// Has the system put everything written on the disk.
    virtual OsError flush() = 0;
    virtual OsError close() = 0;
    /// Whether the name still leads to the file, which somebody may have removed or renamed. While it is open.
    [[nodiscard]] virtual Named named(const std::string& name) const = 0;
};

using DataFileMaker = std::function<std::unique_ptr<DataFile>()>;

/// A file of the operating system.
[[nodiscard]] std::unique_ptr<DataFile> makeSystemDataFile();

}  // namespace tarno2
