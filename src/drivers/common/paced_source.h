#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace tarno2::drivers {

/// What a read of a source brought.
struct SourceRead {
    enum class Kind {
        Frames,     ///< `frames` of them, at least one
        Nothing,    ///< none yet: ask again
        Lost,       ///< the board lost samples after what was read, `lost` of them; 0: nobody knows how many
        Ended,      ///< the source has come to its end
        Unplugged,  ///< the board is not there any more
        Failed      ///< the board failed
    };
    Kind kind = Kind::Nothing;
    size_t frames = 0;
    uint64_t lost = 0;
    std::string text;  ///< why it ended, in English

    [[nodiscard]] static SourceRead some(size_t frames) {
        return {frames > 0 ? Kind::Frames : Kind::Nothing, frames, 0, {}};
    }
    [[nodiscard]] static SourceRead end(Kind kind, std::string text) { return {kind, 0, 0, std::move(text)}; }
    [[nodiscard]] static SourceRead loss(uint64_t samples) { return {Kind::Lost, 0, samples, {}}; }
};

/// Samples that come at a pace of their own: from a card, a port, a connection. It is open when it exists and closed by
/// its destructor.
class PacedSource {
public:
    PacedSource() = default;
    virtual ~PacedSource() = default;
    PacedSource(const PacedSource&) = delete;
    PacedSource& operator=(const PacedSource&) = delete;

    /// Writes at most `frames` whole frames of sample words to `destination`, as soon as there are some; waits for them
    /// some 200 ms at most. What comes before an end is returned first, the end with the next call. One thread.
    virtual SourceRead read(std::byte* destination, size_t frames) = 0;
    /// Makes a read that waits return soon. From another thread; a read may follow all the same.
    virtual void cancel() noexcept = 0;
};

}  // namespace tarno2::drivers
