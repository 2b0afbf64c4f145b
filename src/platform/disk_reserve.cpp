#include "platform/disk_reserve.h"

#include <algorithm>
#include <vector>

namespace tarno2 {

OsError DiskReserve::hold(const std::string& folder, uint64_t bytes) {
    OsError error = openNameless(folder.empty() ? "." : folder);
    // Really written: a file that was only lengthened may take no space.
    const std::vector<char> block(static_cast<size_t>(std::min<uint64_t>(bytes, 65536)), '\0');
    while (error.ok() && bytes > 0) {
        size_t done = 0;
        error = file_.write(block.data(), static_cast<size_t>(std::min<uint64_t>(bytes, block.size())), done);
        bytes -= done;
    }
    if (!error.ok()) {
        release();
    }
    return error;
}

void DiskReserve::release() {
    file_.close();
}

}  // namespace tarno2
