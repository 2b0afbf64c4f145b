#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace tarno2::bench {

inline constexpr size_t kPlainBlock = 0x300000;

/// The measure of all recording: makes the file, writes `bytes` in blocks of `kPlainBlock` (the last one shorter) from
/// one buffer that is in memory already, and closes it. Returns the seconds; throws std::runtime_error on an error.
[[nodiscard]] double plainWrite(const std::string& file, uint64_t bytes);

/// What two threads can reach at best: one copies the bytes from a buffer into a few blocks in turn, the other writes
/// them as they come. Seconds and errors likewise.
[[nodiscard]] double copyAndWrite(const std::string& file, uint64_t bytes);

}  // namespace tarno2::bench
