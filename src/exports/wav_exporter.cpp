// WAVE. Samples are the codes as they were recorded; a comment tells what they mean. RF64 as EBU Tech 3306 has it.

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

#include "exports/channel_scale.h"
#include "exports/little_endian.h"
#include "exports/make_exporters.h"
#include "exports/sample_codes.h"
#include "records/utc_text.h"

namespace tarno2 {

namespace {

constexpr uint32_t kWavByteBits = 8;
constexpr uint32_t kMost32 = std::numeric_limits<uint32_t>::max();
constexpr uint64_t kFormTypeBytes = 4;
constexpr uint64_t kChunkHeader = 8;
constexpr size_t kMostToldChannels = 256;
constexpr size_t kMostNotedChannels = 8;

std::string wavChunk(const std::string& id, const std::string& contents) {
    return id + littleEndian(contents.size(), 4) + contents + std::string(contents.size() % 2, '\0');
}

/// The narrowest sample that holds the codes.
uint32_t neededBits(uint32_t codeBits) {
    return codeBits <= 16 ? 16 : codeBits <= 24 ? 24 : 32;
}

class WavExporter final : public Exporter {
public:
    WavExporter(const ExportSubject& subject, uint32_t bits)
        : subject_(subject), codes_(subject.inputs, true), bytes_(bits / kWavByteBits) {}

    bool begin(ExportSink& sink) override { return sink.write(headerOf(subject_.frames)); }

    bool frames(ExportSink& sink, const uint8_t* frames, size_t count) override {
        const size_t samples = count * subject_.inputs.channelCount;
        if (bytes_ == 2 && codes_.areWords16()) {
            return sink.write(frames, samples * bytes_);
        }
        out_.resize(samples * sizeof(int32_t));
        if (bytes_ == 2) {
            codes_.to16(frames, samples, reinterpret_cast<int16_t*>(out_.data()));
        } else {
            codes_.to32(frames, samples, reinterpret_cast<int32_t*>(out_.data()));
        }
        if (bytes_ == 3) {
            pack24(samples);
        }
        return sink.write(out_.data(), samples * bytes_);
    }

    bool end(ExportSink& sink, uint64_t frames) override {
        // The header first: on a full disk the byte that makes the size even may find no room.
        if (frames != subject_.frames && !sink.patch(0, headerOf(frames))) {
            return false;
        }
        return frames * frameBytes() % 2 == 0 || sink.write(std::string(1, '\0'));
    }

private:
    [[nodiscard]] uint64_t frameBytes() const { return uint64_t{bytes_} * subject_.inputs.channelCount; }

    /// The lowest three bytes of each code, in place: what is written never overtakes what is read.
    void pack24(size_t samples) {
        uint8_t* to = out_.data();
        const uint8_t* from = out_.data();
        for (size_t i = 0; i < samples; ++i, to += 3, from += 4) {
            uint32_t code = 0;
            std::memcpy(&code, from, sizeof code);
            to[0] = static_cast<uint8_t>(code);
            to[1] = static_cast<uint8_t>(code >> 8U);
            to[2] = static_cast<uint8_t>(code >> 16U);
        }
    }

    /// All before the samples; as long for any count of frames up to the announced one.
    [[nodiscard]] std::string headerOf(uint64_t frames) const {
        const std::string rest = formatChunk() + infoChunk();
        const auto sizeOf = [&](uint64_t count) {
            const uint64_t data = count * frameBytes();
            return kFormTypeBytes + rest.size() + kChunkHeader + data + data % 2;
        };
        const uint64_t data = frames * frameBytes();
        if (sizeOf(subject_.frames) <= kMost32) {
            return "RIFF" + littleEndian(sizeOf(frames), 4) + "WAVE" + rest + "data" + littleEndian(data, 4);
        }
        const std::string sizes = littleEndian(data, 8) + littleEndian(frames, 8) + littleEndian(0, 4);
        const uint64_t size = sizeOf(frames) + kChunkHeader + sizeof(uint64_t) + sizes.size();
        return "RF64" + littleEndian(kMost32, 4) + "WAVE" + wavChunk("ds64", littleEndian(size, 8) + sizes) + rest +
               "data" + littleEndian(kMost32, 4);
    }

    [[nodiscard]] std::string formatChunk() const {
        constexpr uint16_t kPcm = 1;
        constexpr uint16_t kExtensible = 0xFFFE;
        const uint32_t channels = subject_.inputs.channelCount;
        const bool plain = channels <= 2 && bytes_ == 2;
        const auto rate = static_cast<uint64_t>(std::llround(subject_.rate));
        std::string format = littleEndian(plain ? kPcm : kExtensible, 2) + littleEndian(channels, 2) +
                             littleEndian(rate, 4) + littleEndian(std::min<uint64_t>(rate * frameBytes(), kMost32), 4) +
                             littleEndian(frameBytes(), 2) + littleEndian(bytes_ * kWavByteBits, 2);
        if (!plain) {
            // The kind of samples, which begin with the tag of the plain format, and no place for any loudspeaker.
            const std::string pcm("\x01\x00\x00\x00\x00\x00\x10\x00\x80\x00\x00\xAA\x00\x38\x9B\x71", 16);
            format += littleEndian(22, 2) + littleEndian(bytes_ * kWavByteBits, 2) + littleEndian(0, 4) + pcm;
        }
        return wavChunk("fmt ", format);
    }

    /// What a player shows: the meaning of the samples, the exact rate, the board.
    [[nodiscard]] std::string infoChunk() const {
        std::string comment = "Samples are codes. " +
                              fullScaleText(subject_.inputs, codes_.subtracted(), kMostToldChannels) + ". Rate " +
                              numberText(subject_.rate, 17) + " Hz.";
        if (!subject_.facts.comment.empty()) {
            comment += " " + subject_.facts.comment;
        }
        std::string items = wavChunk("ISFT", std::string("Tarno2") + '\0') + wavChunk("ICMT", comment + '\0');
        if (!subject_.facts.device.empty()) {
            items += wavChunk("ISRC", subject_.facts.device + '\0');
        }
        if (subject_.facts.start) {
            constexpr size_t kDateLength = 10;
            items += wavChunk("ICRD", utcText(*subject_.facts.start).substr(0, kDateLength) + '\0');
        }
        return wavChunk("LIST", "INFO" + items);
    }

    const ExportSubject& subject_;
    const SampleCodes codes_;
    const uint32_t bytes_;
    std::vector<uint8_t> out_;
};

}  // namespace

std::unique_ptr<Exporter> makeWav(const ExportSubject& subject, ExportNotes& notes, ConversionResult& refusal) {
    const ConversionInputs& inputs = subject.inputs;
    const uint32_t needed = neededBits(inputs.codeBits);
    const uint32_t bits = subject.sampleBits == 0 ? needed : subject.sampleBits;
    if (bits < needed) {
        refusal.status = ConversionResult::CodesTooWide;
        refusal.subject = std::to_string(bits);
        return nullptr;
    }
    constexpr uint32_t kMostFrameBytes = 0xFFFF;
    if (inputs.channelCount > kMostFrameBytes / (bits / kWavByteBits)) {
        refusal.status = ConversionResult::TooManyChannels;
        refusal.subject = std::to_string(kMostFrameBytes / (bits / kWavByteBits));
        return nullptr;
    }
    if (!(subject.rate >= 0.5 && subject.rate < kMost32)) {
        refusal.status = ConversionResult::RateImpossible;
        return nullptr;
    }
    const SampleCodes codes(inputs, true);
    notes.push_back({ExportNote::FullScale, fullScaleText(inputs, codes.subtracted(), kMostNotedChannels)});
    if (inputs.digitalLines > 0) {
        notes.push_back({ExportNote::LinesLeftOut, {}});
    }
    if (std::nearbyint(subject.rate) != subject.rate) {
        notes.push_back({ExportNote::RateRounded, std::to_string(std::llround(subject.rate))});
    }
    return std::make_unique<WavExporter>(subject, bits);
}

}  // namespace tarno2
