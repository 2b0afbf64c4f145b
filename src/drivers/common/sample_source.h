#pragma once

#include <cstddef>
#include <cstdint>

namespace tarno2::drivers {

/// Where the samples of one measurement come from. Used by the producer's thread alone once the measurement runs.
class SampleSource {
public:
    SampleSource() = default;
    virtual ~SampleSource() = default;
    SampleSource(const SampleSource&) = delete;
    SampleSource& operator=(const SampleSource&) = delete;

    /// Writes `frames` whole frames of sample words, beginning with frame `first` counted from the start, to
    /// `destination`. Consecutive calls ask for consecutive frames. Returns how many there were: less than asked for
    /// means that the source has come to its end.
    virtual uint64_t fill(uint64_t first, std::byte* destination, uint64_t frames) = 0;

    /// All frames are the same, so a ring that was filled once holds what comes.
    [[nodiscard]] virtual bool still() const { return false; }
};

}  // namespace tarno2::drivers
