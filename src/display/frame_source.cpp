#include "display/frame_source.h"

namespace tarno2 {

uint64_t RunningRecording::read(uint64_t firstFrame, uint64_t count, std::byte* out) {
    const std::lock_guard lock(mutex_);
    return writer_.readBack(firstFrame * frameBytes_, out, count * frameBytes_) / frameBytes_;
}

}  // namespace tarno2
