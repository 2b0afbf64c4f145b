#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace tarno2::bench {

/// Hands `bytes` bytes to a data file writer in blocks of `blockBytes` and closes it, with the making of file and
/// description. Returns the seconds; throws std::runtime_error on an error.
[[nodiscard]] double writeBlocks(const std::string& file, uint64_t bytes, size_t blockBytes);

}  // namespace tarno2::bench
