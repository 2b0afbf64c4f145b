#pragma once

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <tarno2/IADCDevice.h>

#include "platform/event.h"

namespace tarno2::test {

/// The bytes of the samples [from, from + count) of the fake board's stream: every sample tells its position.
[[nodiscard]] std::string streamBytes(uint64_t from, uint64_t count, uint32_t width);

/// A board that does what a test tells it, step by step. Its ring holds a stream without end; a test puts samples into
/// it with `produce`, or the reader's own progress does (`readerPaced`). What the host calls is written down in order.
/// It outlives the driver that it is attached to: `Release` only notes the call.
class FakeDevice final : public IADCDevice {
public:
    static constexpr uint32_t kNever = 0xFFFFFFFF;

    // The script. Set before the host's next call.
    std::map<uint32_t, uint32_t> numbers;  ///< answers of one uint32_t; other such codes have none
    ADCSampleFormat format{2, 14, 0, 0x3FFF, 14, 0xC000, 2, 1, 0, 1};
    std::vector<int32_t> drqNumbers;  ///< that the board offers; the last one is taken by somebody else
    bool formatKnown = true;
    bool codeRangeKnown = true;
    bool settingsUsable = true;  ///< the driver's own settings file
    float inputRange = 5.0F;
    std::optional<std::pair<double, double>> inputLimits;         ///< lower, upper at gain 1; a gain divides them
    int32_t setupAnswers[2][2] = {{1, 1}, {1, 1}};                ///< [apply][extended block]
    std::function<void(int32_t, ADCParametersDMA&)> correctDma;   ///< (apply, block)
    std::function<void(int32_t, ADCParametersDMAEX&)> correctEx;  ///< (apply, block)
    std::function<uint32_t(uint32_t asked, uint32_t time)>
        ring;                                ///< ring made, by how often one was; default: as asked
    uint32_t ringRefusedFrom = kNever;       ///< which answer to kADCGetRing is the first refused
    std::function<void(uint32_t&)> restate;  ///< changes the ring size told, not the ring, from the second answer on
    bool eventLost = false;                  ///< the number of the data event is none
    int32_t startAnswer = 1;
    std::function<void()> whileStarting;         ///< called by Start, before the board runs, on its thread
    uint64_t atStart = 0;                        ///< samples that are there at once
    bool tellsCount = true;                      ///< answers kADCGetSamplesWritten
    uint64_t readerPaced = 0;                    ///< samples that come by themselves as the reader takes them
    uint64_t countLag = 0;                       ///< samples of the `readerPaced` that are never counted
    std::optional<ADCStreamEnd> streamEnd;       ///< told once `readerPaced` samples have come; cause 0: told as none
    uint32_t failingRead = kNever;               ///< which GetData call fails, from 0
    uint32_t preHistoryReads = 0;                ///< GetData calls that the pre-history portion serves
    std::function<void(uint32_t)> afterRead;     ///< called with the number of the GetData call, on its thread
    std::function<void(uint32_t)> afterGetCode;  ///< called with the code before `Get` answers, on its thread
    std::string throwing;                        ///< the call that throws: "Setup", "Start", ...
    std::string error = "scripted";              ///< what LastError tells
    bool quiet = false;                          ///< calls are not written down
    /// `Get` of the codes that the fake knows nothing of.
    std::function<int32_t(uint32_t code, void* result)> answer;

    FakeDevice();

    /// Puts samples into the ring; sets the data event for each half that they fill.
    void produce(uint64_t samples);
    /// Sets the data event without any sample.
    void signal() { event_.set(); }
    /// Waits until the host has read so many samples in all, or has called what begins so. False after 30 s.
    [[nodiscard]] bool waitForReads(uint64_t samples);
    [[nodiscard]] bool waitForCall(const std::string& begin);

    [[nodiscard]] uint64_t samplesRead();
    [[nodiscard]] uint32_t ringSize();
    /// The calls so far: "Setup 0 1" (apply, type), "Get 70", "GetData 1 100 0" (mode, count, offset), "Start", ...
    [[nodiscard]] std::vector<std::string> calls();
    [[nodiscard]] size_t countCalls(const std::string& begin);
    [[nodiscard]] std::vector<ADCParametersDMA> dmaBlocks();  ///< as they were handed over

    void* TARNO2_CALL QueryInterface(const char* /*name*/) override { return nullptr; }
    void TARNO2_CALL Release() override { note("Release"); }
    int32_t TARNO2_CALL SelectBoard(uint32_t number) override;
    int32_t TARNO2_CALL CloseBoard() override;
    int32_t TARNO2_CALL Setup(int32_t apply, void* block, int32_t zero) override;
    int32_t TARNO2_CALL Start() override;
    void TARNO2_CALL Stop() override { note("Stop"); }
    int32_t TARNO2_CALL GetData(int32_t mode, void* destination, uint32_t count, uint32_t offset) override;
    int32_t TARNO2_CALL LastError(char* text, uint32_t size) override;
    int32_t TARNO2_CALL Get(uint32_t code, void* result) override;
    int32_t TARNO2_CALL Set(uint32_t code, const void* value) override;
    int32_t TARNO2_CALL ReadPort(uint32_t* /*lines*/) override { return 0; }
    int32_t TARNO2_CALL WritePort(uint32_t /*lines*/) override { return 0; }
    int32_t TARNO2_CALL WriteAnalog(uint32_t /*output*/, float /*volts*/) override { return 0; }
    int32_t TARNO2_CALL SetProgramDirectory(const char* folder) override;

private:
    /// Notes a call and throws when the script wants it; the name is what stands before the first blank.
    void note(const char* call, int64_t a = -1, int64_t b = -1, int64_t c = -1);
    void produceLocked(uint64_t samples);
    int32_t answerRing(ADCRingInfo& info);
    [[nodiscard]] bool waitUntil(const std::function<bool()>& done);

    std::mutex mutex_;
    std::condition_variable changed_;
    Event event_;
    std::vector<std::string> calls_;
    std::vector<ADCParametersDMA> dmaBlocks_;
    uint32_t ringSize_ = 0;
    uint32_t ringsMade_ = 0;
    uint32_t ringAnswers_ = 0;
    uint32_t reads_ = 0;
    uint64_t written_ = 0;
    uint64_t read_ = 0;
};

}  // namespace tarno2::test
