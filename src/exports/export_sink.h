#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "platform/file.h"

namespace tarno2 {

/// Where an exporter writes: a file, or the standard output, which takes bytes in their order alone. After the first
/// error nothing more is written until `cutBack`. One thread at a time.
class ExportSink {
public:
    /// `name` may be `kStandardOutput`. A file that is there already is only replaced with `replace`.
    OsError open(const std::string& name, bool replace);
    OsError close() { return file_.close(); }

    bool write(const void* data, size_t size);
    bool write(std::string_view text) { return write(text.data(), text.size()); }
    /// Changes bytes that were written, in a file; the standard output stays as it is, which is no error.
    bool patch(uint64_t offset, std::string_view bytes);
    /// Forgets everything behind the first `size` bytes, and the error. False on the standard output, or with an error.
    bool cutBack(uint64_t size);

    [[nodiscard]] uint64_t position() const { return position_; }  ///< bytes written
    /// The file was not there before.
    [[nodiscard]] bool isNew() const { return isNew_; }
    [[nodiscard]] bool isFile() const { return isFile_; }
    [[nodiscard]] const OsError& error() const { return error_; }
    /// The first error that there was, whatever was cut back since.
    [[nodiscard]] const OsError& firstError() const { return firstError_; }

private:
    bool keep(const OsError& error);

    File file_;
    bool isFile_ = true;
    bool isNew_ = false;
    uint64_t position_ = 0;
    OsError error_;
    OsError firstError_;
};

}  // namespace tarno2
