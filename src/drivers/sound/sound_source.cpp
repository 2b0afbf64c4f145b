#include "drivers/sound/sound_source.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace tarno2::drivers {

namespace {

constexpr uint32_t kPatience = 200;       // milliseconds
constexpr size_t kBlockBytes = 1U << 16;  // read at a time where not every channel is wanted

template <typename Word>
void pick(const std::byte* from, size_t frames, size_t channels, const std::vector<size_t>& chosen, std::byte* to) {
    for (size_t frame = 0; frame < frames; ++frame, from += channels * sizeof(Word)) {
        for (const size_t channel : chosen) {
            std::memcpy(to, from + channel * sizeof(Word), sizeof(Word));
            to += sizeof(Word);
        }
    }
}

class SoundSource final : public PacedSource {
public:
    SoundSource(std::unique_ptr<SoundInput> input, std::vector<size_t> chosen)
        : input_(std::move(input)), chosen_(std::move(chosen)) {
        const SoundFormat& format = input_->format();
        bool all = chosen_.size() == format.channels;
        for (size_t i = 0; all && i < chosen_.size(); ++i) {
            all = chosen_[i] == i;
        }
        if (!all) {
            blockFrames_ = std::max<size_t>(kBlockBytes / format.frameBytes(), 1);
            block_.resize(blockFrames_ * format.frameBytes());
        }
    }

    SourceRead read(std::byte* destination, size_t frames) override {
        if (block_.empty()) {
            return told(input_->read(destination, frames, kPatience));
        }
        const SoundRead got = input_->read(block_.data(), std::min(frames, blockFrames_), kPatience);
        const SoundFormat& format = input_->format();
        if (format.wordBytes() == 2) {
            pick<int16_t>(block_.data(), got.frames, format.channels, chosen_, destination);
        } else {
            pick<int32_t>(block_.data(), got.frames, format.channels, chosen_, destination);
        }
        return told(got);
    }

    void cancel() noexcept override { input_->cancel(); }

private:
    static SourceRead told(const SoundRead& read) {
        switch (read.kind) {
            case SoundRead::Kind::Frames:
            case SoundRead::Kind::Nothing:
                return SourceRead::some(read.frames);
            case SoundRead::Kind::Overrun:
                return SourceRead::loss(0);
            case SoundRead::Kind::Gone:
                return SourceRead::end(SourceRead::Kind::Unplugged, read.text);
            case SoundRead::Kind::Failed:
                break;
        }
        return SourceRead::end(SourceRead::Kind::Failed, read.text);
    }

    std::unique_ptr<SoundInput> input_;
    std::vector<size_t> chosen_;
    size_t blockFrames_ = 0;
    std::vector<std::byte> block_;  // empty: every channel in the card's order
};

}  // namespace

std::unique_ptr<PacedSource> makeSoundSource(std::unique_ptr<SoundInput> input, const std::vector<int32_t>& channels) {
    return std::make_unique<SoundSource>(std::move(input), std::vector<size_t>(channels.begin(), channels.end()));
}

}  // namespace tarno2::drivers
