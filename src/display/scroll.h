#pragma once

#include <cstdint>

namespace tarno2 {

/// Keys that scroll; the numbers are the key codes of the scroll bar's handler.
enum class ScrollKey : int32_t { PageUp = 33, PageDown = 34, Left = 37, Right = 39 };

/// The position after a key: arrows move by a third of a page, page keys by a page (the frames on one screen). Other
/// keys, and all while no frame was written, leave it where it is.
[[nodiscard]] uint64_t scrolledPosition(uint64_t position, int32_t key, uint64_t pageFrames, uint64_t framesWritten);

}  // namespace tarno2
