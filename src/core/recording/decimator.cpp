#include "core/recording/decimator.h"

#include <algorithm>
#include <cstring>

namespace tarno2 {

Decimator::Decimator(uint32_t factor, uint64_t frameBytes, uint64_t largestBlock)
    : factor_(std::max(factor, 1U)), frameBytes_(frameBytes), first_(frameBytes) {
    output_.resize((largestBlock / frameBytes / factor_ + 1) * frameBytes);
}

std::span<const std::byte> Decimator::process(std::span<const std::byte> block) {
    const uint64_t frames = block.size() / frameBytes_;
    uint64_t kept = 0;
    uint64_t frame = 0;
    while (frame < frames) {
        if (gathered_ == 0) {
            std::memcpy(first_.data(), block.data() + frame * frameBytes_, frameBytes_);
        }
        const uint64_t taken = std::min(factor_ - gathered_, frames - frame);
        gathered_ += taken;
        frame += taken;
        if (gathered_ == factor_) {
            std::memcpy(output_.data() + kept * frameBytes_, first_.data(), frameBytes_);
            ++kept;
            gathered_ = 0;
        }
    }
    return {output_.data(), kept * frameBytes_};
}

}  // namespace tarno2
