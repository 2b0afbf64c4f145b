#pragma once

#include "config/settings/program_settings.h"

namespace tarno2 {

// The language of the program's texts. At start it is that of the user's locale, then what the settings file says; the
// user may change it at any time. Window thread only.

/// Russian for a Russian locale. Any other user gets English, so that nobody meets a window without texts.
[[nodiscard]] InterfaceLanguage languageFromLocale();
/// Chooses the language of all texts that are fetched from now on.
void selectLanguage(InterfaceLanguage language);
/// What the user's choice in the language menu does: logs and selects it.
void switchLanguage(InterfaceLanguage language);

}  // namespace tarno2
