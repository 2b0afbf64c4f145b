#pragma once

#include <cstdint>
#include <string>

namespace tarno2 {

/// Watches that a recording leaves some of its disk free: 64 MiB or a sixteenth of the volume, whichever is less, and
/// at least what a second of the stream takes (as long as that is less than half of the volume). A full disk would harm
/// more than the recording. An object belongs to one thread at a time.
class DiskMargin {
public:
    /// `bytesPerSecond` 0: not known.
    void watch(const std::string& folder, double bytesPerSecond);
    /// The margin would not be kept once `waiting` more bytes are written. Asks the system once a second, and
    /// when what was free has been used up since; else it is false. `written`: so far. A volume that can't be examined
    /// has no margin.
    [[nodiscard]] bool reached(uint64_t written, uint64_t waiting);

private:
    std::string folder_;  ///< empty: nothing is watched
    double bytesPerSecond_ = 0.0;
    bool asked_ = false;
    uint64_t askedAt_ = 0;       ///< ms
    uint64_t askedWritten_ = 0;  ///< bytes written then
    uint64_t usable_ = 0;        ///< free then, without the margin
};

}  // namespace tarno2
