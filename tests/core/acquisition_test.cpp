#include <gtest/gtest.h>
#include <memory>
#include <random>
#include <thread>
#include <tuple>
#include <utility>

#include "config/files/recording_name.h"
#include "platform/file.h"
#include "platform/paths.h"
#include "tests/core/rig.h"

namespace tarno2::test {
namespace {

constexpr float kFast = 1e6F;

/// Passes blocks on and answers what a test tells it; once a block is done the next answer counts.
class ScriptedEvaluator final : public BlockEvaluator {
public:
    ScriptedEvaluator(uint32_t atCall, int32_t answer, uint32_t frames = 0)
        : atCall_(atCall), answer_(answer), frames_(frames) {}

    int32_t evaluate(std::span<const std::byte> block, EvaluatedBlock& out) override {
        emptyBlocks += block.empty() ? 1 : 0;
        out = {block, frames_, {}, {}};
        return calls++ == atCall_ ? answer_ : 0;
    }

    uint32_t calls = 0;
    uint32_t emptyBlocks = 0;

private:
    uint32_t atCall_;
    int32_t answer_;
    uint32_t frames_;
};

struct Stream {
    uint32_t channels;
    uint32_t ring;
    float rate;
    uint32_t width;
    bool tellsCount;
    bool obeys;        // makes a ring of whole frames when asked for it
    uint32_t maximum;  // of the ring; 0: not told
    bool perChannel;
    bool hotPlug;
};

/// Lets the board deliver a few rings and a bit, stops it, and compares what is in the file.
void expectWholeStream(const Stream& stream) {
    FakeDevice device;
    device.quiet = true;
    device.format.m_nBytes = stream.width;
    device.tellsCount = stream.tellsCount;
    device.ring = [&](uint32_t asked, uint32_t time) { return time > 0 && stream.obeys ? asked : stream.ring; };
    device.numbers[kADCGetPerChannelFrequency] = stream.perChannel ? 1 : 0;
    device.numbers[kADCGetHotPlug] = stream.hotPlug ? 1 : 0;
    device.numbers[kADCGetHotPlugPresence] = 1;
    if (stream.maximum != 0) {
        device.numbers[kADCGetMaxBuffer] = stream.maximum;
    }
    SessionRig rig(device);
    const uint32_t fitting =
        ringOfWholeFrames(stream.ring, stream.channels, stream.maximum == 0 ? UINT32_MAX : stream.maximum);
    const bool fits = stream.ring % (2 * stream.channels) == 0;
    const bool started = rig.prepare(stream.channels, stream.rate);
    ASSERT_EQ(started, fits || (stream.obeys && fitting != 0));
    if (!started) {
        EXPECT_EQ(rig.end().code, StopCode::Incompatible);
        return;
    }
    EXPECT_EQ(rig.board->maxBufferSamples(), fits ? stream.ring : fitting);
    const uint64_t half = device.ringSize() / 2;
    const uint64_t total = half * 7 + half * 2 / 3;
    device.readerPaced = total;
    rig.board->Begin();
    ASSERT_TRUE(device.waitForReads(half * 7));
    EXPECT_EQ(rig.stop().code, StopCode::User);
    const uint64_t expected = stream.tellsCount ? total / stream.channels * stream.channels : half * 7;
    EXPECT_EQ(rig.board->samplesRead(), expected);
    EXPECT_TRUE(rig.data() == streamBytes(0, expected, stream.width)) << "a sample is lost, repeated or out of order";
    EXPECT_EQ(rig.faults, std::vector<std::string>{});
}

TEST(Acquisition, EverySampleArrivesOnceAndInOrder) {
    constexpr float kRates[] = {1.0F, 2.0F, 63.0F, 100.0F, 399.0F, 1000.0F, 44100.0F, 524288.0F, 1e6F, 2e7F};
    constexpr uint32_t kEdges[] = {1, 2, 3, 16, 159, 160};
    std::mt19937 random(20121219);
    const auto below = [&random](uint32_t limit) { return static_cast<uint32_t>(random() % limit); };
    for (int i = 0; i < 300; ++i) {
        Stream stream{};
        stream.channels = i % 3 == 0 ? kEdges[below(6)] : 1 + below(160);
        const uint32_t scale = below(4);
        stream.ring = 32 + (scale == 0 ? below(99969) : scale == 1 ? below(9969) : below(969));
        stream.rate = kRates[below(10)];
        stream.width = below(2) == 0 ? 2 : 4;
        stream.tellsCount = below(3) != 0;
        stream.obeys = below(6) != 0;
        stream.maximum = below(3) == 0 ? std::max(stream.ring, 2 * stream.channels - below(2)) : 0;
        stream.perChannel = below(3) == 0;
        stream.hotPlug = below(4) == 0;
        if (i == 0 || i == 1) {
            stream = {i == 0 ? 1U : 160U, i == 0 ? 32U : 100000U, 1.0F, 2, true, true, 0, false, false};
        }
        SCOPED_TRACE(::testing::Message() << "case " << i << ": " << stream.channels << " channels, ring "
                                          << stream.ring << ", " << stream.rate << " Hz, width " << stream.width
                                          << ", count " << stream.tellsCount << ", obeys " << stream.obeys);
        expectWholeStream(stream);
        if (::testing::Test::HasFailure()) {
            return;
        }
    }
}

constexpr uint32_t kHalf = 500;

// How a recording of one channel over a ring of 1000 samples ends, and what is in its file then.
struct StreamEnding {
    const char* what;
    StopCode code;
    uint64_t saved;  // samples at least
    void (*script)(FakeDevice&);
    const char* line = "";  // in the debug log
    ErrorDetail detail = {};
    bool exactly = true;   // not more samples
    bool counted = false;  // noticed only where events are counted
};

StreamEnding overflow(const char* what, uint64_t saved, void (*script)(FakeDevice&), bool counted = false) {
    return {what, StopCode::Error, saved, script, "!!!!! FIFO Overflow", ErrorDetail::Overflow, true, counted};
}

void paced(FakeDevice& device) {
    device.readerPaced = 20 * kHalf;
}

void pulledOutAfterTwoReads(FakeDevice& device) {
    device.numbers[kADCGetHotPlug] = 1;
    device.numbers[kADCGetHotPlugPresence] = 1;
    device.afterRead = [&device](uint32_t read) { device.numbers[kADCGetHotPlugPresence] = read < 2 ? 1 : 0; };
}

/// While the seventh half is copied, so many samples come.
template <uint32_t Samples, bool Counted>
void overtaken(FakeDevice& device) {
    paced(device);
    device.afterRead = [&device](uint32_t read) {
        if (read == 6) {
            device.tellsCount = device.tellsCount && Counted;
            device.produce(Samples);
        }
    };
}

/// Two halves come between two looks at the count.
void overtakenBetweenReads(FakeDevice& device) {
    device.readerPaced = 4 * kHalf;
    const auto asked = std::make_shared<int>(-1);  // how often for the count, since the fourth read
    device.afterRead = [&device, asked](uint32_t read) {
        if (read == 3) {
            device.produce(kHalf);
            *asked = 0;
        }
    };
    device.afterGetCode = [&device, asked](uint32_t code) {
        if (code == kADCGetSamplesWritten && *asked >= 0 && ++*asked == 2) {
            device.produce(kHalf);
        }
    };
}

const StreamEnding kStreamEndings[] = {
    {"the first GetData fails", StopCode::TransferError, 0, [](FakeDevice& d) { paced(d), d.failingRead = 0; },
     "!!!!! GetData error at sample 0: scripted"},
    {"the sixth GetData fails", StopCode::TransferError, 5 * kHalf, [](FakeDevice& d) { paced(d), d.failingRead = 5; },
     "!!!!! GetData error at sample 2500: scripted"},
    {"GetData throws", StopCode::TransferError, 0, [](FakeDevice& d) { paced(d), d.throwing = "GetData"; }},
    {"Start is refused", StopCode::Error, 0, [](FakeDevice& d) { d.startAnswer = 0; }, "!!!!! Start ERROR",
     ErrorDetail::Start},
    {"Start throws", StopCode::Error, 0, [](FakeDevice& d) { d.throwing = "Start"; }, "!!!!! Start ERROR",
     ErrorDetail::Start},
    {"Get throws", StopCode::Incompatible, 0, [](FakeDevice& d) { d.throwing = "Get"; }},
    {"no data event at all", StopCode::NoData, 0, [](FakeDevice&) {}},
    {"the board falls silent within a half", StopCode::NoData, 3 * kHalf + 77,
     [](FakeDevice& d) { d.readerPaced = 3 * kHalf + 77; }},
    {"silent, and Stop throws", StopCode::NoData, 2 * kHalf,
     [](FakeDevice& d) { d.readerPaced = 2 * kHalf, d.throwing = "Stop"; }},
    {"the wait for its event fails", StopCode::Error, 77, [](FakeDevice& d) { d.eventLost = true, d.atStart = 77; },
     "!!!!! The wait for the board's data event failed: ", ErrorDetail::Unknown},
    {"pulled out after three halves",
     StopCode::Unplug,
     4 * kHalf,
     [](FakeDevice& d) { d.readerPaced = 4 * kHalf + 33, pulledOutAfterTwoReads(d); },
     "!!!!! Board unplug.... Thread stop",
     {},
     false},
    {"pulled out, and nothing can be fetched any more", StopCode::Unplug, 3 * kHalf,
     [](FakeDevice& d) { paced(d), d.failingRead = 3, pulledOutAfterTwoReads(d); },
     "!!!!! Board unplug.... Thread stop"},
    overflow("two unread halves at once, by the count", 0, [](FakeDevice& d) { d.atStart = 2 * kHalf; }),
    overflow(
        "two unread halves at once, by the events", 0,
        [](FakeDevice& d) { d.atStart = 2 * kHalf, d.tellsCount = false; }, true),
    overflow("two unread halves after four good ones", 4 * kHalf, overtakenBetweenReads),
    overflow("overwritten while it was copied", 6 * kHalf, overtaken<4 * kHalf + 1, true>),
    overflow(
        "overwritten while it was copied, by the events", 6 * kHalf,
        [](FakeDevice& d) { overtaken<kHalf, true>(d), d.tellsCount = false; }, true),
    {"the count stops being answered", StopCode::NoData, 20 * kHalf,
     [](FakeDevice& d) {
         d.readerPaced = 20 * kHalf + 77;
         d.afterRead = [&d](uint32_t read) { d.tellsCount = read < 2; };
     }},
    overflow("the count stops being answered while a half is copied", 6 * kHalf, overtaken<kHalf, false>, true)};

TEST(Acquisition, EndingsKeepWhatReachedTheHost) {
    for (const StreamEnding& c : kStreamEndings) {
        SCOPED_TRACE(c.what);
        if (c.counted && kPathSeparator == '\\') {
            continue;  // events are not counted there
        }
        FakeDevice device;
        device.ring = [](uint32_t, uint32_t) { return 2 * kHalf; };
        ScopedDebugLog log;
        c.script(device);
        const std::string throwing = std::exchange(device.throwing, {});
        {
            SessionRig rig(device);
            rig.board->dataWaitMs = 1;
            ASSERT_TRUE(rig.prepare(1, kFast));
            device.throwing = throwing;
            rig.board->Begin();
            const RecordingResult result = rig.end();
            EXPECT_EQ(result.code, c.code);
            EXPECT_EQ(result.detail, c.detail);
            if (device.failingRead == 5) {
                const GetDataReport& report = result.getData;
                EXPECT_EQ(std::tuple(report.mode, report.size, report.offset, report.bufferSize, report.partNumber),
                          std::tuple(int32_t{kADCDataShort}, kHalf, kHalf, 2 * kHalf, 2));
                EXPECT_EQ(report.buffer, report.bufferStart);
            }
            const std::string data = rig.data();
            EXPECT_EQ(data.size() / 2 == c.saved, c.exactly || data.size() / 2 == c.saved) << data.size() / 2;
            EXPECT_GE(data.size() / 2, c.saved);
            EXPECT_TRUE(data == streamBytes(0, data.size() / 2, 2));
            EXPECT_EQ(fileExists(rig.dataName), !data.empty()) << "a file without samples is deleted";
            EXPECT_EQ(fileExists(rig.folder.file("run.txt")), !data.empty());
            EXPECT_EQ(device.countCalls("Stop"),
                      device.countCalls("Start") > 0 && c.detail != ErrorDetail::Start ? 1U : 0U);
            EXPECT_FALSE(rig.driver.started());
            EXPECT_EQ(result.overflowPosition, c.detail == ErrorDetail::Overflow ? c.saved : 0);
            const std::string ledger = rig.folder.file("run.log");
            EXPECT_EQ(fileExists(ledger), !result.losses.empty());
            if (c.code == StopCode::TransferError || c.detail == ErrorDetail::Overflow) {
                const std::string first = "sample = " + std::to_string(data.size() / 2) + ", count = ";
                EXPECT_EQ(readFile(ledger).substr(0, first.size()), first);
            }
        }
        std::vector<std::string> lines{c.line,
                                       "Thread Exit rezAdd = ", ", Code = " + std::to_string(static_cast<int>(c.code))};
        if (c.detail == ErrorDetail::Overflow) {
            lines.insert(lines.begin() + 1, std::to_string(c.saved));  // the first lost sample
        }
        EXPECT_EQ(firstMissing(log.finish(), lines), "");
    }
}

TEST(Acquisition, AStartThatIsStoppedOrCancelledNeverReachesTheBoard) {
    for (const bool cancelled : {false, true}) {
        FakeDevice device;
        SessionRig rig(device);
        ASSERT_TRUE(rig.prepare(2, kFast));
        cancelled ? rig.board->endThread() : rig.board->requestStop();
        EXPECT_EQ(rig.end().code, StopCode::User);
        EXPECT_EQ(device.countCalls("Start") + device.countCalls("Stop"), 0U);
        EXPECT_FALSE(fileExists(rig.dataName));
        EXPECT_EQ(rig.driver.blockCount(), 1);
    }
}

// A board that waits for an external signal is waited for without limit, its presence asked in slices, and a stop
// still gets through.
TEST(Acquisition, ExternalStartWaitsUntilItIsStopped) {
    FakeDevice device;
    device.ring = [](uint32_t, uint32_t) { return 2 * kHalf; };
    device.numbers[kADCGetHotPlug] = 1;
    device.numbers[kADCGetHotPlugPresence] = 1;
    SessionRig rig(device);
    rig.board->dataWaitMs = 1;
    rig.board->settings.externalStart = true;
    ASSERT_TRUE(rig.begin(1, kFast));
    ASSERT_TRUE(device.waitForCall("Start"));
    const std::string presence = "Get " + std::to_string(kADCGetHotPlugPresence);
    const size_t asked = device.countCalls(presence);
    while (device.countCalls(presence) < asked + 2) {
        std::this_thread::yield();  // the second question comes after a slice of waiting
    }
    EXPECT_FALSE(rig.notes.startCame());
    device.produce(kHalf / 2);
    while (!rig.notes.startCame()) {
        std::this_thread::yield();  // looked at, without any event
    }
    EXPECT_EQ(rig.stop().code, StopCode::User);
    EXPECT_TRUE(rig.data() == streamBytes(0, kHalf / 2, 2)) << "what the ring held at the stop";
    EXPECT_EQ(device.calls().back(), "Stop") << "read first, then stopped";
}

// Nobody waits for a half that takes seconds: what was counted moves on, in whole frames, without any event.
TEST(Acquisition, SlowSamplesAreReadAsTheyCome) {
    const struct {
        const char* what;
        float frequency;
        float packets;
        bool externalClock;
    } cases[] = {{"1 Hz", 1.0F, 0.0F, false}, {"packets", 2e6F, 10.0F, false}, {"unknown rate", 2e6F, 0.0F, true}};
    for (const auto& c : cases) {
        for (const uint64_t limit : {0U, 18U}) {
            SCOPED_TRACE(::testing::Message() << c.what << ", limit " << limit);
            FakeDevice device;
            SessionRig rig(device);
            rig.board->settings.packetMode = c.packets > 0.0F;
            rig.board->settings.packetFrequency = c.packets;
            rig.board->settings.externalClock = c.externalClock;
            ASSERT_TRUE(rig.prepare(3, c.frequency, limit));
            rig.board->Begin();
            ASSERT_TRUE(device.waitForCall("Start"));
            device.produce(4);
            ASSERT_TRUE(device.waitForReads(3));
            device.produce(6);
            ASSERT_TRUE(device.waitForReads(9));
            const RecordingResult result = limit == 0 ? rig.stop() : rig.end();
            EXPECT_EQ(result.code, limit == 0 ? StopCode::User : StopCode::StopMeasuring);
            EXPECT_TRUE(rig.data() == streamBytes(0, 9, 2)) << "the torn frame stays";
        }
    }
}

// A board that fills its ring as fast as it is emptied must not keep a stopped recording alive.
TEST(Acquisition, StopEndsThoughTheRingIsFilledAnew) {
    FakeDevice device;
    device.ring = [](uint32_t, uint32_t) { return 2 * kHalf; };
    device.readerPaced = 1000 * kHalf;
    SessionRig rig(device);
    device.afterRead = [&](uint32_t read) {
        if (read == 4) {
            rig.board->requestStop();
        }
    };
    ASSERT_TRUE(rig.begin(1, kFast));
    EXPECT_EQ(rig.end().code, StopCode::User);
    EXPECT_LE(device.samplesRead(), (5 + 2) * kHalf) << "more than the ring held at the stop was waited for";
    EXPECT_TRUE(rig.data() == streamBytes(0, device.samplesRead(), 2));
    EXPECT_EQ(device.countCalls("Get " + std::to_string(kADCGetStreamEnd)), 1U) << "it has no answer to that";
}

TEST(Acquisition, PreHistoryPortionEndsInTheNormalMode) {
    FakeDevice device;
    device.ring = [](uint32_t, uint32_t) { return 2 * kHalf; };
    device.numbers[kADCGetPreHistory] = 1;
    device.preHistoryReads = 2;
    device.readerPaced = 5 * kHalf;
    SessionRig rig(device);
    ASSERT_TRUE(rig.begin(1, kFast));
    ASSERT_TRUE(device.waitForReads(5 * kHalf));
    EXPECT_EQ(rig.stop().code, StopCode::User);
    std::vector<std::string> reads;
    for (const auto& call : device.calls()) {
        if (call.starts_with("GetData")) {
            reads.push_back(call.substr(8));
        }
    }
    EXPECT_EQ(reads, (std::vector<std::string>{"1073741824 500 0", "1073741824 500 500", "1073741824 500 0", "1 500 0",
                                               "1 500 500", "1 500 0"}));
    EXPECT_TRUE(rig.data() == streamBytes(0, 5 * kHalf, 2));
    EXPECT_GE(rig.notes.progressCount(), 1U);
}

TEST(Acquisition, EvaluatorEndsTheRecording) {
    struct Case {
        int32_t answer;
        StopCode code;
        uint64_t saved;
    };
    for (const Case& c : {Case{1, StopCode::StopMeasuring, 3 * kHalf}, Case{-1, StopCode::AnalyzeError, 2 * kHalf},
                          Case{-2, StopCode::AnalyzeError, 2 * kHalf}}) {
        FakeDevice device;
        device.ring = [](uint32_t, uint32_t) { return 2 * kHalf; };
        paced(device);
        SessionRig rig(device);
        rig.board->evaluator = std::make_unique<ScriptedEvaluator>(2, c.answer);
        ASSERT_TRUE(rig.begin(1, kFast));
        EXPECT_EQ(rig.end().code, c.code) << c.answer;
        EXPECT_TRUE(rig.data() == streamBytes(0, c.saved, 2)) << c.answer;
    }
}

TEST(Acquisition, DecimationRunsOnAcrossBlocks) {
    for (const uint32_t factor : {2U, 7U, 100U, 1000U}) {
        FakeDevice device;
        device.ring = [](uint32_t, uint32_t) { return 300U; };  // halves of 50 frames
        device.readerPaced = 3 * 2010;
        SessionRig rig(device);
        auto evaluator = std::make_unique<ScriptedEvaluator>(FakeDevice::kNever, 0);
        const ScriptedEvaluator& seen = *evaluator;
        rig.board->evaluator = std::move(evaluator);
        rig.board->decimation = factor;
        ASSERT_TRUE(rig.begin(3, kFast));
        ASSERT_TRUE(device.waitForReads(3 * 2000));
        EXPECT_EQ(rig.stop().code, StopCode::User);
        std::string expected;
        for (uint64_t group = 0; (group + 1) * factor <= 2010; ++group) {
            expected += streamBytes(group * factor * 3, 3, 2);
        }
        EXPECT_TRUE(rig.data() == expected) << factor;
        EXPECT_EQ(seen.emptyBlocks, 0U) << factor;
    }
}

}  // namespace
}  // namespace tarno2::test
