#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/os_error.h"

namespace tarno2 {

// `<base>.marks.csv`: what was marked while a recording ran. A line a mark, in the form of RFC 4180, UTF-8.
// docs/formats.md explains the columns.

enum class MarkSource : uint8_t { Operator, Line, Driver };
inline constexpr std::array<std::string_view, 3> kMarkSources = {"operator", "line", "driver"};

/// So many marks a recording can have, of which so many are the operator's whatever a line and the driver set, and so
/// many bytes the text of each.
inline constexpr uint64_t kMostMarks = 1'000'000;
inline constexpr uint64_t kOperatorsMarks = 10'000;
inline constexpr size_t kLongestMarkText = 1000;

struct RecordingMark {
    uint64_t number = 0;  ///< from 1
    uint64_t frame = 0;   ///< of the stream, as in the passport
    int64_t utc = 0;      ///< microseconds since 1970
    MarkSource source = MarkSource::Operator;
    std::string text;  ///< UTF-8

    /// The text, or its number where there is none.
    [[nodiscard]] std::string label() const;
    friend bool operator==(const RecordingMark&, const RecordingMark&) = default;
};

/// The line that the file begins with, with its end.
[[nodiscard]] std::string marksHeader();
/// One mark's line, with its end.
[[nodiscard]] std::string markLine(const RecordingMark& mark);
/// The whole text of the file.
[[nodiscard]] std::string marksText(std::span<const RecordingMark> marks);

/// What such a text tells.
struct MarkList {
    std::vector<RecordingMark> marks;  ///< by number; of several lines of one mark the last one counts
    std::string problem;               ///< what is wrong with it, in English; `marks` are those before that
};

/// Reads a text back. A last line that has no end was cut off while it was written, and is left out.
[[nodiscard]] MarkList readMarks(std::string_view text);

/// The marks as they stand on the disk.
struct FoundMarks : MarkList {
    bool there = false;  ///< there is a plain file of that name
    std::string text;
    OsError error;  ///< why it could not be read; `problem` has the words
};

/// Looks for marks in the file of that name. Throws std::bad_alloc.
[[nodiscard]] FoundMarks findMarks(const std::string& fileName);

/// The text of a mark in one line of at most `kLongestMarkText` bytes of UTF-8: control characters become blanks, what
/// is no UTF-8 becomes U+FFFD.
[[nodiscard]] std::string cleanMarkText(std::string_view text);

}  // namespace tarno2
