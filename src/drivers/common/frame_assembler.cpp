#include "drivers/common/frame_assembler.h"

#include <algorithm>
#include <cstring>

namespace tarno2::drivers {

namespace {

constexpr size_t kFramesAtOnce = 256;

template <typename Word>
void takeWords(const std::byte* from, std::byte* to, size_t frames, uint32_t all, const std::vector<uint32_t>& chosen) {
    for (size_t frame = 0; frame < frames; ++frame, from += sizeof(Word) * all) {
        for (const uint32_t channel : chosen) {
            std::memcpy(to, from + sizeof(Word) * channel, sizeof(Word));
            to += sizeof(Word);
        }
    }
}

}  // namespace

ChannelChoice::ChannelChoice(uint32_t all, const std::vector<int32_t>& chosen, uint32_t wordBytes)
    : all_(all), wordBytes_(wordBytes), isAll_(chosen.size() == all) {
    for (size_t i = 0; i < chosen.size(); ++i) {
        chosen_.push_back(std::min(static_cast<uint32_t>(chosen[i]), all - 1));
        isAll_ = isAll_ && chosen_.back() == i;
    }
}

void ChannelChoice::take(const std::byte* allWords, std::byte* chosenWords, size_t frames) const {
    if (wordBytes_ == 2) {
        takeWords<uint16_t>(allWords, chosenWords, frames, all_, chosen_);
    } else {
        takeWords<uint32_t>(allWords, chosenWords, frames, all_, chosen_);
    }
}

FrameDecoder::FrameDecoder(const SampleDecoder& decoder, uint32_t channels, const std::vector<int32_t>& chosen)
    : decoder_(decoder),
      channels_(channels),
      frameBytes_(size_t{channels} * decoder.format().bytes),
      choice_(channels, chosen, wordBytes(decoder.format())),
      words_(choice_.isAll() ? 0 : kFramesAtOnce * channels * wordBytes(decoder.format())) {}

void FrameDecoder::decode(const std::byte* in, std::byte* out, size_t frames) {
    if (choice_.isAll()) {
        return decoder_.decode(in, out, frames * channels_);
    }
    const size_t outBytes = choice_.bytes();
    while (frames > 0) {
        const size_t now = std::min(frames, kFramesAtOnce);
        decoder_.decode(in, words_.data(), now * channels_);
        choice_.take(words_.data(), out, now);
        in += now * frameBytes_;
        out += now * outBytes;
        frames -= now;
    }
}

FrameAssembler::FrameAssembler(FrameDecoder decoder, size_t mostFrames)
    : decoder_(std::move(decoder)), bytes_(std::max<size_t>(mostFrames, 1) * decoder_.frameBytes()) {}

std::span<std::byte> FrameAssembler::space(size_t frames) {
    const size_t wanted = std::clamp<size_t>(frames * decoder_.frameBytes(), decoder_.frameBytes(), bytes_.size());
    return {bytes_.data() + held_, wanted - held_};
}

size_t FrameAssembler::take(size_t bytes, std::byte* destination) {
    const size_t all = held_ + bytes;
    const size_t frames = all / decoder_.frameBytes();
    const size_t whole = frames * decoder_.frameBytes();
    decoder_.decode(bytes_.data(), destination, frames);
    held_ = all - whole;
    std::memmove(bytes_.data(), bytes_.data() + whole, held_);
    return frames;
}

}  // namespace tarno2::drivers
