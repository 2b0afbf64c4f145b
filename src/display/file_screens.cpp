#include "display/file_screens.h"

#include <algorithm>

#include "display/screen_builder.h"

namespace tarno2 {

namespace {

constexpr size_t kBlockBytes = size_t{256} << 10;
constexpr uint64_t kSampledBytes = uint64_t{16} << 20;  ///< of a screen that is only sampled

}  // namespace

FileScreens::FileScreens(FrameSource& frames, const SignalFormat& format)
    : frames_(frames),
      extremes_(Extremes::create(format)),
      block_(std::max(kBlockBytes / frames.frameBytes(), size_t{1}) * frames.frameBytes()) {}

bool FileScreens::build(uint64_t first, uint64_t end, size_t buckets, Screen& screen) {
    const uint64_t bucket = bucketFramesFor(end - std::min(first, end), buckets);
    ScreenBuilder builder(screen, *extremes_, bucket);
    end = std::min(end, frameCount());
    first = first / bucket * bucket;
    const bool whole = end <= first || readsWhole(end - first);
    const uint64_t sample = std::max<uint64_t>(kSampledBytes / std::max<size_t>(buckets, 1) / frames_.frameBytes(), 1);
    // Read in one go, or from each bucket's start as much as its share is.
    const uint64_t step = whole ? std::max<uint64_t>(end - std::min(first, end), 1) : bucket;
    const uint64_t share = whole ? step : std::min(sample, bucket);
    for (uint64_t begin = first; begin < end; begin += step) {
        const uint64_t stop = std::min(begin + share, end);
        for (uint64_t frame = begin; frame < stop;) {
            const uint64_t count = std::min<uint64_t>(stop - frame, block_.size() / frames_.frameBytes());
            const uint64_t read = frames_.read(frame, count, block_.data());
            builder.addFrames(frame, block_.data(), read);
            if (read < count) {
                return builder.finish();
            }
            frame += read;
        }
    }
    screen.provisional = !whole && share < bucket;
    return builder.finish();
}

}  // namespace tarno2
