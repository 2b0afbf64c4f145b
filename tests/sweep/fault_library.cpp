// Preloaded into a program, it fails, shortens or tears the system call that TARNO2_FAULT names, or kills the program
// there. Reads and writes count when they go to regular files: an event or a pipe has no disk that could fail.

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <new>
#include <poll.h>
#include <pthread.h>
#include <string>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <sys/statvfs.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "tests/sweep/fault_report.h"

namespace {

using tarno2::test::callKind;
using tarno2::test::FaultReport;

constexpr size_t kAny = callKind("any");
constexpr size_t kWrite = callKind("write");
constexpr size_t kMemory = callKind("memory");

enum class Action { None, Fail, Short, Torn, Kill, TornKill };

struct Fault {
    FaultReport* report = nullptr;
    size_t kind = tarno2::test::kCallKinds.size();
    uint32_t number = 0;
    Action action = Action::None;
    int error = ENOSPC;
    bool lasting = false;

    Fault() {
        const char* name = std::getenv(tarno2::test::kFaultReportVariable);
        const auto fd = name == nullptr ? -1 : syscall(SYS_openat, AT_FDCWD, name, O_RDWR | O_CLOEXEC);
        const auto mapped = syscall(SYS_mmap, nullptr, sizeof(FaultReport), PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0);
        report = mapped == -1 ? nullptr : reinterpret_cast<FaultReport*>(mapped);
        std::array<char, 16> kindName{};
        std::array<char, 16> what{};
        const char* text = std::getenv(tarno2::test::kFaultVariable);
        if (text == nullptr || std::sscanf(text, "%15s %u %15s", kindName.data(), &number, what.data()) != 3) {
            return;
        }
        kind = callKind(kindName.data());
        const std::string word = what.data();
        const int given = std::atoi(what.data());
        error = given != 0 ? given : error;
        lasting = word.back() == '+';
        action = word == "short"      ? Action::Short
                 : word == "torn"     ? Action::Torn
                 : word == "kill"     ? Action::Kill
                 : word == "tornkill" ? Action::TornKill
                                      : Action::Fail;
    }
};

Fault& fault() {
    static Fault one;
    return one;
}

[[noreturn]] void die() {
    for (;;) {
        syscall(SYS_kill, getpid(), SIGKILL);
    }
}

/// Counts a call; what is to be done to it.
Action strike(size_t called, const char* function, const char* file) {
    Fault& f = fault();
    if (f.report == nullptr) {
        return Action::None;
    }
    // Allocations are too many to be among all the others.
    const bool counts = called != kMemory;
    const uint32_t all = counts ? f.report->calls[0].fetch_add(1) + 1 : 0;
    const uint32_t count = f.report->calls[called].fetch_add(1) + 1;
    const uint32_t number = f.kind == kAny ? all : count;
    // A disk that was full when a part was written is still full for the rest.
    const bool rest = f.action == Action::Torn && number == f.number + 1;
    const bool meant = (f.kind == kAny && counts) || f.kind == called;
    if (!meant || (number != f.number && !rest && !(f.lasting && number > f.number))) {
        return Action::None;
    }
    if (f.report->struck.fetch_add(1) == 0) {
        std::snprintf(f.report->what.data(), f.report->what.size(), "%s %s", function, file);
    }
    if (f.action == Action::Kill) {
        die();
    }
    errno = f.error;
    return rest ? Action::Fail : f.action;
}

bool fails(size_t called, const char* function, const char* file) {
    return strike(called, function, file) == Action::Fail;
}

/// The name of an open file, for the report.
struct FileOf {
    std::array<char, 300> name{};
    explicit FileOf(int fd) {
        std::array<char, 40> link{};
        std::snprintf(link.data(), link.size(), "/proc/self/fd/%d", fd);
        syscall(SYS_readlink, link.data(), name.data(), name.size() - 1);
    }
};

bool isRegular(int fd) {
    struct stat facts {};
    return syscall(SYS_fstat, fd, &facts) == 0 && S_ISREG(facts.st_mode);
}

/// Reads or writes all of it, the half, or nothing (-1, with errno).
template <typename Transfer>
ssize_t transfer(size_t called, const char* function, int fd, size_t size, Transfer real) {
    const Action action = isRegular(fd) ? strike(called, function, FileOf(fd).name.data()) : Action::None;
    if (action == Action::None || action == Action::Fail) {
        return action == Action::None ? real(size) : -1;
    }
    const ssize_t done = real(std::max<size_t>(size / 2, 1));
    if (action == Action::TornKill) {
        die();
    }
    return done;
}

template <typename Function>
Function* next(const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

}  // namespace

// NOLINTBEGIN: the names and forms of the C library.
#define EXPORT extern "C" __attribute__((visibility("default")))
#define NEXT(name) static auto* const real = next<decltype(::name)>(#name)
/// A function that returns -1 and errno; `file` is what the report names.
#define WRAP(kind, name, file, parameters, arguments)                    \
    EXPORT int name parameters {                                         \
        NEXT(name);                                                      \
        return fails(callKind(kind), #name, file) ? -1 : real arguments; \
    }

#define WRAP_OPEN(name, at, folder)                                                            \
    EXPORT int name(at const char* path, int flags, ...) {                                     \
        NEXT(name);                                                                            \
        va_list more;                                                                          \
        va_start(more, flags);                                                                 \
        const mode_t mode = (flags & (O_CREAT | __O_TMPFILE)) != 0 ? va_arg(more, mode_t) : 0; \
        va_end(more);                                                                          \
        return fails(callKind("open"), #name, path) ? -1 : real(folder path, flags, mode);     \
    }
#define COMMA ,
WRAP_OPEN(open, , )
WRAP_OPEN(open64, , )
WRAP_OPEN(openat, int folder COMMA, folder COMMA)
WRAP_OPEN(openat64, int folder COMMA, folder COMMA)

EXPORT FILE* fopen64(const char* path, const char* mode) {
    NEXT(fopen64);
    return fails(callKind("open"), "fopen", path) ? nullptr : real(path, mode);
}
EXPORT DIR* opendir(const char* path) {
    NEXT(opendir);
    return fails(callKind("open"), "opendir", path) ? nullptr : real(path);
}
EXPORT DIR* fdopendir(int fd) {
    NEXT(fdopendir);
    return fails(callKind("list"), "fdopendir", FileOf(fd).name.data()) ? nullptr : real(fd);
}
EXPORT dirent* readdir(DIR* folder) {
    NEXT(readdir);
    return fails(callKind("list"), "readdir", FileOf(dirfd(folder)).name.data()) ? nullptr : real(folder);
}

#define WRAP_TRANSFER(kind, name, data, rest, more)                                                                 \
    EXPORT ssize_t name(int fd, data buffer, size_t size rest) {                                                    \
        NEXT(name);                                                                                                 \
        return transfer(callKind(kind), #name, fd, size, [&](size_t part) { return real(fd, buffer, part more); }); \
    }
WRAP_TRANSFER("read", read, void*, , )
WRAP_TRANSFER("read", pread, void*, COMMA off_t offset, COMMA offset)
WRAP_TRANSFER("write", write, const void*, , )
WRAP_TRANSFER("write", pwrite, const void*, COMMA off_t offset, COMMA offset)

WRAP("truncate", ftruncate, FileOf(fd).name.data(), (int fd, off_t size), (fd, size))
WRAP("flush", fsync, FileOf(fd).name.data(), (int fd), (fd))
WRAP("flush", fdatasync, FileOf(fd).name.data(), (int fd), (fd))
WRAP("rename", rename, from, (const char* from, const char* to), (from, to))
WRAP("rename", renameat, from, (int a, const char* from, int b, const char* to), (a, from, b, to))
WRAP("rename", renameat2, from, (int a, const char* from, int b, const char* to, unsigned flags),
     (a, from, b, to, flags))
WRAP("remove", unlink, path, (const char* path), (path))
WRAP("remove", unlinkat, path, (int folder, const char* path, int flags), (folder, path, flags))
WRAP("remove", rmdir, path, (const char* path), (path))
WRAP("folder", mkdir, path, (const char* path, mode_t mode), (path, mode))
WRAP("link", link, from, (const char* from, const char* to), (from, to))
WRAP("link", linkat, from, (int a, const char* from, int b, const char* to, int flags), (a, from, b, to, flags))
WRAP("lock", flock, FileOf(fd).name.data(), (int fd, int operation), (fd, operation))
WRAP("look", stat, path, (const char* path, struct stat* facts), (path, facts))
WRAP("look", lstat, path, (const char* path, struct stat* facts), (path, facts))
WRAP("look", fstat, FileOf(fd).name.data(), (int fd, struct stat* facts), (fd, facts))
WRAP("look", fstatat, path, (int at, const char* path, struct stat* facts, int flags), (at, path, facts, flags))
WRAP("look", faccessat, path, (int at, const char* path, int mode, int flags), (at, path, mode, flags))
WRAP("space", statvfs, path, (const char* path, struct statvfs* facts), (path, facts))
WRAP("space", statfs, path, (const char* path, struct statfs* facts), (path, facts))
WRAP("space", fstatfs, FileOf(fd).name.data(), (int fd, struct statfs* facts), (fd, facts))
WRAP("poll", poll, "", (pollfd * fds, nfds_t count, int timeout), (fds, count, timeout))
WRAP("poll", ppoll, "", (pollfd * fds, nfds_t count, const timespec* timeout, const sigset_t* mask),
     (fds, count, timeout, mask))

EXPORT off_t lseek(int fd, off_t offset, int whence) {
    NEXT(lseek);
    return fails(callKind("seek"), "lseek", FileOf(fd).name.data()) ? -1 : real(fd, offset, whence);
}
// A close that fails has closed all the same.
EXPORT int close(int fd) {
    NEXT(close);
    const FileOf file(fd);
    const int result = real(fd);
    return fails(callKind("close"), "close", file.name.data()) ? -1 : result;
}
EXPORT int pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*entry)(void*), void* argument) {
    NEXT(pthread_create);
    return fails(callKind("thread"), "pthread_create", "") ? fault().error : real(thread, attributes, entry, argument);
}

// What is allocated before the first byte was written belongs to the start of the program, which can tell nobody yet.
__attribute__((visibility("default"))) void* operator new(size_t size) {
    const Fault& f = fault();
    if (f.report != nullptr && f.report->calls[kWrite] > 0 && fails(kMemory, "operator new", "")) {
        throw std::bad_alloc();
    }
    if (void* memory = std::malloc(std::max<size_t>(size, 1))) {
        return memory;
    }
    throw std::bad_alloc();
}
__attribute__((visibility("default"))) void operator delete(void* memory) noexcept {
    std::free(memory);
}
__attribute__((visibility("default"))) void operator delete(void* memory, size_t /*size*/) noexcept {
    std::free(memory);
}
// NOLINTEND
