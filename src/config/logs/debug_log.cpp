#include "config/logs/debug_log.h"

#include <algorithm>
#include <new>
#include <string_view>

#include "config/logs/log_file.h"
#include "config/logs/program_version.h"
#include "platform/c_locale.h"
#include "platform/clock.h"
#include "platform/codepage1251.h"

namespace tarno2 {

namespace {

constexpr size_t kLongestMessage = 2999;

std::string stamped(const std::string& message, int32_t line) {
    const LocalTime now = localTime();
    return formatText("%02d:%02d:%02d %02d.%02d.%04d line = %d --- %s\r\n", now.hour, now.minute, now.second, now.day,
                      now.month, now.year, line, message.c_str());
}

}  // namespace

void DebugLog::open(const std::string& settingsPath, int32_t debugMode) {
    close();
    constexpr std::string_view kExtension = "dbg";
    if (debugMode == 0 || settingsPath.size() < kExtension.size()) {
        return;
    }
    std::string path = settingsPath;
    path.replace(path.size() - kExtension.size(), kExtension.size(), kExtension);
    if (!openLogFile(file_, path).ok()) {
        return;
    }
    opened_.store(true, std::memory_order_release);
    log("***********************************");
    line = __LINE__;
    log("Debug start Tarno2 version = %s", versionText().c_str());
}

void DebugLog::close() {
    if (!isOpen()) {
        return;
    }
    line = __LINE__;
    log("Debug stop...");
    opened_.store(false, std::memory_order_release);
    file_.close();
}

void DebugLog::log(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    logV(format, arguments);
    va_end(arguments);
}

void DebugLog::logV(const char* format, va_list arguments) {
    if (!isOpen()) {
        return;
    }
    try {
        std::string message = systemTextToCp1251(formatTextV(format, arguments));
        message.resize(std::min(message.size(), kLongestMessage));
        writeLogLine(file_, message.starts_with('*') ? message + "\r\n" : stamped(message, line));
    } catch (const std::bad_alloc&) {
        // The one line is lost; who logs must not notice.
    }
}

DebugLog& debugLog() {
    static DebugLog log;
    return log;
}

}  // namespace tarno2
