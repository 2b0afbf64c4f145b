#include "tests/soak/soak_recording.h"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <future>
#include <numeric>
#include <set>
#include <vector>

#include "config/files/recording_name.h"
#include "core/recording/board.h"
#include "core/recording/static_parameters.h"
#include "core/storage/recovery.h"
#include "drivers/simulator/counter_signal.h"
#include "platform/clock.h"
#include "platform/file.h"
#include "platform/paths.h"
#include "records/recorded_format.h"
#include "tests/core/bait_files.h"
#include "tests/core/faulty_disk.h"
#include "tests/support/bait.h"
#include "tests/support/temporary_folder.h"

namespace tarno2::test {

namespace {

constexpr uint32_t kSilenceMs = 3000;

/// A recording's last notification.
class LastWord final : public NotificationTarget {
public:
    void post(const Notification& notification) override {
        if (notification.result.code != StopCode::Running) {
            word_.set_value(notification.result);
        }
    }
    [[nodiscard]] std::future<RecordingResult> future() { return word_.get_future(); }

private:
    std::promise<RecordingResult> word_;
};

void breakDisk(const Plan& plan, FaultyDisk& disk) {
    const uint32_t number = plan.diskNumber;
    const uint32_t milliseconds = plan.stallMs;
    switch (plan.disk) {
        case DiskTrouble::None:
            break;
        case DiskTrouble::Stalls:
            disk.beforeWrite = [=](uint32_t write) { sleepMilliseconds((write + 1) % number == 0 ? milliseconds : 0); };
            break;
        case DiskTrouble::LongStall:
            disk.beforeWrite = [=](uint32_t write) { sleepMilliseconds(write == number ? milliseconds : 0); };
            break;
        case DiskTrouble::SlowClose:
            disk.beforeClose = [=] { sleepMilliseconds(milliseconds); };
            break;
        case DiskTrouble::Full:
            disk.capacity = plan.diskBytes;
            break;
        case DiskTrouble::ShortWrite:
            disk.shortWrites = true;
            break;
        case DiskTrouble::NoFile:
            disk.failingCreate = number;
            break;
        case DiskTrouble::NoFlush:
            disk.failingFlush = true;
            break;
        case DiskTrouble::NoClose:
            disk.failingClose = true;
            break;
    }
}

/// Runs the session; returns what was wrong before it could start.
std::string record(const Plan& plan, const TemporaryFolder& folder, const std::string& dataName, SoakResult& out) {
    T_DRIVER driver([&out](const std::string& fault) { out.fault += fault; });
    std::string why;
    if (!driver.LoadDriver("Simulator", folder.path(), why) || !driver.selectBoard(plan.board, why)) {
        return why;
    }
    FaultyDisk disk;
    breakDisk(plan, disk);
    LastWord lastWord;
    std::future<RecordingResult> last = lastWord.future();
    RecordDescription description;
    T_BOARD board(driver, 1, [&out](const std::string& fault) { out.fault += fault; });
    board.settings.channels.resize(plan.channels);
    std::iota(board.settings.channels.begin(), board.settings.channels.end(), 0);
    board.settings.gains.assign(plan.channels, 1);
    board.settings.frequency = static_cast<float>(plan.frequency);
    board.decimation = plan.decimation;
    if (plan.trouble == BoardTrouble::Silence) {
        board.dataWaitMs = kSilenceMs;
    }
    if (!board.ready() || !board.StartThread(&lastWord, {})) {
        return "the session does not start: " + board.failure().problem;
    }
    WriterSetup setup;
    setup.fileName = dataName;
    setup.sampleWidth = plan.sampleWidth;
    setup.channelCount = plan.channels;
    setup.limitBytes = plan.limitBytes;
    setup.pieceBytes = plan.pieceBytes;
    setup.bytesPerSecond = plan.frequency * plan.sampleWidth / plan.decimation;
    setup.bufferBytes = bufferFor(setup.bytesPerSecond, plan.bufferLimit);
    setup.longestWaitMs = plan.longestWaitMs;
    setup.makeFile = disk.maker();
    if (!calculateStaticParameters(driver, board, setup.facts, why) || board.writer().open(setup, description) != 0) {
        return "the recording does not start: " + why + board.writer().openError();
    }
    board.writer().setCreateTime(localTime());
    board.Begin();
    if (plan.stopAfterMs != 0 &&
        last.wait_for(std::chrono::milliseconds(plan.stopAfterMs)) == std::future_status::timeout) {
        board.requestStop();
    }
    out.recording = last.get();
    board.endThread();
    out.worstLoad = board.worstLoad() / 1000.0;
    return {};
}

/// Follows the counter signal through the files of a recording.
class Checker {
public:
    explicit Checker(const Plan& plan) : plan_(plan) {}
    /// Returns what is wrong with the file.
    [[nodiscard]] std::string check(const std::string& name);
    [[nodiscard]] uint64_t samples() const { return samples_; }

private:
    [[nodiscard]] uint32_t expected() const {
        const uint64_t frame = samples_ / plan_.channels * plan_.decimation;
        return drivers::counterWord(frame * plan_.channels + samples_ % plan_.channels, plan_.counterBits);
    }

    const Plan& plan_;
    uint64_t samples_ = 0;
};

std::string Checker::check(const std::string& name) {
    const std::string data = readFile(name);
    RecordedFormat format;
    std::string missing;
    if (!readRecordedFormat(RecordDescription::fileNameFor(name), format, missing)) {
        return name + " is not described: " + missing;
    }
    if (data.empty() || data.size() != format.frames * plan_.frameBytes() || format.channelCount != plan_.channels) {
        return name + " has " + std::to_string(data.size()) + " bytes, described as " + std::to_string(format.frames) +
               " frames of " + std::to_string(format.channelCount) + " channels";
    }
    for (size_t at = 0; at < data.size(); at += plan_.sampleWidth) {
        uint32_t word = 0;  // little-endian
        std::memcpy(&word, data.data() + at, plan_.sampleWidth);
        if ((word & (0xFFFFFFFFU >> (32 - plan_.counterBits))) != expected()) {
            return name + ": sample " + std::to_string(samples_) + " of the recording is not the one of the signal";
        }
        ++samples_;
    }
    return {};
}

bool mayFail(DiskTrouble trouble) {
    return trouble >= DiskTrouble::Full;
}

StopCode codeOf(BoardTrouble trouble) {
    constexpr StopCode kCodes[] = {StopCode::Running, StopCode::Error, StopCode::TransferError, StopCode::NoData,
                                   StopCode::Unplug};
    return kCodes[static_cast<size_t>(trouble)];
}

/// Whether the end is one that the plan explains, with as many samples as it says.
std::string checkEnd(const Plan& plan, const RecordingResult& result, uint64_t samples) {
    const uint64_t bytes = samples * plan.sampleWidth;
    const bool overflow = result.code == StopCode::Error && result.detail == ErrorDetail::Overflow;
    const StopCode rule = plan.limitBytes != 0 ? StopCode::StopMeasuring : StopCode::User;
    const bool explained = result.code == rule || (overflow && plan.realTime) ||
                           (plan.trouble != BoardTrouble::None && result.code == codeOf(plan.trouble)) ||
                           (mayFail(plan.disk) && result.code == StopCode::WriteError);
    if (!explained) {
        return "it ended with code " + std::to_string(static_cast<int>(result.code)) + ": " + result.problem;
    }
    if (!mayFail(plan.disk) && bytes != result.bytes) {
        return std::to_string(result.bytes) + " bytes were accepted, the files have " + std::to_string(bytes);
    }
    if (plan.limitBytes != 0 && bytes > plan.limitBytes) {
        return "more than the limit: " + std::to_string(bytes);
    }
    if (result.code == StopCode::WriteError && plan.disk == DiskTrouble::Full &&
        bytes + plan.frameBytes() <= std::min(plan.diskBytes, result.bytes)) {
        return "of " + std::to_string(plan.diskBytes) + " bytes that fit there are " + std::to_string(bytes);
    }
    const uint64_t whole = samples * plan.decimation;
    if (overflow && !mayFail(plan.disk) && plan.decimation == 1 && result.overflowPosition != samples) {
        return "overflow at " + std::to_string(result.overflowPosition) + " of " + std::to_string(samples);
    }
    const bool silenced = result.code == StopCode::NoData || result.code == StopCode::Unplug;
    const uint64_t came = plan.troubleAt / plan.channels * plan.channels;
    if (silenced && !mayFail(plan.disk) && came - std::min(whole, came) >= uint64_t{plan.decimation} * plan.channels) {
        return "of " + std::to_string(came) + " samples that came there are " + std::to_string(whole);
    }
    return {};
}

/// Whether losses are listed when there were some, and those of the disk begin where the files end.
std::string checkLosses(const RecordingResult& result, uint64_t samples, bool listed) {
    if (listed == result.losses.empty()) {
        return listed ? "losses are listed, but there were none" : "losses are not listed";
    }
    const bool lost = result.code == StopCode::TransferError ||
                      (result.code == StopCode::Error && result.detail == ErrorDetail::Overflow);
    if (lost && !listed) {
        return "no loss is known";
    }
    for (const Loss& loss : result.losses) {
        if (loss.cause == LossCause::Disk && loss.sample != samples) {
            return "the disk lost samples from " + std::to_string(loss.sample) + " on, the files end at " +
                   std::to_string(samples);
        }
    }
    return {};
}

}  // namespace

SoakResult recordAndCheck(const Plan& plan) {
    SoakResult result;
    const TemporaryFolder folder;
    folder.write("Simulator.cfg", plan.simulatorSettings());
    const std::string dataFolder = folder.file("data");
    layOwnFiles(folder, "data");
    laySnares(folder, "data", "outside");
    const Bait bait(dataFolder);
    const Bait outside(folder.file("outside"));
    const std::string dataName = joinPath(dataFolder, "run.dat");
    if (std::string why = record(plan, folder, dataName, result); !why.empty() || !result.fault.empty()) {
        result.fault += why;
        return result;
    }
    Checker checker(plan);
    const std::vector<std::string> names = listDirectory(dataFolder);
    std::set<std::string> left(names.begin(), names.end());
    std::erase_if(left, [&bait](const std::string& name) { return bait.has(name); });
    for (uint32_t number = 0; left.erase(fileNameOf(RecordingName(dataName).piece(number))) != 0; ++number) {
        const std::string name = RecordingName(dataName).piece(number);
        left.erase(fileNameOf(RecordDescription::fileNameFor(name)));
        result.fault = checker.check(name);
        if (!result.fault.empty()) {
            return result;
        }
        ++result.files;
    }
    result.bytes = checker.samples() * plan.sampleWidth;
    const bool listed = left.erase(fileNameOf(RecordingName(dataName).losses())) != 0;
    if (!left.empty()) {
        result.fault = *left.begin() + " is left over";
        return result;
    }
    static_cast<void>(recoverFolder(dataFolder));
    for (const Bait* files : {&bait, &outside}) {
        if (const std::string name = files->touched(); !name.empty()) {
            result.fault = name + " of somebody else was touched";
            return result;
        }
    }
    result.fault = checkLosses(result.recording, checker.samples(), listed);
    if (result.fault.empty()) {
        result.fault = checkEnd(plan, result.recording, checker.samples());
    }
    return result;
}

}  // namespace tarno2::test
