#include "core/storage/piece_reader.h"

#include <algorithm>

#include "config/files/recording_name.h"

namespace tarno2 {

void PieceReader::pieceBegins(uint64_t offset) {
    const std::scoped_lock lock(mutex_);
    starts_.push_back(offset);
}

uint64_t PieceReader::read(uint64_t offset, std::byte* out, uint64_t size) {
    uint64_t start = 0;
    uint32_t number = 0;
    {
        const std::scoped_lock lock(mutex_);
        // Of pieces that begin at the same byte only the last one has it.
        const auto next = std::upper_bound(starts_.begin(), starts_.end(), offset);
        if (next == starts_.begin()) {
            return 0;
        }
        number = static_cast<uint32_t>(next - starts_.begin()) - 1;
        start = starts_[number];
        size = next == starts_.end() ? size : std::min(size, *next - offset);
    }
    if (!file_.isOpen() || number_ != number) {
        number_ = number;
        const std::string name = RecordingName(fileName_).piece(number);
        if (!file_.open(name, FileMode::OpenExisting, FileAccess::Read, FileShare::ReadWrite).ok()) {
            return 0;
        }
    }
    size_t done = 0;
    if (file_.seek(offset - start).ok()) {
        static_cast<void>(file_.read(out, size, done));
    }
    return done;
}

}  // namespace tarno2
