#include "records/quoted_field.h"

namespace tarno2 {

std::string quotedField(const std::string& field, const std::string& special) {
    if (field.find_first_of(special) == std::string::npos) {
        return field;
    }
    std::string quoted = "\"";
    for (const char c : field) {
        quoted.append(c == '"' ? 2 : 1, c);
    }
    return quoted + '"';
}

}  // namespace tarno2
