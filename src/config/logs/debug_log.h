#pragma once

#include <atomic>
#include <cstdarg>
#include <cstdint>
#include <string>

#include "platform/file.h"

namespace tarno2 {

/// The trace for developers and support: one line a step, each written with one write and flushed, so that it is
/// complete up to the last line if the program dies. Off unless `open` was called with a non-zero DebugMode; no failure
/// of it is ever reported or changes what the program does.
///
/// `log` may be called from any thread; it takes no lock, so a line may carry another thread's site number. `open` and
/// `close` belong to the window thread, while no other thread logs.
class DebugLog {
public:
    /// `settingsPath`: the settings file that switched the log on; its last three characters become "dbg". The log is
    /// opened without sharing, at its end; a separator and the start banner follow what earlier runs wrote. An open log
    /// is closed first.
    void open(const std::string& settingsPath, int32_t debugMode);
    /// Writes the closing line.
    void close();
    [[nodiscard]] bool isOpen() const { return opened_.load(std::memory_order_acquire); }

    /// printf-style, formatted in the "C" locale. A message that begins with "*" is written bare, others with time and
    /// the number of the calling site. What exceeds 2999 bytes is cut.
    void log(const char* format, ...) __attribute__((format(printf, 2, 3)));
    void logV(const char* format, va_list arguments) __attribute__((format(printf, 2, 0)));

    /// Number of the calling site, set just before each call.
    std::atomic<int32_t> line{0};

private:
    File file_;
    std::atomic<bool> opened_{false};
};

/// The program's log.
DebugLog& debugLog();

}  // namespace tarno2

/// Logs one line with the number of the source line it stands on.
#define DEBUG_LOG(...)                         \
    do {                                       \
        ::tarno2::debugLog().line = __LINE__;  \
        ::tarno2::debugLog().log(__VA_ARGS__); \
    } while (false)
