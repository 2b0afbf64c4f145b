#include "records/text_blocks.h"

#include <algorithm>
#include <new>
#include <thread>

namespace tarno2 {

namespace {

size_t blockFrames(const FrameFormatter& formatter, size_t frameBytes) {
    const size_t fits = std::min(TextBlocks::kTextSize / formatter.longestLine(), TextBlocks::kTextSize / frameBytes);
    return std::max<size_t>(fits, 1);
}

size_t threadCount(size_t maximum) {
    // The thread that writes has a processor as well, but waits for the disk most of the time.
    return std::clamp<size_t>(std::thread::hardware_concurrency(), 1, maximum);
}

}  // namespace

TextBlocks::TextBlocks(FrameReader& reader, const FrameFormatter& formatter, uint64_t linesPerFile,
                       const std::atomic<bool>& stop)
    : reader_(reader),
      formatter_(formatter),
      frames_(reader.total()),
      linesPerFile_(linesPerFile),
      stop_(stop),
      framesPerBlock_(blockFrames(formatter, reader.frameBytes())),
      blocks_(threadCount(kMaximumThreads) + 2) {
    for (TextBlock& block : blocks_) {
        block.frames.resize(framesPerBlock_ * reader.frameBytes());
        block.characters = std::make_unique<char[]>(framesPerBlock_ * formatter.longestLine() + FrameFormatter::kSlack);
    }
    threads_.resize(threadCount(kMaximumThreads));
}

TextBlocks::~TextBlocks() {
    {
        const std::scoped_lock lock(mutex_);
        ended_ = true;
    }
    room_.notify_all();
    threads_.clear();
}

bool TextBlocks::start() {
    for (Thread& thread : threads_) {
        if (!thread.create([this] { work(); })) {
            return false;
        }
        thread.resume();
    }
    return true;
}

const TextBlock* TextBlocks::next() {
    if (takenFrames_ == frames_) {
        return nullptr;
    }
    std::unique_lock lock(mutex_);
    const TextBlock& block = blocks_[released_ % blocks_.size()];
    ready_.wait(lock, [&block] { return block.ready; });
    takenFrames_ += block.frameCount;
    return &block;
}

void TextBlocks::release() {
    {
        const std::scoped_lock lock(mutex_);
        blocks_[released_ % blocks_.size()].ready = false;
        ++released_;
    }
    room_.notify_one();
}

void TextBlocks::work() {
    while (TextBlock* const block = readBlock()) {
        if (block->readError.ok() && !block->tooShort) {
            try {
                block->text = formatter_.format(block->frames.data(), block->frameCount, block->firstFrame,
                                                block->characters.get(), stop_);
            } catch (const std::bad_alloc&) {
                block->outOfMemory = true;
            }
        }
        {
            const std::scoped_lock lock(mutex_);
            block->ready = true;
        }
        ready_.notify_one();
    }
}

size_t TextBlocks::nextFrameCount() const {
    uint64_t count = std::min<uint64_t>(framesPerBlock_, frames_ - reader_.taken());
    if (linesPerFile_ != 0) {
        count = std::min(count, linesPerFile_ - reader_.taken() % linesPerFile_);
    }
    return static_cast<size_t>(count);
}

TextBlock* TextBlocks::readBlock() {
    const std::scoped_lock reading(reading_);
    if (failed_ || reader_.taken() == frames_) {
        return nullptr;
    }
    TextBlock* block = nullptr;
    {
        std::unique_lock lock(mutex_);
        room_.wait(lock, [this] { return ended_ || claimed_ < released_ + blocks_.size(); });
        if (ended_) {
            return nullptr;
        }
        block = &blocks_[claimed_ % blocks_.size()];
        ++claimed_;
    }
    block->firstFrame = reader_.taken();
    block->frameCount = nextFrameCount();
    block->text = {};
    size_t got = 0;
    block->readError = reader_.read(block->frames.data(), block->frameCount, got);
    block->tooShort = got < block->frameCount;
    failed_ = block->tooShort || !block->readError.ok();
    return block;
}

}  // namespace tarno2
