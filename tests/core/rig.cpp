#include "tests/core/rig.h"

#include <chrono>
#include <gtest/gtest.h>
#include <numeric>

#include "config/files/recording_name.h"
#include "platform/file.h"
#include "records/recorded_format.h"

namespace tarno2::test {

std::string ScopedDebugLog::finish() {
    debugLog().close();
    return readFile(folder_.file("core.dbg"));
}

std::string firstMissing(const std::string& text, const std::vector<std::string>& parts) {
    size_t from = 0;
    for (const std::string& part : parts) {
        const size_t found = text.find(part, from);
        if (found == std::string::npos) {
            return part;
        }
        from = found + part.size();
    }
    return {};
}

void NotificationLog::post(const Notification& notification) {
    const std::lock_guard lock(mutex_);
    if (notification.result.code == StopCode::Running) {
        ++progress_;
        startCame_ = startCame_ || notification.result.startCame;
        slowDisk_ += notification.result.waitingBytes > 0 ? 1 : 0;
        return;
    }
    ends_.push_back(notification);
    came_.notify_all();
}

std::optional<Notification> NotificationLog::nextEnd() {
    std::unique_lock lock(mutex_);
    if (!came_.wait_for(lock, std::chrono::seconds(30), [this] { return taken_ < ends_.size(); })) {
        return std::nullopt;
    }
    return ends_[taken_++];
}

bool NotificationLog::startCame() {
    const std::lock_guard lock(mutex_);
    return startCame_;
}

size_t NotificationLog::progressCount() {
    const std::lock_guard lock(mutex_);
    return progress_;
}

size_t NotificationLog::slowDiskCount() {
    const std::lock_guard lock(mutex_);
    return slowDisk_;
}

WriterSetup fakeSetup(const std::string& name, uint32_t channels) {
    WriterSetup setup;
    setup.fileName = name;
    setup.channelCount = channels;
    setup.facts.driverName = "Fake";
    setup.facts.totalFrequency = 1000.0 * channels;
    setup.facts.layout = {2, 0, 0x3FFF, 14, 14, 0xC000, 2, 1};
    setup.facts.ranges.assign(channels, {5.0, -5.0});
    return setup;
}

uint64_t describedFrames(const std::string& dataName) {
    RecordedFormat format;
    std::string missing;
    EXPECT_TRUE(readRecordedFormat(RecordDescription::fileNameFor(dataName), format, missing))
        << dataName << ": " << missing;
    EXPECT_EQ(format.driverName, "Fake");
    EXPECT_EQ(format.frequencyPerChannel, 1000.0);
    EXPECT_EQ(format.layout.digitalBits, 2);
    return format.frames;
}

SessionRig::SessionRig(FakeDevice& fake)
    : device(fake),
      driver([this](const std::string& fault) { faults.push_back(fault); }),
      dataName(folder.file("run.dat")) {
    std::string why;
    EXPECT_TRUE(driver.attach(&device, "Fake", folder.path(), why)) << why;
    EXPECT_TRUE(driver.selectBoard(1, why)) << why;
    board = std::make_unique<T_BOARD>(driver, 7, [this](const std::string& fault) { faults.push_back(fault); });
}

bool SessionRig::prepare(uint32_t channels, float frequency, uint64_t limitBytes, uint64_t pieceBytes) {
    board->settings.channels.resize(channels);
    std::iota(board->settings.channels.begin(), board->settings.channels.end(), 0);
    board->settings.gains.assign(channels, 1);
    board->settings.frequency = frequency;
    if (!board->StartThread(&notes, {})) {
        return false;
    }
    setup.fileName = dataName;
    setup.sampleWidth = device.format.m_nBytes;
    setup.channelCount = board->settings.channelCount();
    setup.limitBytes = limitBytes;
    setup.pieceBytes = pieceBytes;
    setup.facts.ranges.assign(channels, {5.0, -5.0});
    EXPECT_EQ(board->writer().open(setup, description), 0) << board->writer().openError();
    return true;
}

bool SessionRig::begin(uint32_t channels, float frequency) {
    if (!prepare(channels, frequency)) {
        return false;
    }
    board->Begin();
    return true;
}

RecordingResult SessionRig::end() {
    const auto notification = notes.nextEnd();
    if (!notification) {
        ADD_FAILURE() << "the thread told nothing";
    }
    board->endThread();
    EXPECT_EQ(notification ? notification->session : 7, 7U);
    return notification ? notification->result : RecordingResult{};
}

RecordingResult SessionRig::stop() {
    board->requestStop();
    return end();
}

std::string SessionRig::data(uint32_t piece) const {
    const std::string name = RecordingName(dataName).piece(piece);
    return fileExists(name) ? readFile(name) : std::string();
}

}  // namespace tarno2::test
