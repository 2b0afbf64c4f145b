#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace tarno2 {

/// What is drawn of a range of frames, as raw words in the recording's own layout, ready for the converter.
///
/// Either every frame of the range (`bucketFrames` 1), or two rows for each bucket of neighbouring frames: the smallest
/// code of every channel with the lines that were 1 all the time, then the largest codes with the lines that were 1
/// at some time.
struct Screen {
    /// Rows without a gap between them.
    struct Run {
        uint64_t firstFrame = 0;  ///< of its first bucket
        size_t firstRow = 0;
        size_t rows = 0;
    };
    std::vector<std::byte> words;
    std::vector<Run> runs;      ///< in the order of time; one unless frames were lost to the view
    size_t rows = 0;            ///< in all runs
    uint64_t bucketFrames = 1;  ///< frames that a bucket stands for; the last one may be cut short by the range
    bool provisional = false;   ///< some buckets were only sampled: extremes may be missing until the overview is whole

    [[nodiscard]] bool pairs() const { return bucketFrames > 1; }
    [[nodiscard]] size_t rowsPerBucket() const { return pairs() ? 2 : 1; }
    /// Forgets the contents and keeps the memory.
    void clear();
};

/// Frames that can be looked at, of the running recording or of a finished one.
class ScreenSource {
public:
    ScreenSource() = default;
    virtual ~ScreenSource() = default;
    ScreenSource(const ScreenSource&) = delete;
    ScreenSource& operator=(const ScreenSource&) = delete;

    /// Frames so far: one past the newest.
    [[nodiscard]] virtual uint64_t frameCount() const = 0;
    /// Builds what is drawn of the frames from `first` up to, but not including, `end`, in about `buckets` buckets (one
    /// a pixel is right): every frame when there are no more than two a bucket. Bucket borders lie at multiples of
    /// `bucketFrames`, which depends on the length of the range alone as long as memory reaches, so that a picture that
    /// slides does not shimmer; the first bucket may begin before `first`. Frames that are not there, or not yet, are
    /// left out: ask for whole screens. False when nothing could be given.
    [[nodiscard]] virtual bool build(uint64_t first, uint64_t end, size_t buckets, Screen& screen) = 0;
};

}  // namespace tarno2
