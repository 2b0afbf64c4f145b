#include "bench/plain_write.h"

#include <algorithm>
#include <cstring>
#include <semaphore>
#include <stdexcept>
#include <thread>
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

double copyAndWrite(const std::string& file, uint64_t bytes) {
    constexpr size_t kBlocks = 4;
    static const std::vector<std::byte> source(2 * kPlainBlock, std::byte{0x5A});
    static std::vector<std::byte> blocks(kBlocks * kPlainBlock);
    std::counting_semaphore<> filled(0);
    std::counting_semaphore<> empty(kBlocks);
    OsError error;
    const uint64_t count = (bytes + kPlainBlock - 1) / kPlainBlock;
    const auto sizeOf = [bytes](uint64_t block) {
        return static_cast<size_t>(std::min<uint64_t>(bytes - block * kPlainBlock, kPlainBlock));
    };
    const auto placeOf = [](uint64_t block) { return blocks.data() + block % kBlocks * kPlainBlock; };
    const Stopwatch watch;
    std::thread writer([&] {
        File output;
        error = output.open(file, FileMode::CreateNew, FileAccess::Write, FileShare::ReadWrite);
        for (uint64_t block = 0; block < count; ++block) {
            filled.acquire();
            size_t done = 0;
            error = error.ok() ? output.write(placeOf(block), sizeOf(block), done) : error;
            empty.release();
        }
        error = error.ok() ? output.close() : error;
    });
    for (uint64_t block = 0; block < count; ++block) {
        empty.acquire();
        std::memcpy(placeOf(block), source.data() + block % 2 * kPlainBlock, sizeOf(block));
        filled.release();
    }
    writer.join();
    const double seconds = watch.seconds();
    if (!error.ok()) {
        throw std::runtime_error(file + ": " + error.text());
    }
    return seconds;
}

}  // namespace tarno2::bench
