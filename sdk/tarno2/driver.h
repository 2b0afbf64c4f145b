// SPDX-License-Identifier: MIT
//
// A board driver without its routine: derive from `Driver`, say which boards there are, and push samples as they come.
// Ring, event, counts, parameter blocks, queries and settings are done here. Header-only, C++11; IADCDevice.h beside it
// is the interface behind it. docs/drivers.md explains it, sdk/example and sdk/example-tcp use it.
//
//     class MyDriver : public tarno2::sdk::Driver { ... };
//     TARNO2_DRIVER(MyDriver)

#ifndef TARNO2_DRIVER_H
#define TARNO2_DRIVER_H

#include <atomic>
#include <cctype>
#include <exception>
#include <memory>
#include <mutex>
#include <new>
#include <stdint.h>
#include <string>
#include <utility>
#include <vector>

#include <tarno2/IADCDevice.h>
#include <tarno2/driver/answers.h>
#include <tarno2/driver/board.h>
#include <tarno2/driver/board_search.h>
#include <tarno2/driver/ring.h>
#include <tarno2/driver/settings.h>
#include <tarno2/driver/setup.h>

namespace tarno2 {
namespace sdk {

/// All slots of the interface. The host calls from one thread at a time, so the functions below that a driver provides
/// are called one at a time too, but for those that say otherwise. What they throw ends as a refusal with its words.
class Driver : public IADCDevice {
protected:
    /// `name` as in the registry: settings stand in NAME.cfg in the program's folder and in the variable TARNO2_NAME of
    /// the environment, "Key=Value;Key=Value".
    explicit Driver(const std::string& name) : name_(name), searched_(false), configured_(false), running_(false) {
        std::string variable = "TARNO2_" + name;
        for (size_t i = 0; i < variable.size(); ++i) {
            variable[i] = static_cast<char>(std::toupper(static_cast<unsigned char>(variable[i])));
        }
        settings_.readEnvironment(variable);
    }
    virtual ~Driver() {}

    // --- what a driver provides

    /// The boards that are there now, in the order of their numbers. Where that takes more than 100 ms
    /// `searchTakesLong` says so: this then runs on a thread of its own, with a copy of the settings, and keeps its
    /// hands off everything else. Otherwise it may be called from any thread, but under a lock.
    virtual std::vector<Board> search(const Settings& settings) = 0;
    virtual bool searchTakesLong() const { return false; }
    /// The board was chosen: take it, and complete its facts. False after `fail`: it isn't there, or is taken.
    virtual bool open(Board&) { return true; }
    /// The board was given up.
    virtual void close() {}
    /// A measurement is checked or set up: correct its frequency to what the board will do. Channels and gains are
    /// those that were checked last. False after `fail`.
    virtual bool configure(const Board&, Measurement&) { return true; }
    /// The voltages of the lowest and highest code of a channel; false: `Board::range` tells. Any thread.
    virtual bool inputLimits(const Board& board, int32_t /*channel*/, int32_t gain, InputLimits& limits) {
        for (size_t i = 0; i < board.limits.size(); ++i) {
            if (i < board.gains.size() ? board.gains[i] == gain : i == 0 && gain <= 1) {
                limits = board.limits[i];
                return true;
            }
        }
        return false;
    }
    /// The measurement begins: samples may be pushed from here on, from one thread. False after `fail`.
    virtual bool begin(const Board& board, const Measurement& measurement) = 0;
    /// It ends: when this returns, nothing is pushed any more. Within half a second.
    virtual void end() = 0;
    /// Whether a `hotPlug` board is there. Any thread.
    virtual bool present() { return true; }
    /// Settings were read or changed. False after `fail`: a value can't be used, and it is taken back. Under a lock.
    virtual bool settingsChanged() { return true; }
    /// The host has fetched samples. The acquisition thread, at most once a transfer.
    virtual void fetched() {}
    /// How many samples a ring gets when so many are wished for, a multiple of 2 x channels; 0 when the board can't
    /// hold two frames.
    virtual uint32_t ringFor(const Board& board, int32_t wished, uint32_t channels) const {
        const uint64_t step = static_cast<uint64_t>(2) * channels;
        const uint64_t up = (static_cast<uint64_t>(std::max(wished, 1)) + step - 1) / step * step;
        return static_cast<uint32_t>(up <= board.maximumRing ? up : board.maximumRing / step * step);
    }

    // --- what it uses

    /// Add settings in the constructor; read them wherever the functions above are called.
    Settings& settings() { return settings_; }
    /// The folder of the program's settings.
    const std::string& programDirectory() const { return programDirectory_; }
    /// Keeps the words for the user and returns false. Any thread.
    TARNO2_PRINTF(2, 3) bool fail(const char* format, ...) {
        va_list arguments;
        va_start(arguments, format);
        problem_.print(format, arguments);
        va_end(arguments);
        return false;
    }

    // From one thread, between `begin` and the return of `end`:

    /// Appends samples: words as the board's format tells, whole frames. The host is told of each half. What it has not
    /// fetched in time is overwritten, and the recording ends with that loss.
    void push(const void* samples, size_t count) { ring_.write(samples, count); }
    /// So many samples can be pushed before that.
    size_t room() const { return ring_.room(); }
    /// The board lost samples after those that were pushed, so many (0: nobody knows). The recording ends here.
    void lost(uint64_t count = 0) {
        if (count > 0) {
            problem_.set("The board lost %llu samples.", static_cast<unsigned long long>(count));
        } else {
            problem_.set("The board lost samples.");
        }
        ring_.end(kADCEndLost, count);
    }
    /// Nothing more will come: kADCEndUnplugged, kADCEndOfSource or kADCEndError, with the reason for the user.
    void gone(uint32_t cause, const std::string& why) {
        problem_.set("%s", why.c_str());
        ring_.end(cause, 0);
    }
    /// For samples that are made where they stay.
    Ring& ring() { return ring_; }
    const Ring& ring() const { return ring_; }
    bool running() const { return running_; }

    /// Runs a call of the host; an exception ends as `fail`.
    template <typename Call>
    int32_t guarded(Call call) noexcept {
        try {
            return call();
        } catch (const std::bad_alloc&) {
            problem_.set("Not enough memory.");
        } catch (const std::exception& e) {
            problem_.set("Unexpected: %s", e.what());
        } catch (...) {
            problem_.set("Unexpected error.");
        }
        return 0;
    }

public:
    void* TARNO2_CALL QueryInterface(const char* name) noexcept override {
        return name != nullptr && std::strcmp(name, TARNO2_DEVICE_INTERFACE) == 0 ? static_cast<IADCDevice*>(this)
                                                                                  : nullptr;
    }
    void TARNO2_CALL Release() noexcept override {
        CloseBoard();
        delete this;
    }
    int32_t TARNO2_CALL SelectBoard(uint32_t number) noexcept override {
        return guarded([&] { return select(number) ? 1 : 0; });
    }
    int32_t TARNO2_CALL CloseBoard() noexcept override {
        return guarded([&] {
            giveUp();
            return 1;
        });
    }
    int32_t TARNO2_CALL Setup(int32_t apply, void* block, int32_t) noexcept override {
        return guarded([&] { return setup(apply != 0, block) ? 1 : 0; });
    }
    int32_t TARNO2_CALL Start() noexcept override {
        return guarded([&] { return start() ? 1 : 0; });
    }
    void TARNO2_CALL Stop() noexcept override {
        guarded([&] {
            stop();
            return 1;
        });
    }
    int32_t TARNO2_CALL GetData(int32_t mode, void* destination, uint32_t count, uint32_t offset) noexcept override {
        if (destination == nullptr || !configured_) {
            problem_.set("There is no ring to read, or nowhere to put the samples.");
            return kADCDataFailed;
        }
        if (mode != (ring_.bytesPerSample() == 2 ? kADCDataShort : kADCDataLong)) {
            problem_.set("Data mode 0x%X does not fit samples of %u bytes.", static_cast<unsigned>(mode),
                         ring_.bytesPerSample());
            return kADCDataFailed;
        }
        if (!ring_.read(destination, count, offset)) {
            problem_.set("%u samples from %u on do not lie in the ring of %u.", count, offset, ring_.samples());
            return kADCDataFailed;
        }
        fetched();
        return 1;
    }
    int32_t TARNO2_CALL LastError(char* text, uint32_t size) noexcept override {
        return text != nullptr && size > 0 ? problem_.copy(text, size) : 0;
    }
    int32_t TARNO2_CALL Get(uint32_t code, void* result) noexcept override {
        if (result == nullptr) {
            return 0;
        }
        // Asked around every transfer, so without the lock.
        if (code == kADCGetSamplesWritten) {
            return put(result, ring_.written());
        }
        if (code == kADCGetStreamEnd) {
            return put(result, ring_.streamEnd());
        }
        return guarded([&] { return answer(code, result); });
    }
    int32_t TARNO2_CALL Set(uint32_t code, const void* value) noexcept override {
        return guarded([&] { return value != nullptr && change(code, value) ? 1 : 0; });
    }
    int32_t TARNO2_CALL ReadPort(uint32_t*) noexcept override {
        return problem_.set("The board has no digital inputs outside the samples.");
    }
    int32_t TARNO2_CALL WritePort(uint32_t) noexcept override {
        return problem_.set("The board has no digital outputs.");
    }
    int32_t TARNO2_CALL WriteAnalog(uint32_t, float) noexcept override {
        return problem_.set("The board has no analog outputs.");
    }
    int32_t TARNO2_CALL SetProgramDirectory(const char* folder) noexcept override {
        return guarded([&] {
            programDirectory_ = folder != nullptr ? folder : "";
#ifdef _WIN32
            const char separator = '\\';
#else
            const char separator = '/';
#endif
            const std::string file = programDirectory_ + separator + name_ + ".cfg";
            const std::lock_guard<std::mutex> lock(mutex_);
            const bool read = settings_.readFile(file);
            searched_ = false;
            const bool usable = settingsChanged();
            return (read || problem_.set("%s can't be read.", file.c_str())) && usable ? 1 : 0;
        });
    }

private:
    bool select(uint32_t number) {
        const uint32_t patience = 100;
        giveUp();
        std::vector<Board> told;
        {
            const std::lock_guard<std::mutex> lock(mutex_);
            told = searched_ ? boards_ : lookFor(patience);
        }
        if (number == 0 || number > told.size()) {
            return problem_.set("There is no board %u.", number);
        }
        Board board = told[number - 1];
        if (!searchTakesLong()) {
            // Looked for anew, for it may have been pulled out, and others have other numbers then.
            const std::lock_guard<std::mutex> lock(mutex_);
            const std::vector<Board> now = search(settings_);
            size_t place = number - 1;
            for (size_t i = 0; !board.id.empty() && i < now.size(); ++i) {
                place = now[i].id == board.id ? i : place;
            }
            if (place >= now.size() || now[place].id != board.id) {
                return problem_.set("%s is not there any more.", board.name.c_str());
            }
            board = now[place];
        }
        if (!open(board)) {
            return false;
        }
        const std::lock_guard<std::mutex> lock(mutex_);
        board_ = std::make_shared<const Board>(board);
        checked_ = ChannelChoice();
        return true;
    }

    void giveUp() {
        stop();
        configured_ = false;
        if (board_ != nullptr) {
            close();
            const std::lock_guard<std::mutex> lock(mutex_);
            board_.reset();
        }
    }

    // Under the lock: the boards that there are as far as `patience`, milliseconds, lets a long search come.
    std::vector<Board> lookFor(uint32_t patience) {
        if (!searchTakesLong()) {
            boards_ = search(settings_);
        } else {
            if (!searched_) {
                beginSearch();
                search_.wait(patience);
            }
            boards_ = search_.boards();
        }
        searched_ = true;
        return boards_;
    }
    void beginSearch() {
        const Settings settings = settings_;
        search_.begin([this, settings]() -> std::vector<Board> {
            try {
                return search(settings);
            } catch (const std::exception& e) {
                problem_.set("The search for boards failed: %s", e.what());
            } catch (...) {
                problem_.set("The search for boards failed.");
            }
            return std::vector<Board>();
        });
    }

    bool setup(bool apply, void* block) {
        if (board_ == nullptr) {
            return problem_.set("No board is chosen.");
        }
        if (block == nullptr) {
            return problem_.set("There is no parameter block.");
        }
        if (apply && running_) {
            return problem_.set("A measurement is running.");
        }
        int32_t type = 0;
        std::memcpy(&type, block, sizeof type);
        if (type == kADCTypeDMA) {
            return setupBase(apply, *static_cast<ADCParametersDMA*>(block));
        }
        if (type == kADCTypeDMAEX) {
            return setupExtended(apply, *static_cast<ADCParametersDMAEX*>(block));
        }
        return problem_.set("Parameter block of unknown type %d.", type);
    }

    bool setupBase(bool apply, ADCParametersDMA& block) {
        BlockCheck check(*board_, problem_);
        if (!check.correct(block)) {
            return false;
        }
        Measurement measurement = measurementOf(block);
        Measurement wanted = measurement;
        if (checked_.channels.size() == measurement.channels.size()) {
            wanted.channels = checked_.channels;
            wanted.gains = checked_.gains;
            wanted.differential = checked_.differential;
        }
        if (!configure(*board_, wanted)) {
            return false;
        }
        measurement.frequency = wanted.frequency;
        const uint32_t channels = static_cast<uint32_t>(block.m_nChannelNumber);
        if (!measurement.externalClock) {
            block.m_fFreqStart =
                static_cast<float>(board_->perChannelFrequency ? wanted.frequency / channels : wanted.frequency);
        }
        const int32_t smallest = static_cast<int32_t>(std::min(board_->minimumRing, board_->maximumRing));
        const uint32_t ring = ringFor(*board_, std::max(check.wishedRing(block), smallest), channels);
        if (ring == 0) {
            return problem_.set("The largest ring, %u samples, is less than two frames.", board_->maximumRing);
        }
        block.m_nDMABlockSize = static_cast<int32_t>(ring);
        if (apply) {
            configured_ = false;
            ring_.configure(ring, board_->format.m_nBytes);
            measurement_ = measurement;
            configured_ = true;
        }
        return true;
    }

    // Without an extended block the channels follow each other.
    Measurement measurementOf(const ADCParametersDMA& block) const {
        Measurement measurement;
        for (int32_t i = 0; i < block.m_nChannelNumber; ++i) {
            measurement.channels.push_back((block.m_nFirstChannel + i) % static_cast<int32_t>(board_->channels));
        }
        const size_t count = measurement.channels.size();
        measurement.gains.assign(count, block.m_nGain);
        measurement.externalClock = BlockCheck::externalClock(block);
        // With an external clock the applied block doesn't tell of an external start any more.
        measurement.externalStart =
            measurement.externalClock ? checked_.externalStart : (block.m_nStartOf & kADCStartExternal) != 0;
        measurement.frequency = block.m_fFreqStart;
        if (measurement.externalClock) {
            measurement.frequency = board_->externalClockRate;
        } else if (board_->perChannelFrequency) {
            measurement.frequency *= static_cast<double>(count);
        }
        measurement.packetFrequency = block.m_nTimerPack == 1 ? block.m_fFreqPack : 0.0F;
        return measurement;
    }

    bool setupExtended(bool apply, ADCParametersDMAEX& block) {
        ChannelChoice choice;
        if (!BlockCheck(*board_, problem_).correct(block, choice)) {
            return false;
        }
        if (!apply) {
            checked_ = choice;
            return true;
        }
        if (!configured_ || measurement_.channels.size() != choice.channels.size()) {
            return problem_.set("The extended block lists %d channels, the base block %d.", block.m_nSize,
                                configured_ ? static_cast<int>(measurement_.channels.size()) : 0);
        }
        measurement_.channels = choice.channels;
        measurement_.gains = choice.gains;
        measurement_.differential = choice.differential;
        return true;
    }

    bool start() {
        if (board_ == nullptr || !configured_) {
            return problem_.set("The board was not set up.");
        }
        if (running_) {
            return problem_.set("A measurement is running.");
        }
        if (ring_.samples() % (2 * measurement_.channels.size()) != 0) {
            return problem_.set("The ring of %u samples does not hold whole frames.", ring_.samples());
        }
        if (!ring_.event().valid()) {
            return problem_.set("The system gave no event.");
        }
        ring_.begin();
        running_ = begin(*board_, measurement_);
        return running_;
    }
    void stop() {
        if (running_) {
            running_ = false;
            end();
        }
    }

    int32_t answer(uint32_t code, void* result) {
        const uint32_t patience = 100;
        if (code == kADCGetAbiVersion) {
            return put(result, kADCAbiVersion);
        }
        const std::lock_guard<std::mutex> lock(mutex_);
        if (code == kADCGetBoardList) {
            return putBoards(result, running_ ? boards_ : lookFor(patience));
        }
        if (code == kADCGetBoardSearch) {
            return searchTakesLong() ? put(result, static_cast<uint32_t>(search_.goesOn())) : 0;
        }
        if (code == kADCGetSettings) {
            return settings_.answer(result);
        }
        return board_ != nullptr ? answerForBoard(code, result) : 0;
    }

    int32_t answerForBoard(uint32_t code, void* result) {
        switch (code) {
            case kADCGetRing: {
                if (!configured_) {
                    return problem_.set("The board was not set up.");
                }
                ADCRingInfo info = ADCRingInfo();
                info.m_nRingSize = ring_.samples();
                info.m_hDataEvent = ring_.event().number();
                return put(result, info);
            }
            case kADCGetHotPlugPresence: {
                const bool unplugged = ring_.streamEnd().m_nCause == kADCEndUnplugged;
                return board_->hotPlug ? put(result, static_cast<uint32_t>(!unplugged && present())) : 0;
            }
            case kADCGetInputRange:
                return answerRange(result);
            case kADCGetInputLimits: {
                ADCInputLimits answer;
                std::memcpy(&answer, result, sizeof answer);
                InputLimits limits = {0.0, 0.0};
                if (!hasChannel(answer.m_nChannel) ||
                    !inputLimits(*board_, answer.m_nChannel, answer.m_nGain, limits)) {
                    return 0;
                }
                answer.m_fLower = limits.lower;
                answer.m_fUpper = limits.upper;
                return put(result, answer);
            }
            default:
                return answerFacts(*board_, code, result);
        }
    }

    int32_t answerRange(void* result) {
        ADCInputRange answer;
        std::memcpy(&answer, result, sizeof answer);
        if (!hasChannel(answer.m_nChannel)) {
            return 0;
        }
        const size_t channel = static_cast<size_t>(answer.m_nChannel);
        InputLimits limits = {0.0, 0.0};
        double range = channel < board_->channelRanges.size() ? board_->channelRanges[channel] : board_->range;
        if (inputLimits(*board_, answer.m_nChannel, answer.m_nGain, limits)) {
            range = std::max(std::fabs(limits.lower), std::fabs(limits.upper)) * std::max(+answer.m_nGain, 1);
        }
        answer.m_fRange = static_cast<float>(range);
        return put(result, answer);
    }
    bool hasChannel(int32_t channel) {
        return (channel >= 0 && channel < static_cast<int32_t>(board_->channels)) ||
               problem_.set("The board has no channel %d.", channel);
    }

    bool change(uint32_t code, const void* value) {
        if (code == kADCSetBoardSearch && searchTakesLong()) {
            beginSearch();
            return true;
        }
        if (code == kADCSetBoardSearch) {
            return true;  // the boards are looked for whenever they are asked for
        }
        if (code != kADCSetSetting) {
            return problem_.set("The board has no such option.");
        }
        if (running_) {
            return problem_.set("A measurement is running.");
        }
        ADCSettingValue setting;
        std::memcpy(&setting, value, sizeof setting);
        if (setting.m_sKey == nullptr || setting.m_sValue == nullptr) {
            return problem_.set("The setting has no key or no value.");
        }
        giveUp();
        const std::lock_guard<std::mutex> lock(mutex_);
        const std::string before = settings_.hostValue(setting.m_sKey);
        std::string why;
        if (!settings_.set(setting.m_sKey, setting.m_sValue, why)) {
            return problem_.set("%s", why.c_str());
        }
        searched_ = false;
        if (settingsChanged()) {
            return true;
        }
        char words[256];
        static_cast<void>(problem_.copy(words, sizeof words));
        static_cast<void>(settings_.set(setting.m_sKey, before, why));
        static_cast<void>(settingsChanged());
        return problem_.set("%s", words);
    }

    const std::string name_;
    std::string programDirectory_;
    Problem problem_;
    Settings settings_;

    std::mutex mutex_;  // boards and settings, which any thread may ask about
    std::vector<Board> boards_;
    bool searched_;
    std::shared_ptr<const Board> board_;  // null: none is chosen

    ChannelChoice checked_;
    Measurement measurement_;
    std::atomic<bool> configured_;
    std::atomic<bool> running_;
    Ring ring_;
    BoardSearch search_;  // last: its thread ends first
};

/// What `StaticFactory` returns: a new `DriverType`; null for another interface or when it can't be made.
template <typename DriverType>
void* makeDevice(const char* interfaceName) noexcept {
    if (interfaceName == nullptr || std::strcmp(interfaceName, TARNO2_DEVICE_INTERFACE) != 0) {
        return nullptr;
    }
    try {
        return static_cast<IADCDevice*>(new DriverType);
    } catch (...) {
        return nullptr;
    }
}

}  // namespace sdk
}  // namespace tarno2

/// The library's export, for a driver with a constructor without arguments. Outside every namespace.
#define TARNO2_DRIVER(DriverType)                                                             \
    TARNO2_EXPORT void* TARNO2_CALL StaticFactory(const char* interfaceName, uint32_t flags); \
    TARNO2_EXPORT void* TARNO2_CALL StaticFactory(const char* interfaceName, uint32_t) {      \
        return ::tarno2::sdk::makeDevice<DriverType>(interfaceName);                          \
    }

#endif  // TARNO2_DRIVER_H
