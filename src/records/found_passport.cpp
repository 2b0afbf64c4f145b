#include "records/found_passport.h"

#include <cstdint>

#include "platform/file.h"

namespace tarno2 {

namespace {

constexpr uint64_t kLongestPassport = uint64_t{1} << 28U;  // bytes; one with a million records has half of it

}  // namespace

FoundPassport findPassport(const std::string& fileName) {
    FoundPassport found;
    found.there = isPlainFile(fileName);
    if (!found.there) {
        return found;
    }
    found.error = readWholeFile(fileName, kLongestPassport, FileShare::ReadWrite, found.text);
    if (found.error.ok()) {
        found.passport = readPassport(found.text, found.problem);
    } else {
        found.problem = found.error.text();
    }
    return found;
}

}  // namespace tarno2
