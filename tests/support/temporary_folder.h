#pragma once

#include <string>
#include <string_view>

namespace tarno2::test {

/// A fresh folder for one test, removed with all it holds at the end.
class TemporaryFolder {
public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    [[nodiscard]] const std::string& path() const { return path_; }
    /// Full name of a file in the folder; '/' in `name` becomes the system's separator.
    [[nodiscard]] std::string file(std::string_view name) const;
    /// Writes a file into the folder; returns its full name.
    std::string write(std::string_view name, std::string_view contents) const;

private:
    std::string path_;
};

/// The bytes of a file; a failed expectation and an empty string when it can't be read.
[[nodiscard]] std::string readFile(const std::string& path);

/// A text as the value of a key in a settings file: in quotes, with its own quotes and backslashes escaped.
[[nodiscard]] std::string quoted(const std::string& text);

/// Sets a variable of the environment for as long as it lives, then puts back what was there.
class ScopedEnvironment {
public:
    ScopedEnvironment(const char* name, const std::string& value);
    ~ScopedEnvironment();
    ScopedEnvironment(const ScopedEnvironment&) = delete;
    ScopedEnvironment& operator=(const ScopedEnvironment&) = delete;

private:
    std::string name_;
    bool had_ = false;
    std::string old_;
};

}  // namespace tarno2::test
