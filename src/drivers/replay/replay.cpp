// A recorded file as a board. docs/boards.md lists the settings.

#include <string>

#include "drivers/common/generator_driver.h"
#include "drivers/replay/recording.h"
#include "platform/paths.h"

namespace tarno2::drivers {

namespace {

class ReplayDriver final : public GeneratorDriver {
public:
    ReplayDriver();

    int32_t TARNO2_CALL SelectBoard(uint32_t number) noexcept override;

protected:
    std::vector<sdk::Board> search(const sdk::Settings& settings) override;
    bool settingsChanged() override;
    bool configure(const sdk::Board& board, sdk::Measurement& measurement) override;
    bool inputLimits(const sdk::Board& board, int32_t channel, int32_t gain, sdk::InputLimits& limits) override;
    std::unique_ptr<SampleSource> prepare(const sdk::Board& board, const sdk::Measurement& measurement,
                                          StreamPlan& plan) override;

private:
    Recording recording_;  ///< without a path: there is none
    std::string problem_ = "No file was chosen to be played.";
};

ReplayDriver::ReplayDriver() : GeneratorDriver("Replay") {
    settings().add(sdk::Setting::file("File", {"*.dat", "*.wav"}, "File", "Файл"));
    settings().add(sdk::Setting::integer("RealTime", 1, 0, 1, "At the rate of the file", "С частотой файла"));
    settings().add(sdk::Setting::integer("Loop", 0, 0, 1, "Begin again at the end", "По окончании начинать сначала"));
}

/// False when there are settings, or a file, that can't be used.
bool ReplayDriver::settingsChanged() {
    recording_ = {};
    std::string path = settings().text("File");
    if (!path.empty() && !isAbsolutePath(path)) {
        path = joinPath(programDirectory(), path);
    }
    path = environmentVariable("TARNO2_REPLAY_FILE").value_or(path);
    if (path.empty()) {
        const bool misread = settings().lacksQuotes("File");
        problem_ = misread ? "The name of the file stands between double quotes in Replay.cfg."
                           : "File: choose what is to be played, a .wav file or an earlier recording.";
        fail("%s", problem_.c_str());
        return !misread;
    }
    Recording recording;
    if (!openRecording(path, recording, problem_)) {
        return fail("%s", problem_.c_str());
    }
    problem_.clear();
    recording_ = std::move(recording);
    return true;
}

std::vector<sdk::Board> ReplayDriver::search(const sdk::Settings& /*settings*/) {
    if (recording_.path.empty()) {
        return {};
    }
    return {recording_.board};
}

int32_t ReplayDriver::SelectBoard(uint32_t number) noexcept {
    const int32_t selected = Driver::SelectBoard(number);
    if (selected == 0 && !problem_.empty()) {
        fail("%s", problem_.c_str());
    }
    return selected;
}

/// Each channel runs at the file's rate, whatever is asked for.
bool ReplayDriver::configure(const sdk::Board& /*board*/, sdk::Measurement& measurement) {
    measurement.frequency = recording_.channelRate * static_cast<double>(measurement.channels.size());
    return true;
}

bool ReplayDriver::inputLimits(const sdk::Board& /*board*/, int32_t channel, int32_t /*gain*/,
                               sdk::InputLimits& limits) {
    const auto index = static_cast<size_t>(channel);
    if (index >= recording_.limits.size()) {
        return false;
    }
    limits = recording_.limits[index];
    return limits.lower < limits.upper;
}

std::unique_ptr<SampleSource> ReplayDriver::prepare(const sdk::Board& /*board*/, const sdk::Measurement& measurement,
                                                    StreamPlan& plan) {
    if (!settings().flag("RealTime")) {
        plan.framesPerSecond = 0.0;
    }
    plan.endText = fileNameOf(recording_.path) + " was played to its end.";
    std::unique_ptr<SampleSource> source = playRecording(recording_, measurement, settings().flag("Loop"));
    if (source == nullptr) {
        fail("%s can't be opened any more.", recording_.path.c_str());
    }
    return source;
}

}  // namespace

}  // namespace tarno2::drivers

TARNO2_DRIVER(tarno2::drivers::ReplayDriver)
