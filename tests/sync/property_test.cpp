// Random signals, settings and block cuts: the evaluator has to give what the plain model gives.

#include <gtest/gtest.h>
#include <random>
#include <sstream>

#include "tests/sync/analyzing.h"

namespace tarno2::test {

namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__) || !defined(NDEBUG)
constexpr int kCases = 20000;
#else
constexpr int kCases = 200000;
#endif

struct Case {
    int width = 16;
    int64_t channels = 1;
    bool packed = false;
    SampleFacts facts;
    SynchroSettings settings;
    SynchroSizes sizes;
    std::vector<std::vector<int32_t>> blocks;
};

class Generator {
public:
    explicit Generator(uint32_t seed) : random_(seed) {}

    Case next() {
        Case c;
        c.width = one(2) ? 16 : 32;
        c.channels = one(3) ? 1 : one(8) ? number(7, 20) : number(1, 6);
        c.packed = one(2);
        c.facts.formatFlags = static_cast<uint32_t>(number(0, 3));
        c.facts.codeShift = static_cast<uint32_t>(one(20) ? number(0, 40) : number(0, 6));
        c.facts.portShift = static_cast<uint32_t>(one(20) ? number(0, 40) : number(0, 4));
        c.facts.backwardOrder = one(4);
        c.sizes = {number(0, 9), number(0, 9)};
        shift_ = c.packed ? c.facts.codeShift & 7U : 0;
        fillSettings(c.settings, static_cast<int32_t>(c.channels));
        fillBlocks(c);
        return c;
    }
    /// The same stream in other pieces of whole frames.
    std::vector<std::vector<int32_t>> recut(const Case& c) {
        std::vector<int32_t> stream;
        for (const auto& block : c.blocks) {
            stream.insert(stream.end(), block.begin(), block.end());
        }
        std::vector<std::vector<int32_t>> blocks;
        for (size_t begin = 0; begin < stream.size();) {
            const auto frames = static_cast<size_t>(number(1, 30));
            const size_t end = std::min(stream.size(), begin + frames * static_cast<size_t>(c.channels));
            blocks.emplace_back(stream.begin() + static_cast<std::ptrdiff_t>(begin),
                                stream.begin() + static_cast<std::ptrdiff_t>(end));
            begin = end;
        }
        return blocks;
    }

private:
    int32_t number(int32_t low, int32_t high) { return std::uniform_int_distribution<int32_t>(low, high)(random_); }
    bool one(int32_t in) { return number(1, in) == 1; }

    int32_t code() {
        if (one(30)) {
            return number(INT32_MIN, INT32_MAX);
        }
        return one(30) ? number(-70000, 70000) : number(-6, 6);
    }
    int32_t mode() { return one(25) ? number(-1, 4) : number(0, 2); }
    int32_t position(int32_t channels) { return one(25) ? number(-2, channels + 2) : number(0, channels - 1); }
    int32_t bitNumber() { return one(25) ? number(0, 40) : number(0, 3); }

    void fillSettings(SynchroSettings& s, int32_t channels) {
        s.SynchroAnalyzeMode = one(40) ? number(-1, 4) : number(1, 2);
        s.AnalyzeAnalogStartMode = mode();
        s.AnalyzeAnalogWriteMode = mode();
        s.AnalyzeAnalogStopMode = mode();
        s.AnalyzePortStartMode = mode();
        s.AnalyzePortWriteMode = mode();
        s.AnalyzePortStopMode = mode();
        s.startAnalogEnabled = s.AnalyzeAnalogStartMode != 2;
        s.writeAnalogEnabled = s.AnalyzeAnalogWriteMode != 2;
        s.stopAnalogEnabled = s.AnalyzeAnalogStopMode != 2;
        s.portStartEnabled = s.AnalyzePortStartMode != 2;
        s.portWriteEnabled = s.AnalyzePortWriteMode != 2;
        s.portStopEnabled = s.AnalyzePortStopMode != 2;
        s.AnalyzeAnalogStartChannel = position(channels);
        s.AnalyzeAnalogWriteChannel = position(channels);
        s.AnalyzeAnalogStopChannel = position(channels);
        s.startCode = code();
        s.writeCode = code();
        s.stopCode = code();
        s.AnalyzePortStartBit = bitNumber();
        s.AnalyzePortWriteBit = bitNumber();
        s.AnalyzePortStopBit = bitNumber();
        s.analysisOnAnalog = one(2);
        s.analysisOnPort = one(20) ? one(2) : !s.analysisOnAnalog;
        s.synchroOnAnalog = one(2);
        s.synchroOnPort = one(20) ? one(2) : !s.synchroOnAnalog;
        s.SynchroAnalogMode = mode();
        s.SynchroAnalogChannelNumber = position(channels);
        s.SynchroAnalogValue = 0.25 * number(-8, 8);
        s.synchroCode = code();
        s.SynchroPortMode = mode();
        s.SynchroPortBit = bitNumber();
        s.StopAfterTrigged = one(4);
    }

    void fillBlocks(Case& c) {
        const int32_t blocks = number(1, 4);
        const bool large = one(40);
        const int32_t amplitude = one(10) ? 40000 : number(1, 12);
        const int32_t steadiness = number(1, 6);
        int32_t level = 0;
        for (int32_t i = 0; i < blocks; ++i) {
            int64_t samples = number(1, large ? 1500 : 40) * c.channels;
            samples += one(30) ? number(0, static_cast<int32_t>(c.channels) - 1) : 0;
            std::vector<int32_t> block;
            while (static_cast<int64_t>(block.size()) < samples) {
                level = one(steadiness) ? number(-amplitude, amplitude) : level;
                const auto word = static_cast<int32_t>(static_cast<uint32_t>(level) << shift_);
                const int32_t packed = word | (shift_ != 0 ? number(0, (1 << shift_) - 1) : 0);
                block.push_back(c.width == 16 ? static_cast<int16_t>(packed) : packed);
            }
            c.blocks.push_back(std::move(block));
        }
    }

    std::mt19937 random_;
    uint32_t shift_ = 0;
};

bool same(const SynchroEvent& a, const SynchroEvent& b) {
    return a.point == b.point && a.prehistory == b.prehistory && a.history == b.history && a.mode == b.mode &&
           a.condition == b.condition && a.channel == b.channel && a.value == b.value;
}

bool same(const Evaluated& a, const Evaluated& b) {
    return a.result == b.result && a.samples == b.samples &&
           std::equal(a.events.begin(), a.events.end(), b.events.begin(), b.events.end(),
                      [](const SynchroEvent& x, const SynchroEvent& y) { return same(x, y); });
}

/// The records of a whole stream.
Evaluated evaluateAll(const Case& c, const std::vector<std::vector<int32_t>>& blocks) {
    ConditionAnalyzer analyzer(c.settings, c.sizes, c.facts);
    Evaluated all;
    for (const auto& block : blocks) {
        const Evaluated part = analyzeBlock(analyzer, c.width, block, static_cast<size_t>(c.channels), c.packed);
        all.samples.insert(all.samples.end(), part.samples.begin(), part.samples.end());
        all.events.insert(all.events.end(), part.events.begin(), part.events.end());
    }
    return all;
}

std::string described(const Evaluated& evaluated) {
    std::ostringstream text;
    text << "result " << evaluated.result << ", " << evaluated.events.size() << " events, samples";
    for (const int32_t sample : evaluated.samples) {
        text << ' ' << sample;
    }
    return text.str();
}

}  // namespace

TEST(SynchroProperty, EvaluatorGivesWhatThePlainModelGives) {
    Generator generator(20240607);
    uint64_t written = 0;
    uint64_t events = 0;
    for (int number = 0; number < kCases; ++number) {
        const Case c = generator.next();
        ConditionAnalyzer analyzer(c.settings, c.sizes, c.facts);
        PlainModel model(c.settings, c.sizes, c.facts, c.width);
        for (size_t block = 0; block < c.blocks.size(); ++block) {
            const Evaluated expected = model.evaluate(c.blocks[block], c.channels, c.packed);
            const Evaluated got =
                analyzeBlock(analyzer, c.width, c.blocks[block], static_cast<size_t>(c.channels), c.packed);
            ASSERT_TRUE(same(got, expected)) << "case " << number << ", block " << block << "\n"
                                             << described(got) << "\nmodel:\n"
                                             << described(expected);
            written += expected.samples.size();
            events += expected.events.size();
        }
    }
    EXPECT_GT(written, static_cast<uint64_t>(kCases) * 10);
    EXPECT_GT(events, static_cast<uint64_t>(kCases) / 10);
}

TEST(SynchroProperty, RecordsDoNotDependOnHowTheStreamIsCut) {
    Generator generator(7);
    uint64_t events = 0;
    for (int number = 0; number < kCases / 10; ++number) {
        Case c = generator.next();
        c.settings.SynchroAnalyzeMode = 2;
        c.facts.backwardOrder = number % 3 == 0;
        for (auto& block : c.blocks) {
            block.resize(block.size() / static_cast<size_t>(c.channels) * static_cast<size_t>(c.channels));
        }
        c.settings.SynchroAnalogChannelNumber =
            std::clamp(c.settings.SynchroAnalogChannelNumber, 0, static_cast<int32_t>(c.channels) - 1);
        const Evaluated whole = evaluateAll(c, c.blocks);
        const Evaluated recut = evaluateAll(c, generator.recut(c));
        ASSERT_TRUE(same(recut, whole)) << "case " << number << "\n" << described(recut) << "\n" << described(whole);
        events += whole.events.size();
    }
    EXPECT_GT(events, 1000U);
}

}  // namespace tarno2::test
