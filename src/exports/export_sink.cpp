#include "exports/export_sink.h"

#include "records/export_names.h"

namespace tarno2 {

OsError ExportSink::open(const std::string& name, bool replace) {
    isFile_ = name != kStandardOutput;
    return isFile_ ? file_.open(name, replace ? FileMode::CreateAlways : FileMode::CreateNew, FileAccess::Write,
                                FileShare::None)
                   : file_.openStandardOutput();
}

bool ExportSink::write(const void* data, size_t size) {
    if (error_.ok()) {
        size_t done = 0;
        error_ = file_.write(data, size, done);
        position_ += done;
    }
    return error_.ok();
}

bool ExportSink::patch(uint64_t offset, std::string_view bytes) {
    if (error_.ok() && isFile_) {
        size_t done = 0;
        error_ = file_.seek(offset);
        if (error_.ok()) {
            error_ = file_.write(bytes.data(), bytes.size(), done);
        }
        if (error_.ok()) {
            error_ = file_.seek(position_);
        }
    }
    return error_.ok();
}

bool ExportSink::cutBack(uint64_t size) {
    if (!isFile_) {
        return false;
    }
    error_ = file_.truncate(size);
    position_ = size;
    return error_.ok();
}

}  // namespace tarno2
