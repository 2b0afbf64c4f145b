#include "display/shown_marks.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace tarno2 {

std::optional<uint64_t> ShownMarks::placeOf(uint64_t streamFrame) const {
    const auto frame = places_.of(streamFrame);
    return frame && *frame >= firstFrame_ ? std::optional(*frame - firstFrame_) : std::nullopt;
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
        marks_.insert(place, {mark, placeOf(mark.frame)});
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
        flags.push_back({next->first, first.mark.number, first.mark.label() + (alone ? "" : " \xE2\x80\xA6")});
        next = after == next ? std::next(next) : after;
    }
    return flags;
}

}  // namespace tarno2
