#include "display/shown_marks.h"

#include <algorithm>
#include <cmath>
#include <utility>

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

std::string ShownMark::label() const {
    return mark.text.empty() ? std::to_string(mark.number) : mark.text;
}

void ShownMarks::add(std::span<const RecordingMark> marks) {
    for (const RecordingMark& mark : marks) {
        const auto place =
            std::ranges::lower_bound(marks_, mark.number, {}, [](const ShownMark& shown) { return shown.mark.number; });
        if (place != marks_.end() && place->mark.number == mark.number) {
            place->mark.text = mark.text;
            continue;
        }
        // They come nearly in the order of their numbers.
        const auto at = static_cast<size_t>(place - marks_.begin());
        if (at < marks_.size()) {
            for (auto& [frame, index] : byFrame_) {
                index += index >= at ? 1 : 0;
            }
        }
        marks_.insert(place, {mark, places_.of(mark.frame)});
        if (marks_[at].frame) {
            byFrame_.emplace(*marks_[at].frame, at);
        }
    }
}

std::vector<MarkFlag> ShownMarks::flags(double low, double high, uint32_t columns) const {
    std::vector<MarkFlag> flags;
    const double width = (high - low) / std::max(columns, 1U);
    if (!(width > 0.0) || !(high > 0.0)) {
        return flags;
    }
    auto next = byFrame_.lower_bound(static_cast<uint64_t>(std::ceil(std::max(low, 0.0))));
    while (next != byFrame_.end() && static_cast<double>(next->first) <= high) {
        const ShownMark& first = marks_[next->second];
        const double end = low + (std::floor((static_cast<double>(next->first) - low) / width) + 1.0) * width;
        const auto after = byFrame_.lower_bound(static_cast<uint64_t>(std::ceil(std::min(end, high + 1.0))));
        const bool alone = std::next(next) == after || after == next;
        flags.push_back({next->first, first.mark.number, first.label() + (alone ? "" : " \xE2\x80\xA6")});
        next = after == next ? std::next(next) : after;
    }
    return flags;
}

}  // namespace tarno2
