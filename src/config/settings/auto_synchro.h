#pragma once

#include <string_view>

#include "records/key_value_file.h"
#include "sync/synchro_settings.h"

namespace tarno2 {

/// What an autosettings file says of synchronisation; off when it says nothing. Channels are numbered.
struct AutoSynchro {
    SynchroSettings settings;
    SynchroSizes sizes;
    bool useDigitalPort = false;
};

/// Whether it is a key that `readAutoSynchro` reads.
[[nodiscard]] bool isAutoSynchroKey(std::string_view key);

/// Reads the synchronisation keys, all of them optional. A value that makes no sense is logged in the console log and
/// ends the load: false, with the key's name in the line. `normalised`: the text that `file` holds, as
/// `normaliseKeyValueText` gives it.
[[nodiscard]] bool readAutoSynchro(const KeyValueFile& file, std::string_view normalised, AutoSynchro& synchro);

}  // namespace tarno2
