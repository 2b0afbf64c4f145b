#pragma once

#include <cstddef>
#include <string>

#include "records/key_value_file.h"

namespace tarno2::bench {

/// An autosettings text as users write it (160 channels, comments, continued lines), with other entries put before it
/// until it has at least `bytes` bytes.
[[nodiscard]] std::string settingsText(size_t bytes);

/// Looks up all that an unattended recording looks up; throws std::runtime_error when a value is not what
/// `settingsText` wrote.
void lookUpSettings(const KeyValueFile& file);

}  // namespace tarno2::bench
