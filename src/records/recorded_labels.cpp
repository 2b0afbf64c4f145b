#include "records/recorded_labels.h"

#include <algorithm>

namespace tarno2 {

namespace {

constexpr int32_t kMostLines = 32;

}  // namespace

std::string RecordedLabels::channelName(size_t column) const {
    if (column < channels.size() && !channels[column].label.name.empty()) {
        return channels[column].label.name;
    }
    return "Channel " + (column < channels.size() ? std::to_string(channels[column].number) : std::to_string(column));
}

std::string RecordedLabels::lineName(size_t line) const {
    return line < lines.size() && !lines[line].empty() ? lines[line] : "Line " + std::to_string(line);
}

const ChannelLabel& RecordedLabels::labelOf(size_t column) const {
    static const ChannelLabel kVolts;
    return column < channels.size() ? channels[column].label : kVolts;
}

RecordedLabels labelsOf(const Passport& passport) {
    RecordedLabels labels;
    for (const PassportChannel& channel : passport.channels) {
        ChannelLabel label{usableLabelText(channel.name), usableLabelText(channel.unit), 1.0, 0.0};
        if (label.unit == ChannelLabel().unitText()) {
            label.unit.clear();
        }
        if (isScale(channel.factor, channel.offset)) {
            label.factor = channel.factor;
            label.offset = channel.offset;
        }
        labels.channels.push_back({channel.number, std::move(label)});
    }
    if (passport.sample.backwardOrder) {
        std::ranges::reverse(labels.channels);
    }
    for (const PassportLine& line : passport.lines) {
        if (line.number < 0 || line.number >= kMostLines) {
            continue;
        }
        const auto number = static_cast<size_t>(line.number);
        labels.lines.resize(std::max(labels.lines.size(), number + 1));
        labels.lines[number] = usableLabelText(line.name);
    }
    return labels;
}

}  // namespace tarno2
