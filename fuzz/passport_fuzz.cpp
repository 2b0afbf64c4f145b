// Passports of recordings.

#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "records/passport.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    std::string problem;
    const auto read = tarno2::readPassport(text, problem);
    if (!read) {
        // Who refuses says why.
        if (problem.empty()) {
            std::abort();
        }
        return 0;
    }
    if (!tarno2::passportContradictions(text, *read).empty()) {
        return 0;
    }
    // What was read is written and read as the same.
    const std::string written = tarno2::passportText(*read);
    const auto again = tarno2::readPassport(written, problem);
    if (!again || tarno2::passportText(*again) != written) {
        std::abort();
    }
    return 0;
}
