// Faults that the simulator shows on demand, and where its settings come from.

#include "drivers/simulator/counter_signal.h"
#include "tests/drivers/driver_rig.h"
#include "tests/support/temporary_folder.h"

namespace tarno2::test {
namespace {

/// The simulator with one setting more than a counter that is paced by the reader; board 4, two channels, ring of 64.
class Faulty {
public:
    explicit Faulty(const std::string& setting, uint32_t board = 4)
        : settings_("TARNO2_SIMULATOR", setting + ";RealTime=0;Signal=Counter"),
          driver(SIMULATOR_LIBRARY, folder_.path()) {
        selected = driver->SelectBoard(board);
    }
    [[nodiscard]] RingReader reader() const { return {driver, Wish::firstChannels(2, 1000.0F, 64)}; }

private:
    TemporaryFolder folder_;
    ScopedEnvironment settings_;

public:
    LoadedDriver driver;
    int32_t selected = 0;
};

TEST(SimulatorFaults, RefusalsSayWhy) {
    const Faulty board("RefuseBoard=1");
    EXPECT_EQ(board.selected, 0);
    EXPECT_NE(board.driver.lastError(), "");
    EXPECT_TRUE(Faulty("Boards=0").driver.boards().empty());
    EXPECT_EQ(Faulty("AbiVersion=7").driver.get<uint32_t>(kADCGetAbiVersion), 7U);

    ADCParametersDMA base = Wish().base();
    const Faulty check("RefuseCheck=1");
    EXPECT_EQ(check.driver->Setup(0, &base, 0), 0);
    EXPECT_EQ(check.driver->Setup(1, &base, 0), 1);
    const Faulty init("RefuseInit=1");
    EXPECT_EQ(init.driver->Setup(0, &base, 0), 1);
    EXPECT_EQ(init.driver->Setup(1, &base, 0), 0);
    EXPECT_NE(init.driver.lastError().find("RefuseInit"), std::string::npos);
    const Faulty start("RefuseStart=1");
    EXPECT_TRUE(start.reader().ok());
    EXPECT_EQ(start.driver->Start(), 0);
}

TEST(SimulatorFaults, MissingAndWrongAnswers) {
    uint64_t value = 0;
    const Faulty buffer("AnswerMaxBuffer=0");
    EXPECT_EQ(buffer.driver->Get(kADCGetMaxBuffer, &value), 0);
    EXPECT_EQ(buffer.driver->Get(kADCGetMaxBufferOld, &value), 1);
    EXPECT_EQ(Faulty("AnswerMaxBufferOld=0").driver->Get(kADCGetMaxBufferOld, &value), 0);
    EXPECT_EQ(Faulty("AnswerCount=0").driver->Get(kADCGetSamplesWritten, &value), 0);
    EXPECT_EQ(Faulty("MaxBuffer=1234").driver.get<uint32_t>(kADCGetMaxBuffer), 1234U);
    ADCSampleFormat format{};
    EXPECT_EQ(Faulty("AnswerFacts=0").driver->Get(kADCGetSampleFormat, &format), 0);

    EXPECT_FALSE(Faulty("AnswerRing=0").reader().ok());
    EXPECT_NE(Faulty("RingMisfit=1").reader().ring() % 4, 0U);
    const Faulty differing("RingDiffers=1");
    const uint32_t ring = differing.reader().ring();
    EXPECT_NE(differing.driver.get<ADCRingInfo>(kADCGetRing).m_nRingSize, ring);

    const Faulty taking("RingTakesWish=1");
    EXPECT_EQ(RingReader(taking.driver, Wish::firstChannels(2, 1000.0F, 66)).ring(), 66U);
    EXPECT_EQ(taking.driver->Start(), 0) << "66 samples are no whole frames in each half";
    EXPECT_EQ(RingReader(taking.driver, Wish::firstChannels(2, 1000.0F, 68)).ring(), 68U);
    EXPECT_EQ(taking.driver->Start(), 1);
    EXPECT_FALSE(Faulty("MaxBuffer=3").reader().ok()) << "no place for two frames";
}

TEST(SimulatorFaults, NoDataEventButSamples) {
    const Faulty faulty("NoDataEvent=1");
    RingReader reader = faulty.reader();
    ASSERT_EQ(faulty.driver->Start(), 1);
    while (reader.written() < 32) {
    }
    EXPECT_EQ(Event::wrap(faulty.driver.get<ADCRingInfo>(kADCGetRing).m_hDataEvent).wait(0), WaitResult::TimedOut);
    EXPECT_EQ(reader.fetch(32), 1);
}

TEST(SimulatorFaults, OverflowRunsAheadByMoreThanTheRing) {
    const Faulty faulty("OverflowAfter=100");
    RingReader reader = faulty.reader();
    ASSERT_EQ(faulty.driver->Start(), 1);
    ASSERT_TRUE(reader.record(96));
    ASSERT_GE(reader.waitForHalf(), 1U);
    while (reader.written() < 192) {
    }
    EXPECT_EQ(reader.written(), 192U);
    EXPECT_GT(reader.written() - reader.position(), reader.ring());
    for (size_t i = 0; i < 96; ++i) {
        ASSERT_EQ(reader.words()[i], drivers::counterWord(i, 12));
    }
}

TEST(SimulatorFaults, GetDataFailsAtItsSample) {
    const Faulty faulty("FailGetDataAt=70");
    RingReader reader = faulty.reader();
    ASSERT_EQ(faulty.driver->Start(), 1);
    ASSERT_TRUE(reader.record(64));
    ASSERT_GE(reader.waitForHalf(), 1U);
    EXPECT_EQ(reader.fetch(32), kADCDataFailed);
    EXPECT_EQ(reader.fetch(6), 1) << "what lies before it is there";
    EXPECT_EQ(reader.fetch(2), kADCDataFailed);
}

TEST(SimulatorFaults, UnpluggedOrSilentAfterSoManySamples) {
    for (const bool realTime : {false, true}) {
        const std::string pace = realTime ? "RealTime=1;" : "RealTime=0;";
        const ScopedEnvironment settings("TARNO2_SIMULATOR", pace + "Signal=Counter;UnplugAfter=75");
        const TemporaryFolder folder;
        const LoadedDriver driver(SIMULATOR_LIBRARY, folder.path());
        ASSERT_EQ(driver->SelectBoard(4), 1);
        RingReader reader(driver, Wish::firstChannels(2, 200e3F, 64));
        ASSERT_EQ(driver->Start(), 1);
        EXPECT_TRUE(realTime || driver.get<uint32_t>(kADCGetHotPlugPresence) == 1);
        EXPECT_TRUE(realTime || reader.record(64));
        while (driver.get<uint32_t>(kADCGetHotPlugPresence) == 1) {
        }
        EXPECT_EQ(reader.written(), 74U) << "whole frames";
        driver->Stop();
        EXPECT_EQ(reader.fetch(realTime ? 64 : 10), 1);
    }
    const Faulty silent("SilentAfter=0", 2);
    RingReader reader = silent.reader();
    ASSERT_EQ(silent.driver->Start(), 1);
    silent.driver->Stop();
    EXPECT_EQ(reader.written(), 0U);
}

TEST(SimulatorFaults, ExternalStartNeverComesOrComes) {
    Wish wish = Wish::firstChannels(2, 1000.0F, 64);
    wish.startOf = kADCStartByProgram | kADCStartExternal;
    wish.control = kADCControlExternalStart;
    const Faulty never("ExternalStartAfter=-1", 1);
    const RingReader waiting(never.driver, wish);
    ASSERT_TRUE(waiting.ok()) << never.driver.lastError();
    ASSERT_EQ(never.driver->Start(), 1);
    never.driver->Stop();
    EXPECT_EQ(waiting.written(), 0U);

    const Faulty soon("ExternalStartAfter=5", 1);
    RingReader reader(soon.driver, wish);
    ASSERT_EQ(soon.driver->Start(), 1);
    EXPECT_TRUE(reader.record(100));

    // From an external clock the frequency is not given at all.
    wish.startOf = kADCStartExternal;
    wish.frequency = 0.0F;
    wish.control = 0;
    const Faulty clocked("RealTime=1;ExternalClockRate=1000000", 1);
    RingReader clock(clocked.driver, wish);
    ASSERT_TRUE(clock.ok()) << clocked.driver.lastError();
    ASSERT_EQ(clocked.driver->Start(), 1);
    EXPECT_GE(clock.waitForHalf(), 1U);
}

TEST(SimulatorSettings, FileThenEnvironment) {
    const TemporaryFolder folder;
    folder.write("Simulator.cfg", "MaxBuffer = 500\r\nBoards = 2 ; comment\r\nSignal = \"Counter\"\r\n");
    {
        const LoadedDriver driver(SIMULATOR_LIBRARY, folder.path());
        EXPECT_EQ(driver.settingsTaken(), 1);
        EXPECT_EQ(driver.boards().size(), 2U);
    }
    const ScopedEnvironment settings("TARNO2_SIMULATOR", "Boards=3;;nonsense;=5");
    const LoadedDriver driver(SIMULATOR_LIBRARY, folder.path());
    EXPECT_EQ(driver.boards().size(), 3U);
    ASSERT_EQ(driver->SelectBoard(1), 1);
    EXPECT_EQ(driver.get<uint32_t>(kADCGetMaxBuffer), 500U);
    for (const char* bad : {"Signal = Counter\r\n", "Signal = \"Triangle\"\r\n"}) {
        folder.write("Simulator.cfg", bad);
        const LoadedDriver refusing(SIMULATOR_LIBRARY, folder.path());
        EXPECT_EQ(refusing.settingsTaken(), 0) << bad;
        EXPECT_NE(refusing.lastError(), "");
    }
}

}  // namespace
}  // namespace tarno2::test
