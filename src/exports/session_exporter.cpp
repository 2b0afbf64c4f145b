// A session of sigrok's tools, version 2: a zip archive with a list of channels, and their samples in numbered chunks,
// each channel in files of its own, the lines of the port together.

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <utility>
#include <vector>

#include "exports/channel_scale.h"
#include "exports/make_exporters.h"
#include "exports/sample_codes.h"
#include "exports/zip_writer.h"

namespace tarno2 {

namespace {

constexpr size_t kChunkBytes = size_t{24} << 20;
constexpr size_t kMostChunkFrames = size_t{1} << 20;
constexpr uint32_t kLinesPerByte = 8;

/// A value as the list of keys takes it: letters that mean something there are escaped.
std::string keyFileText(const std::string& text) {
    std::string escaped;
    for (const char c : text) {
        if (c == '\\') {
            escaped += "\\\\";
        } else if (c == ' ' && escaped.empty()) {
            escaped += "\\s";
        } else {
            escaped += c;
        }
    }
    return escaped;
}

class SessionExporter final : public Exporter {
public:
    explicit SessionExporter(const ExportSubject& subject)
        : subject_(subject),
          codes_(subject.inputs, false),
          channels_(subject.inputs.channelCount),
          unitBytes_((subject.inputs.digitalLines + kLinesPerByte - 1) / kLinesPerByte),
          chunkFrames_(std::clamp<size_t>(kChunkBytes / (channels_ * sizeof(float) + unitBytes_), 1, kMostChunkFrames)),
          values_(channels_ * chunkFrames_),
          lines_(unitBytes_ * chunkFrames_) {
        for (size_t i = 0; i < channels_; ++i) {
            scales_.emplace_back(subject.inputs, i, subject.format.units);
            if (!subject.format.volts) {
                scales_.back().step = 1.0;
                scales_.back().zero = 0.0;
            }
        }
    }

    bool begin(ExportSink& sink) override {
        const bool done = zip_.add(sink, "version", "2") && zip_.add(sink, "metadata", metadata());
        zip_.endGroup();
        return done;
    }

    bool frames(ExportSink& sink, const uint8_t* frames, size_t count) override {
        codeBlock_.resize(count * channels_);
        codes_.to32(frames, count * channels_, codeBlock_.data());
        for (size_t done = 0; done < count;) {
            const size_t part = std::min(count - done, chunkFrames_ - filled_);
            takeValues(&codeBlock_[done * channels_], part);
            takeLines(frames + done * subject_.inputs.frameBytes(), part);
            filled_ += part;
            done += part;
            if (filled_ == chunkFrames_ && !writeChunk(sink)) {
                return false;
            }
        }
        return true;
    }

    bool end(ExportSink& sink, uint64_t /*frames*/) override {
        return (filled_ == 0 || writeChunk(sink)) && zip_.finish(sink);
    }

    bool rescue(ExportSink& sink, uint64_t /*bytes*/, uint64_t /*frames*/) override { return zip_.rescue(sink); }

private:
    [[nodiscard]] std::string metadata() const {
        const ConversionInputs& inputs = subject_.inputs;
        const uint32_t lines = inputs.digitalLines;
        std::string text = "[global]\nsigrok version=0.5.2\n\n[device 1]\n";
        if (lines > 0) {
            text += "capturefile=logic-1\n";
        }
        text += "total probes=" + std::to_string(lines) +
                "\nsamplerate=" + std::to_string(std::llround(subject_.rate)) +
                " Hz\ntotal analog=" + std::to_string(channels_) + "\n";
        for (uint32_t i = 0; i < lines; ++i) {
            text += "probe" + std::to_string(i + 1) + "=" + keyFileText(inputs.labels.lineName(i)) + "\n";
        }
        for (size_t i = 0; i < channels_; ++i) {
            text += "analog" + std::to_string(lines + i + 1) + "=" + keyFileText(inputs.labels.channelName(i)) + "\n";
        }
        return text + (lines > 0 ? "unitsize=" + std::to_string(unitBytes_) + "\n" : std::string());
    }

    void takeValues(const int32_t* codes, size_t count) {
        for (size_t channel = 0; channel < channels_; ++channel) {
            const ChannelScale scale = scales_[channel];
            float* const to = &values_[channel * chunkFrames_ + filled_];
            for (size_t i = 0; i < count; ++i) {
                const int32_t code = codes[i * channels_ + channel];
                to[i] = static_cast<float>(
                    scale.value(subject_.inputs.codeSigned ? code : static_cast<double>(static_cast<uint32_t>(code))));
            }
        }
    }

    void takeLines(const uint8_t* frames, size_t count) {
        for (size_t i = 0; unitBytes_ > 0 && i < count; ++i) {
            const uint32_t port = subject_.inputs.port(frames + i * subject_.inputs.frameBytes());
            std::memcpy(&lines_[(filled_ + i) * unitBytes_], &port, unitBytes_);
        }
    }

    /// Puts what is there into the archive, which takes it as far as there is room.
    bool writeChunk(ExportSink& sink) {
        const size_t frames = std::exchange(filled_, 0);
        const std::string number = "-" + std::to_string(++chunk_);
        if (unitBytes_ > 0 && !zip_.add(sink, "logic-1" + number, chars(lines_.data(), frames * unitBytes_))) {
            return false;
        }
        for (size_t i = 0; i < channels_; ++i) {
            const std::string name = "analog-1-" + std::to_string(subject_.inputs.digitalLines + i + 1) + number;
            if (!zip_.add(sink, name, chars(&values_[i * chunkFrames_], frames * sizeof(float)))) {
                return false;
            }
        }
        zip_.endGroup();
        return true;
    }

    static std::string_view chars(const void* data, size_t bytes) { return {static_cast<const char*>(data), bytes}; }

    const ExportSubject& subject_;
    const SampleCodes codes_;
    const size_t channels_;
    const size_t unitBytes_;  ///< of the lines in a frame
    const size_t chunkFrames_;
    std::vector<float> values_;  ///< a chunk, channel by channel
    std::vector<uint8_t> lines_;
    std::vector<ChannelScale> scales_;
    std::vector<int32_t> codeBlock_;
    ZipWriter zip_;
    size_t filled_ = 0;  ///< frames of the chunk
    uint64_t chunk_ = 0;
};

}  // namespace

std::unique_ptr<Exporter> makeSession(const ExportSubject& subject, ExportNotes& notes, ConversionResult& refusal) {
    if (!(subject.rate >= 0.5 && subject.rate < static_cast<double>(std::numeric_limits<int64_t>::max()))) {
        refusal.status = ConversionResult::RateImpossible;
        return nullptr;
    }
    if (std::nearbyint(subject.rate) != subject.rate) {
        notes.push_back({ExportNote::RateRounded, std::to_string(std::llround(subject.rate))});
    }
    constexpr uint32_t kFloatBits = std::numeric_limits<float>::digits;
    if (subject.inputs.codeBits > kFloatBits) {
        notes.push_back({ExportNote::LowBitsLeftOut, std::to_string(subject.inputs.codeBits - kFloatBits)});
    }
    return std::make_unique<SessionExporter>(subject);
}

}  // namespace tarno2
