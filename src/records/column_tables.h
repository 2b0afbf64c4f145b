#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "records/conversion_inputs.h"
#include "records/export_format.h"

namespace tarno2 {

/// The text of every code of every channel, divider included, each made once. Channels of one range share a table.
///
/// An entry has `stride` bytes: the text, then whatever follows, and its length in the last byte. Immutable once made;
/// any number of threads may read it.
class ColumnTables {
public:
    /// All tables of a conversion together take no more than this, bytes.
    static constexpr size_t kMemoryLimit = size_t{40} << 20;
    static constexpr size_t kShortStride = 16;
    static constexpr size_t kLongStride = 32;

    /// Makes the tables, or none when the samples have 32 bits, the texts are too long or the memory limit is too low.
    ColumnTables(const ExportFormat& format, const ConversionInputs& inputs);

    /// `kShortStride` or `kLongStride`; 0 when there are no tables.
    [[nodiscard]] size_t stride() const { return stride_; }
    /// The first entry of each channel; entries are in the order of the codes' bits.
    [[nodiscard]] const std::vector<const char*>& channels() const { return channels_; }
    /// Bytes of the longest text of a column, from the limits of the codes; also when there are no tables.
    [[nodiscard]] size_t longestColumn(size_t channel) const { return longest_[channel]; }

private:
    void shareTables(const ExportFormat& format, const ConversionInputs& inputs, size_t entries);

    size_t stride_ = 0;
    std::vector<std::vector<char>> tables_;
    std::vector<const char*> channels_;
    std::vector<size_t> longest_;
};

/// The value of a column: the code itself, its volts, or those in the unit of the channel.
[[nodiscard]] double columnValue(const ExportFormat& format, const ConversionInputs& inputs, size_t channel,
                                 uint32_t word);

}  // namespace tarno2
