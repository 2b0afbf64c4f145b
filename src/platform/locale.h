#pragma once

#include <string>

namespace tarno2 {

/// The language of the user's locale as a two-letter code in lower case ("ru", "en"); empty when it names none (the
/// "C" locale). It is the calling thread's locale on Windows, elsewhere $LC_ALL, $LC_MESSAGES or $LANG, whichever of
/// them is set first.
[[nodiscard]] std::string userLanguage();

}  // namespace tarno2
