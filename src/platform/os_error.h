#pragma once

#include <string>

namespace tarno2 {

/// What the operating system answered to a call: its own error number (errno, GetLastError), 0 for success.
class OsError {
public:
    OsError() = default;
    explicit OsError(int code) : code_(code) {}

    /// The error of the last failed system call of this thread.
    static OsError last();
    /// The system's error for a file that is larger than can be dealt with.
    static OsError tooLarge();

    [[nodiscard]] bool ok() const { return code_ == 0; }
    [[nodiscard]] int code() const { return code_; }
    /// The name is taken: a file or folder of that name exists already.
    [[nodiscard]] bool alreadyExists() const;
    /// Somebody else holds the file or the device.
    [[nodiscard]] bool inUse() const;
    /// The device can't do what was asked for.
    [[nodiscard]] bool notSupported() const;
    /// There is no such file or folder.
    [[nodiscard]] bool notFound() const;
    /// The system's own words, in its own language, without a line end.
    [[nodiscard]] std::string text() const;

private:
    int code_ = 0;
};

}  // namespace tarno2
