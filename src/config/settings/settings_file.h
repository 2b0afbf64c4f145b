#pragma once

#include <string>

#include "config/settings/config_work.h"
#include "config/settings/program_settings.h"
#include "platform/os_error.h"

namespace tarno2 {

/// Reads `Tarno2.cfg` of the program's directory, which also opens the debug log when the file asks for it. A setting
/// that the file lacks, or whose value is invalid, stays as it is. A file that is there and can't be read is tried once
/// more after a fifth of a second. With an error (`notFound` when there is no file) nothing changes. Window thread
/// only.
[[nodiscard]] OsError LoadConfig(const std::string& programDirectory, ProgramSettings& settings);

struct SettingRow;
/// Which entries of the file are meant; null: all.
using SettingFilter = bool (*)(const SettingRow&);

/// Takes the settings from a text that is loaded already; as `LoadConfig` from there on.
void readSettings(LineConfigReader& file, ProgramSettings& settings, SettingFilter takes = nullptr);

/// Replaces a file of settings by one that holds these. False as of `WriteConfig`.
bool replaceSettings(const std::string& path, const ProgramSettings& settings, SettingFilter takes = nullptr);

/// Replaces `Tarno2.cfg` with one that holds the settings, with comments in the language chosen last. False when that
/// can't be done; then the old file stays as it was, also after a crash or on a full disk. `keepOld`: the old one was
/// never read, and is kept under `keptSettingsName`.
bool WriteConfig(const std::string& programDirectory, const ProgramSettings& settings, bool keepOld = false);

/// What settings that could not be read are kept as: `Tarno2_old<k>.cfg` with the first k that is free.
[[nodiscard]] std::string keptSettingsName(const std::string& programDirectory);

/// The name of the last recording as `Tarno2.cfg` holds it; empty when there is none.
[[nodiscard]] std::string savedFileName(const std::string& programDirectory);

}  // namespace tarno2
