// The simulated boards, and the faults that they show on demand. docs/drivers.md lists the settings.

#include <algorithm>
#include <cstring>
#include <string>

#include "drivers/common/driver_settings.h"
#include "drivers/common/factory.h"
#include "drivers/common/ring_device.h"
#include "drivers/simulator/boards.h"
#include "drivers/simulator/signals.h"
#include "platform/paths.h"

namespace tarno2::drivers {

namespace {

struct Faults {
    bool refuseBoard = false;
    bool refuseCheck = false;
    bool refuseInit = false;
    bool refuseStart = false;
    bool announce = true;
    bool answerRing = true;
    bool answerMaxBuffer = true;
    bool answerMaxBufferOld = true;
    bool answerCount = true;
    bool answerFacts = true;
    bool ringTakesWish = false;
    bool ringMisfit = false;
    bool ringDiffers = false;
    uint64_t overflowAfter = kNever;
    uint64_t failGetDataAt = kNever;
    uint64_t silentAfter = kNever;
    uint64_t unplugAfter = kNever;
    uint64_t countUntil = kNever;
    uint32_t abiVersion = kADCAbiVersion;
};

class SimulatorDevice final : public RingDevice {
public:
    SimulatorDevice() { takeSettings(); }

    int32_t TARNO2_CALL SetProgramDirectory(const char* folder) noexcept override;
    int32_t TARNO2_CALL SelectBoard(uint32_t number) noexcept override;
    int32_t TARNO2_CALL Setup(int32_t apply, void* block, int32_t zero) noexcept override;
    int32_t TARNO2_CALL Start() noexcept override;
    int32_t TARNO2_CALL GetData(int32_t mode, void* destination, uint32_t count, uint32_t offset) noexcept override;
    int32_t TARNO2_CALL Get(uint32_t code, void* result) noexcept override;

protected:
    std::unique_ptr<SampleSource> prepare(const BoardFacts& board, const Measurement& measurement,
                                          StreamPlan& plan) override;
    [[nodiscard]] uint32_t ringFor(const BoardFacts& board, int32_t wished, uint32_t channels) const override;

private:
    bool takeSettings();
    bool takeSignal();
    void takeFaults();
    [[nodiscard]] uint64_t sampleNumber(std::string_view key) const;
    int32_t answerRing(void* result);

    DriverSettings settings_;
    SignalSettings signal_;
    Faults faults_;
    bool realTime_ = true;
    double externalClockRate_ = 0.0;
    uint32_t externalStartAfter_ = 0;
    std::atomic<uint32_t> ringAnswers_{0};
};

int32_t SimulatorDevice::SetProgramDirectory(const char* folder) noexcept {
    return guarded([&] {
        const std::string file = joinPath(folder != nullptr ? folder : "", "Simulator.cfg");
        if (!settings_.readFile(file)) {
            return fail("%s can't be read.", file.c_str());
        }
        return takeSettings() ? 1 : 0;
    });
}

/// Takes all settings over; false after `fail` when one of them is invalid (it then counts as not set).
bool SimulatorDevice::takeSettings() {
    settings_.readEnvironment("TARNO2_SIMULATOR");
    realTime_ = settings_.flag("RealTime", true);
    const int64_t delay = settings_.integer("ExternalStartAfter", 1000);
    externalStartAfter_ = delay < 0 ? kWaitForever : static_cast<uint32_t>(std::min<int64_t>(delay, 0x7FFFFFFF));
    takeFaults();

    std::vector<BoardFacts> boards = simulatedBoards();
    const int64_t largest = settings_.integer("MaxBuffer", 0);
    const double clock = settings_.number("ExternalClockRate", 10000.0);
    for (BoardFacts& board : boards) {
        if (largest > 0) {
            board.maximumRing = static_cast<uint32_t>(std::min<int64_t>(largest, 1 << 28));
        }
        board.externalClockRate = std::clamp(static_cast<float>(clock), 1.0F, board.maximumFrequency);
    }
    boards.resize(static_cast<size_t>(std::clamp<int64_t>(settings_.integer("Boards", 4), 0, 4)));
    setBoards(std::move(boards));
    return takeSignal();
}

bool SimulatorDevice::takeSignal() {
    signal_ = {};
    signal_.frequency = std::clamp(settings_.number("SignalFrequency", signal_.frequency), 1e-6, 1e9);
    signal_.amplitude = static_cast<int32_t>(std::clamp<int64_t>(settings_.integer("Amplitude", 80), 0, 1000));
    signal_.digitalPeriod =
        static_cast<uint32_t>(std::clamp<int64_t>(settings_.integer("DigitalPeriod", 64), 1, 1 << 30));
    bool misread = false;
    const std::string name = settings_.text("Signal", "Mixed", misread);
    if (misread) {
        return fail("The name of the signal stands between double quotes.") != 0;
    }
    const struct {
        const char* name;
        Signal signal;
    } signals[] = {{"Counter", Signal::Counter}, {"Sine", Signal::Sine},   {"Square", Signal::Square},
                   {"Ramp", Signal::Ramp},       {"Noise", Signal::Noise}, {"Level", Signal::Level},
                   {"Mixed", Signal::Mixed}};
    for (const auto& known : signals) {
        if (name == known.name) {
            signal_.signal = known.signal;
            return true;
        }
    }
    return fail("There is no signal \"%s\".", name.c_str()) != 0;
}

void SimulatorDevice::takeFaults() {
    faults_.refuseBoard = settings_.flag("RefuseBoard", false);
    faults_.refuseCheck = settings_.flag("RefuseCheck", false);
    faults_.refuseInit = settings_.flag("RefuseInit", false);
    faults_.refuseStart = settings_.flag("RefuseStart", false);
    faults_.announce = !settings_.flag("NoDataEvent", false);
    faults_.answerRing = settings_.flag("AnswerRing", true);
    faults_.answerMaxBuffer = settings_.flag("AnswerMaxBuffer", true);
    faults_.answerMaxBufferOld = settings_.flag("AnswerMaxBufferOld", true);
    faults_.answerCount = settings_.flag("AnswerCount", true);
    faults_.answerFacts = settings_.flag("AnswerFacts", true);
    faults_.ringTakesWish = settings_.flag("RingTakesWish", false);
    faults_.ringMisfit = settings_.flag("RingMisfit", false);
    faults_.ringDiffers = settings_.flag("RingDiffers", false);
    faults_.overflowAfter = sampleNumber("OverflowAfter");
    faults_.failGetDataAt = sampleNumber("FailGetDataAt");
    faults_.silentAfter = sampleNumber("SilentAfter");
    faults_.unplugAfter = sampleNumber("UnplugAfter");
    faults_.countUntil = sampleNumber("CountUntil");
    faults_.abiVersion = static_cast<uint32_t>(settings_.integer("AbiVersion", kADCAbiVersion));
}

/// A count of samples; negative or not set: never.
uint64_t SimulatorDevice::sampleNumber(std::string_view key) const {
    const int64_t value = settings_.integer(key, -1);
    return value < 0 ? kNever : static_cast<uint64_t>(value);
}

int32_t SimulatorDevice::SelectBoard(uint32_t number) noexcept {
    if (faults_.refuseBoard) {
        return fail("The board is taken by another program (RefuseBoard).");
    }
    return RingDevice::SelectBoard(number);
}

int32_t SimulatorDevice::Setup(int32_t apply, void* block, int32_t zero) noexcept {
    if (apply == 0 && faults_.refuseCheck) {
        return fail("The check was refused (RefuseCheck).");
    }
    if (apply != 0 && faults_.refuseInit) {
        return fail("The setup was refused (RefuseInit).");
    }
    ringAnswers_ = 0;
    return RingDevice::Setup(apply, block, zero);
}

int32_t SimulatorDevice::Start() noexcept {
    if (faults_.refuseStart) {
        return fail("The start was refused (RefuseStart).");
    }
    return RingDevice::Start();
}

int32_t SimulatorDevice::GetData(int32_t mode, void* destination, uint32_t count, uint32_t offset) noexcept {
    if (faults_.failGetDataAt != kNever) {
        const uint64_t position = producer().positionOf(offset);
        if (faults_.failGetDataAt >= position && faults_.failGetDataAt - position < count) {
            fail("The transfer of sample %llu failed (FailGetDataAt).",
                 static_cast<unsigned long long>(faults_.failGetDataAt));
            return kADCDataFailed;
        }
    }
    return RingDevice::GetData(mode, destination, count, offset);
}

int32_t SimulatorDevice::Get(uint32_t code, void* result) noexcept {
    if (result == nullptr) {
        return 0;
    }
    switch (code) {
        case kADCGetAbiVersion:
            std::memcpy(result, &faults_.abiVersion, sizeof faults_.abiVersion);
            return 1;
        case kADCGetMaxBuffer:
            return faults_.answerMaxBuffer ? RingDevice::Get(code, result) : 0;
        case kADCGetMaxBufferOld:
            return faults_.answerMaxBufferOld ? RingDevice::Get(code, result) : 0;
        case kADCGetSamplesWritten:
            return faults_.answerCount && producer().samplesWritten() < faults_.countUntil
                       ? RingDevice::Get(code, result)
                       : 0;
        case kADCGetSampleFormat:
        case kADCGetCodeRange:
        case kADCGetInputRange:
            return faults_.answerFacts ? RingDevice::Get(code, result) : 0;
        case kADCGetRing:
            return answerRing(result);
        case kADCGetHotPlugPresence: {
            const bool gone = faults_.unplugAfter != kNever && producer().silent();
            const int32_t answered = RingDevice::Get(code, result);
            if (answered == 1 && gone) {
                std::memset(result, 0, sizeof(uint32_t));
            }
            return answered;
        }
        default:
            return RingDevice::Get(code, result);
    }
}

int32_t SimulatorDevice::answerRing(void* result) {
    if (!faults_.answerRing) {
        return fail("There is no answer about the ring (AnswerRing).");
    }
    const int32_t answered = RingDevice::Get(kADCGetRing, result);
    if (answered == 1 && faults_.ringDiffers && ringAnswers_++ > 0) {
        ADCRingInfo info{};
        std::memcpy(&info, result, sizeof info);
        info.m_nRingSize *= 2;
        std::memcpy(result, &info, sizeof info);
    }
    return answered;
}

uint32_t SimulatorDevice::ringFor(const BoardFacts& board, int32_t wished, uint32_t channels) const {
    const uint32_t whole = RingDevice::ringFor(board, wished, channels);
    if (faults_.ringMisfit) {
        return whole + 1;
    }
    if (faults_.ringTakesWish && wished > 0) {
        return std::min(static_cast<uint32_t>(wished), board.maximumRing);
    }
    return whole;
}

std::unique_ptr<SampleSource> SimulatorDevice::prepare(const BoardFacts& board, const Measurement& measurement,
                                                       StreamPlan& plan) {
    if (!realTime_) {
        plan.framesPerSecond = 0.0;
    }
    if (measurement.externalStart) {
        plan.startDelay = externalStartAfter_;
    }
    plan.announce = faults_.announce;
    plan.overflowAfter = faults_.overflowAfter;
    plan.silentAfter = std::min(faults_.silentAfter, faults_.unplugAfter);
    return makeSignal(signal_, board, measurement);
}

}  // namespace

}  // namespace tarno2::drivers

TARNO2_EXPORT void* TARNO2_CALL StaticFactory(const char* interfaceName, uint32_t flags);

TARNO2_EXPORT void* TARNO2_CALL StaticFactory(const char* interfaceName, uint32_t /*flags*/) {
    return tarno2::drivers::makeDevice<tarno2::drivers::SimulatorDevice>(interfaceName);
}
