#pragma once

#include "config/settings/auto_settings.h"
#include "config/settings/program_settings.h"
#include "core/recording/recording_shell.h"

namespace tarno2 {

/// What an autosettings file asks of the recording.
[[nodiscard]] RecordingSettings recordingSettings(const AutoSettings& wanted);

/// The same wishes for the controls of a window to show; the order of the channels does not show there.
void showAutoSettings(const AutoSettings& wanted, ProgramSettings& shown);

}  // namespace tarno2
