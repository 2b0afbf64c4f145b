#include "platform/file.h"

#include <algorithm>
#include <utility>

#include "platform/c_locale.h"
#include "platform/clock.h"
#include "platform/paths.h"

namespace tarno2 {

File::~File() {
    close();
}

File::File(File&& other) noexcept : handle_(std::exchange(other.handle_, kClosed)) {}

File& File::operator=(File&& other) noexcept {
    if (this != &other) {
        close();
        handle_ = std::exchange(other.handle_, kClosed);
    }
    return *this;
}

// Of a file that can't be used, nothing is left that this program has made.
OsError File::keepOrClose(const OsError& error, const std::string& path, FileMode mode) {
    if (!error.ok()) {
        if (mode == FileMode::CreateNew) {
            static_cast<void>(removeNamed(path));
        }
        static_cast<void>(close());
    }
    return error;
}

OsError File::createWhole(const std::string& path, std::string_view contents) {
    const auto fill = [&] {
        size_t done = 0;
        const OsError error = write(contents.data(), contents.size(), done);
        return error.ok() ? flush() : error;
    };
    const std::string folder = parentFolder(path);
    OsError error = openNameless(folder.empty() ? "." : folder);
    if (error.ok()) {
        error = fill();
    }
    if (error.ok()) {
        error = giveName(path);
    }
    if (error.ok()) {
        return error;
    }
    static_cast<void>(close());
    if (error.alreadyExists()) {
        return error;
    }
    error = openPlain(path, FileMode::CreateNew, FileAccess::ReadWriteRemove, FileShare::None);
    return error.ok() ? keepOrClose(fill(), path, FileMode::CreateNew) : error;
}

bool fileExists(const std::string& path) {
    bool found = false;
    static_cast<void>(findFile(path, found));
    return found;
}

OsError createFolders(const std::string& path) {
    if (isDirectory(path)) {
        return {};
    }
    const std::string parent = parentFolder(path);
    if (!parent.empty() && parent != path) {
        if (OsError error = createFolders(parent); !error.ok()) {
            return error;
        }
    }
    const OsError error = createDirectory(path);
    return isDirectory(path) ? OsError() : error;
}

namespace {

constexpr std::string_view kTemporaryEnding = ".tmp";

}  // namespace

OsError createTemporaryFile(const std::string& folder, const std::string& prefix, std::string& path) {
    constexpr int kAttempts = 100;
    OsError error;
    for (int i = 0; i < kAttempts; ++i) {
        const auto number = static_cast<unsigned long long>(monotonicNanoseconds());
        path = joinPath(folder, formatText("%s%llx%s", prefix.c_str(), number, kTemporaryEnding.data()));
        File file;
        error = file.openPlain(path, FileMode::CreateNew, FileAccess::Write, FileShare::ReadWrite);
        if (error.ok()) {
            error = file.close();
            if (!error.ok()) {
                removeFile(path);
            }
            return error;
        }
        if (!error.alreadyExists()) {
            break;
        }
    }
    path.clear();
    return error;
}

std::optional<uint64_t> plainFileSize(const std::string& path) {
    File file;
    uint64_t bytes = 0;
    const OsError error = file.openPlain(path, FileMode::OpenExisting, FileAccess::Read, FileShare::ReadWrite);
    return error.ok() && file.size(bytes).ok() ? std::optional(bytes) : std::nullopt;
}

OsError readWholeFile(const std::string& path, uint64_t limit, FileShare share, std::string& contents) {
    contents.clear();
    File file;
    OsError error = file.open(path, FileMode::OpenExisting, FileAccess::Read, share);
    uint64_t size = 0;
    if (error.ok()) {
        error = file.size(size);
    }
    if (!error.ok()) {
        return error;
    }
    if (size > limit) {
        return OsError::tooLarge();
    }
    contents.resize(static_cast<size_t>(size));
    size_t done = 0;
    error = file.read(contents.data(), contents.size(), done);
    contents.resize(error.ok() ? done : 0);
    return error;
}

OsError replaceWholeFile(const std::string& path, std::string_view contents) {
    std::string temporary;
    OsError error = createTemporaryFile(parentFolder(path), fileNameOf(path), temporary);
    if (!error.ok()) {
        return error;
    }
    File file;
    size_t done = 0;
    error = file.openPlain(temporary, FileMode::OpenExisting, FileAccess::Write, FileShare::None);
    if (error.ok()) {
        error = file.write(contents.data(), contents.size(), done);
    }
    if (error.ok()) {
        error = file.flush();
    }
    const OsError closed = file.close();
    if (error.ok()) {
        error = closed.ok() ? replaceFile(temporary, path) : closed;
    }
    if (!error.ok()) {
        removeFile(temporary);
    }
    return error;
}

void removeTemporaries(const std::string& path) {
    const std::string prefix = fileNameOf(path);
    for (const std::string& name : listDirectory(parentFolder(path).empty() ? "." : parentFolder(path))) {
        if (!name.starts_with(prefix) || !name.ends_with(kTemporaryEnding)) {
            continue;
        }
        std::string_view number(name);
        number.remove_prefix(prefix.size());
        number.remove_suffix(std::min(kTemporaryEnding.size(), number.size()));
        const std::string temporary = joinPath(parentFolder(path), name);
        if (!number.empty() && number.find_first_not_of("0123456789abcdef") == std::string_view::npos &&
            isPlainFile(temporary)) {
            removeFile(temporary);
        }
    }
}

}  // namespace tarno2
