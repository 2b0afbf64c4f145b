#include "config/logs/program_version.h"

#include "config/logs/version.h"
#include "platform/program_version.h"

namespace tarno2 {

const std::string& versionText() {
    static const std::string text = executableVersion().value_or(kVersionText);
    return text;
}

}  // namespace tarno2
