#pragma once

#include <string>

namespace tarno2 {

/// The user's documents folder: the registry's "Personal", else $XDG_DOCUMENTS_DIR, else what the desktop has written
/// of it into `user-dirs.dirs` of the configuration (it has the name of the user's language there), else ~/Documents.
/// Empty when there is none. Any thread.
[[nodiscard]] std::string documentsFolder();

}  // namespace tarno2
