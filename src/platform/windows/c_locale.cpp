#include "platform/c_locale.h"

#include <clocale>
#include <cstdint>
#include <cstring>
#include <locale.h>

namespace tarno2 {

CNumericLocale::CNumericLocale() {
    const char* name = std::setlocale(LC_NUMERIC, nullptr);
    if (name == nullptr || std::strcmp(name, "C") == 0) {
        return;
    }
    previousName_ = name;
    previous_ = reinterpret_cast<void*>(intptr_t{_configthreadlocale(_ENABLE_PER_THREAD_LOCALE)});
    std::setlocale(LC_NUMERIC, "C");
}

CNumericLocale::~CNumericLocale() {
    if (!previousName_.empty()) {
        std::setlocale(LC_NUMERIC, previousName_.c_str());
        _configthreadlocale(static_cast<int>(reinterpret_cast<intptr_t>(previous_)));
    }
}

}  // namespace tarno2
