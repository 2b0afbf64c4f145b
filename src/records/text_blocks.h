#pragma once

#include <array>
#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

#include "platform/thread.h"
#include "records/frame_formatter.h"
#include "records/frame_reader.h"

namespace tarno2 {

/// A run of frames and the lines that were made of them.
struct TextBlock {
    uint64_t firstFrame = 0;
    size_t frameCount = 0;
    FrameFormatter::Text text;  ///< fewer lines than frames: the conversion was stopped
    OsError readError;
    bool tooShort = false;  ///< the data file ended before the frames did
    bool outOfMemory = false;
    bool ready = false;
    std::vector<uint8_t> frames;
    std::unique_ptr<char[]> characters;
};

/// Reads a data file and formats it, block by block, on threads of its own. One other thread takes the blocks in the
/// order of their frames; how many lie ready is limited, so that memory does not grow with the file.
class TextBlocks {
public:
    /// Room for the text of a block, bytes.
    static constexpr size_t kTextSize = 0x100000;

    /// The reader, which stands at its first frame, the formatter and `stop` stay alive. A block never holds lines of
    /// two output files, which have `linesPerFile` lines each (0: there is but one). Throws std::bad_alloc.
    TextBlocks(FrameReader& reader, const FrameFormatter& formatter, uint64_t linesPerFile,
               const std::atomic<bool>& stop);
    /// Ends the threads; what they are at is not waited for longer than a block takes.
    ~TextBlocks();
    TextBlocks(const TextBlocks&) = delete;
    TextBlocks& operator=(const TextBlocks&) = delete;

    /// Starts the threads. False when the system gives none.
    bool start();
    /// Waits for the next block; null behind the last one. It is the caller's until `release`.
    [[nodiscard]] const TextBlock* next();
    void release();

private:
    void work();
    TextBlock* readBlock();
    [[nodiscard]] size_t nextFrameCount() const;

    static constexpr size_t kMaximumThreads = 4;

    FrameReader& reader_;  ///< guarded by `reading_`
    const FrameFormatter& formatter_;
    const uint64_t frames_;
    const uint64_t linesPerFile_;
    const std::atomic<bool>& stop_;
    const size_t framesPerBlock_;

    std::mutex reading_;        ///< held while a block is read, so that blocks are read in order
    bool failed_ = false;       ///< nothing more is read; guarded by `reading_`
    uint64_t takenFrames_ = 0;  ///< of the taking thread alone

    std::mutex mutex_;  ///< guards what follows
    std::condition_variable room_;
    std::condition_variable ready_;
    uint64_t claimed_ = 0;
    uint64_t released_ = 0;
    bool ended_ = false;
    std::vector<TextBlock> blocks_;

    std::vector<Thread> threads_;
};

}  // namespace tarno2
