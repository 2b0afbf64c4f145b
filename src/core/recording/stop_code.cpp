#include "core/recording/stop_code.h"

#include "language/language_table.h"
#include "platform/c_locale.h"

namespace tarno2 {

std::string GetDataReport::text() const {
    return formatText(tarno2::text(TextId::GetDataReport).c_str(), mode, static_cast<int>(size),
                      static_cast<int>(offset), buffer, bufferStart, static_cast<int>(bufferSize), partNumber);
}

}  // namespace tarno2
