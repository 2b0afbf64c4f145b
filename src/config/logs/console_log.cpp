#include "config/logs/console_log.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <new>
#include <thread>

#include "config/logs/log_file.h"
#include "platform/c_locale.h"
#include "platform/codepage1251.h"
#include "platform/paths.h"

namespace tarno2 {

namespace {

constexpr size_t kLongestLine = 3000;
constexpr int kMostLogs = 99;
constexpr std::chrono::milliseconds kPatience{1000};
constexpr std::chrono::milliseconds kRetryPeriod{50};

}  // namespace

OsError ConsoleLog::open(const std::string& folder) {
    close();
    path_ = joinPath(folder, "AutoLog.txt");
    OsError error = openLogFile(file_, path_);
    const auto end = std::chrono::steady_clock::now() + kPatience;
    while (error.inUse() && std::chrono::steady_clock::now() < end) {
        std::this_thread::sleep_for(kRetryPeriod);
        error = openLogFile(file_, path_);
    }
    for (int number = 2; error.inUse() && number <= kMostLogs; ++number) {
        path_ = joinPath(folder, "AutoLog_" + std::to_string(number) + ".txt");
        error = openLogFile(file_, path_);
    }
    return error;
}

void ConsoleLog::close() {
    if (isOpen()) {
        file_.close();
    }
}

void ConsoleLog::log(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    logV(format, arguments);
    va_end(arguments);
}

void ConsoleLog::logV(const char* format, va_list arguments) {
    if (!isOpen()) {
        return;
    }
    try {
        const std::string message = formatTextV(format, arguments);
        std::string line = systemTextToCp1251(message);
        line.resize(std::min(line.size(), kLongestLine));
        if (!writeLogLine(file_, line + "\r\n")) {
            std::fprintf(stderr, "%s\n", message.c_str());  // on a full disk nobody would be told otherwise
        }
    } catch (const std::bad_alloc&) {
        // The one line is lost; who logs must not notice.
    }
}

ConsoleLog& consoleLog() {
    static ConsoleLog log;
    return log;
}

}  // namespace tarno2
