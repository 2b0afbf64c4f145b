#include "measure/frame_blocks.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <thread>

namespace tarno2 {

namespace {

constexpr size_t kBlockBytes = size_t{256} << 10;      // stays in the cache between reading and adding up
constexpr uint64_t kSecondThread = uint64_t{4} << 20;  // bytes below which starting a thread takes longer than it saves

}  // namespace

std::vector<FrameSpan> partsOf(FrameSpan span, size_t frameBytes) {
    if (span.count() * frameBytes < kSecondThread || std::thread::hardware_concurrency() < 2) {
        return {span};
    }
    const uint64_t middle = span.first + span.count() / 2;
    return {{span.first, middle}, {middle, span.end}};
}

ReadEnd readParts(FrameSource& source, const std::vector<FrameSpan>& parts, WorkProgress& progress,
                  const BlockUse& use) {
    const uint64_t blockFrames = std::max<uint64_t>(kBlockBytes / source.frameBytes(), 1);
    std::vector<std::vector<std::byte>> blocks(parts.size());
    for (size_t i = 0; i < parts.size(); ++i) {
        blocks[i].resize(std::min(blockFrames, parts[i].count()) * source.frameBytes());
    }
    std::atomic<bool> failed = false;
    const auto readPart = [&](size_t part) {
        for (uint64_t frame = parts[part].first; frame < parts[part].end && !failed && !progress.cancelled();) {
            const uint64_t count = std::min(blockFrames, parts[part].end - frame);
            if (source.read(frame, count, blocks[part].data()) != count) {
                failed = true;
                return;
            }
            use(part, frame, blocks[part].data(), count);
            progress.add(count);
            frame += count;
        }
    };
    {
        std::vector<std::jthread> others;
        others.reserve(parts.size());
        for (size_t i = 1; i < parts.size(); ++i) {
            others.emplace_back(readPart, i);
        }
        if (!parts.empty()) {
            readPart(0);
        }
    }
    return failed ? ReadEnd::NotRead : progress.cancelled() ? ReadEnd::Cancelled : ReadEnd::Whole;
}

std::vector<std::byte> FrameBuffers::take() {
    const std::lock_guard lock(mutex_);
    const auto largest = std::ranges::max_element(kept_, {}, &std::vector<std::byte>::size);
    return std::exchange(*largest, {});
}

void FrameBuffers::giveBack(std::vector<std::byte> buffer) noexcept {
    const std::lock_guard lock(mutex_);
    const auto smallest = std::ranges::min_element(kept_, {}, &std::vector<std::byte>::size);
    if (smallest->size() < buffer.size()) {
        smallest->swap(buffer);
    }
}

FramesInMemory::~FramesInMemory() {
    if (home_) {
        home_->giveBack(std::move(frames_));
    }
}

uint64_t FramesInMemory::read(uint64_t firstFrame, uint64_t count, std::byte* out) {
    if (firstFrame < firstFrame_ || firstFrame >= frameCount()) {
        return 0;
    }
    count = std::min(count, frameCount() - firstFrame);
    std::memcpy(out, frames_.data() + (firstFrame - firstFrame_) * frameBytes_, count * frameBytes_);
    return count;
}

}  // namespace tarno2
