#pragma once

#include <cstdarg>
#include <string>

#include "platform/file.h"

namespace tarno2 {

/// `AutoLog.txt`, the log of console mode: what a user would be shown is a line in it. Appended to by every run; each
/// line is written with one write and flushed. Calls while it is closed do nothing. Window thread only.
class ConsoleLog {
public:
    /// Opens `folder`/AutoLog.txt without sharing, at its end. While another run has it, waits for up to a second, then
    /// takes AutoLog_2.txt, AutoLog_3.txt, ... On an error the log stays closed, and the program goes on.
    OsError open(const std::string& folder);
    void close();
    [[nodiscard]] bool isOpen() const { return file_.isOpen(); }
    /// Of the log that is open, or could not be opened.
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
