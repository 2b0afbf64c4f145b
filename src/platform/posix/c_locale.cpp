#include "platform/c_locale.h"

#include <clocale>
#include <locale.h>

namespace tarno2 {

CNumericLocale::CNumericLocale() {
    static const locale_t c = newlocale(LC_ALL_MASK, "C", nullptr);
    previous_ = uselocale(c);
}

CNumericLocale::~CNumericLocale() {
    uselocale(static_cast<locale_t>(previous_));
}

}  // namespace tarno2
