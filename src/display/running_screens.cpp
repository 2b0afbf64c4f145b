#include "display/running_screens.h"

#include <algorithm>

#include "display/screen_builder.h"

namespace tarno2 {

bool RunningScreens::build(uint64_t first, uint64_t end, size_t buckets, Screen& screen) {
    const uint64_t frames = end - std::min(first, end);
    const bool built = history_.build(first, end, buckets, screen);
    const bool whole = built && screen.runs.size() == 1 && screen.runs[0].firstFrame <= first;
    if ((whole && screen.bucketFrames <= 2 * bucketFramesFor(frames, buckets)) || !file_.readsWhole(frames)) {
        return built;
    }
    return file_.build(first, end, buckets, screen) || history_.build(first, end, buckets, screen);
}

}  // namespace tarno2
