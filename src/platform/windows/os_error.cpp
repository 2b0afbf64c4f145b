#include "platform/os_error.h"

#include <array>
#include <windows.h>

namespace tarno2 {

OsError OsError::last() {
    return OsError(static_cast<int>(GetLastError()));
}

OsError OsError::tooLarge() {
    return OsError(ERROR_FILE_TOO_LARGE);
}

bool OsError::alreadyExists() const {
    return code_ == ERROR_FILE_EXISTS || code_ == ERROR_ALREADY_EXISTS;
}

bool OsError::inUse() const {
    return code_ == ERROR_SHARING_VIOLATION || code_ == ERROR_LOCK_VIOLATION;
}

bool OsError::notSupported() const {
    return code_ == ERROR_NOT_SUPPORTED;
}

bool OsError::notFound() const {
    return code_ == ERROR_FILE_NOT_FOUND || code_ == ERROR_PATH_NOT_FOUND;
}

std::string OsError::text() const {
    std::array<char, 512> buffer{};
    const DWORD length = FormatMessageA(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
                                        static_cast<DWORD>(code_), 0, buffer.data(), buffer.size(), nullptr);
    std::string text(buffer.data(), length);
    while (!text.empty() && (text.back() == '\r' || text.back() == '\n' || text.back() == ' ')) {
        text.pop_back();
    }
    return text.empty() ? "error " + std::to_string(code_) : text;
}

}  // namespace tarno2
