#pragma once

#include <cstdarg>
#include <string>

#include "platform/file.h"

namespace tarno2 {

/// `AutoLog.txt`, the log of console mode: what a user would be shown is a line in it. Appended to by every run; each
/// line is written with one write and flushed. Calls while it is closed do nothing. Window thread only.
class ConsoleLog {
public:
    /// Opens `folder`/AutoLog.txt without sharing, at its end. False when that can't be done; the program goes on.
    bool open(const std::string& folder);
    void close();
    [[nodiscard]] bool isOpen() const { return file_.isOpen(); }
    [[nodiscard]] const std::string& path() const { return path_; }

    /// printf-style, in the "C" locale; a message of more than 3000 bytes is cut.
    void log(const char* format, ...) __attribute__((format(printf, 2, 3)));
    void logV(const char* format, va_list arguments) __attribute__((format(printf, 2, 0)));

private:
    File file_;
    std::string path_;
};

/// The program's console log.
ConsoleLog& consoleLog();

}  // namespace tarno2
