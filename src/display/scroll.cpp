#include "display/scroll.h"

#include <algorithm>

namespace tarno2 {

namespace {

uint64_t forward(uint64_t position, uint64_t step, uint64_t framesWritten) {
    return position >= framesWritten ? framesWritten : position + std::min(step, framesWritten - position);
}

uint64_t back(uint64_t position, uint64_t step) {
    return position - std::min(step, position);
}

}  // namespace

uint64_t scrolledPosition(uint64_t position, int32_t key, uint64_t pageFrames, uint64_t framesWritten) {
    if (framesWritten == 0) {
        return position;
    }
    switch (static_cast<ScrollKey>(key)) {
        case ScrollKey::Right:
            return forward(position, pageFrames / 3, framesWritten);
        case ScrollKey::Left:
            return back(position, pageFrames / 3);
        case ScrollKey::PageDown:
            return forward(position, pageFrames, framesWritten);
        case ScrollKey::PageUp:
            return back(position, pageFrames);
    }
    return position;
}

}  // namespace tarno2
