#include "apps/drivers/driver_check.h"

#include <algorithm>
#include <cmath>
#include <iostream>
#include <iterator>
#include <string_view>
#include <vector>

#include <tarno2/IADCDevice.h>

#include "apps/drivers/board_search.h"
#include "apps/drivers/check_report.h"
#include "core/devices/device.h"
#include "core/devices/driver_catalogue.h"
#include "core/devices/driver_settings.h"
#include "core/devices/library_object.h"
#include "platform/c_locale.h"
#include "platform/clock.h"
#include "platform/event.h"
#include "platform/paths.h"
#include "platform/utf.h"
#include "records/channel_label.h"

namespace tarno2 {

namespace {

constexpr uint32_t kNoCode = 0x5A5AFFFF;
constexpr uint32_t kNoBoard = 0xFFFFF;
constexpr uint64_t kMeasureMs = 1000;
constexpr uint32_t kPeriodMs = 10;
constexpr uint64_t kPatienceMs = 10000;
constexpr int kRestarts = 3;
constexpr double kRateTolerance = 0.05;

/// One driver, called like by a recording.
class DriverCheck {
public:
    DriverCheck(Device device, CheckReport& report) : device_(device), report_(report) {}

    void run(uint32_t board) {
        checkQueries();
        checkSettings();
        if (!checkBoards(board)) {
            return;
        }
        checkFacts();
        if (report_.wrong() == 0 && setUp() && checkRing()) {
            for (int i = 0; i < kRestarts; ++i) {
                record(i == 0);
            }
        }
    }

private:
    void checkQueries();
    void checkSettings();
    bool checkBoards(uint32_t number);
    void checkFacts();
    void checkFormat();
    void checkRates();
    void checkInputs();
    void checkLabels();
    bool setUp();
    bool checkRing();
    void record(bool inDetail);
    void watchStream();
    bool waitForHalf();
    void checkReading();
    void measureRate();
    uint64_t fetch();
    void needs(uint32_t code, const char* name, bool required);
    [[nodiscard]] int32_t dataMode() const { return format_.m_nBytes == 4 ? kADCDataLong : kADCDataShort; }
    template <typename Call>
    auto timed(const char* what, Call call) {
        const CheckReport::Watch watch(report_, what);
        return call();
    }

    Device device_;
    CheckReport& report_;
    ADCSampleFormat format_{};
    uint32_t channels_ = 0;
    std::vector<int32_t> gains_;
    bool perChannel_ = false;
    float frequency_ = 0.0F;
    ADCRingInfo ring_{};
    bool counts_ = false;
    uint64_t position_ = 0;  ///< all samples before were fetched
    std::vector<std::byte> samples_;
};

void DriverCheck::checkQueries() {
    uint32_t version = 0;
    const bool told = device_.get(kADCGetAbiVersion, version);
    report_.expect(told && version == kADCAbiVersion, "kADCGetAbiVersion",
                   formatText("answers %u, not %u", version, kADCAbiVersion));
    uint32_t untouched = 12345;
    report_.expect(!device_.get(kNoCode, untouched) && untouched == 12345, "an unknown code",
                   "is answered, or its result changed");
    report_.expect(timed("SetProgramDirectory", [this] { return device_.setProgramDirectory(programDirectory()); }),
                   "SetProgramDirectory", device_.lastError());
}

void DriverCheck::checkSettings() {
    const std::vector<DriverSetting> settings =
        timed("kADCGetSettings", [this] { return readDriverSettings(device_); });
    if (settings.empty()) {
        report_.missing("kADCGetSettings", "the user can't be asked for anything");
    }
    ADCSettingList list{};
    static_cast<void>(device_.get(kADCGetSettings, list));
    report_.expect(list.m_nCount == settings.size(), "kADCGetSettings",
                   formatText("%u of %u settings have no key of their own",
                              static_cast<uint32_t>(list.m_nCount - settings.size()), +list.m_nCount));
    for (const DriverSetting& setting : settings) {
        if (setting.captionRussian == setting.caption) {
            report_.missing("setting \"" + setting.key + "\"", "a caption in Russian");
        }
    }
}

bool DriverCheck::checkBoards(uint32_t number) {
    const bool searched = timed("the search for boards", [this] {
        static_cast<void>(device_.boards());
        return waitForBoards(device_);
    });
    report_.expect(searched, "the search for boards", "has not ended");
    const std::vector<ADCBoardEntry> boards = device_.boards();
    report_.expect(!boards.empty(), "kADCGetBoardList", "no board: " + device_.lastError());
    for (const ADCBoardEntry& board : boards) {
        const std::string name(board.m_sName, std::find(board.m_sName, std::end(board.m_sName), '\0'));
        report_.expect(name.starts_with(formatText("%03X ", board.m_nNumber)), "board \"" + name + "\"",
                       formatText("does not begin with its number, \"%03X \"", board.m_nNumber));
    }
    report_.expect(!device_.selectBoard(kNoBoard), "SelectBoard", "chooses a board that is not in the list");
    const bool selected = timed("SelectBoard", [this, number] { return device_.selectBoard(number); });
    report_.expect(selected, "SelectBoard", device_.lastError());
    return selected;
}

void DriverCheck::needs(uint32_t code, const char* name, bool required) {
    uint32_t answer = 0;
    if (!device_.get(code, answer)) {
        required ? report_.bad(name, "has no answer, and nothing can be recorded without it")
                 : report_.missing(name, "the host does without");
    }
}

void DriverCheck::checkFacts() {
    checkFormat();
    channels_ = device_.number(kADCGetChannelCount, 0);
    report_.expect(channels_ >= 1 && channels_ <= 160, "kADCGetChannelCount",
                   formatText("%u channels, not 1 to 160", channels_));
    checkInputs();
    checkLabels();
    checkRates();
    needs(kADCGetMaxBuffer, "kADCGetMaxBuffer", false);
    needs(kADCGetExtendedBlock, "kADCGetExtendedBlock", false);
    needs(kADCGetSynchronousChannels, "kADCGetSynchronousChannels", false);
}

void DriverCheck::checkFormat() {
    if (!device_.get(kADCGetSampleFormat, format_)) {
        report_.bad("kADCGetSampleFormat", "has no answer, and nothing can be recorded without it");
        return;
    }
    const uint32_t bits = format_.m_nBytes * 8;
    report_.expect(format_.m_nBytes == 2 || format_.m_nBytes == 4, "sample format", "2 or 4 bytes are possible");
    report_.expect(format_.m_nCodeBits >= 1 && format_.m_nCodeShift + format_.m_nCodeBits <= bits, "sample format",
                   "the code does not lie in the word");
    report_.expect(bits >= 32 || (uint64_t{format_.m_nCodeMask} | format_.m_nDigitalMask) >> bits == 0, "sample format",
                   "a mask reaches beyond the word");
    report_.expect((format_.m_nDigitalMask == 0) == (format_.m_nDigitalLines == 0), "sample format",
                   "digital mask and count of lines disagree");
    ADCCodeRange codes{};
    report_.expect(device_.get(kADCGetCodeRange, codes) && codes.m_nMinimum < codes.m_nMaximum, "kADCGetCodeRange",
                   "no answer, or an empty range");
}

void DriverCheck::checkInputs() {
    gains_ = device_.integers(kADCGetGainList);
    if (gains_.empty()) {
        gains_ = {1};
    }
    report_.expect(*std::min_element(gains_.begin(), gains_.end()) >= 1, "kADCGetGainList", "a gain below 1");
    for (uint32_t channel = 0; channel < std::min(channels_, 160U); ++channel) {
        for (const int32_t gain : gains_) {
            ADCInputRange range{static_cast<int32_t>(channel), gain, 0.0F};
            ADCInputLimits limits{static_cast<int32_t>(channel), gain, 0.0, 0.0};
            const std::string which = formatText("channel %u at gain %d has ", channel, gain);
            report_.expect(device_.get(kADCGetInputRange, range) && std::isfinite(range.m_fRange) && range.m_fRange > 0,
                           "kADCGetInputRange", which + "no range above 0 V");
            report_.expect(!device_.get(kADCGetInputLimits, limits) || limits.m_fLower < limits.m_fUpper,
                           "kADCGetInputLimits", which + "a lower limit that is not below its upper one");
        }
    }
}

void DriverCheck::checkLabels() {
    const struct {
        uint32_t code;
        const char* name;
    } codes[] = {{kADCGetChannelName, "kADCGetChannelName"}, {kADCGetChannelUnit, "kADCGetChannelUnit"}};
    for (const auto& each : codes) {
        ADCChannelText answer{static_cast<int32_t>(channels_), {}};
        report_.expect(!device_.get(each.code, answer), each.name, "is answered for a channel that is not there");
        for (uint32_t channel = 0; channel < std::min(channels_, 160U); ++channel) {
            answer = {static_cast<int32_t>(channel), {}};
            if (!device_.get(each.code, answer)) {
                continue;
            }
            const std::string_view all(answer.m_sText, sizeof answer.m_sText);
            const std::string_view text = all.substr(0, all.find('\0'));
            report_.expect(text.size() < all.size() && isLabelText(text) && utf8ToUtf16(text), each.name,
                           formatText("the text of channel %u is not ended, is no UTF-8, or has a semicolon or control "
                                      "characters in it",
                                      channel));
        }
    }
}

void DriverCheck::checkRates() {
    perChannel_ = device_.number(kADCGetPerChannelFrequency, 0) != 0;
    const std::vector<float> list = device_.floats(kADCGetFrequencyList);
    ADCFrequencyLimits limits{};
    const bool limited = device_.get(kADCGetFrequencyLimits, limits);
    report_.expect(!list.empty() || limited, "frequencies", "neither a list nor limits");
    report_.expect(!limited || (limits.m_fMinimum > 0 && limits.m_fMinimum <= limits.m_fMaximum),
                   "kADCGetFrequencyLimits", "not above 0, or the wrong way round");
    report_.expect(std::all_of(list.begin(), list.end(), [](float each) { return each > 0.0F; }),
                   "kADCGetFrequencyList", "a frequency that is not above 0");
    if (!device_.get(kADCGetBoardFrequency, frequency_) || !(frequency_ > 0.0F)) {
        report_.missing("kADCGetBoardFrequency", "a selector begins anywhere");
        frequency_ = list.empty() ? +limits.m_fMaximum : list.front();
    }
}

bool DriverCheck::setUp() {
    std::vector<int32_t> channels(channels_);
    std::vector<int32_t> gains(channels_, gains_.front());
    for (uint32_t i = 0; i < channels_; ++i) {
        channels[i] = static_cast<int32_t>(i);
    }
    const double rate = double{frequency_} * (perChannel_ ? channels_ : 1);
    ADCParametersDMA base{};
    base.m_nType = kADCTypeDMA;
    base.m_nSizeOf = sizeof base;
    base.m_nStartOf = static_cast<int32_t>(kADCStartRing) | kADCStartByProgram;
    base.m_nIntOf = -1;
    base.m_nDMABlockSize = static_cast<int32_t>(std::clamp(rate / 2.0, 32.0, 1e8));
    base.m_nDMAMode = 0x1000000;
    base.m_fFreqStart = frequency_;
    base.m_nTimerPack = -1;
    base.m_nChannelNumber = static_cast<int32_t>(channels_);
    base.m_nGain = gains_.front();
    ADCParametersDMAEX extended{
        kADCTypeDMAEX, sizeof extended, gains.data(), channels.data(), static_cast<int32_t>(channels_), 0, {0, 0}};
    const bool takesBoth = device_.number(kADCGetExtendedBlock, 0) != 0;
    for (const int32_t apply : {0, 1}) {
        const char* const what = apply == 0 ? "Setup, check" : "Setup, apply";
        const bool accepted = timed(what, [&] {
            return device_.setup(apply, &base) == 1 && (!takesBoth || device_.setup(apply, &extended) == 1);
        });
        report_.expect(accepted, what, device_.lastError());
        if (!accepted) {
            return false;
        }
    }
    frequency_ = base.m_fFreqStart;
    return true;
}

bool DriverCheck::checkRing() {
    ADCRingInfo again{};
    const bool answered = device_.get(kADCGetRing, ring_) && device_.get(kADCGetRing, again);
    report_.expect(answered && ring_.m_nRingSize == again.m_nRingSize && ring_.m_hDataEvent == again.m_hDataEvent,
                   "kADCGetRing", "no answer, or two answers that differ");
    const bool whole = ring_.m_nRingSize > 0 && ring_.m_nRingSize % (2 * channels_) == 0;
    report_.expect(
        whole, "the ring",
        formatText("%u samples do not hold whole frames of %u channels in each half", +ring_.m_nRingSize, channels_));
    return answered && whole;
}

void DriverCheck::record(bool inDetail) {
    const bool started = timed("Start", [this] { return device_.start(); });
    report_.expect(started, "Start", device_.lastError());
    if (!started) {
        return;
    }
    if (inDetail) {
        watchStream();
    }
    timed("Stop", [this] {
        device_.stop();
        return 0;
    });
    uint64_t stopped = 0;
    uint64_t later = 0;
    const bool counted = device_.get(kADCGetSamplesWritten, stopped);
    sleepMilliseconds(20);
    report_.expect(!counted || !device_.get(kADCGetSamplesWritten, later) || later == stopped, "Stop",
                   "samples are counted after it");
    if (!device_.setup(1, nullptr)) {  // a block that isn't there is refused, never followed
        static_cast<void>(setUp());
    } else {
        report_.bad("Setup", "accepts a block that is not there");
    }
}

void DriverCheck::watchStream() {
    uint64_t written = 0;
    counts_ = device_.get(kADCGetSamplesWritten, written);
    if (!counts_) {
        report_.missing("kADCGetSamplesWritten", "overwritten samples are noticed by halves alone");
    }
    ADCStreamEnd end{};
    if (!device_.get(kADCGetStreamEnd, end)) {
        report_.missing("kADCGetStreamEnd", "a board that fails can't say where");
    }
    ADCMark mark{};
    if (!device_.get(kADCGetMark, mark)) {
        report_.missing("kADCGetMark", "the board marks nothing in its stream");
    }
    samples_.resize(size_t{ring_.m_nRingSize} * format_.m_nBytes);
    const bool came = waitForHalf();
    if (device_.get(kADCGetStreamEnd, end) && end.m_nCause != kADCEndNone) {
        report_.note("the stream",
                     formatText("ended after %llu samples: ", static_cast<unsigned long long>(end.m_nPosition)) +
                         device_.lastError());
        return;
    }
    if (came) {
        checkReading();
    }
    if (counts_) {
        measureRate();
    }
}

bool DriverCheck::waitForHalf() {
    const bool came = Event::wrap(ring_.m_hDataEvent).wait(kPatienceMs) == WaitResult::Signalled;
    report_.expect(came, "the data event", "was not set in 10 s");
    return came;
}

void DriverCheck::measureRate() {
    const uint64_t first = fetch();
    const uint64_t from = monotonicNanoseconds();
    uint64_t written = first;
    uint64_t elapsed = 0;
    bool goesOn = true;
    while (goesOn && elapsed < kMeasureMs * 1'000'000) {
        sleepMilliseconds(kPeriodMs);
        const uint64_t now = fetch();
        elapsed = monotonicNanoseconds() - from;
        goesOn = now >= written;
        written = now;
    }
    report_.expect(goesOn, "kADCGetSamplesWritten", "goes back");
    const double rate = static_cast<double>(written - first) * 1e9 / static_cast<double>(elapsed);
    const double wanted = double{frequency_} * (perChannel_ ? channels_ : 1);
    report_.note("rate", formatText("%.0f samples per second, %.0f were set up%s", rate, wanted,
                                    std::fabs(rate - wanted) > kRateTolerance * wanted ? " (!)" : ""));
}

/// Fetches what is there, for a driver may wait until there is room for more; how many samples were counted.
uint64_t DriverCheck::fetch() {
    uint64_t written = 0;
    static_cast<void>(device_.get(kADCGetSamplesWritten, written));
    const auto offset = static_cast<uint32_t>(position_ % ring_.m_nRingSize);
    const uint64_t unread = written - std::min(written, position_);
    const uint64_t count = std::min<uint64_t>(unread, ring_.m_nRingSize - offset) / channels_ * channels_;
    if (count > 0 &&
        device_.getData(dataMode(), samples_.data(), static_cast<uint32_t>(count), offset) != kADCDataFailed) {
        position_ += count;
    }
    return written;
}

void DriverCheck::checkReading() {
    const uint32_t half = ring_.m_nRingSize / 2;
    uint64_t written = 0;
    report_.expect(!counts_ || (device_.get(kADCGetSamplesWritten, written) && written >= half), "the data event",
                   "was set before a half was full");
    const bool read =
        timed("GetData", [&] { return device_.getData(dataMode(), samples_.data(), half, 0) != kADCDataFailed; });
    report_.expect(read, "GetData", device_.lastError());
    position_ = read ? half : 0;
    report_.expect(device_.getData(dataMode(), samples_.data(), half, ring_.m_nRingSize) == kADCDataFailed, "GetData",
                   "accepts an offset beyond the ring");
}

}  // namespace

bool checkDriver(const std::string& name, uint32_t board) {
    CheckReport report(std::cout);
    std::string why;
    const auto path = driverLibraryPath(name, why);
    Library library;
    auto* const object =
        path ? static_cast<IADCDevice*>(loadObject(library, *path, TARNO2_DEVICE_INTERFACE, why)) : nullptr;
    report.expect(object != nullptr, "loading", why);
    if (object != nullptr) {
        Device device(object);
        DriverCheck(device, report).run(board);
        device.stop();
        const CheckReport::Watch watch(report, "Release");
        device.release();
    }
    report.close();
    return report.wrong() == 0;
}

}  // namespace tarno2
