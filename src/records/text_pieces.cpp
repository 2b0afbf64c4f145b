#include "records/text_pieces.h"

#include <utility>

#include "records/export_names.h"
#include "records/record_description.h"

namespace tarno2 {

TextPieces::TextPieces(const std::string& dataFile, std::string outputName, const NameGuard& guard,
                       std::string headings, uint64_t linesPerFile, ConversionProgress& progress)
    : dataFile_(dataFile),
      outputName_(std::move(outputName)),
      guard_(guard),
      headings_(std::move(headings)),
      linesPerFile_(linesPerFile),
      progress_(progress) {}

bool TextPieces::fail(ConversionResult& result, ConversionResult::Status status, OsError error) const {
    result.status = status;
    result.subject = outputName_ == kStandardOutput ? "standard output" : name_;
    result.error = error;
    return false;
}

bool TextPieces::open(ConversionResult& result) {
    name_ = outputPieceName(outputName_, pieces_);
    const bool named = outputName_ != kStandardOutput;
    if (isSameFile(name_, dataFile_) || isSameFile(name_, RecordDescription::fileNameFor(dataFile_)) ||
        (named && guard_ && guard_(name_))) {
        return fail(result, ConversionResult::OutputIsInput, {});
    }
    if (const OsError error = named ? file_.open(name_, FileMode::CreateAlways, FileAccess::Write, FileShare::None)
                                    : file_.openStandardOutput();
        !error.ok()) {
        return fail(result, ConversionResult::CannotCreate, error);
    }
    ++pieces_;
    linesInFile_ = 0;
    progress_.files.store(pieces_, std::memory_order_relaxed);
    return headings_.empty() || put(headings_.data(), headings_.size(), result);
}

bool TextPieces::put(const char* text, size_t bytes, ConversionResult& result) {
    size_t done = 0;
    const OsError error = file_.write(text, bytes, done);
    progress_.bytes.fetch_add(done, std::memory_order_relaxed);
    return error.ok() || fail(result, ConversionResult::CannotWrite, error);
}

bool TextPieces::write(const char* text, size_t bytes, size_t lines, ConversionResult& result) {
    if ((!file_.isOpen() && !open(result)) || !put(text, bytes, result)) {
        return false;
    }
    progress_.lines.fetch_add(lines, std::memory_order_relaxed);
    linesInFile_ += lines;
    return linesInFile_ != linesPerFile_ || close(result);
}

bool TextPieces::close(ConversionResult& result) {
    const OsError error = file_.close();
    return error.ok() || fail(result, ConversionResult::CannotWrite, error);
}

}  // namespace tarno2
