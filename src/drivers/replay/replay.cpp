// A recorded file as a board. docs/drivers.md lists the settings.

#include <cstring>
#include <string>

#include "drivers/common/driver_settings.h"
#include "drivers/common/factory.h"
#include "drivers/common/ring_device.h"
#include "drivers/replay/recording.h"
#include "platform/paths.h"

namespace tarno2::drivers {

namespace {

class ReplayDevice final : public RingDevice {
public:
    int32_t TARNO2_CALL SetProgramDirectory(const char* folder) noexcept override;
    int32_t TARNO2_CALL SelectBoard(uint32_t number) noexcept override;

protected:
    std::unique_ptr<SampleSource> prepare(const BoardFacts& board, const Measurement& measurement,
                                          StreamPlan& plan) override;

private:
    bool takeSettings(const std::string& folder);
    int32_t explain() { return fail("%s", problem_.c_str()); }

    DriverSettings settings_;
    Recording recording_;
    std::string problem_ = "No file was chosen to be played.";
    bool realTime_ = true;
    bool loop_ = false;
};

int32_t ReplayDevice::SetProgramDirectory(const char* folder) noexcept {
    return guarded([&] { return takeSettings(folder != nullptr ? folder : "") ? 1 : explain(); });
}

/// False with a text in `problem_` when there are settings, or a file, of no use.
bool ReplayDevice::takeSettings(const std::string& folder) {
    setBoards({});
    const std::string settingsFile = joinPath(folder, "Replay.cfg");
    settings_.readEnvironment("TARNO2_REPLAY");
    if (!settings_.readFile(settingsFile)) {
        problem_ = settingsFile + " can't be read.";
        return false;
    }
    realTime_ = settings_.flag("RealTime", true);
    loop_ = settings_.flag("Loop", false);
    bool misread = false;
    std::string path = settings_.text("File", "", misread);
    if (!path.empty() && !isAbsolutePath(path)) {
        path = joinPath(folder, path);
    }
    path = environmentVariable("TARNO2_REPLAY_FILE").value_or(path);
    if (path.empty()) {
        problem_ = misread ? "The name of the file stands between double quotes in Replay.cfg."
                           : "Choose the file to be played: File in Replay.cfg or TARNO2_REPLAY_FILE.";
        explain();
        return !misread;
    }
    if (!openRecording(path, recording_, problem_)) {
        return false;
    }
    setBoards({recording_.board});
    return true;
}

int32_t ReplayDevice::SelectBoard(uint32_t number) noexcept {
    const int32_t selected = RingDevice::SelectBoard(number);
    if (selected == 0 && !problem_.empty()) {
        explain();
    }
    return selected;
}

std::unique_ptr<SampleSource> ReplayDevice::prepare(const BoardFacts&, const Measurement& measurement,
                                                    StreamPlan& plan) {
    if (!realTime_) {
        plan.framesPerSecond = 0.0;
    }
    plan.completeLastHalf = true;
    plan.fillWord = recording_.zeroWord;
    std::unique_ptr<SampleSource> source = playRecording(recording_, measurement, loop_);
    if (source == nullptr) {
        fail("%s can't be opened any more.", recording_.path.c_str());
    }
    return source;
}

}  // namespace

}  // namespace tarno2::drivers

TARNO2_EXPORT void* TARNO2_CALL StaticFactory(const char* interfaceName, uint32_t flags);

TARNO2_EXPORT void* TARNO2_CALL StaticFactory(const char* interfaceName, uint32_t /*flags*/) {
    return tarno2::drivers::makeDevice<tarno2::drivers::ReplayDevice>(interfaceName);
}
