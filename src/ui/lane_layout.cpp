#include "ui/lane_layout.h"

#include <algorithm>

namespace tarno2 {

std::vector<LanePlan> LaneLayout::arrange(std::span<const LaneColumn> columns) const {
    std::vector<LanePlan> lanes;
    std::map<int32_t, size_t> placeOf;
    for (size_t i = 0; i < columns.size(); ++i) {
        if (!columns[i].visible) {
            continue;
        }
        const auto shared = sharedWith_.find(columns[i].key);
        const int32_t key = shared != sharedWith_.end() ? shared->second : columns[i].key;
        const auto [place, fresh] = placeOf.try_emplace(key, lanes.size());
        if (fresh) {
            lanes.push_back({key, {}});
        }
        lanes[place->second].columns.push_back(i);
    }
    return lanes;
}

void LaneLayout::share(int32_t key, const LanePlan& lane) {
    const auto present = sharedWith_.find(key);
    const int32_t now = present != sharedWith_.end() ? present->second : key;
    if (lane.digital() != (key < 0)) {
        return;
    }
    if (now != lane.key) {
        // Those that lay with it stay together.
        for (auto& [other, with] : sharedWith_) {
            with = with == key && now == key ? lane.key : with;
        }
        sharedWith_[key] = lane.key;
    } else if (now != key) {
        sharedWith_.erase(present);
    }
}

uint32_t LaneLayout::heightOf(int32_t lane) const {
    const auto found = lanes_.find(lane);
    return found != lanes_.end() ? found->second.height : 0;
}

std::optional<AxisRange> LaneLayout::chosenRange(int32_t lane) const {
    const auto found = lanes_.find(lane);
    return found != lanes_.end() ? found->second.chosen : std::nullopt;
}

void LaneLayout::takeRanges(const LaneLayout& earlier) {
    for (auto& [key, lane] : lanes_) {
        lane.chosen = earlier.chosenRange(key);
    }
}

AxisRange LaneLayout::automaticRange(int32_t lane, AxisRange visible, uint64_t nowMs) {
    return lanes_[lane].scale.update(visible, nowMs);
}

void LaneLayout::forgetRanges() {
    for (auto& [key, lane] : lanes_) {
        lane.chosen.reset();
        lane.scale.reset();
    }
}

bool LaneLayout::moving(int32_t lane) const {
    const auto found = lanes_.find(lane);
    return found != lanes_.end() && !found->second.chosen && found->second.scale.moving();
}

}  // namespace tarno2
