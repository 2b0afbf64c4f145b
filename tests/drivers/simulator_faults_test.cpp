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
