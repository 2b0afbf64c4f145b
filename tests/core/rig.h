#pragma once

#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "config/logs/debug_log.h"
#include "core/devices/driver.h"
#include "core/recording/board.h"
#include "core/storage/writer_setup.h"
#include "records/record_description.h"
#include "tests/core/fake_device.h"
#include "tests/support/temporary_folder.h"

namespace tarno2::test {

/// The program's debug log, switched on in a folder of its own.
class ScopedDebugLog {
public:
    ScopedDebugLog() { debugLog().open(folder_.file("core.cfg"), 1); }
    ~ScopedDebugLog() { debugLog().close(); }
    ScopedDebugLog(const ScopedDebugLog&) = delete;
    ScopedDebugLog& operator=(const ScopedDebugLog&) = delete;

    /// Switches the log off and returns what it holds. No thread may log any more.
    [[nodiscard]] std::string finish();

private:
    TemporaryFolder folder_;
};

/// Whether the parts stand in the text one after the other; the first that does not, else an empty string.
[[nodiscard]] std::string firstMissing(const std::string& text, const std::vector<std::string>& parts);

/// Keeps the notifications of acquisition threads for the thread that waits for them.
class NotificationLog : public NotificationTarget {
public:
    void post(const Notification& notification) override;
    /// The next one that says how a recording ended; nothing after 30 s.
    [[nodiscard]] std::optional<Notification> nextEnd();
    [[nodiscard]] size_t progressCount();
    [[nodiscard]] bool startCame();
    /// How often a running recording told that its disk falls behind.
    [[nodiscard]] size_t slowDiskCount();

private:
    std::mutex mutex_;
    std::condition_variable came_;
    std::vector<Notification> ends_;
    size_t taken_ = 0;
    size_t progress_ = 0;
    bool startCame_ = false;
    size_t slowDisk_ = 0;
};

/// What a writer gets for a recording of the fake board: so many channels at 1000 frames a second.
[[nodiscard]] WriterSetup fakeSetup(const std::string& name, uint32_t channels);

/// The frames that the description of such a data file tells; a failed expectation when it is not as it has to be.
[[nodiscard]] uint64_t describedFrames(const std::string& dataName);

/// A fake board behind a driver, with a session and a file for it to write.
class SessionRig {
public:
    explicit SessionRig(FakeDevice& fake);

    /// Sets the session up for channels 0, 1, ... and makes the data file. False when the board refused.
    [[nodiscard]] bool prepare(uint32_t channels, float frequency, uint64_t limitBytes = 0, uint64_t pieceBytes = 0);
    /// `prepare`, then lets the board start.
    [[nodiscard]] bool begin(uint32_t channels, float frequency);
    /// Waits for the end of the recording; the files are closed then.
    [[nodiscard]] RecordingResult end();
    /// Asks for the end, then waits for it.
    [[nodiscard]] RecordingResult stop();
    [[nodiscard]] std::string data(uint32_t piece = 0) const;

    FakeDevice& device;
    std::vector<std::string> faults;
    T_DRIVER driver;
    TemporaryFolder folder;
    NotificationLog notes;
    RecordDescription description;
    std::string dataName;
    WriterSetup setup;  ///< what a test wants of the writer, beside what `prepare` enters
    std::unique_ptr<T_BOARD> board;
};

}  // namespace tarno2::test
