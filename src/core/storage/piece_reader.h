#pragma once

#include <cstddef>
#include <cstdint>
#include <mutex>
#include <string>
#include <vector>

#include "platform/file.h"

namespace tarno2 {

/// Reads a recording that is being written back from its files, as one stream of bytes from the first sample on. The
/// thread that writes the files says where each begins; another one reads.
class PieceReader {
public:
    /// `fileName`: of the first piece.
    void open(const std::string& fileName) { fileName_ = fileName; }
    /// The next piece begins with this byte of the stream. Writing thread.
    void pieceBegins(uint64_t offset);
    /// Copies bytes that were written, as far as they are in the one file. 0: there are none. Reading thread.
    [[nodiscard]] uint64_t read(uint64_t offset, std::byte* out, uint64_t size);

private:
    std::string fileName_;
    std::mutex mutex_;
    std::vector<uint64_t> starts_;
    // Of the reading thread.
    File file_;
    uint32_t number_ = 0;  ///< of the piece that is open
};

}  // namespace tarno2
