#pragma once

#include <exception>
#include <memory>
#include <mutex>
#include <new>
#include <vector>

#include <tarno2/IADCDevice.h>

#include "drivers/common/board_facts.h"
#include "drivers/common/ring_producer.h"

namespace tarno2::drivers {

/// A device whose boards are descriptions and whose samples come from a `SampleSource`: all slots of the interface.
/// A driver derives from it, says which boards there are and makes their sources; it may override slots, too.
class RingDevice : public IADCDevice {
public:
    void* TARNO2_CALL QueryInterface(const char* name) noexcept override;
    void TARNO2_CALL Release() noexcept override;
    int32_t TARNO2_CALL SelectBoard(uint32_t number) noexcept override;
    int32_t TARNO2_CALL CloseBoard() noexcept override;
    int32_t TARNO2_CALL Setup(int32_t apply, void* block, int32_t zero) noexcept override;
    int32_t TARNO2_CALL Start() noexcept override;
    void TARNO2_CALL Stop() noexcept override;
    int32_t TARNO2_CALL GetData(int32_t mode, void* destination, uint32_t count, uint32_t offset) noexcept override;
    int32_t TARNO2_CALL LastError(char* text, uint32_t size) noexcept override;
    int32_t TARNO2_CALL Get(uint32_t code, void* result) noexcept override;
    int32_t TARNO2_CALL Set(uint32_t code, const void* value) noexcept override;
    int32_t TARNO2_CALL ReadPort(uint32_t* lines) noexcept override;
    int32_t TARNO2_CALL WritePort(uint32_t lines) noexcept override;
    int32_t TARNO2_CALL WriteAnalog(uint32_t output, float volts) noexcept override;

protected:
    RingDevice() = default;
    virtual ~RingDevice() = default;

    /// Completes the plan of a measurement that begins and makes its source; null after `fail`.
    virtual std::unique_ptr<SampleSource> prepare(const BoardFacts& board, const Measurement& measurement,
                                                  StreamPlan& plan) = 0;

    /// The boards, numbered from 1 in this order. Not while one is chosen.
    void setBoards(std::vector<BoardFacts> boards);
    /// Keeps the text for `LastError` and returns 0. Cut to 255 characters; allocates nothing. Any thread.
    int32_t fail(const char* format, ...) noexcept __attribute__((format(printf, 2, 3)));
    /// Runs a call under the device's lock; an exception ends as `fail`, with `failure` as the result.
    template <typename Call>
    int32_t guarded(Call call) noexcept;

    [[nodiscard]] const RingProducer& producer() const { return producer_; }
    /// How many samples a ring gets when so many are wished for; 0 when the board can't hold two frames. A driver may
    /// have its own idea.
    [[nodiscard]] virtual uint32_t ringFor(const BoardFacts& board, int32_t wished, uint32_t channels) const;

private:
    int32_t setupBase(bool apply, ADCParametersDMA& block);
    int32_t setupExtended(bool apply, ADCParametersDMAEX& block);
    bool checkModes(const ADCParametersDMA& block);
    bool correctFrequency(ADCParametersDMA& block);
    bool correctGain(int32_t& gain);
    [[nodiscard]] int32_t wishedRing(const ADCParametersDMA& block) const;
    void applyBase(const ADCParametersDMA& block, uint32_t ring);
    int32_t startMeasurement();
    int32_t answer(uint32_t code, void* result);
    int32_t answerForBoard(uint32_t code, void* result);
    int32_t answerBoardList(void* result);
    int32_t answerRing(void* result);

    std::mutex mutex_;  // board and measurement, which any thread may ask about
    std::vector<BoardFacts> boards_;
    const BoardFacts* board_ = nullptr;
    Measurement measurement_;
    bool externalStartChecked_ = false;  // the apply pass with an external clock doesn't tell any more
    bool configured_ = false;
    RingProducer producer_;

    std::mutex errorMutex_;
    char error_[256] = {};
};

template <typename Call>
int32_t RingDevice::guarded(Call call) noexcept {
    try {
        const std::lock_guard lock(mutex_);
        return call();
    } catch (const std::bad_alloc&) {
        return fail("Not enough memory.");
    } catch (const std::exception& e) {
        return fail("Unexpected: %s", e.what());
    } catch (...) {
        return fail("Unexpected error.");
    }
}

}  // namespace tarno2::drivers
