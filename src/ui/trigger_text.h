#pragma once

#include <QString>
#include <functional>

#include "config/settings/recording_wish.h"

namespace tarno2 {

/// What the wish's synchronisation or analysis waits for, in words: "Trigger: channel 3 > 0.5 V", with the channels'
/// names and units where they have some. `labelOf` tells them by the channel's number.
[[nodiscard]] QString triggerText(const RecordingWish& wish, const std::function<ChannelLabel(int32_t)>& labelOf);

}  // namespace tarno2
