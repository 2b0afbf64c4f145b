// The evaluator of synchronisation: random settings and blocks. What comes out has to be what the plain model gives.

#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "tests/sync/analyzing.h"

namespace {

/// Takes numbers from the input; zeros once it is used up.
class Input {
public:
    Input(const uint8_t* data, size_t size) : data_(data), left_(size) {}

    template <typename Number>
    Number take() {
        Number number{};
        const size_t bytes = std::min(sizeof number, left_);
        if (bytes > 0) {
            std::memcpy(&number, data_, bytes);
        }
        data_ += bytes;
        left_ -= bytes;
        return number;
    }
    /// Mostly small, at times anything.
    int32_t number() {
        const auto small = take<int8_t>();
        return small == 127 ? take<int32_t>() : small;
    }
    bool flag() { return (take<uint8_t>() & 1U) != 0; }
    [[nodiscard]] bool empty() const { return left_ == 0; }

private:
    const uint8_t* data_;
    size_t left_;
};

tarno2::SynchroSettings settingsFrom(Input& in) {
    tarno2::SynchroSettings s;
    int32_t tarno2::SynchroSettings::*const numbers[] = {&tarno2::SynchroSettings::SynchroAnalyzeMode,
                                                         &tarno2::SynchroSettings::AnalyzeAnalogStartMode,
                                                         &tarno2::SynchroSettings::AnalyzeAnalogStartChannel,
                                                         &tarno2::SynchroSettings::startCode,
                                                         &tarno2::SynchroSettings::AnalyzeAnalogWriteMode,
                                                         &tarno2::SynchroSettings::AnalyzeAnalogWriteChannel,
                                                         &tarno2::SynchroSettings::writeCode,
                                                         &tarno2::SynchroSettings::AnalyzeAnalogStopMode,
                                                         &tarno2::SynchroSettings::AnalyzeAnalogStopChannel,
                                                         &tarno2::SynchroSettings::stopCode,
                                                         &tarno2::SynchroSettings::AnalyzePortStartMode,
                                                         &tarno2::SynchroSettings::AnalyzePortStartBit,
                                                         &tarno2::SynchroSettings::AnalyzePortWriteMode,
                                                         &tarno2::SynchroSettings::AnalyzePortWriteBit,
                                                         &tarno2::SynchroSettings::AnalyzePortStopMode,
                                                         &tarno2::SynchroSettings::AnalyzePortStopBit,
                                                         &tarno2::SynchroSettings::SynchroAnalogMode,
                                                         &tarno2::SynchroSettings::SynchroAnalogChannelNumber,
                                                         &tarno2::SynchroSettings::synchroCode,
                                                         &tarno2::SynchroSettings::SynchroPortMode,
                                                         &tarno2::SynchroSettings::SynchroPortBit};
    for (const auto field : numbers) {
        s.*field = in.number();
    }
    bool tarno2::SynchroSettings::*const flags[] = {
        &tarno2::SynchroSettings::startAnalogEnabled, &tarno2::SynchroSettings::writeAnalogEnabled,
        &tarno2::SynchroSettings::stopAnalogEnabled,  &tarno2::SynchroSettings::analysisOnAnalog,
        &tarno2::SynchroSettings::portStartEnabled,   &tarno2::SynchroSettings::portWriteEnabled,
        &tarno2::SynchroSettings::portStopEnabled,    &tarno2::SynchroSettings::analysisOnPort,
        &tarno2::SynchroSettings::synchroOnAnalog,    &tarno2::SynchroSettings::synchroOnPort,
        &tarno2::SynchroSettings::StopAfterTrigged};
    for (const auto field : flags) {
        s.*field = in.flag();
    }
    return s;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    Input in(data, size);
    const int width = in.flag() ? 32 : 16;
    const bool packed = in.flag();
    const size_t channels = in.take<uint8_t>() % 24;
    const tarno2::SampleFacts facts{in.take<uint8_t>(), in.take<uint8_t>(), in.take<uint8_t>(), in.flag()};
    const tarno2::SynchroSizes sizes{in.take<uint8_t>(), in.take<uint8_t>()};
    const tarno2::SynchroSettings settings = settingsFrom(in);
    tarno2::ConditionAnalyzer analyzer(settings, sizes, facts);
    tarno2::test::PlainModel model(settings, sizes, facts, width);
    while (!in.empty()) {
        std::vector<int32_t> block(in.take<uint8_t>());
        for (int32_t& sample : block) {
            const int32_t number = in.number();
            sample = width == 16 ? static_cast<int16_t>(number) : number;
        }
        const auto got = tarno2::test::analyzeBlock(analyzer, width, block, channels, packed);
        const auto expected = model.evaluate(block, static_cast<int64_t>(channels), packed);
        if (got.result != expected.result || got.samples != expected.samples ||
            got.events.size() != expected.events.size()) {
            std::abort();
        }
    }
    return 0;
}
