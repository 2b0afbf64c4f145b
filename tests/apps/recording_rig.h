#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "records/recorded_format.h"
#include "tests/support/process.h"
#include "tests/support/temporary_folder.h"

namespace tarno2::test {

inline constexpr std::chrono::seconds kGuard{300};  ///< for what ends in seconds on an idle machine
inline constexpr uint64_t kMebibyte = 1024 * 1024;

/// The recording that an autosettings file asks for.
struct Wish {
    std::string driver = "Simulator";
    uint32_t board = 2;
    std::string fileName = "run.dat";  ///< a name alone lies in the rig's folder; empty: the key is left out
    uint32_t channels = 2;             ///< 0, 1, 2, ...
    double frequency = 1e6;            ///< total Hz
    uint32_t cut = 0;                  ///< MiB
    double seconds = 0.0;              ///< ends after so long, when above 0
    uint64_t bytes = 0;                ///< ends at that size, when above 0
    std::string more;                  ///< further lines
};

/// Runs the recording programs in a folder of their own and finds the files that they leave there.
class RecordingRig {
public:
    /// Writes the autosettings file.
    std::string writeSettings(const Wish& wish) const;
    /// Starts `tarno2-console /c`, or another program so, with those settings. `simulator` is the value of
    /// TARNO2_SIMULATOR.
    [[nodiscard]] std::unique_ptr<ChildProcess> start(const Wish& wish, const std::string& simulator,
                                                      const std::string& program = "tarno2-console") const;
    /// Likewise, by a shell (not on Windows) that runs these commands before it becomes the program.
    [[nodiscard]] std::unique_ptr<ChildProcess> startAfter(const std::string& commands, const Wish& wish,
                                                           const std::string& simulator,
                                                           const std::string& program = "tarno2-console") const;
    /// Records until the program ends by itself, which has to be with status 0.
    void record(const Wish& wish, const std::string& simulator = "RealTime=0;Signal=Counter") const;
    /// Runs a program of the build with these arguments to its end; returns what it printed, with LF as line end.
    std::string run(const std::string& program, const std::vector<std::string>& arguments,
                    int expectedStatus = 0) const;

    [[nodiscard]] const std::string& path() const { return folder_.path(); }
    [[nodiscard]] const TemporaryFolder& folder() const { return folder_; }
    [[nodiscard]] std::string file(const std::string& name) const { return folder_.file(name); }
    [[nodiscard]] std::string autoLog() const { return readFile(file("AutoLog.txt")); }
    [[nodiscard]] std::string debugLog() const { return readFile(file("AutoLog.dbg")); }
    /// Names of the files of a recording that exist: its own, then _1, _2, ... as far as they go without a gap.
    [[nodiscard]] std::vector<std::string> pieces(const std::string& name = "run.dat") const;
    [[nodiscard]] bool exists(const std::string& name) const;
    /// Bytes of a file; 0 when it is not there.
    [[nodiscard]] uint64_t size(const std::string& name) const;

private:
    TemporaryFolder folder_;
};

/// The name of a program or library of the build; by default of one that users run.
[[nodiscard]] std::string builtFile(const std::string& name, const std::string& folder = TARNO2_BIN);

/// What a description has to tell, and how the counter signal runs through the files.
struct Expected {
    std::string driver = "Simulator";
    uint32_t channels = 2;
    double frequencyPerChannel = 5e5;
    uint32_t bytesPerSample = 2;
    uint32_t counterBits = 16;
};

/// Checks that the files hold the counter signal from sample 0 on without a gap, across their borders. Returns how
/// many samples that are.
uint64_t checkCounter(const std::vector<std::string>& files, const Expected& expected);
/// Checks that each file has whole frames and a description that fits it.
void checkDescriptions(const std::vector<std::string>& files, const Expected& expected);
/// Both of these.
uint64_t checkRecording(const std::vector<std::string>& files, const Expected& expected);

/// Looks again and again until the condition holds; false when it never does.
[[nodiscard]] bool waitUntil(const std::function<bool()>& condition, std::chrono::seconds guard = kGuard);

/// The number after the text in the log; a failed expectation when it is not there.
uint64_t numberAfter(const std::string& log, const std::string& text);

}  // namespace tarno2::test
