#pragma once

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "core/storage/recording_checksums.h"
#include "platform/event.h"
#include "platform/thread.h"

namespace tarno2 {

/// Computes the checksums of recordings, one beside the other, on a thread that gives way to all others. What runs goes
/// before what is finished, and nothing is read while a running recording has no room for it.
/// All operations belong to the creating thread, except where another is named.
class ChecksumThread {
public:
    /// What is still read of finished recordings.
    struct Progress {
        std::string dataName;  ///< of the oldest of them
        uint64_t done = 0;     ///< bytes
        uint64_t bytes = 0;
        [[nodiscard]] int percent() const { return bytes < 100 ? 0 : static_cast<int>(done / (bytes / 100)); }
    };
    /// Called on the computing thread for each recording, with what went wrong, in English: empty when every data file
    /// has its checksum.
    using Report = std::function<void(const std::string& dataName, const std::string& problem)>;

    explicit ChecksumThread(Report report = {});
    /// Gives up what is not computed.
    ~ChecksumThread();
    ChecksumThread(const ChecksumThread&) = delete;
    ChecksumThread& operator=(const ChecksumThread&) = delete;

    /// For a recording that begins. Null when the system has no thread or memory left. The thread that opens its files.
    [[nodiscard]] std::shared_ptr<RecordingChecksums> begin(const std::string& dataName);
    /// For one that is finished: the data files `dataName` and pieces up to `lastPiece`, as far as they are there. Any
    /// thread.
    void add(const std::string& dataName, uint32_t lastPiece);
    /// Gives up finished recordings that may have files of this name, and waits until they are let go.
    void release(const std::string& dataName);
    /// Gives up everything; what is known is written down. Any thread.
    void stop();
    /// Waits until nothing is left to compute, at most so many milliseconds. True when nothing is.
    [[nodiscard]] bool wait(uint32_t milliseconds);
    /// Nothing when no finished recording is waiting. Any thread.
    [[nodiscard]] std::optional<Progress> progress();

private:
    struct Job {
        std::shared_ptr<RecordingChecksums> checksums;
        bool givenUp = false;
    };
    [[nodiscard]] bool take(std::shared_ptr<RecordingChecksums> checksums);
    void run();
    [[nodiscard]] bool work();
    void giveUpFinished();
    void end(const std::shared_ptr<RecordingChecksums>& checksums);

    const Report report_;
    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<Job> jobs_;
    bool ending_ = false;
    std::unique_ptr<std::byte[]> buffer_;
    Event wake_;
    Thread thread_;
};

}  // namespace tarno2
