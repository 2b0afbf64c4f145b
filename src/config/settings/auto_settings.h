#pragma once

#include <optional>
#include <string>

#include "config/settings/recording_wish.h"

namespace tarno2 {

/// Reads an autosettings file for console mode (docs/formats.md tells its keys). Opens AutoLog.txt in
/// `programDirectory` first and writes every finding to it; opens the debug log AutoLog.dbg beside it when the file
/// asks for it. Both stay open. Nothing when the file can't be used; the log says why. `path`: nothing when none was
/// given. Window thread only.
[[nodiscard]] std::optional<RecordingWish> LoadAutoSettings(const std::optional<std::string>& path,
                                                            const std::string& programDirectory);

/// Takes the wishes from a text that is loaded already; as `LoadAutoSettings` from there on, without its summary.
/// Throws std::bad_alloc.
[[nodiscard]] std::optional<RecordingWish> readAutoSettings(const std::string& text);

}  // namespace tarno2
