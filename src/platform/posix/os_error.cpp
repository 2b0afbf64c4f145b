#include "platform/os_error.h"

#include <array>
#include <cerrno>
#include <cstring>

namespace tarno2 {

OsError OsError::last() {
    return OsError(errno);
}

OsError OsError::tooLarge() {
    return OsError(EFBIG);
}

bool OsError::alreadyExists() const {
    return code_ == EEXIST;
}

bool OsError::inUse() const {
    return code_ == EWOULDBLOCK || code_ == EBUSY;
}

bool OsError::notSupported() const {
    return code_ == EOPNOTSUPP;
}

bool OsError::notFound() const {
    return code_ == ENOENT || code_ == ENOTDIR;
}

std::string OsError::text() const {
    std::array<char, 256> buffer{};
    return strerror_r(code_, buffer.data(), buffer.size());
}

}  // namespace tarno2
