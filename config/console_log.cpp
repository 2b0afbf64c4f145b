#include "config/console_log.h"

#include <algorithm>
#include <new>

#include "config/log_file.h"
#include "platform/c_locale.h"
#include "platform/codepage1251.h"
#include "platform/paths.h"

namespace tarno2 {

namespace {
constexpr size_t kLongestMessage = 3000;
}

bool ConsoleLog::open(const std::string& folder) {
    close();
    path_ = joinPath(folder, "AutoLog.txt");
    return openLogFile(file_, path_);
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
        std::string line = systemTextToCp1251(formatTextV(format, arguments));
        line.resize(std::min(line.size(), kLongestMessage));
        writeLogLine(file_, line + "\r\n");
    } catch (const std::bad_alloc&) {
        // The one line is lost; who logs must not notice.
    }
}

ConsoleLog& consoleLog() {
    static ConsoleLog log;
    return log;
}

}  // namespace tarno2
