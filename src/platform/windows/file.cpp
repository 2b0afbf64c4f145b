#include "platform/file.h"

#include <aclapi.h>
#include <algorithm>
#include <array>
#include <cstddef>
#include <limits>
#include <utility>
#include <windows.h>

#include "platform/paths.h"
#include "platform/windows/native_handle.h"

namespace tarno2 {

namespace {

constexpr size_t kLargestTransfer = size_t{1} << 30U;

OsError result(BOOL returned) {
    return returned != 0 ? OsError() : OsError::last();
}

DWORD disposition(FileMode mode) {
    switch (mode) {
        case FileMode::CreateAlways:
            return CREATE_ALWAYS;
        case FileMode::CreateNew:
            return CREATE_NEW;
        case FileMode::OpenAlways:
            return OPEN_ALWAYS;
        case FileMode::OpenExisting:
            break;
    }
    return OPEN_EXISTING;
}

DWORD accessRights(FileAccess access) {
    switch (access) {
        case FileAccess::Write:
            return GENERIC_WRITE;
        case FileAccess::ReadWrite:
            return GENERIC_READ | GENERIC_WRITE;
        case FileAccess::ReadWriteRemove:
            return GENERIC_READ | GENERIC_WRITE | DELETE;
        case FileAccess::Read:
            break;
    }
    return GENERIC_READ;
}

DWORD sharing(FileShare share) {
    switch (share) {
        case FileShare::None:
            return 0;
        case FileShare::Read:
            return FILE_SHARE_READ | FILE_SHARE_DELETE;
        case FileShare::ReadWrite:
            break;
    }
    return FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
}

/// An error unless it is a file on a disk, and none that stands for another.
OsError checkPlain(HANDLE file) {
    BY_HANDLE_FILE_INFORMATION facts{};
    if (GetFileType(file) != FILE_TYPE_DISK) {
        return OsError(ERROR_BAD_FILE_TYPE);
    }
    if (GetFileInformationByHandle(file, &facts) == 0) {
        return OsError::last();
    }
    const DWORD others = FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_REPARSE_POINT | FILE_ATTRIBUTE_DEVICE;
    return (facts.dwFileAttributes & others) == 0 ? OsError() : OsError(ERROR_BAD_FILE_TYPE);
}

/// What the system knows of this program's user: the names that its files get as their owner.
class ProgramUser {
public:
    ProgramUser() {
        HANDLE token = nullptr;
        if (OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &token) != 0) {
            DWORD size = 0;
            known_ = GetTokenInformation(token, TokenUser, user_.data(), kSize, &size) != 0 &&
                     GetTokenInformation(token, TokenOwner, owner_.data(), kSize, &size) != 0;
            CloseHandle(token);
        }
    }
    /// Administrators' files may belong to their group.
    [[nodiscard]] bool owns(PSID owner) const {
        return known_ && (EqualSid(owner, reinterpret_cast<const TOKEN_USER*>(user_.data())->User.Sid) != 0 ||
                          EqualSid(owner, reinterpret_cast<const TOKEN_OWNER*>(owner_.data())->Owner) != 0);
    }

private:
    static constexpr DWORD kSize = 256;
    alignas(TOKEN_USER) std::array<std::byte, kSize> user_{};
    alignas(TOKEN_OWNER) std::array<std::byte, kSize> owner_{};
    bool known_ = false;
};

/// What tells a file from all others, whatever its name.
bool identify(const std::string& path, BY_HANDLE_FILE_INFORMATION& facts) {
    const HANDLE file = CreateFileA(path.c_str(), 0, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                    OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        return false;
    }
    const bool identified = GetFileInformationByHandle(file, &facts) != 0;
    CloseHandle(file);
    return identified;
}

bool isSame(const BY_HANDLE_FILE_INFORMATION& a, const BY_HANDLE_FILE_INFORMATION& b) {
    return a.dwVolumeSerialNumber == b.dwVolumeSerialNumber && a.nFileIndexHigh == b.nFileIndexHigh &&
           a.nFileIndexLow == b.nFileIndexLow;
}

}  // namespace

OsError File::open(const std::string& path, FileMode mode, FileAccess access, FileShare share) {
    close();
    const HANDLE file = CreateFileA(path.c_str(), accessRights(access), sharing(share), nullptr, disposition(mode),
                                    FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        return OsError::last();
    }
    static_assert(kClosed == -1, "the value of INVALID_HANDLE_VALUE");
    handle_ = reinterpret_cast<intptr_t>(file);
    return {};
}

OsError File::openPlain(const std::string& path, FileMode mode, FileAccess access, FileShare share) {
    close();
    // Emptied once it is known what it is.
    const bool empties = mode == FileMode::CreateAlways;
    const HANDLE file =
        CreateFileA(path.c_str(), accessRights(access), sharing(share), nullptr,
                    disposition(empties ? FileMode::OpenAlways : mode), FILE_FLAG_OPEN_REPARSE_POINT, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        return OsError::last();
    }
    OsError error = checkPlain(file);
    if (error.ok() && empties) {
        error = result(SetEndOfFile(file));
    }
    handle_ = reinterpret_cast<intptr_t>(file);
    return keepOrClose(error, path, mode);
}

// No file is without a name here.
OsError File::openNameless(const std::string& /*folder*/) {
    return OsError(ERROR_NOT_SUPPORTED);
}

OsError File::giveName(const std::string& /*path*/) {
    return OsError(ERROR_NOT_SUPPORTED);
}

OsError File::removeNamed(const std::string& path) {
    if (named(path) != Named::Yes) {
        return OsError(ERROR_FILE_NOT_FOUND);
    }
    FILE_DISPOSITION_INFO disposition{};
    disposition.DeleteFile = TRUE;
    return result(
        SetFileInformationByHandle(nativeHandle(handle_), FileDispositionInfo, &disposition, sizeof disposition));
}

OsError File::openStandardOutput() {
    const OsError error = close();
    HANDLE copy = INVALID_HANDLE_VALUE;
    if (DuplicateHandle(GetCurrentProcess(), GetStdHandle(STD_OUTPUT_HANDLE), GetCurrentProcess(), &copy, 0, FALSE,
                        DUPLICATE_SAME_ACCESS) == 0) {
        return OsError::last();
    }
    handle_ = reinterpret_cast<intptr_t>(copy);
    return error;
}

OsError File::close() {
    return isOpen() ? result(CloseHandle(nativeHandle(std::exchange(handle_, kClosed)))) : OsError();
}

// Without sharing nobody else gets a handle.
OsError File::confirmLock() {
    return {};
}

Named File::named(const std::string& path) const {
    BY_HANDLE_FILE_INFORMATION own{};
    BY_HANDLE_FILE_INFORMATION found{};
    if (!identify(path, found)) {
        // One that was removed while others have it open can't be opened any more.
        const OsError error = OsError::last();
        FILE_STANDARD_INFO state{};
        const bool removed =
            GetFileInformationByHandleEx(nativeHandle(handle_), FileStandardInfo, &state, sizeof state) != 0 &&
            state.DeletePending != 0;
        return removed || error.notFound() ? Named::No : Named::Unknown;
    }
    if (GetFileInformationByHandle(nativeHandle(handle_), &own) == 0) {
        return Named::Unknown;
    }
    return isSame(own, found) ? Named::Yes : Named::No;
}

bool File::hasOtherNames() const {
    BY_HANDLE_FILE_INFORMATION own{};
    return GetFileInformationByHandle(nativeHandle(handle_), &own) != 0 && own.nNumberOfLinks > 1;
}

bool File::isOfThisUser() const {
    PSID owner = nullptr;
    PSECURITY_DESCRIPTOR facts = nullptr;
    if (GetSecurityInfo(nativeHandle(handle_), SE_FILE_OBJECT, OWNER_SECURITY_INFORMATION, &owner, nullptr, nullptr,
                        nullptr, &facts) != ERROR_SUCCESS) {
        return true;
    }
    const bool own = owner == nullptr || IsWellKnownSid(owner, WinWorldSid) != 0 || ProgramUser().owns(owner);
    LocalFree(facts);
    return own;
}

OsError File::read(void* data, size_t size, size_t& done) {
    done = 0;
    while (done < size) {
        const auto part = static_cast<DWORD>(std::min(size - done, kLargestTransfer));
        DWORD got = 0;
        if (ReadFile(nativeHandle(handle_), static_cast<char*>(data) + done, part, &got, nullptr) == 0) {
            return OsError::last();
        }
        if (got == 0) {
            break;
        }
        done += got;
    }
    return {};
}

OsError File::readCached(void* data, size_t size, size_t& done) {
    return read(data, size, done);
}

OsError File::write(const void* data, size_t size, size_t& done) {
    done = 0;
    while (done < size) {
        const auto part = static_cast<DWORD>(std::min(size - done, kLargestTransfer));
        DWORD put = 0;
        const BOOL written =
            WriteFile(nativeHandle(handle_), static_cast<const char*>(data) + done, part, &put, nullptr);
        const OsError error = result(written);
        done += put;
        if (!error.ok()) {
            return error;
        }
        if (put == 0) {
            return OsError(ERROR_DISK_FULL);
        }
    }
    return {};
}

OsError File::seek(uint64_t offset) {
    if (offset > static_cast<uint64_t>(std::numeric_limits<LONGLONG>::max())) {
        return OsError(ERROR_NEGATIVE_SEEK);
    }
    LARGE_INTEGER distance{};
    distance.QuadPart = static_cast<LONGLONG>(offset);
    return result(SetFilePointerEx(nativeHandle(handle_), distance, nullptr, FILE_BEGIN));
}

OsError File::size(uint64_t& bytes) const {
    LARGE_INTEGER size{};
    if (GetFileSizeEx(nativeHandle(handle_), &size) == 0) {
        return OsError::last();
    }
    bytes = static_cast<uint64_t>(size.QuadPart);
    return {};
}

OsError File::truncate(uint64_t size) {
    const OsError error = seek(size);
    return error.ok() ? result(SetEndOfFile(nativeHandle(handle_))) : error;
}

OsError File::flush() {
    return result(FlushFileBuffers(nativeHandle(handle_)));
}

OsError findFile(const std::string& path, bool& found) {
    found = GetFileAttributesA(path.c_str()) != INVALID_FILE_ATTRIBUTES;
    const OsError error = found ? OsError() : OsError::last();
    return error.notFound() ? OsError() : error;
}

bool isSameFile(const std::string& a, const std::string& b) {
    BY_HANDLE_FILE_INFORMATION first{};
    BY_HANDLE_FILE_INFORMATION second{};
    return identify(a, first) && identify(b, second) && isSame(first, second);
}

bool isPlainFile(const std::string& path) {
    const DWORD attributes = GetFileAttributesA(path.c_str());
    const DWORD others = FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_REPARSE_POINT | FILE_ATTRIBUTE_DEVICE;
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & others) == 0;
}

bool isDirectory(const std::string& path) {
    const DWORD attributes = GetFileAttributesA(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

OsError removeFile(const std::string& path) {
    return result(DeleteFileA(path.c_str()));
}

OsError createDirectory(const std::string& path) {
    return result(CreateDirectoryA(path.c_str(), nullptr));
}

OsError removeDirectory(const std::string& path) {
    return result(RemoveDirectoryA(path.c_str()));
}

OsError flushFolder(const std::string& /*path*/) {
    return {};
}

OsError renameFile(const std::string& from, const std::string& to) {
    return result(MoveFileExA(from.c_str(), to.c_str(), 0));
}

OsError replaceFile(const std::string& from, const std::string& to) {
    return result(MoveFileExA(from.c_str(), to.c_str(), MOVEFILE_REPLACE_EXISTING));
}

std::vector<std::string> listDirectory(const std::string& path, OsError* error) {
    std::vector<std::string> names;
    if (error != nullptr) {
        *error = {};
    }
    WIN32_FIND_DATAA found{};
    const HANDLE search = path.empty() ? INVALID_HANDLE_VALUE : FindFirstFileA(joinPath(path, "*").c_str(), &found);
    if (search == INVALID_HANDLE_VALUE) {
        if (error != nullptr) {
            *error = OsError::last();
        }
        return names;
    }
    do {
        std::string name = found.cFileName;
        if (name != "." && name != "..") {
            names.push_back(std::move(name));
        }
    } while (FindNextFileA(search, &found) != 0);
    if (error != nullptr && GetLastError() != ERROR_NO_MORE_FILES) {
        *error = OsError::last();
    }
    FindClose(search);
    std::sort(names.begin(), names.end());
    return names;
}

}  // namespace tarno2
