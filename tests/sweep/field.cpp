#include "tests/sweep/field.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <filesystem>
#include <stdexcept>
#include <utility>

#include "platform/file.h"
#include "platform/paths.h"
#include "tests/core/bait_files.h"
#include "tests/support/process.h"

namespace tarno2::test {

namespace {

namespace fs = std::filesystem;

constexpr std::chrono::seconds kGuard{60};

}  // namespace

Field::Field(std::string programs) : programs_(std::move(programs)) {
    fs::create_directory(folder_.file("home"));
    layOwnFiles(folder_, "data");
    laySnares(folder_, "data", "outside");
    bait_.emplace_back(folder_.file("data"));
    bait_.emplace_back(folder_.file("outside"));
    makeRecordings();
}

// Without checksums: their thread reads when there is room, so that the calls would not have the same numbers each
// time.
void Field::writeSettings(const std::string& name, uint64_t bytes, uint32_t frequency) {
    settings_ = "DebugMode = 0\r\nDriverName = \"Simulator\"\r\nBaseNumber = 2\r\nFileName = " +
                quoted(folder_.file("data/" + name)) +
                "\r\nChannelCount = 2\r\nChannelsNumber = 0, 1\r\nFrequency = " + std::to_string(frequency) +
                "\r\n"
                "Checksums = 0\r\nCutMode = 1\r\nMeasureFileMode = 2\r\nSizeNeedHight = 0\r\nSizeNeedLow = " +
                std::to_string(bytes) + "\r\n";
}

// Recordings that were cut off at different places, some of them with a torn frame.
void Field::makeRecordings() {
    signal_ = "Ramp";
    writeSettings("run.dat", 1300000, 500000);
    static_cast<void>(run(kRecord, {}));
    earlier_ = files();
    signal_ = "Counter";
    clear();
    writeSettings("dead.dat", 1500000);
    const uint32_t calls = run(kRecord, {}).calls["any"];
    uint32_t count = 0;
    for (uint32_t percent = 60; percent < 100; percent += 8) {
        clear();
        const std::string base = "dead" + std::to_string(percent);
        writeSettings(base + ".dat", 1500000);
        static_cast<void>(run(kRecord, "any " + std::to_string(calls * percent / 100) + " kill"));
        const Files left = files();
        const bool unfinished =
            std::any_of(left.begin(), left.end(), [](const auto& file) { return file.first.ends_with("journal"); });
        for (const auto& [name, contents] : left) {
            const bool described = left.contains(name.substr(0, name.rfind('.')) + ".txt");
            if (unfinished) {
                cutOff_[name] = contents + (contents.empty() || described || !name.ends_with(".dat") ? "" : "tor");
            }
        }
        count += unfinished ? 1 : 0;
    }
    clear();
    put(cutOff_);
    static_cast<void>(run(kRecover, {}));
    recovered_ = files();
    clear();
    writeSettings("run.dat", kRecordedBytes);
    if (earlier_.size() != 5 || count < 3 || recovered_.size() < 5) {
        throw std::runtime_error("The recordings to begin with are not there: " + std::to_string(earlier_.size()) +
                                 " files, " + std::to_string(count) + " cut off, " + std::to_string(recovered_.size()) +
                                 " files of them recovered");
    }
}

void Field::clear() {
    for (const std::string& name : listDirectory(folder_.file("data"))) {
        if (!bait_.front().has(name)) {
            fs::remove_all(folder_.file("data/" + name));
        }
    }
    for (const std::string& name : listDirectory(folder_.file("home"))) {
        fs::remove_all(folder_.file("home/" + name));
    }
}

void Field::put(const Files& files) const {
    for (const auto& [name, contents] : files) {
        folder_.write("data/" + name, contents);
    }
}

void Field::reset() {
    clear();
    put(earlier_);
    put(cutOff_);
}

Outcome Field::run(const std::string& program, const std::string& fault) {
    const std::string output = folder_.file("output.txt");
    const ScopedEnvironment home("TARNO2_HOME", folder_.file("home"));
    const ScopedEnvironment simulator("TARNO2_SIMULATOR", "RealTime=0;Signal=" + signal_);
    const ScopedEnvironment wish(kFaultVariable, fault);
    const ScopedEnvironment report(kFaultReportVariable,
                                   folder_.write("report", std::string(sizeof(FaultReport), '\0')));
    const ScopedEnvironment library("LD_PRELOAD", joinPath(executableFolder(), "tarno2-fault.so"));
    const std::vector<std::string> record{"/c", folder_.write("auto.txt", settings_)};
    const std::vector<std::string> recover{"--no-checksums", folder_.file("data")};
    ChildProcess process(programs_ + '/' + program, program == kRecord ? record : recover, output);
    Outcome outcome;
    outcome.status = process.waitForEnd(kGuard).value_or(-1);
    process.kill();
    const std::string log = folder_.file("home/AutoLog.txt");
    outcome.told = (fileExists(log) ? readFile(log) : std::string()) + readFile(output);
    const std::string reported = readFile(folder_.file("report"));
    std::array<uint32_t, kCallKinds.size() + 1> counts{};
    std::memcpy(counts.data(), reported.data(), sizeof counts);
    for (size_t kind = 0; kind < kCallKinds.size(); ++kind) {
        outcome.calls[kCallKinds[kind]] = counts[kind];
    }
    outcome.struck = counts.back() != 0;
    outcome.what = reported.c_str() + sizeof counts;
    return outcome;
}

Files Field::files() const {
    Files files;
    for (const std::string& name : listDirectory(folder_.file("data"))) {
        if (!bait_.front().has(name)) {
            files[name] = readFile(folder_.file("data/" + name));
        }
    }
    return files;
}

std::string Field::touchedBait() {
    for (Bait& bait : bait_) {
        if (const std::string name = bait.touched(); !name.empty()) {
            bait = Bait(bait.folder());
            return name + " of somebody else was touched";
        }
    }
    return {};
}

}  // namespace tarno2::test
