#include "platform/locale.h"

#include <algorithm>

#include "platform/paths.h"

namespace tarno2 {

std::string userLanguage() {
    for (const char* variable : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        const auto locale = environmentVariable(variable);
        if (!locale || locale->empty()) {
            continue;
        }
        std::string language = locale->substr(0, locale->find_first_of("_.@"));
        std::transform(language.begin(), language.end(), language.begin(),
                       [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
        return language.size() == 2 ? language : std::string();
    }
    return {};
}

}  // namespace tarno2
