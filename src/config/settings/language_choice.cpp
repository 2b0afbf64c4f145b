#include "config/settings/language_choice.h"

#include "config/logs/debug_log.h"
#include "language/language_table.h"
#include "platform/locale.h"

namespace tarno2 {

InterfaceLanguage languageFromLocale() {
    return userLanguage() == "ru" ? InterfaceLanguage::Russian : InterfaceLanguage::English;
}

void selectLanguage(InterfaceLanguage language) {
    languageTable().select(language == InterfaceLanguage::Russian ? kLanguageRussian : kLanguageEnglish);
}

void switchLanguage(InterfaceLanguage language) {
    DEBUG_LOG(language == InterfaceLanguage::Russian ? "Russian" : "English");
    selectLanguage(language);
}

}  // namespace tarno2
