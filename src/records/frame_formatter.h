#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <map>
#include <string>

#include "records/column_tables.h"
#include "records/conversion_inputs.h"
#include "records/export_format.h"
#include "records/frame_choice.h"

namespace tarno2 {

/// Makes lines out of recorded frames. Immutable once made: any number of threads may format with it.
class FrameFormatter {
public:
    /// Bytes behind the text of `format` that it may overwrite.
    static constexpr size_t kSlack = 64;

    /// The inputs must be complete (`missingInput`) and stay alive; `frames` is how many there are in all. Those of
    /// `choice` are told by their numbers in the file.
    FrameFormatter(const ExportFormat& format, const ConversionInputs& inputs, uint64_t frames,
                   const FrameChoice& choice = {});

    /// Bytes that no line is longer than.
    [[nodiscard]] size_t longestLine() const { return longestLine_; }

    struct Text {
        size_t lines = 0;
        size_t bytes = 0;
    };
    /// Formats up to `count` frames, the first of which is number `firstFrame` of those taken, and ends early after
    /// the frame during which `stop` was set. `out` has room for `count` longest lines and `kSlack`.
    Text format(const uint8_t* frames, size_t count, uint64_t firstFrame, char* out,
                const std::atomic<bool>& stop) const;

private:
    template <size_t Stride>
    Text formatFromTables(const uint8_t* frames, size_t count, uint64_t firstFrame, char* out,
                          const std::atomic<bool>& stop) const;
    Text formatFromValues(const uint8_t* frames, size_t count, uint64_t firstFrame, char* out,
                          const std::atomic<bool>& stop) const;
    [[nodiscard]] double seconds(uint64_t frameOfFile) const;
    char* writeFirst(char* to, uint64_t frame) const;
    [[nodiscard]] uint32_t port(uint32_t firstWord) const;
    [[nodiscard]] uint32_t word(const uint8_t* sample) const;
    [[nodiscard]] size_t calculateLongestLine(uint64_t frames) const;
    using Marks = std::map<uint64_t, std::string>;
    [[nodiscard]] static Marks markColumn(const ExportFormat& format, const Marks& marks);
    char* endLine(char* to, uint64_t frame, Marks::const_iterator& nextMark) const;

    const ConversionInputs& inputs_;
    const uint64_t from_;
    const uint64_t every_;
    ExportFormat format_;
    ColumnTables tables_;
    Marks marks_;                                                                ///< as they stand in their lines
    std::array<std::array<char, ColumnTables::kLongStride>, 2> digitalTexts_{};  ///< divider and "0" or "1"
    size_t longestLine_;
};

}  // namespace tarno2
