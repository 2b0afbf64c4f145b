#include "tests/apps/board_bench.h"

#include <algorithm>
#include <gtest/gtest.h>

#include "platform/file.h"
#include "platform/paths.h"
#include "tests/support/temporary_folder.h"

namespace tarno2::test {

namespace {

std::string programFolder() {
    return environmentVariable("TARNO2_BOARDS_PROGRAMS").value_or(TARNO2_BIN);
}

/// The name by which a program under Wine knows a file.
std::string asWineSees(const std::string& path) {
    std::string name = "Z:" + path;
    std::replace(name.begin(), name.end(), '/', '\\');
    return name;
}

}  // namespace

bool BoardBench::underWine() {
    return kPathSeparator == '/' && fileExists(joinPath(programFolder(), "tarno2-console.exe"));
}

BoardBench::BoardBench(const std::string& driver, uint32_t channels, double rate, const std::string& settings) {
    wish_.driver = driver;
    wish_.board = 1;
    wish_.channels = channels;
    wish_.frequency = rate;
    wish_.more = "DriverSettings = " +
                 quoted("Channels=" + std::to_string(channels) + ";Rate=" + std::to_string(rate) + ";" + settings) +
                 "\r\n";
}

void BoardBench::start() {
    std::string file = rig_.writeSettings(wish_);
    if (!underWine()) {
        const ScopedEnvironment home("TARNO2_HOME", rig_.path());
        console_ = std::make_unique<ChildProcess>(builtFile("tarno2-console", programFolder()),
                                                  std::vector<std::string>{"/c", file}, rig_.file("output.txt"));
        return;
    }
    std::string text = readFile(file);
    const std::string name = quoted(rig_.file("run.dat"));
    text.replace(text.find(name), name.size(), quoted(asWineSees(rig_.file("run.dat"))));
    file = rig_.folder().write("auto.txt", text);
    const ScopedEnvironment home("TARNO2_HOME", asWineSees(rig_.path()));
    console_ = std::make_unique<ChildProcess>(
        "/usr/bin/wine",
        std::vector<std::string>{joinPath(programFolder(), "tarno2-console.exe"), "/c", asWineSees(file)},
        rig_.file("output.txt"));
}

void BoardBench::finish(const std::string& reason) {
    EXPECT_EQ(console_->waitForEnd(kGuard), 0) << readFile(rig_.file("output.txt"));
    EXPECT_NE(rig_.autoLog().find(reason), std::string::npos) << rig_.autoLog() << rig_.debugLog();
}

uint64_t BoardBench::checkCounterFile(uint32_t bytesPerSample) const {
    return checkRecording({rig_.file("run.dat")}, {.driver = wish_.driver,
                                                   .channels = wish_.channels,
                                                   .frequencyPerChannel = wish_.frequency,
                                                   .bytesPerSample = bytesPerSample,
                                                   .counterBits = 8 * bytesPerSample});
}

}  // namespace tarno2::test
