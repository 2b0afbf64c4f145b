#pragma once

#include <condition_variable>
#include <cstdint>
#include <functional>
#include <limits>
#include <mutex>
#include <string>

#include "core/storage/data_file.h"

namespace tarno2::test {

/// A disk that is as slow, full or broken as a test wants, with real files behind it. It outlives the writers that use
/// it; the script is set before they do.
class FaultyDisk {
public:
    static constexpr uint64_t kNever = std::numeric_limits<uint64_t>::max();

    // The script. Errors are system errors that say "no space left".
    uint64_t capacity = kNever;    ///< bytes that all files may take; the write that goes beyond is cut short and fails
    uint32_t failingCreate = ~0U;  ///< the first file that can't be made, from 0
    bool failingFlush = false;
    bool failingClose = false;
    bool shortWrites = false;                   ///< every other write takes half and returns no error
    std::function<void(uint32_t)> beforeWrite;  ///< may take its time; called with the number of the write, from 0
    std::function<void()> beforeClose;          ///< likewise

    /// For WriterSetup.
    [[nodiscard]] DataFileMaker maker();
    /// Writes and closes wait from now on until `release`.
    void hold();
    void release();
    /// Waits until a write or close waits. False after 30 s.
    [[nodiscard]] bool waitForHeld();
    [[nodiscard]] uint64_t flushedBytes();  ///< of all files, as of their last flush

    /// The error that the script gives.
    [[nodiscard]] static OsError error();

private:
    friend class FaultyFile;
    void passGate();
    [[nodiscard]] bool allowCreate();
    /// How many of so many bytes fit.
    [[nodiscard]] size_t fitting(size_t size);

    std::mutex mutex_;
    std::condition_variable changed_;
    bool held_ = false;
    uint32_t waiting_ = 0;
    uint32_t created_ = 0;
    uint32_t writes_ = 0;
    uint64_t taken_ = 0;
    uint64_t flushed_ = 0;
};

}  // namespace tarno2::test
