#include <gtest/gtest.h>

#include "config/files/recording_name.h"
#include "platform/file.h"
#include "tests/core/rig.h"

namespace tarno2::test {
namespace {

constexpr uint32_t kHalf = 500;
constexpr uint64_t kLost = 4711;
constexpr float kFast = 1e6F;

struct Cause {
    uint32_t cause;
    StopCode code;
    ErrorDetail detail;
    bool lossToldOf;
};
const Cause kCauses[] = {{kADCEndLost, StopCode::Error, ErrorDetail::Overflow, true},
                         {kADCEndUnplugged, StopCode::Unplug, ErrorDetail::Unknown, true},
                         {kADCEndOfSource, StopCode::SourceEnd, ErrorDetail::Unknown, false},
                         {kADCEndError, StopCode::TransferError, ErrorDetail::Unknown, true},
                         {77, StopCode::TransferError, ErrorDetail::Unknown, true}};

std::string boardLine(uint64_t sample, uint64_t count) {
    return "sample = " + std::to_string(sample) + ", count = " + std::to_string(count) + ", cause = board\r\n";
}

std::string ledgerOf(const SessionRig& rig) {
    const std::string name = RecordingName(rig.dataName).losses();
    return fileExists(name) ? readFile(name) : std::string();
}

/// Two channels over a ring of 1000 samples; the stream ends where `came` samples have come.
void scriptEnd(FakeDevice& device, uint64_t came, uint32_t cause, uint64_t position) {
    device.ring = [](uint32_t, uint32_t) { return 2 * kHalf; };
    device.readerPaced = came;
    device.streamEnd = {cause, 0, position, kLost};
}

// Every frame before the end is in the file, whether the board counts, lags behind with that, or sets its event alone.
TEST(StreamEnd, EverythingBeforeItIsRecordedAndTheReasonTold) {
    for (const Cause& c : kCauses) {
        for (const uint64_t position : {0U, 2U, kHalf, 2 * kHalf + 240, 3 * kHalf, 4 * kHalf - 2}) {
            for (const int counting : {0, 1, 2}) {
                for (const float rate : {kFast, 100.0F}) {
                    SCOPED_TRACE(::testing::Message() << "cause " << c.cause << " at " << position << ", counting "
                                                      << counting << ", rate " << rate);
                    FakeDevice device;
                    scriptEnd(device, position, c.cause, position);
                    device.tellsCount = counting > 0;
                    device.countLag = counting == 2 ? 333 : 0;
                    device.error = "the cable\nhas gone";
                    SessionRig rig(device);
                    ASSERT_TRUE(rig.begin(2, rate));
                    const RecordingResult result = rig.end();
                    EXPECT_EQ(result.code, c.code);
                    EXPECT_EQ(result.detail, c.detail);
                    EXPECT_EQ(result.problem, "the cable has gone");
                    EXPECT_EQ(result.overflowPosition, c.detail == ErrorDetail::Overflow ? position : 0);
                    EXPECT_TRUE(rig.data() == streamBytes(0, position, 2)) << rig.data().size() / 2;
                    EXPECT_EQ(ledgerOf(rig), c.lossToldOf ? boardLine(position, kLost) : "");
                    EXPECT_EQ(device.countCalls("Stop"), 1U);
                }
            }
        }
    }
}

struct Meeting {
    const char* what;
    uint32_t cause;
    uint64_t came;
    uint64_t position;
    StopCode code;
    uint64_t saved;
    std::string ledger;
    void (*script)(SessionRig&) = nullptr;
    uint64_t limitBytes = 0;
};

/// While the samples from 500 on are copied, the second time that any are.
template <typename Act>
void duringSecondRead(SessionRig& rig, Act act) {
    rig.device.afterRead = [&rig, act](uint32_t read) {
        if (read == 1) {
            act(rig);
        }
    };
}

const Meeting kMeetings[] = {
    {"an end behind what was read", kADCEndLost, 3 * kHalf, 800, StopCode::Error, 1000, boardLine(1000, kLost)},
    {"an end within a frame", kADCEndUnplugged, 1241, 1241, StopCode::Unplug, 1240, boardLine(1240, kLost)},
    {"it does not know how many", kADCEndLost, 1240, 1240, StopCode::Error, 1240, boardLine(1240, 0),
     [](SessionRig& r) { r.device.streamEnd->m_nLost = 0; }},
    {"pulled out, nothing known to be lost", kADCEndUnplugged, 1240, 1240, StopCode::Unplug, 1240, "",
     [](SessionRig& r) { r.device.streamEnd->m_nLost = 0; }},
    {"while the external start is awaited", kADCEndError, 0, 0, StopCode::TransferError, 0, boardLine(0, kLost),
     [](SessionRig& r) { r.board->settings.externalStart = true, r.device.tellsCount = false; }},
    {"with the stop button", kADCEndLost, 1400, 1400, StopCode::Error, 1400, boardLine(1400, kLost),
     [](SessionRig& r) {
         r.device.countLag = 300;
         duringSecondRead(r, [](SessionRig& rig) { rig.board->requestStop(); });
     }},
    {"of the source with the stop button", kADCEndOfSource, 1400, 1400, StopCode::User, 1400, "",
     [](SessionRig& r) {
         r.device.countLag = 300;
         duringSecondRead(r, [](SessionRig& rig) { rig.board->requestStop(); });
     }},
    {"and the board is gone", kADCEndLost, 1400, 1400, StopCode::Error, 1400, boardLine(1400, kLost),
     [](SessionRig& r) {
         r.device.countLag = 300;
         duringSecondRead(r, [](SessionRig& rig) { rig.device.numbers[kADCGetHotPlugPresence] = 0; });
     }},
    {"gone with what the ring held", kADCEndUnplugged, 1400, 1400, StopCode::Unplug, 1000,
     "sample = 1000, count = 400, cause = transfer\r\n" + boardLine(1400, kLost),
     [](SessionRig& r) { r.device.failingRead = 2; }},
    {"and an error when the rest is fetched", kADCEndLost, 1400, 1400, StopCode::TransferError, 1000,
     "sample = 1000, count = 400, cause = transfer\r\n" + boardLine(1400, kLost),
     [](SessionRig& r) { r.device.failingRead = 2; }},
    {"the ring was overwritten before", kADCEndLost, 1000, 2600, StopCode::Error, 500,
     "sample = 500, count = 2100, cause = overwritten\r\n" + boardLine(2600, kLost),
     [](SessionRig& r) { duringSecondRead(r, [](SessionRig& rig) { rig.device.produce(1600); }); }},
    {"behind the size that was asked for", kADCEndLost, 1400, 1400, StopCode::StopMeasuring, 1200, "", nullptr, 2400},
    {"within a group of frames of which one is kept", kADCEndOfSource, 1400, 1400, StopCode::SourceEnd, 0, "",
     [](SessionRig& r) { r.board->decimation = 701; }},
    {"within the pre-history", kADCEndLost, 1400, 1400, StopCode::Error, 1400, boardLine(1400, kLost),
     [](SessionRig& r) { r.device.numbers[kADCGetPreHistory] = 1, r.device.preHistoryReads = 2; }},
};

TEST(StreamEnd, MeetsWhatElseHappens) {
    for (const Meeting& c : kMeetings) {
        SCOPED_TRACE(c.what);
        FakeDevice device;
        scriptEnd(device, c.came, c.cause, c.position);
        device.numbers[kADCGetHotPlug] = 1;
        device.numbers[kADCGetHotPlugPresence] = 1;
        ScopedDebugLog log;
        {
            SessionRig rig(device);
            if (c.script != nullptr) {
                c.script(rig);
            }
            ASSERT_TRUE(rig.prepare(2, kFast, c.limitBytes));
            rig.board->Begin();
            EXPECT_EQ(rig.end().code, c.code);
            EXPECT_TRUE(rig.data() == streamBytes(0, c.saved, 2)) << rig.data().size() / 2;
            EXPECT_EQ(ledgerOf(rig), c.ledger);
        }
        const std::string line = "Stream end: cause = " + std::to_string(c.cause) +
                                 ", position = " + std::to_string(c.position) + ", lost = ";
        EXPECT_EQ(firstMissing(log.finish(), {line}), "");
    }
}

}  // namespace
}  // namespace tarno2::test
