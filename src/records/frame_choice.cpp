#include "records/frame_choice.h"

#include <algorithm>
#include <utility>

namespace tarno2 {

namespace {

/// The items of those columns; nothing of a list that does not hold them all.
template <class T>
std::vector<T> picked(const std::vector<T>& items, const std::vector<uint32_t>& columns) {
    std::vector<T> some;
    for (const uint32_t column : columns) {
        if (column >= items.size()) {
            return {};
        }
        some.push_back(items[column]);
    }
    return some;
}

}  // namespace

uint64_t FrameChoice::count(uint64_t frames) const {
    const uint64_t end = std::min(to, frames);
    return from < end ? (end - from - 1) / every + 1 : 0;
}

ConversionInputs chosenInputs(const ConversionInputs& inputs, const FrameChoice& choice) {
    ConversionInputs chosen = inputs;
    if (!choice.columns.empty()) {
        // Columns that nobody knows the name of are called by their place in the file.
        for (auto column = static_cast<int32_t>(chosen.labels.channels.size());
             column < static_cast<int32_t>(inputs.channelCount); ++column) {
            chosen.labels.channels.push_back({column, {}});
        }
        chosen.channelCount = static_cast<uint32_t>(choice.columns.size());
        chosen.ranges = picked(chosen.ranges, choice.columns);
        chosen.labels.channels = picked(chosen.labels.channels, choice.columns);
    }
    if (choice.from != 0 || choice.every != 1) {
        chosen.marks.clear();
        for (const auto& [frame, text] : inputs.marks) {
            if (frame >= choice.from && frame < choice.to) {
                std::string& all = chosen.marks[choice.indexOf(frame)];
                all += (all.empty() ? "" : "; ") + text;
            }
        }
    }
    return chosen;
}

}  // namespace tarno2
