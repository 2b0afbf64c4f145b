// Which curves are seen in the signal view, and in which lanes.

#include <algorithm>
#include <utility>

#include "ui/show_form.h"

namespace tarno2 {

namespace {

T_ShowForm* formOf(void* context) {
    return static_cast<T_ShowForm*>(context);
}

}  // namespace

void T_ShowForm::listenToLanes(SCOPERAEvents& events) {
    events.m_pLaneRangeChanged = [](void* context, uint32_t lane, double lower, double upper, int32_t cause) {
        formOf(context)->leavePart(cause);
        formOf(context)->drawing_->setLaneRange(lane, {lower, upper});
        formOf(context)->userChanged();
    };
    events.m_pLaneResized = [](void* context, uint32_t lane, uint32_t height) {
        formOf(context)->drawing_->setLaneHeight(lane, height);
    };
    events.m_pHeadClicked = [](void* context, uint32_t column) {
        if (const auto key = formOf(context)->drawing_->keyOf(column); key && *key >= 0) {
            formOf(context)->markChannel(*key);
            emit formOf(context)->channelMarked(*key);
        }
    };
    events.m_pHeadDropped = [](void* context, uint32_t column, uint32_t lane) {
        formOf(context)->drawing_->dropColumn(column, lane);
        formOf(context)->userChanged();
    };
    events.m_pLevelMoved = [](void* context, uint64_t identity, double y, int32_t done) {
        formOf(context)->levelMoved(identity, y, done != 0);
    };
    events.m_pSoloWanted = [](void* context, uint32_t column) { formOf(context)->solo(column); };
}

void T_ShowForm::LanesClick(bool lanes) {
    settings_.viewLanes = lanes ? 1 : 0;
    forgetZoomY();
    userChanged();
}

void T_ShowForm::CommonScaleClick(bool common) {
    settings_.viewCommonScale = common;
    userChanged();
}

void T_ShowForm::ShowAllClick() {
    if (drawing_) {
        setHidden({});
    }
}

void T_ShowForm::markChannel(int channel) {
    if (drawing_) {
        drawing_->setMarked(channel);
        userChanged();
    }
}

std::set<int32_t> T_ShowForm::hiddenChannels() const {
    std::set<int32_t> hidden;
    for (size_t i = 0; i < settings_.channels.size(); ++i) {
        if (!settings_.channels[i].shown) {
            hidden.insert(static_cast<int32_t>(i));
        }
    }
    return hidden;
}

// A recording that was opened has channels of its own: what is hidden there is forgotten with it.
void T_ShowForm::shownChannelsChanged() {
    if (!drawing_ || file_) {
        return;
    }
    const std::set<int32_t> before = drawing_->hidden();
    std::set<int32_t> hidden = hiddenChannels();
    hidden.insert(before.begin(), before.lower_bound(0));  // digital lines, which the settings don't know
    if (hidden != before) {
        beforeSolo_.reset();
        drawing_->setHidden(std::move(hidden));
        userChanged();
    }
}

void T_ShowForm::switchColumn(uint32_t column, bool visible) {
    const auto key = drawing_->keyOf(column);
    if (!key) {
        return;
    }
    std::set<int32_t> hidden = drawing_->hidden();
    if (visible) {
        hidden.erase(*key);
    } else {
        hidden.insert(*key);
    }
    beforeSolo_.reset();
    setHidden(hidden);
}

// All of the settings first: who is told asks for them.
void T_ShowForm::setHidden(const std::set<int32_t>& hidden) {
    drawing_->setHidden(hidden);
    std::vector<int> changed;
    for (size_t i = 0; i < settings_.channels.size() && !file_; ++i) {
        const bool shown = !hidden.contains(static_cast<int32_t>(i));
        if (std::exchange(settings_.channels[i].shown, shown) != shown) {
            changed.push_back(static_cast<int>(i));
        }
    }
    for (const int channel : changed) {
        emit channelShown(channel, !hidden.contains(channel));
    }
    userChanged();
}

// A second time shows again what was there before.
void T_ShowForm::solo(uint32_t column) {
    const auto alone = drawing_->keyOf(column);
    if (!alone) {
        return;
    }
    std::set<int32_t> others;
    for (const SignalDrawing::Column& each : drawing_->columns()) {
        others.insert(each.key);
    }
    others.erase(*alone);
    const bool already = std::ranges::includes(drawing_->hidden(), others) && !drawing_->hidden().contains(*alone);
    const std::set<int32_t> before = std::exchange(beforeSolo_, std::nullopt).value_or(std::set<int32_t>());
    std::set<int32_t> hidden = drawing_->hidden();
    if (already) {
        setHidden(before);
        return;
    }
    others.insert(hidden.begin(), hidden.end());
    others.erase(*alone);
    setHidden(others);
    beforeSolo_ = std::move(hidden);
}

}  // namespace tarno2
