#pragma once

#include <cstdint>
#include <string>

namespace tarno2 {

/// What the first column of an exported line holds.
enum class FirstColumn : int32_t {
    Absent = 0,
    Samples = 1,  ///< number of the line, from 0
    Seconds = 2,
    Clock = 3  ///< hours:minutes:seconds:milliseconds
};

/// How recorded frames become lines of text.
struct ExportFormat {
    static constexpr int kMaximumPrecision = 9;
    static constexpr uint32_t kMaximumDividerCount = 99;
    /// A smaller limit of lines, other than none, counts as this one.
    static constexpr uint64_t kLeastLineLimit = 100;

    FirstColumn firstColumn = FirstColumn::Absent;
    bool volts = false;        ///< false: codes
    bool units = false;        ///< volts, each channel's in its unit
    bool headings = false;     ///< each output file begins with a line of headings
    bool marks = false;        ///< a last column holds the marks
    int timePrecision = 6;     ///< decimals of the seconds; above 9 counts as 9
    int voltagePrecision = 6;  ///< decimals of the values, codes too; above 9 counts as 9
    char decimal = '.';
    std::string divider = "\t";  ///< stands before every value, so a line without a first column begins with it
    uint64_t maximumLines = 0;   ///< lines in an output file; 0, and what is 2^32 or more, for all

    [[nodiscard]] bool hasTime() const {
        return firstColumn == FirstColumn::Seconds || firstColumn == FirstColumn::Clock;
    }
};

}  // namespace tarno2
