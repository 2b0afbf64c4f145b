#pragma once

#include <cstddef>
#include <cstdint>

#include "records/export_format.h"

namespace tarno2 {

// The texts of columns, written without a terminator and without a look at the user's locale. Each function returns the
// end of what it wrote; the caller sees to it that there is room.

/// The longest number that `writeFixed` makes.
inline constexpr size_t kLongestNumber = 1 + 309 + 1 + ExportFormat::kMaximumPrecision;
/// The longest first column.
inline constexpr size_t kLongestFirstColumn = kLongestNumber + 40;

/// printf's "%.*lf" with `decimal` for the point, exact to the last digit. Precision 0 to 9.
char* writeFixed(char* out, double value, int precision, char decimal);

/// The first column of line number `line` at the time of `seconds`.
char* writeFirstColumn(char* out, const ExportFormat& format, uint64_t line, double seconds);

}  // namespace tarno2
