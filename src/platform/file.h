#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/os_error.h"

namespace tarno2 {

enum class FileMode {
    CreateAlways,  ///< make it, emptying one that is there
    CreateNew,     ///< make it; fails when the name is taken
    OpenExisting,  ///< fails when there is none
    OpenAlways     ///< open it, making it when there is none; contents stay
};

enum class FileAccess {
    Read,
    Write,
    ReadWrite,
    ReadWriteRemove  ///< also `removeNamed`
};

/// Who else may have the file open meanwhile. Of those that ask for `None` or `Read` only one has it: who comes later
/// is refused (`OsError::inUse`). Elsewhere than on Windows this is an advisory lock, and who asks for `ReadWrite` is
/// never refused; on Windows others may read a file that is held with `Read`, and not even that with `None`. Whoever
/// only reads a file that is being written has to ask for `ReadWrite`.
enum class FileShare { None, Read, ReadWrite };

/// Whether a path leads to an open file: it may have been removed or replaced, or the system may not tell.
enum class Named { Yes, No, Unknown };

/// One open file; closed on destruction. Reads and writes are unbuffered and move the file's own position.
/// An object belongs to one thread at a time.
class File {
public:
    File() = default;
    ~File();
    File(File&& other) noexcept;
    File& operator=(File&& other) noexcept;
    File(const File&) = delete;
    File& operator=(const File&) = delete;

    /// Opens `path`; an already open file is closed first. Directories are refused.
    OsError open(const std::string& path, FileMode mode, FileAccess access, FileShare share);
    /// The same for a regular file that is reached by no link: anything else of that name is an error, stays as it is
    /// and is not even opened. For files in folders where others may have put something in the way.
    OsError openPlain(const std::string& path, FileMode mode, FileAccess access, FileShare share);
    /// Takes the program's standard output, byte for byte, which stays open when this is closed. It may be a pipe,
    /// which has neither size nor positions.
    OsError openStandardOutput();
    /// Makes a new file with these contents, brings it to the disk and keeps it open, to read, write and remove,
    /// sharing it with nobody. Where the file system can, the name appears together with the contents; where it can't,
    /// a crash may leave a part of them. Fails (alreadyExists) when the name is taken.
    OsError createWhole(const std::string& path, std::string_view contents);
    /// Closes the file; the result is that of the system's close, which may report a late write error.
    OsError close();
    [[nodiscard]] bool isOpen() const { return handle_ != kClosed; }

    /// Removes the name if it still leads to this file, and not by a link; else it is an error (notFound). For a file
    /// that was opened with `ReadWriteRemove`; it is gone once it is closed.
    OsError removeNamed(const std::string& path);
    /// The lock of a file that was opened without `FileShare::ReadWrite` is really held: an error where the file system
    /// knows no locks, so that somebody else may have the file open unseen.
    OsError confirmLock();
    /// Whether the path still leads to this file.
    [[nodiscard]] Named named(const std::string& path) const;
    /// Whether the file has other names too (hard links).
    [[nodiscard]] bool hasOtherNames() const;
    /// Whether the user that this program runs as owns the file; true where the file system knows no owners.
    [[nodiscard]] bool isOfThisUser() const;

    /// Reads up to `size` bytes; `done` gets how many (less at the end of the file).
    OsError read(void* data, size_t size, size_t& done);
    /// The same, without waiting for the disk: what the system has in its memory from the position on, at most `size`
    /// bytes; none when it has none. Where the system can't tell, it is read as always.
    OsError readCached(void* data, size_t size, size_t& done);
    /// Writes `size` bytes in as many system calls as it takes; `done` gets how many were taken, also on failure.
    OsError write(const void* data, size_t size, size_t& done);
    /// Moves the position to `offset` bytes from the start.
    OsError seek(uint64_t offset);
    OsError size(uint64_t& bytes) const;
    /// Cuts (or extends) the file to `size` bytes and puts the position there.
    OsError truncate(uint64_t size);
    /// Has the system put everything written on the disk.
    OsError flush();

private:
    friend class DiskReserve;
    OsError openNameless(const std::string& folder);
    OsError giveName(const std::string& path);
    OsError keepOrClose(const OsError& error, const std::string& path, FileMode mode);
    static constexpr intptr_t kClosed = -1;
    intptr_t handle_ = kClosed;
};

[[nodiscard]] bool fileExists(const std::string& path);  ///< a file, folder or anything else of that name
/// The same where it matters that the system may not tell: then an error, and `found` is false.
OsError findFile(const std::string& path, bool& found);
[[nodiscard]] bool isDirectory(const std::string& path);
[[nodiscard]] bool isPlainFile(const std::string& path);  ///< a regular file, reached by no link
/// Bytes in a regular file that no link leads to; nothing when it is none or can't be read.
[[nodiscard]] std::optional<uint64_t> plainFileSize(const std::string& path);
/// Whether both names lead to one existing file, be it by a link or another spelling.
[[nodiscard]] bool isSameFile(const std::string& a, const std::string& b);
OsError removeFile(const std::string& path);
OsError createDirectory(const std::string& path);
/// Makes a folder with all that lead to it; one that is there already is no error.
OsError createFolders(const std::string& path);
OsError removeDirectory(const std::string& path);
/// Has the system put a folder's list of names on the disk (an empty path: the current folder's). Nothing to be done
/// where the file system does so by itself.
OsError flushFolder(const std::string& path);
/// Gives a file another name in the same volume; fails (alreadyExists) rather than replace one of that name.
OsError renameFile(const std::string& from, const std::string& to);
/// Gives a file another name in the same volume, replacing a file of that name in one step.
OsError replaceFile(const std::string& from, const std::string& to);
/// The names (without folder) in a folder, sorted bytewise, without "." and "..". When it can't be read to its end
/// there are those that came before; `error`, unless null, gets the reason, or ok.
[[nodiscard]] std::vector<std::string> listDirectory(const std::string& path, OsError* error = nullptr);
/// Makes an empty file with an unused name that starts with `prefix` in the folder; `path` gets its full name.
OsError createTemporaryFile(const std::string& folder, const std::string& prefix, std::string& path);
/// Reads a whole file of at most `limit` bytes. A larger one, a folder or one that can't be read is an error.
OsError readWholeFile(const std::string& path, uint64_t limit, FileShare share, std::string& contents);
/// Writes a whole file in one step: through a temporary file beside it, so that a crash leaves the old contents or the
/// new ones.
OsError replaceWholeFile(const std::string& path, std::string_view contents);
/// Removes the temporary files that a program has left beside the file which was ended while it replaced it. Nobody
/// else may be replacing it.
void removeTemporaries(const std::string& path);

}  // namespace tarno2
