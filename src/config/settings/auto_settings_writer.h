#pragma once

#include <string>

#include "config/settings/recording_wish.h"
#include "platform/os_error.h"

namespace tarno2 {

/// The text of an autosettings file that asks for just this recording: `readAutoSettings` makes the same wish of it.
[[nodiscard]] std::string autoSettingsText(const RecordingWish& wish);

/// Replaces the file by one with that text. An error leaves the old one as it was.
[[nodiscard]] OsError writeAutoSettings(const std::string& path, const RecordingWish& wish);

}  // namespace tarno2
