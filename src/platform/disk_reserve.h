#pragma once

#include <cstdint>
#include <string>

#include "platform/file.h"

namespace tarno2 {

/// Space on a disk that is kept for something small which must still be written when the disk is full. It is held by a
/// nameless (on Windows hidden and self-deleting) file, so that a program that dies leaves nothing behind.
/// An object belongs to one thread at a time.
class DiskReserve {
public:
    /// Takes `bytes` in the volume of `folder`, in place of an earlier reserve. On failure nothing is held.
    OsError hold(const std::string& folder, uint64_t bytes);
    /// Gives the space back, to be used at once.
    void release();

private:
    OsError openNameless(const std::string& folder);

    File file_;
};

}  // namespace tarno2
