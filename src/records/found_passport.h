#pragma once

#include <optional>
#include <string>

#include "platform/os_error.h"
#include "records/passport.h"

namespace tarno2 {

/// A passport as it stands on the disk.
struct FoundPassport {
    bool there = false;  ///< there is a plain file of that name
    std::string text;
    std::optional<Passport> passport;
    OsError error;        ///< why the file could not be read
    std::string problem;  ///< likewise, or why its text is no passport
};

/// Looks for a passport in the file of that name. Throws std::bad_alloc.
[[nodiscard]] FoundPassport findPassport(const std::string& fileName);

}  // namespace tarno2
