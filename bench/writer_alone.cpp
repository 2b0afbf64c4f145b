#include "bench/writer_alone.h"

#include <algorithm>
#include <stdexcept>
#include <vector>

#include "bench/stopwatch.h"
#include "core/storage/data_writer.h"

namespace tarno2::bench {

double writeBlocks(const std::string& file, uint64_t bytes, size_t blockBytes) {
    const std::vector<std::byte> block(blockBytes, std::byte{0x5A});
    RecordDescription description;
    WriterSetup setup;
    setup.fileName = file;
    const uint64_t frame = setup.frameBytes();

    const Stopwatch watch;
    DataWriter writer;
    bool written = writer.ready() && writer.open(setup, description) == 0;
    for (uint64_t done = 0; written && done < bytes; done += blockBytes) {
        written = writer.Write(block.data(), std::min<uint64_t>(blockBytes, bytes - done), frame) == 0;
    }
    if (!writer.Close() || !written) {
        throw std::runtime_error(file + ": " + writer.openError() + writer.writeError());
    }
    return watch.seconds();
}

}  // namespace tarno2::bench
