#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "platform/file.h"
#include "records/text_conversion.h"

namespace tarno2 {

/// The output files of a conversion, one after the other.
class TextPieces {
public:
    /// A file has `linesPerFile` lines (0: there is but one). Counts in `progress`.
    /// Each begins with `headings`, which count as no line. The data file, the guard and the progress must outlive it.
    TextPieces(const std::string& dataFile, std::string outputName, const NameGuard& guard, std::string headings,
               uint64_t linesPerFile, ConversionProgress& progress);

    /// Begins the next file. Sets the result's failure and returns false when it can't be.
    bool open(ConversionResult& result);
    /// Writes lines that belong to one file, beginning it when the last one is full.
    bool write(const char* text, size_t bytes, size_t lines, ConversionResult& result);
    /// Ends the current file.
    bool close(ConversionResult& result);

private:
    bool put(const char* text, size_t bytes, ConversionResult& result);
    bool fail(ConversionResult& result, ConversionResult::Status status, OsError error) const;

    const std::string& dataFile_;
    const std::string outputName_;
    const NameGuard& guard_;
    const std::string headings_;
    const uint64_t linesPerFile_;
    ConversionProgress& progress_;
    File file_;
    std::string name_;
    uint32_t pieces_ = 0;
    uint64_t linesInFile_ = 0;
};

}  // namespace tarno2
