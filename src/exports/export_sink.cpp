#include "exports/export_sink.h"

#include "records/export_names.h"

namespace tarno2 {

OsError ExportSink::open(const std::string& name, bool replace) {
    isFile_ = name != kStandardOutput;
    if (!isFile_) {
        return file_.openStandardOutput();
    }
    const OsError error = file_.open(name, FileMode::CreateNew, FileAccess::Write, FileShare::None);
    isNew_ = error.ok();
    return replace && error.alreadyExists()
               ? file_.open(name, FileMode::CreateAlways, FileAccess::Write, FileShare::None)
               : error;
}

bool ExportSink::keep(const OsError& error) {
    error_ = error;
    if (firstError_.ok()) {
        firstError_ = error;
    }
    return error_.ok();
}

bool ExportSink::write(const void* data, size_t size) {
    if (!error_.ok()) {
        return false;
    }
    size_t done = 0;
    const OsError error = file_.write(data, size, done);
    position_ += done;
    return keep(error);
}

bool ExportSink::patch(uint64_t offset, std::string_view bytes) {
    if (!error_.ok() || !isFile_) {
        return error_.ok();
    }
    size_t done = 0;
    return keep(file_.seek(offset)) && keep(file_.write(bytes.data(), bytes.size(), done)) &&
           keep(file_.seek(position_));
}

bool ExportSink::cutBack(uint64_t size) {
    if (!isFile_) {
        return false;
    }
    position_ = size;
    return keep(file_.truncate(size));
}

}  // namespace tarno2
