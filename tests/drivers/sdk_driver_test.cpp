// The base class for authors of drivers, called as the host does.

#include <atomic>
#include <condition_variable>
#include <cstring>
#include <functional>
#include <future>
#include <gtest/gtest.h>
#include <mutex>
#include <string>
#include <vector>

#include <tarno2/driver.h>

#include "tests/support/temporary_folder.h"

namespace tarno2::test {
namespace {

/// A search that goes on until it is let go.
class Gate {
public:
    void pass() {
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [this] { return open_; });
    }
    void set(bool open) {
        const std::lock_guard lock(mutex_);
        open_ = open;
        changed_.notify_all();
    }

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    bool open_ = false;
};

class SlowDriver final : public sdk::Driver {
public:
    explicit SlowDriver(Gate& gate) : Driver("SlowDriver"), gate_(gate) {
        settings().add(sdk::Setting::integer("Boards", 2, 0, 9, "Boards", "Платы"));
        settings().add(sdk::Setting::choice("Kind", "a", {"a", "b"}, "Kind", "Вид"));
        settings().add(sdk::Setting::text("Place", "here", "Place", "Место"));
    }
    using Driver::gone;
    using Driver::lost;
    using Driver::mark;
    using Driver::push;
    using Driver::room;
    using Driver::waitForRoom;

    std::atomic<bool> slow{true};
    std::atomic<uint32_t> searches{0};

protected:
    std::vector<sdk::Board> search(const sdk::Settings& given) override {
        const auto count = static_cast<size_t>(given.integer("Boards"));
        ++searches;
        gate_.pass();
        sdk::Board board;
        board.id = board.name = given.text("Place");
        board.channels = 2;
        board.maximumFrequency = 1e6F;
        board.limits = {{0.0, 10.0}};
        board.channelNames = {"", std::string(122, 'a') + "\xC2\xB0"};  // a letter that is cut in two is left out
        board.channelUnits = {
            "\xC2\xB0"
            "C"};
        return {count, board};
    }
    bool searchTakesLong() const override { return slow; }
    bool settingsChanged() override { return settings().text("Place") != "nowhere" || fail("There is no such place."); }
    bool begin(const sdk::Board&, const sdk::Measurement&) override { return true; }
    void end() override {}

private:
    Gate& gate_;
};

template <typename T>
T get(IADCDevice& device, uint32_t code, T value = {}) {
    EXPECT_EQ(device.Get(code, &value), 1) << code;
    return value;
}

std::string lastError(IADCDevice& device) {
    char text[256];
    device.LastError(text, sizeof text);
    return text;
}

int32_t tell(IADCDevice& device, const char* key, const char* text) {
    const ADCSettingValue value{key, text};
    return device.Set(kADCSetSetting, &value);
}

uint32_t boardsFound(IADCDevice& device) {
    while (get<uint32_t>(device, kADCGetBoardSearch) == 1) {
        std::this_thread::yield();
    }
    return get<ADCBoardList>(device, kADCGetBoardList).m_nCount;
}

TEST(SdkDriver, SearchesForBoardsBesideItsHost) {
    const TemporaryFolder folder;
    folder.write("SlowDriver.cfg", "; a comment\r\nPlace = \"a \\\"b\\\"\" ; another\r\nBoards = 3\r\nKind = b\r\n");
    Gate gate;
    auto& device = *new SlowDriver(gate);
    ASSERT_EQ(device.SetProgramDirectory(folder.path().c_str()), 1);
    EXPECT_EQ(get<ADCBoardList>(device, kADCGetBoardList).m_nCount, 0U);
    EXPECT_EQ(get<uint32_t>(device, kADCGetBoardSearch), 1U);
    EXPECT_EQ(device.SelectBoard(1), 0);
    // What is found with settings that have changed meanwhile doesn't count.
    ASSERT_EQ(tell(device, "Boards", "4"), 1);
    EXPECT_EQ(get<ADCBoardList>(device, kADCGetBoardList).m_nCount, 0U);
    gate.set(true);
    EXPECT_EQ(boardsFound(device), 4U);
    ADCBoardEntry entry{};
    EXPECT_EQ(get(device, kADCGetBoardList, ADCBoardList{1, 0, &entry}).m_nCount, 4U);
    EXPECT_STREQ(entry.m_sName, "001 a \"b\"");
    EXPECT_EQ(device.SelectBoard(4), 1);

    const struct {
        const char* key;
        const char* value;
        const char* refusal;  // empty: taken
    } cases[] = {{"Boards", "10", "Boards: 10 is not within 0 to 9."},
                 {"Boards", "2.5", "Boards: \"2.5\" is not a whole number."},
                 {"Boards", "4x", "Boards: \"4x\" is not a whole number."},
                 {"Kind", "c", "Kind: there is no choice \"c\"."},
                 {"Gain", "1", "There is no setting \"Gain\"."},
                 {"Place", "nowhere", "There is no such place."},
                 {"Kind", "b", ""},
                 {"Boards", "", ""}};  // the file's again
    for (const auto& each : cases) {
        EXPECT_EQ(tell(device, each.key, each.value), each.refusal[0] == '\0' ? 1 : 0);
        EXPECT_EQ(each.refusal[0] == '\0' ? "" : lastError(device), each.refusal);
    }
    std::vector<ADCSetting> all(3);
    EXPECT_EQ(get(device, kADCGetSettings, ADCSettingList{3, 0, all.data()}).m_nCount, 3U);
    EXPECT_STREQ(all[0].m_sValue, "3");
    EXPECT_STREQ(all[1].m_sValue, "b");
    EXPECT_STREQ(all[1].m_sChoices, "a\nb\n");
    EXPECT_STREQ(all[2].m_sValue, "a \"b\"");
    const uint32_t one = 1;
    ASSERT_EQ(device.Set(kADCSetBoardSearch, &one), 1);
    device.Release();  // waits for the search
}

TEST(SdkDriver, SearchesWhenItsHostAsks) {
    Gate gate;
    auto& device = *new SlowDriver(gate);
    EXPECT_EQ(get<uint32_t>(device, kADCGetBoardSearch), 1U) << "the question begins a long search";
    gate.set(true);
    EXPECT_EQ(boardsFound(device), 2U);
    EXPECT_EQ(device.searches, 1U);
    device.slow = false;
    ADCBoardEntry entries[2];
    for (const uint32_t searches : {2U, 3U}) {
        EXPECT_EQ(get<ADCBoardList>(device, kADCGetBoardList).m_nCount, 2U);
        EXPECT_EQ(get(device, kADCGetBoardList, ADCBoardList{2, 0, entries}).m_nCount, 2U);
        EXPECT_EQ(device.searches, searches) << "the entries are those that were counted";
    }
    EXPECT_EQ(get(device, kADCGetBoardList, ADCBoardList{2, 0, entries}).m_nCount, 2U);
    EXPECT_EQ(device.searches, 4U);
    device.Release();
}

/// Sets up a measurement of both channels with a ring of 8 samples and starts it.
void start(IADCDevice& device) {
    ADCParametersDMA block{};
    block.m_nType = kADCTypeDMA;
    block.m_nSizeOf = sizeof block;
    block.m_nDMABlockSize = 8;
    block.m_fFreqStart = 100.0F;
    block.m_nTimerPack = -1;
    block.m_nChannelNumber = 2;
    ASSERT_EQ(device.Setup(1, &block, 0), 1) << lastError(device);
    ASSERT_EQ(device.Start(), 1) << lastError(device);
}

TEST(SdkDriver, WaitsForRoomUntilTheHostHasDoneWithIt) {
    Gate gate;
    gate.set(true);
    auto& device = *new SlowDriver(gate);
    ASSERT_EQ(boardsFound(device), 2U);
    ASSERT_EQ(device.SelectBoard(1), 1);
    std::vector<int16_t> words(8);
    // More than six of eight unread, and the host takes the ring for one that has run over.
    const struct {
        const char* what;
        std::function<void()> act;
        size_t room;
    } table[] = {{"the start", [&] { start(device); }, 6},
                 {"fetched, and still in use", [&] { device.GetData(kADCDataShort, words.data(), 6, 0); }, 2},
                 {"the count was asked for", [&] { get<uint64_t>(device, kADCGetSamplesWritten); }, 4},
                 {"fetched without asking", [&] { device.GetData(kADCDataShort, words.data(), 2, 6); }, 2},
                 {"fetched on", [&] { device.GetData(kADCDataShort, words.data(), 4, 0); }, 2},
                 {"the end", [&] { device.Stop(); }, 0},
                 {"another start", [&] { start(device); }, 6}};
    for (const auto& each : table) {
        SCOPED_TRACE(each.what);
        const bool begins = each.room == 6;
        std::future<size_t> room;
        if (!begins) {
            EXPECT_EQ(device.room(), 0U);
            room = std::async(std::launch::async, [&device] { return device.waitForRoom(); });
        }
        each.act();
        EXPECT_EQ(begins ? device.waitForRoom() : room.get(), each.room);
        device.push(words.data(), device.room());
    }
    device.Release();
}

TEST(SdkDriver, HandsOutItsMarksOnceAndForgetsThoseOfTheLastMeasurement) {
    Gate gate;
    gate.set(true);
    auto& device = *new SlowDriver(gate);
    ASSERT_EQ(device.SetProgramDirectory("."), 1);
    ASSERT_EQ(boardsFound(device), 2U);
    ASSERT_EQ(device.SelectBoard(1), 1);
    start(device);
    EXPECT_EQ(uint32_t{get<ADCMark>(device, kADCGetMark).m_nThere}, 0U);
    EXPECT_TRUE(device.mark(6, "valve"));
    EXPECT_TRUE(device.mark(3, std::string(500, 'x')));
    const auto first = get<ADCMark>(device, kADCGetMark);
    EXPECT_EQ(uint64_t{first.m_nPosition}, 6U);
    EXPECT_STREQ(first.m_sText, "valve");
    EXPECT_EQ(get<ADCMark>(device, kADCGetMark).m_sText, std::string(239, 'x'));
    EXPECT_EQ(uint32_t{get<ADCMark>(device, kADCGetMark).m_nThere}, 0U);
    size_t taken = 0;
    for (; device.mark(taken); ++taken) {
    }
    EXPECT_EQ(taken, size_t{sdk::Marks::kMost});
    device.Stop();
    start(device);
    EXPECT_EQ(uint32_t{get<ADCMark>(device, kADCGetMark).m_nThere}, 0U);
    device.Stop();
    device.Release();
}

TEST(SdkDriver, EndsItsStreamAtTheFrameAndToldOnce) {
    Gate gate;
    gate.set(true);
    auto& device = *new SlowDriver(gate);
    ASSERT_EQ(device.SetProgramDirectory("."), 1);
    ASSERT_EQ(boardsFound(device), 2U);
    ASSERT_EQ(device.SelectBoard(1), 1);
    EXPECT_EQ(double{get(device, kADCGetInputLimits, ADCInputLimits{1, 1, 0, 0}).m_fUpper}, 10.0);
    EXPECT_EQ(float{get(device, kADCGetInputRange, ADCInputRange{1, 1, 0}).m_fRange}, 10.0F);
    for (const uint64_t count : {uint64_t{5}, uint64_t{0}}) {
        start(device);
        const std::vector<int16_t> samples{1, 2, 3, 4, 5, 6};
        device.push(samples.data(), samples.size());
        device.lost(count);
        device.gone(kADCEndUnplugged, "too late");
        device.push(samples.data(), samples.size());
        const auto end = get<ADCStreamEnd>(device, kADCGetStreamEnd);
        EXPECT_EQ(uint32_t{end.m_nCause}, uint32_t{kADCEndLost});
        EXPECT_EQ(uint64_t{end.m_nPosition}, 6U);
        EXPECT_EQ(uint64_t{end.m_nLost}, count);
        EXPECT_EQ(lastError(device), count > 0 ? "The board lost 5 samples." : "The board lost samples.");
        EXPECT_EQ(get<uint64_t>(device, kADCGetSamplesWritten), 6U);
        std::vector<int16_t> read(6);
        EXPECT_EQ(device.GetData(kADCDataShort, read.data(), 6, 0), 1);
        EXPECT_EQ(read, samples);
        device.Stop();
    }
    device.Release();
}

TEST(SdkDriver, TellsNamesAndUnitsOfChannels) {
    Gate gate;
    gate.set(true);
    auto& device = *new SlowDriver(gate);
    ASSERT_EQ(boardsFound(device), 2U);
    ASSERT_EQ(device.SelectBoard(1), 1);
    EXPECT_STREQ(get(device, kADCGetChannelName, ADCChannelText{1, {}}).m_sText, std::string(122, 'a').c_str());
    EXPECT_STREQ(get(device, kADCGetChannelUnit, ADCChannelText{0, {}}).m_sText,
                 "\xC2\xB0"
                 "C");
    for (const int32_t channel : {-1, 0, 2}) {
        ADCChannelText untouched{channel, "x"};
        EXPECT_EQ(device.Get(kADCGetChannelName, &untouched), 0) << channel;
        EXPECT_STREQ(untouched.m_sText, "x");
    }
    device.Release();
}

}  // namespace
}  // namespace tarno2::test
