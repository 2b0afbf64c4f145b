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
#include <memory>
#include <mutex>
#include <stdint.h>
#include <string>
#include <utility>
#include <vector>

#include <tarno2/IADCDevice.h>
#include <tarno2/driver/answers.h>
#include <tarno2/driver/board.h>
#include <tarno2/driver/board_list.h>
#include <tarno2/driver/device.h>
#include <tarno2/driver/factory.h>
#include <tarno2/driver/marks.h>
#include <tarno2/driver/ring.h>
#include <tarno2/driver/settings.h>
#include <tarno2/driver/setup.h>

namespace tarno2 {
namespace sdk {

/// All slots of the interface. The host calls from one thread at a time, so the functions below that a driver provides
/// are called one at a time too, but for those that say otherwise. What they throw ends as a refusal with its words.
class Driver : public Device {
protected:
    /// `name` as in the registry: settings stand in NAME.cfg in the program's folder and in the variable TARNO2_NAME of
    /// the environment, "Key=Value;Key=Value".
    explicit Driver(const std::string& name) : Device(name), configured_(false), running_(false) {}
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

    // settings(), programDirectory(), settingsChanged() and fail() of `Device`; and from one thread, between `begin`
    // and the return of `end`:

    /// Appends samples: words as the board's format tells, whole frames. The host is told of each half. What it has not
    /// fetched in time is overwritten, and the recording ends with that loss.
    void push(const void* samples, size_t count) { ring_.write(samples, count); }
    /// So many samples can be pushed before that. The host takes a ring that is nearly full for one that has run over,
    /// so there is never room for a whole ring.
    size_t room() const { return ring_.room(); }
    /// Waits until there is room for a frame. Returns the room in whole frames, as samples; 0 when the measurement
    /// ends, from just before `end` is called.
    size_t waitForRoom() { return ring_.waitForRoom(measurement_.channels.size()); }
    /// The board lost samples after those that were pushed, so many (0: nobody knows). The recording ends here.
    void lost(uint64_t count = 0) {
        if (ring_.ended()) {
            return;
        }
        if (count > 0) {
            fail("The board lost %llu samples.", static_cast<unsigned long long>(count));
        } else {
            fail("The board lost samples.");
        }
        ring_.end(kADCEndLost, count);
    }
    /// Nothing more will come: kADCEndUnplugged, kADCEndOfSource or kADCEndError, with the reason for the user.
    void gone(uint32_t cause, const std::string& why) {
        if (ring_.ended()) {
            return;
        }
        fail("%s", why.c_str());
        ring_.end(cause, 0);
    }
    /// Something happened at this sample since the start: the host marks it in the recording, with this text (239 bytes
    /// at most, in the system's code page). Any thread, while a measurement runs. False when the host has not yet asked
    /// for too many of them.
    bool mark(uint64_t position, const std::string& text = std::string()) { return marks_.put(position, text); }
    /// For samples that are made where they stay.
    Ring& ring() { return ring_; }
    const Ring& ring() const { return ring_; }

public:
    void TARNO2_CALL Release() noexcept override {
        CloseBoard();
        boards_.end();
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
            fail("There is no ring to read, or nowhere to put the samples.");
            return kADCDataFailed;
        }
        if (mode != (ring_.bytesPerSample() == 2 ? kADCDataShort : kADCDataLong)) {
            fail("Data mode 0x%X does not fit samples of %u bytes.", static_cast<unsigned>(mode),
                 ring_.bytesPerSample());
            return kADCDataFailed;
        }
        if (!ring_.read(destination, count, offset)) {
            fail("%u samples from %u on do not lie in the ring of %u.", count, offset, ring_.samples());
            return kADCDataFailed;
        }
        fetched();
        return 1;
    }
    int32_t TARNO2_CALL Get(uint32_t code, void* result) noexcept override {
        if (result == nullptr) {
            return 0;
        }
        // Asked around every transfer, so without the lock.
        if (code == kADCGetSamplesWritten) {
            put(result, ring_.written());
            ring_.release();
            return 1;
        }
        if (code == kADCGetStreamEnd) {
            return put(result, ring_.streamEnd());
        }
        if (code == kADCGetMark) {
            return put(result, marks_.take());
        }
        return guarded([&] { return answer(code, result); });
    }
    int32_t TARNO2_CALL Set(uint32_t code, const void* value) noexcept override {
        return guarded([&] { return value != nullptr && change(code, value) ? 1 : 0; });
    }

private:
    bool select(uint32_t number) {
        giveUp();
        Board board;
        {
            const std::lock_guard<std::mutex> lock(mutex());
            if (!boards_.find(number, boardSearch(), board)) {
                return number == 0 || board.name.empty() ? fail("There is no board %u.", number)
                                                         : fail("%s is not there any more.", board.name.c_str());
            }
        }
        if (!open(board)) {
            return false;
        }
        const std::lock_guard<std::mutex> lock(mutex());
        board_ = std::make_shared<const Board>(board);
        checked_ = ChannelChoice();
        return true;
    }

    void giveUp() {
        stop();
        configured_ = false;
        if (board_ != nullptr) {
            close();
            const std::lock_guard<std::mutex> lock(mutex());
            board_.reset();
        }
    }

    // A long search has nothing of the driver but the settings of now.
    BoardList::Search boardSearch() {
        if (!searchTakesLong()) {
            return {[this] { return search(this->settings()); }, false};
        }
        const Settings settings = this->settings();
        return {[this, settings]() -> std::vector<Board> {
                    try {
                        return search(settings);
                    } catch (const std::exception& e) {
                        fail("The search for boards failed: %s", e.what());
                    } catch (...) {
                        fail("The search for boards failed.");
                    }
                    return std::vector<Board>();
                },
                true};
    }
    void settingsWereRead() override { boards_.forget(); }

    bool setup(bool apply, void* block) {
        if (board_ == nullptr) {
            return fail("No board is chosen.");
        }
        if (block == nullptr) {
            return fail("There is no parameter block.");
        }
        if (apply && running_) {
            return fail("A measurement is running.");
        }
        int32_t type = 0;
        std::memcpy(&type, block, sizeof type);
        if (type == kADCTypeDMA) {
            return setupBase(apply, *static_cast<ADCParametersDMA*>(block));
        }
        if (type == kADCTypeDMAEX) {
            return setupExtended(apply, *static_cast<ADCParametersDMAEX*>(block));
        }
        return fail("Parameter block of unknown type %d.", type);
    }

    bool setupBase(bool apply, ADCParametersDMA& block) {
        BlockCheck check(*board_, problem());
        if (!check.correct(block)) {
            return false;
        }
        Measurement measurement = check.measurement(block, checked_.externalStart);
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
            return fail("The largest ring, %u samples, is less than two frames.", board_->maximumRing);
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

    bool setupExtended(bool apply, ADCParametersDMAEX& block) {
        ChannelChoice choice;
        if (!BlockCheck(*board_, problem()).correct(block, choice)) {
            return false;
        }
        if (!apply) {
            checked_ = choice;
            return true;
        }
        if (!configured_ || measurement_.channels.size() != choice.channels.size()) {
            return fail("The extended block lists %d channels, the base block %d.", block.m_nSize,
                        configured_ ? static_cast<int>(measurement_.channels.size()) : 0);
        }
        measurement_.channels = choice.channels;
        measurement_.gains = choice.gains;
        measurement_.differential = choice.differential;
        return true;
    }

    bool start() {
        if (board_ == nullptr || !configured_) {
            return fail("The board was not set up.");
        }
        if (running_) {
            return fail("A measurement is running.");
        }
        if (ring_.samples() % (2 * measurement_.channels.size()) != 0) {
            return fail("The ring of %u samples does not hold whole frames.", ring_.samples());
        }
        if (!ring_.event().valid()) {
            return fail("The system gave no event.");
        }
        ring_.begin();
        marks_.clear();
        running_ = begin(*board_, measurement_);
        return running_;
    }
    void stop() {
        if (running_) {
            running_ = false;
            ring_.endWaiting();
            end();
        }
    }

    int32_t answer(uint32_t code, void* result) {
        if (code == kADCGetAbiVersion) {
            return put(result, kADCAbiVersion);
        }
        const std::lock_guard<std::mutex> lock(mutex());
        if (code == kADCGetBoardList) {
            return answerBoardList(result);
        }
        if (code == kADCGetBoardSearch) {
            return searchTakesLong() ? put(result, static_cast<uint32_t>(boards_.searching(boardSearch()))) : 0;
        }
        if (code == kADCGetSettings) {
            return settings().answer(result);
        }
        return board_ != nullptr ? answerForBoard(code, result) : 0;
    }

    int32_t answerBoardList(void* result) {
        ADCBoardList asked;
        std::memcpy(&asked, result, sizeof asked);
        const bool onlyCounts = asked.m_nCapacity == 0 || asked.m_pEntries == nullptr;
        return putBoards(result, running_ ? boards_.told() : boards_.ask(boardSearch(), onlyCounts));
    }

    int32_t answerForBoard(uint32_t code, void* result) {
        switch (code) {
            case kADCGetRing: {
                if (!configured_) {
                    return fail("The board was not set up.");
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
            case kADCGetInputLimits:
                return answerInput(code, result);
            default:
                return answerFacts(*board_, code, result);
        }
    }

    int32_t answerInput(uint32_t code, void* result) {
        ADCInputRange asked;  // both answers begin with channel and gain
        std::memcpy(&asked, result, sizeof asked);
        if (asked.m_nChannel < 0 || asked.m_nChannel >= static_cast<int32_t>(board_->channels)) {
            return fail("The board has no channel %d.", +asked.m_nChannel);
        }
        InputLimits limits = {0.0, 0.0};
        const bool known = inputLimits(*board_, asked.m_nChannel, asked.m_nGain, limits);
        if (code == kADCGetInputRange) {
            return putInputRange(result, *board_, asked, known ? &limits : nullptr);
        }
        return known ? putInputLimits(result, asked, limits) : 0;
    }

    bool change(uint32_t code, const void* value) {
        if (code == kADCSetBoardSearch) {
            const std::lock_guard<std::mutex> lock(mutex());
            boards_.searchAnew(boardSearch());
            return true;
        }
        if (code != kADCSetSetting) {
            return fail("The board has no such option.");
        }
        if (running_) {
            return fail("A measurement is running.");
        }
        giveUp();
        return changeSetting(value);
    }

    std::shared_ptr<const Board> board_;  // null: none is chosen

    ChannelChoice checked_;
    Measurement measurement_;
    std::atomic<bool> configured_;
    std::atomic<bool> running_;
    Ring ring_;
    Marks marks_;
    BoardList boards_;  // last: its thread ends first
};

}  // namespace sdk
}  // namespace tarno2

#endif  // TARNO2_DRIVER_H
