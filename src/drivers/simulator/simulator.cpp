// The simulated boards, and the faults that they show on demand. docs/boards.md lists the settings.

#include <algorithm>
#include <cstring>
#include <string>

#include "drivers/common/generator_driver.h"
#include "drivers/simulator/boards.h"
#include "drivers/simulator/signals.h"

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
    uint64_t endAfter = kNever;
    uint32_t endCause = kADCEndLost;
    uint64_t endLost = 0;
    uint32_t abiVersion = kADCAbiVersion;
};

class SimulatorDriver final : public GeneratorDriver {
public:
    SimulatorDriver();

    int32_t TARNO2_CALL SelectBoard(uint32_t number) noexcept override;
    int32_t TARNO2_CALL Setup(int32_t apply, void* block, int32_t zero) noexcept override;
    int32_t TARNO2_CALL Start() noexcept override;
    int32_t TARNO2_CALL GetData(int32_t mode, void* destination, uint32_t count, uint32_t offset) noexcept override;
    int32_t TARNO2_CALL Get(uint32_t code, void* result) noexcept override;

protected:
    std::vector<sdk::Board> search(const sdk::Settings& settings) override;
    bool settingsChanged() override;
    std::unique_ptr<SampleSource> prepare(const sdk::Board& board, const sdk::Measurement& measurement,
                                          StreamPlan& plan) override;
    [[nodiscard]] uint32_t ringFor(const sdk::Board& board, int32_t wished, uint32_t channels) const override;

private:
    bool takeSignal();
    void takeFaults();
    [[nodiscard]] uint64_t sampleNumber(const char* key);
    int32_t answerRing(void* result);

    void markFrames();

    SignalSettings signal_;
    Faults faults_;
    uint64_t frameSamples_ = 1;
    uint64_t marked_ = 0;  ///< marks since the start
    std::atomic<uint32_t> ringAnswers_{0};
};

constexpr std::pair<const char*, Signal> kSignals[] = {
    {"Mixed", Signal::Mixed}, {"Sine", Signal::Sine},   {"Square", Signal::Square},  {"Ramp", Signal::Ramp},
    {"Noise", Signal::Noise}, {"Level", Signal::Level}, {"Counter", Signal::Counter}};

constexpr double kLargestClockError = 1e5;

SimulatorDriver::SimulatorDriver() : GeneratorDriver("Simulator") {
    std::vector<std::string> signals;
    for (const auto& [name, signal] : kSignals) {
        signals.emplace_back(name);
    }
    sdk::Settings& all = settings();
    using sdk::Setting;
    all.add(Setting::choice("Signal", "Mixed", signals, "Waveform", "Форма сигнала"));
    all.add(Setting::real("SignalFrequency", 10.0, 1e-6, 1e9, "Frequency of the signal, Hz", "Частота сигнала, Гц"));
    all.add(Setting::integer("Amplitude", 80, 0, 1000, "Amplitude, % of the range", "Амплитуда, % диапазона"));
    all.add(Setting::integer("DigitalPeriod", 64, 1, 1 << 30, "Frames until line 0 toggles",
                             "Кадров до переключения линии 0"));
    all.add(Setting::integer("MarkEvery", 0, 0, 0x7FFFFFFF, "Frames from mark to mark (0: no marks)",
                             "Кадров от метки до метки (0: без меток)"));
    all.add(Setting::integer("RealTime", 1, 0, 1, "At the rate that was asked for", "С заданной частотой"));
    all.add(Setting::real("ClockError", 0.0, -kLargestClockError, kLargestClockError,
                          "Error of the board's clock, millionths", "Погрешность генератора платы, миллионные доли"));
    all.add(Setting::integer("ExternalStartAfter", 1000, -1, 0x7FFFFFFF, "External start after, ms (-1: never)",
                             "Внешний старт через, мс (-1: никогда)"));
    all.add(Setting::real("ExternalClockRate", 10000.0, 1.0, 40e6, "Rate of the external clock, Hz",
                          "Частота внешнего тактирования, Гц"));
    settingsChanged();
}

bool SimulatorDriver::settingsChanged() {
    takeFaults();
    return takeSignal();
}

/// The parts of a text, parted by vertical bars.
std::vector<std::string> partsOf(const std::string& text) {
    std::vector<std::string> parts;
    for (size_t at = 0; at < text.size();) {
        const size_t end = std::min(text.find('|', at), text.size());
        parts.push_back(text.substr(at, end - at));
        at = end + 1;
    }
    return parts;
}

std::vector<sdk::Board> SimulatorDriver::search(const sdk::Settings& settings) {
    std::vector<sdk::Board> boards = simulatedBoards();
    const int64_t largest = settings.integer("MaxBuffer", 0);
    for (sdk::Board& board : boards) {
        if (largest > 0) {
            board.maximumRing = static_cast<uint32_t>(std::min<int64_t>(largest, 1 << 28));
        }
        board.channelNames = partsOf(settings.text("ChannelNames"));
        board.channelUnits = partsOf(settings.text("ChannelUnits"));
        board.externalClockRate =
            std::clamp(static_cast<float>(settings.real("ExternalClockRate")), 1.0F, board.maximumFrequency);
    }
    boards.resize(static_cast<size_t>(std::clamp<int64_t>(settings.integer("Boards", 4), 0, 4)));
    return boards;
}

bool SimulatorDriver::takeSignal() {
    signal_ = {};
    signal_.frequency = settings().real("SignalFrequency");
    signal_.amplitude = static_cast<int32_t>(settings().integer("Amplitude"));
    signal_.digitalPeriod = static_cast<uint32_t>(settings().integer("DigitalPeriod"));
    if (settings().lacksQuotes("Signal")) {
        return fail("The name of the signal stands between double quotes.");
    }
    const std::string name = settings().text("Signal");
    for (const auto& [known, signal] : kSignals) {
        if (name == known) {
            signal_.signal = signal;
            return true;
        }
    }
    return fail("There is no signal \"%s\".", name.c_str());
}

void SimulatorDriver::takeFaults() {
    const sdk::Settings& given = settings();
    faults_.refuseBoard = given.flag("RefuseBoard", false);
    faults_.refuseCheck = given.flag("RefuseCheck", false);
    faults_.refuseInit = given.flag("RefuseInit", false);
    faults_.refuseStart = given.flag("RefuseStart", false);
    faults_.announce = !given.flag("NoDataEvent", false);
    faults_.answerRing = given.flag("AnswerRing", true);
    faults_.answerMaxBuffer = given.flag("AnswerMaxBuffer", true);
    faults_.answerMaxBufferOld = given.flag("AnswerMaxBufferOld", true);
    faults_.answerCount = given.flag("AnswerCount", true);
    faults_.answerFacts = given.flag("AnswerFacts", true);
    faults_.ringTakesWish = given.flag("RingTakesWish", false);
    faults_.ringMisfit = given.flag("RingMisfit", false);
    faults_.ringDiffers = given.flag("RingDiffers", false);
    faults_.overflowAfter = sampleNumber("OverflowAfter");
    faults_.failGetDataAt = sampleNumber("FailGetDataAt");
    faults_.silentAfter = sampleNumber("SilentAfter");
    faults_.unplugAfter = sampleNumber("UnplugAfter");
    faults_.countUntil = sampleNumber("CountUntil");
    faults_.endAfter = sampleNumber("EndAfter");
    faults_.endCause = static_cast<uint32_t>(given.integer("EndCause", kADCEndLost));
    faults_.endLost = static_cast<uint64_t>(std::max<int64_t>(given.integer("EndLost", 0), 0));
    faults_.abiVersion = static_cast<uint32_t>(given.integer("AbiVersion", kADCAbiVersion));
}

/// A count of samples; negative or not set: never.
uint64_t SimulatorDriver::sampleNumber(const char* key) {
    const int64_t value = settings().integer(key, -1);
    return value < 0 ? kNever : static_cast<uint64_t>(value);
}

int32_t SimulatorDriver::SelectBoard(uint32_t number) noexcept {
    if (faults_.refuseBoard) {
        return fail("The board is taken by another program (RefuseBoard).") ? 1 : 0;
    }
    return Driver::SelectBoard(number);
}

int32_t SimulatorDriver::Setup(int32_t apply, void* block, int32_t zero) noexcept {
    if (apply == 0 && faults_.refuseCheck) {
        return fail("The check was refused (RefuseCheck).") ? 1 : 0;
    }
    if (apply != 0 && faults_.refuseInit) {
        return fail("The setup was refused (RefuseInit).") ? 1 : 0;
    }
    ringAnswers_ = 0;
    return Driver::Setup(apply, block, zero);
}

int32_t SimulatorDriver::Start() noexcept {
    if (faults_.refuseStart) {
        return fail("The start was refused (RefuseStart).") ? 1 : 0;
    }
    marked_ = 0;
    return Driver::Start();
}

/// Marks every so many frames of what has been made by now.
void SimulatorDriver::markFrames() {
    const auto every = static_cast<uint64_t>(settings().integer("MarkEvery"));
    while (every != 0 && (marked_ + 1) * every * frameSamples_ <= ring().written() &&
           mark((marked_ + 1) * every * frameSamples_, "Mark " + std::to_string(marked_ + 1))) {
        ++marked_;
    }
}

int32_t SimulatorDriver::GetData(int32_t mode, void* destination, uint32_t count, uint32_t offset) noexcept {
    if (faults_.failGetDataAt != kNever) {
        const uint64_t position = ring().positionOf(offset);
        if (faults_.failGetDataAt >= position && faults_.failGetDataAt - position < count) {
            fail("The transfer of sample %llu failed (FailGetDataAt).",
                 static_cast<unsigned long long>(faults_.failGetDataAt));
            return kADCDataFailed;
        }
    }
    return Driver::GetData(mode, destination, count, offset);
}

int32_t SimulatorDriver::Get(uint32_t code, void* result) noexcept {
    if (result == nullptr) {
        return 0;
    }
    switch (code) {
        case kADCGetAbiVersion:
            std::memcpy(result, &faults_.abiVersion, sizeof faults_.abiVersion);
            return 1;
        case kADCGetMaxBuffer:
            return faults_.answerMaxBuffer ? Driver::Get(code, result) : 0;
        case kADCGetMaxBufferOld:
            return faults_.answerMaxBufferOld ? Driver::Get(code, result) : 0;
        case kADCGetSamplesWritten:
            return faults_.answerCount && ring().written() < faults_.countUntil ? Driver::Get(code, result) : 0;
        case kADCGetSampleFormat:
        case kADCGetCodeRange:
        case kADCGetInputRange:
            return faults_.answerFacts ? Driver::Get(code, result) : 0;
        case kADCGetRing:
            return answerRing(result);
        case kADCGetMark:
            markFrames();
            return Driver::Get(code, result);
        case kADCGetHotPlugPresence: {
            const bool gone = faults_.unplugAfter != kNever && producer().silent();
            const int32_t answered = Driver::Get(code, result);
            if (answered == 1 && gone) {
                std::memset(result, 0, sizeof(uint32_t));
            }
            return answered;
        }
        default:
            return Driver::Get(code, result);
    }
}

int32_t SimulatorDriver::answerRing(void* result) {
    if (!faults_.answerRing) {
        return fail("There is no answer about the ring (AnswerRing).") ? 1 : 0;
    }
    const int32_t answered = Driver::Get(kADCGetRing, result);
    if (answered == 1 && faults_.ringDiffers && ringAnswers_++ > 0) {
        ADCRingInfo info{};
        std::memcpy(&info, result, sizeof info);
        info.m_nRingSize *= 2;
        std::memcpy(result, &info, sizeof info);
    }
    return answered;
}

uint32_t SimulatorDriver::ringFor(const sdk::Board& board, int32_t wished, uint32_t channels) const {
    const uint32_t whole = Driver::ringFor(board, wished, channels);
    if (faults_.ringMisfit) {
        return whole + 1;
    }
    if (faults_.ringTakesWish && wished > 0) {
        return std::min(static_cast<uint32_t>(wished), board.maximumRing);
    }
    return whole;
}

std::unique_ptr<SampleSource> SimulatorDriver::prepare(const sdk::Board& board, const sdk::Measurement& measurement,
                                                       StreamPlan& plan) {
    if (!settings().flag("RealTime")) {
        plan.framesPerSecond = 0.0;
    }
    frameSamples_ = measurement.channels.size();
    plan.framesPerSecond *= 1.0 + settings().real("ClockError") * 1e-6;
    if (measurement.externalStart) {
        const int64_t delay = settings().integer("ExternalStartAfter");
        plan.startDelay = delay < 0 ? kWaitForever : static_cast<uint32_t>(delay);
    }
    plan.announce = faults_.announce;
    plan.overflowAfter = faults_.overflowAfter;
    plan.silentAfter = std::min(faults_.silentAfter, faults_.unplugAfter);
    plan.endAfter = faults_.endAfter;
    plan.endCause = faults_.endCause;
    plan.endLost = faults_.endLost;
    plan.endText = "The stream ended (EndAfter).";
    return makeSignal(signal_, board, measurement);
}

}  // namespace

}  // namespace tarno2::drivers

TARNO2_DRIVER(tarno2::drivers::SimulatorDriver)
