#include "records/stream_places.h"

#include <algorithm>

namespace tarno2 {

StreamPlaces::StreamPlaces(const Passport& passport) : all_(passport.synchronisation.mode == "off") {
    const uint64_t length = passport.recordFrames();
    size_t known = 0;
    uint64_t pieceBegin = 0;
    for (const PassportPiece& piece : passport.pieces) {
        for (uint64_t i = 0; i < piece.records && known < passport.triggers.size() && i * length < piece.frames; ++i) {
            const uint64_t trigger = passport.triggers[known++];
            const uint64_t begin = trigger - std::min<uint64_t>(trigger, passport.synchronisation.prehistory);
            records_.push_back({begin, pieceBegin + i * length, std::min(length, piece.frames - i * length)});
        }
        pieceBegin += piece.frames;
    }
    std::ranges::stable_sort(records_, {}, &Record::streamFrame);
}

std::optional<uint64_t> StreamPlaces::of(uint64_t streamFrame) const {
    if (all_) {
        return streamFrame;
    }
    const auto next = std::ranges::upper_bound(records_, streamFrame, {}, &Record::streamFrame);
    if (next == records_.begin()) {
        return std::nullopt;
    }
    const Record& record = *std::prev(next);
    const uint64_t into = streamFrame - record.streamFrame;
    return into < record.frames ? std::optional(record.fileFrame + into) : std::nullopt;
}

}  // namespace tarno2
