#include "platform/file.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <dirent.h>
#include <fcntl.h>
#include <limits>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <unistd.h>
#include <utility>

#include "platform/paths.h"

namespace tarno2 {

namespace {

static_assert(sizeof(off_t) == sizeof(int64_t), "recordings are larger than 2 GiB");

constexpr mode_t kFileMode = 0666;
constexpr mode_t kFolderMode = 0777;
constexpr size_t kLargestTransfer = size_t{1} << 30U;

OsError result(int returned) {
    return returned == 0 ? OsError() : OsError::last();
}

int descriptor(intptr_t handle) {
    return static_cast<int>(handle);
}

int openFlags(FileMode mode, FileAccess access) {
    // Without O_NONBLOCK the open of a pipe that nobody else has open would never return.
    int flags = O_CLOEXEC | O_NONBLOCK;
    switch (access) {
        case FileAccess::Read:
            flags |= O_RDONLY;
            break;
        case FileAccess::Write:
            flags |= O_WRONLY;
            break;
        case FileAccess::ReadWrite:
        case FileAccess::ReadWriteRemove:
            flags |= O_RDWR;
            break;
    }
    switch (mode) {
        case FileMode::CreateNew:
            return flags | O_CREAT | O_EXCL;
        case FileMode::CreateAlways:  // emptied once it is known that nobody holds it
        case FileMode::OpenAlways:
            return flags | O_CREAT;
        case FileMode::OpenExisting:
            break;
    }
    return flags;
}

/// A descriptor, or -1 with the reason in errno.
int openDescriptor(const std::string& path, int flags) {
    int fd = -1;
    do {
        fd = ::open(path.c_str(), flags, kFileMode);
    } while (fd < 0 && errno == EINTR);
    return fd;
}

/// Locks a file for exclusive use. File systems that know no locks count as unlocked.
OsError lockFile(int fd) {
    int locked = 0;
    do {
        locked = flock(fd, LOCK_EX | LOCK_NB);
    } while (locked != 0 && errno == EINTR);
    return locked != 0 && errno == EWOULDBLOCK ? OsError(EWOULDBLOCK) : OsError();
}

/// What is left to do on a descriptor that was just opened.
OsError prepare(int fd, FileMode mode, FileShare share) {
    struct stat facts {};
    if (fstat(fd, &facts) != 0) {
        return OsError::last();
    }
    if (S_ISDIR(facts.st_mode)) {
        return OsError(EISDIR);
    }
    if (S_ISFIFO(facts.st_mode)) {
        return OsError(ESPIPE);
    }
    if (share != FileShare::ReadWrite) {
        if (const OsError error = lockFile(fd); !error.ok()) {
            return error;
        }
    }
    if (mode == FileMode::CreateAlways && S_ISREG(facts.st_mode) && ftruncate(fd, 0) != 0) {
        return OsError::last();
    }
    return S_ISREG(facts.st_mode) ? OsError() : result(fcntl(fd, F_SETFL, fcntl(fd, F_GETFL) & ~O_NONBLOCK));
}

OsError flushDescriptor(int fd) {
    int flushed = 0;
    do {
        flushed = fsync(fd);
    } while (flushed != 0 && errno == EINTR);
    return result(flushed);
}

/// The error that stands for something else than a regular file.
OsError notPlain(mode_t mode) {
    if (S_ISREG(mode)) {
        return {};
    }
    if (S_ISLNK(mode)) {
        return OsError(ELOOP);
    }
    return OsError(S_ISDIR(mode) ? EISDIR : EINVAL);
}

bool isSame(const struct stat& a, const struct stat& b) {
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

bool fitsOffset(uint64_t offset) {
    return offset <= static_cast<uint64_t>(std::numeric_limits<off_t>::max());
}

/// Renames where the system can't promise by itself that nothing is replaced.
OsError renameByLink(const std::string& from, const std::string& to) {
    if (link(from.c_str(), to.c_str()) == 0) {
        return result(unlink(from.c_str()));
    }
    if (errno == EEXIST || errno == ENOENT) {
        return OsError::last();
    }
    // No hard links either (FAT, folders): look before renaming.
    return fileExists(to) ? OsError(EEXIST) : result(rename(from.c_str(), to.c_str()));
}

}  // namespace

OsError File::open(const std::string& path, FileMode mode, FileAccess access, FileShare share) {
    close();
    const int fd = openDescriptor(path, openFlags(mode, access));
    if (fd < 0) {
        return OsError::last();
    }
    handle_ = fd;
    return keepOrClose(prepare(fd, mode, share), path, mode);
}

OsError File::openPlain(const std::string& path, FileMode mode, FileAccess access, FileShare share) {
    close();
    struct stat facts {};
    // Opening a pipe or a device may already do something.
    if (lstat(path.c_str(), &facts) == 0 && mode != FileMode::CreateNew) {
        if (const OsError error = notPlain(facts.st_mode); !error.ok()) {
            return error;
        }
    }
    const int fd = openDescriptor(path, openFlags(mode, access) | O_NOFOLLOW);
    if (fd < 0) {
        return OsError::last();
    }
    OsError error = result(fstat(fd, &facts));
    if (error.ok()) {
        error = notPlain(facts.st_mode);
    }
    if (error.ok()) {
        error = prepare(fd, mode, share);
    }
    handle_ = fd;
    return keepOrClose(error, path, mode);
}

OsError File::openNameless(const std::string& folder) {
    close();
    const int fd = openDescriptor(folder, O_TMPFILE | O_RDWR | O_CLOEXEC);
    if (fd < 0) {
        return OsError::last();
    }
    handle_ = fd;
    return lockFile(fd);
}

OsError File::giveName(const std::string& path) {
    const std::string self = "/proc/self/fd/" + std::to_string(descriptor(handle_));
    return result(linkat(AT_FDCWD, self.c_str(), AT_FDCWD, path.c_str(), AT_SYMLINK_FOLLOW));
}

OsError File::removeNamed(const std::string& path) {
    // What is looked at and what is removed are names of one folder, whatever happens to that folder's own name.
    const std::string parent = parentFolder(path);
    const int folder = openDescriptor(parent.empty() ? "." : parent, O_PATH | O_DIRECTORY | O_CLOEXEC);
    if (folder < 0) {
        return OsError::last();
    }
    const std::string name = fileNameOf(path);
    struct stat own {};
    struct stat named {};
    OsError error = result(fstat(descriptor(handle_), &own));
    if (error.ok()) {
        error = result(fstatat(folder, name.c_str(), &named, AT_SYMLINK_NOFOLLOW));
    }
    if (error.ok()) {
        error = isSame(own, named) ? result(unlinkat(folder, name.c_str(), 0)) : OsError(ENOENT);
    }
    ::close(folder);
    return error;
}

OsError File::openStandardOutput() {
    const OsError error = close();
    handle_ = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    return isOpen() ? error : OsError::last();
}

OsError File::close() {
    if (!isOpen()) {
        return {};
    }
    const OsError error = result(::close(descriptor(std::exchange(handle_, kClosed))));
    return error.code() == EINTR ? OsError() : error;  // closed all the same
}

OsError File::confirmLock() {
    int locked = 0;
    do {
        locked = flock(descriptor(handle_), LOCK_EX | LOCK_NB);
    } while (locked != 0 && errno == EINTR);
    return result(locked);
}

Named File::named(const std::string& path) const {
    struct stat own {};
    struct stat found {};
    if (stat(path.c_str(), &found) != 0) {
        return OsError::last().notFound() ? Named::No : Named::Unknown;
    }
    if (fstat(descriptor(handle_), &own) != 0) {
        return Named::Unknown;
    }
    return isSame(own, found) ? Named::Yes : Named::No;
}

bool File::hasOtherNames() const {
    struct stat facts {};
    return fstat(descriptor(handle_), &facts) == 0 && facts.st_nlink > 1;
}

bool File::isOfThisUser() const {
    struct stat facts {};
    return fstat(descriptor(handle_), &facts) == 0 && facts.st_uid == geteuid();
}

OsError File::read(void* data, size_t size, size_t& done) {
    done = 0;
    while (done < size) {
        const ssize_t got =
            ::read(descriptor(handle_), static_cast<char*>(data) + done, std::min(size - done, kLargestTransfer));
        if (got == 0) {
            break;
        }
        if (got > 0) {
            done += static_cast<size_t>(got);
        } else if (errno != EINTR) {
            return OsError::last();
        }
    }
    return {};
}

OsError File::readCached(void* data, size_t size, size_t& done) {
    constexpr off_t kOwnPosition = -1;
    const iovec part{data, std::min(size, kLargestTransfer)};
    ssize_t got = 0;
    do {
        got = preadv2(descriptor(handle_), &part, 1, kOwnPosition, RWF_NOWAIT);
    } while (got < 0 && errno == EINTR);
    done = got > 0 ? static_cast<size_t>(got) : 0;
    if (got >= 0 || errno == EAGAIN) {
        return {};
    }
    return errno == EOPNOTSUPP || errno == ENOSYS ? read(data, size, done) : OsError::last();
}

OsError File::write(const void* data, size_t size, size_t& done) {
    done = 0;
    while (done < size) {
        const ssize_t put = ::write(descriptor(handle_), static_cast<const char*>(data) + done,
                                    std::min(size - done, kLargestTransfer));
        if (put > 0) {
            done += static_cast<size_t>(put);
        } else if (put == 0) {
            return OsError(ENOSPC);
        } else if (errno != EINTR) {
            return OsError::last();
        }
    }
    return {};
}

OsError File::seek(uint64_t offset) {
    if (!fitsOffset(offset)) {
        return OsError(EINVAL);
    }
    return lseek(descriptor(handle_), static_cast<off_t>(offset), SEEK_SET) < 0 ? OsError::last() : OsError();
}

OsError File::size(uint64_t& bytes) const {
    struct stat facts {};
    if (fstat(descriptor(handle_), &facts) != 0) {
        return OsError::last();
    }
    bytes = static_cast<uint64_t>(facts.st_size);
    return {};
}

OsError File::truncate(uint64_t size) {
    if (!fitsOffset(size)) {
        return OsError(EINVAL);
    }
    int cut = 0;
    do {
        cut = ftruncate(descriptor(handle_), static_cast<off_t>(size));
    } while (cut != 0 && errno == EINTR);
    return cut != 0 ? OsError::last() : seek(size);
}

OsError File::flush() {
    const OsError error = flushDescriptor(descriptor(handle_));
    return error.code() == EINVAL ? OsError() : error;  // a device keeps nothing back
}

OsError findFile(const std::string& path, bool& found) {
    struct stat facts {};
    const OsError error = result(lstat(path.c_str(), &facts));
    found = error.ok();
    return error.notFound() ? OsError() : error;
}

bool isSameFile(const std::string& a, const std::string& b) {
    struct stat first {};
    struct stat second {};
    return stat(a.c_str(), &first) == 0 && stat(b.c_str(), &second) == 0 && isSame(first, second);
}

bool isPlainFile(const std::string& path) {
    struct stat facts {};
    return lstat(path.c_str(), &facts) == 0 && S_ISREG(facts.st_mode);
}

bool isDirectory(const std::string& path) {
    struct stat facts {};
    return stat(path.c_str(), &facts) == 0 && S_ISDIR(facts.st_mode);
}

OsError removeFile(const std::string& path) {
    return result(unlink(path.c_str()));
}

OsError createDirectory(const std::string& path) {
    return result(mkdir(path.c_str(), kFolderMode));
}

OsError removeDirectory(const std::string& path) {
    return result(rmdir(path.c_str()));
}

OsError flushFolder(const std::string& path) {
    const int fd = openDescriptor(path.empty() ? "." : path, O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0) {
        return OsError::last();
    }
    const OsError error = flushDescriptor(fd);
    ::close(fd);
    return error.code() == EINVAL ? OsError() : error;  // a file system that can't
}

OsError renameFile(const std::string& from, const std::string& to) {
    if (renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) {
        return {};
    }
    return errno == EINVAL || errno == ENOSYS ? renameByLink(from, to) : OsError::last();
}

OsError replaceFile(const std::string& from, const std::string& to) {
    return result(rename(from.c_str(), to.c_str()));
}

std::vector<std::string> listDirectory(const std::string& path, OsError* error) {
    std::vector<std::string> names;
    DIR* folder = opendir(path.c_str());
    OsError problem = folder == nullptr ? OsError::last() : OsError();
    while (folder != nullptr) {
        errno = 0;
        const dirent* entry = readdir(folder);
        if (entry == nullptr) {
            problem = OsError(errno);
            closedir(folder);
            break;
        }
        std::string name = entry->d_name;
        if (name != "." && name != "..") {
            names.push_back(std::move(name));
        }
    }
    if (error != nullptr) {
        *error = problem;
    }
    std::sort(names.begin(), names.end());
    return names;
}

}  // namespace tarno2
