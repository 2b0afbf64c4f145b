#include "bench/plain_write.h"

#include <algorithm>
#include <stdexcept>
#include <vector>

#include "bench/stopwatch.h"
#include "platform/file.h"

namespace tarno2::bench {

double plainWrite(const std::string& file, uint64_t bytes) {
    static const std::vector<std::byte> block(kPlainBlock, std::byte{0x5A});
    const Stopwatch watch;
    File output;
    OsError error = output.open(file, FileMode::CreateNew, FileAccess::Write, FileShare::ReadWrite);
    while (error.ok() && bytes > 0) {
        size_t done = 0;
        error = output.write(block.data(), static_cast<size_t>(std::min<uint64_t>(bytes, block.size())), done);
        bytes -= done;
    }
    if (error.ok()) {
        error = output.close();
    }
    if (!error.ok()) {
        throw std::runtime_error(file + ": " + error.text());
    }
    return watch.seconds();
}

}  // namespace tarno2::bench
