#pragma once

#include <string_view>

#include "config/settings/recording_wish.h"
#include "records/key_value_file.h"

namespace tarno2 {

/// Whether it is a key that `readAutoSynchro` reads.
[[nodiscard]] bool isAutoSynchroKey(std::string_view key);

/// Reads the synchronisation keys, all of them optional: off when the file says nothing. A value that makes no sense is
/// logged in the console log and ends the load: false, with the key's name in the line. `normalised`: the text that
/// `file` holds, as `normaliseKeyValueText` gives it.
[[nodiscard]] bool readAutoSynchro(const KeyValueFile& file, std::string_view normalised, RecordingWish& wish);

}  // namespace tarno2
