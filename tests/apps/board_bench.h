#pragma once

#include <memory>
#include <string>
#include <vector>

#include "tests/apps/recording_rig.h"

namespace tarno2::test {

/// Records from a source that sends by itself, with `tarno2-console` as it was built, or with that of the folder
/// $TARNO2_BOARDS_PROGRAMS: under Wine where it holds Windows programs.
class BoardBench {
public:
    /// `rate`: of a channel. `settings`: as in DriverSettings.
    BoardBench(const std::string& driver, uint32_t channels, double rate, const std::string& settings);
    /// Starts the console; a recording ends with its source.
    void start();
    /// Waits for the end, which has to be with status 0 and for this reason according to the log.
    void finish(const std::string& reason);
    [[nodiscard]] const RecordingRig& rig() const { return rig_; }
    /// The Windows programs are tried from a Unix test.
    [[nodiscard]] static bool underWine();
    /// Checks that the file holds the counter, and its description the rate; how many samples there are.
    uint64_t checkCounterFile(uint32_t bytesPerSample) const;

private:
    RecordingRig rig_;
    Wish wish_;
    std::unique_ptr<ChildProcess> console_;
};

}  // namespace tarno2::test
