#include "drivers/replay/recording.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstring>

#include "drivers/replay/wav_samples.h"
#include "platform/file.h"
#include "platform/paths.h"
#include "records/record_description.h"
#include "records/recorded_format.h"

namespace tarno2::drivers {

namespace {

constexpr uint32_t kLargestRing = 4U << 20;
constexpr uint64_t kBlockFrames = 4096;  // read at a time when only some channels are asked for

bool endsWith(const std::string& path, const char* extension) {
    const size_t length = std::strlen(extension);
    return path.size() >= length && std::equal(path.end() - static_cast<std::ptrdiff_t>(length), path.end(), extension,
                                               [](char a, char b) { return std::tolower(a) == b; });
}

/// Facts that follow from the rate, once channels and format are there.
void complete(Recording& recording, double channelRate) {
    sdk::Board& board = recording.board;
    const auto total = static_cast<float>(channelRate * board.channels);
    recording.channelRate = channelRate;
    board.id = recording.path;
    board.name = "Replay of " + fileNameOf(recording.path);
    board.frequencies = {total};
    board.minimumFrequency = board.maximumFrequency = board.usualFrequency = total;
    board.maximumRing = kLargestRing;
}

bool openWav(const std::string& path, Recording& recording, std::string& reason) {
    File file;
    WavInfo info;
    const OsError error = file.open(path, FileMode::OpenExisting, FileAccess::Read, FileShare::ReadWrite);
    if (!error.ok()) {
        reason = path + " can't be opened: " + error.text();
        return false;
    }
    if (!readWav(file, info, reason)) {
        reason = path + " can't be played: " + reason;
        return false;
    }
    recording.path = path;
    recording.dataOffset = info.dataOffset;
    recording.frames = info.frames;
    recording.board.channels = info.channels;
    takeFormat(info.sample, recording.board);
    if (info.sample != WavSample::Signed16 && info.sample != WavSample::Signed32) {
        recording.sample = info.sample;
    }
    complete(recording, info.rate);
    return true;
}

void takeLayout(const SampleLayout& layout, Recording& recording) {
    ADCSampleFormat& format = recording.board.format;
    const auto bits = static_cast<uint32_t>(layout.analogBits);
    format.m_nBytes = static_cast<uint32_t>(layout.bytesPerSample);
    format.m_nCodeBits = bits;
    format.m_nCodeShift = static_cast<uint32_t>(layout.analogShift);
    format.m_nCodeMask = static_cast<uint32_t>(layout.analogMask);
    format.m_nSignedCodes = layout.analogSigned == 1 ? 1 : 0;
    if (layout.digitalBits > 0 && layout.digitalShift >= 0) {
        format.m_nDigitalShift = static_cast<uint32_t>(layout.digitalShift);
        format.m_nDigitalMask = static_cast<uint32_t>(layout.digitalMask);
        format.m_nDigitalLines = static_cast<uint32_t>(layout.digitalBits);
        format.m_nFormatFlags = format.m_nDigitalShift > format.m_nCodeShift ? 1 : 0;
    }
    const int64_t span = int64_t{1} << bits;
    const int64_t lowest = format.m_nSignedCodes == 1 ? -span / 2 : 0;
    recording.board.codes.m_nMinimum = static_cast<int32_t>(lowest);
    recording.board.codes.m_nMaximum = static_cast<int32_t>(std::min<int64_t>(lowest + span - 1, 0x7FFFFFFF));
}

bool openData(const std::string& path, Recording& recording, std::string& reason) {
    const std::string description = RecordDescription::fileNameFor(path);
    RecordedFormat format;
    std::string missing;
    OsError why;
    if (!readRecordedFormat(description, format, missing, &why)) {
        reason = missing.empty() ? path + " is no .wav file, and " + description + " can't be read: " + why.text()
                                 : description + " can't be used: " + missing + " is missing or makes no sense.";
        return false;
    }
    uint64_t size = 0;
    File file;
    const OsError error = file.open(path, FileMode::OpenExisting, FileAccess::Read, FileShare::ReadWrite);
    if (!error.ok() || !file.size(size).ok()) {
        reason = path + " can't be opened: " + error.text();
        return false;
    }
    recording.path = path;
    sdk::Board& board = recording.board;
    board.channels = format.channelCount;
    for (const auto& [upper, lower] : format.ranges) {
        board.channelRanges.push_back(std::max(std::fabs(upper), std::fabs(lower)));
        recording.limits.push_back({lower, upper});
    }
    board.range = board.channelRanges.front();
    takeLayout(format.layout, recording);
    recording.frames = size / (uint64_t{board.format.m_nBytes} * board.channels);
    if (board.channels > kMostChannels || recording.frames == 0 || !(board.range > 0.0)) {
        reason = path + (recording.frames == 0 ? " holds no samples." : " has channels or a range that no board has.");
        return false;
    }
    complete(recording, format.frequencyPerChannel);
    return true;
}

class RecordingSource final : public SampleSource {
public:
    RecordingSource(const Recording& recording, std::vector<int32_t> channels, bool loop)
        : offset_(recording.dataOffset),
          frames_(recording.frames),
          bytes_(recording.board.format.m_nBytes),
          frameBytes_(uint64_t{recording.board.format.m_nBytes} * recording.board.channels),
          sample_(recording.sample),
          fileFrameBytes_(sample_ ? uint64_t{bytesOf(*sample_)} * recording.board.channels : frameBytes_),
          channels_(std::move(channels)),
          loop_(loop),
          whole_(channels_.size() == recording.board.channels) {
        for (size_t i = 0; whole_ && i < channels_.size(); ++i) {
            whole_ = channels_[i] == static_cast<int32_t>(i);
        }
        if (!whole_) {
            block_.resize(kBlockFrames * frameBytes_);
        }
        if (sample_) {
            raw_.resize(kBlockFrames * fileFrameBytes_);
        }
    }

    bool open(const std::string& path) {
        return file_.open(path, FileMode::OpenExisting, FileAccess::Read, FileShare::ReadWrite).ok() &&
               file_.seek(offset_).ok();
    }

    uint64_t fill(uint64_t, std::byte* destination, uint64_t frames) override {
        const uint64_t outFrame = whole_ ? frameBytes_ : uint64_t{bytes_} * channels_.size();
        uint64_t done = 0;
        while (done < frames) {
            if (next_ == frames_) {
                if (!loop_ || !file_.seek(offset_).ok()) {
                    break;
                }
                next_ = 0;
            }
            const uint64_t got = fillOnce(destination + done * outFrame, std::min(frames - done, frames_ - next_));
            if (got == 0) {
                frames_ = next_;  // the file became shorter meanwhile
                if (next_ == 0) {
                    break;
                }
            }
            next_ += got;
            done += got;
        }
        return done;
    }

private:
    uint64_t fillOnce(std::byte* out, uint64_t frames) {
        if (whole_) {
            return readFrames(out, frames);
        }
        const uint64_t got = readFrames(block_.data(), std::min(frames, kBlockFrames));
        const std::byte* frame = block_.data();
        for (uint64_t i = 0; i < got; ++i, frame += frameBytes_) {
            for (const int32_t channel : channels_) {
                std::memcpy(out, frame + size_t{bytes_} * static_cast<size_t>(channel), bytes_);
                out += bytes_;
            }
        }
        return got;
    }

    uint64_t readFrames(std::byte* out, uint64_t frames) {
        size_t done = 0;
        if (!sample_) {
            return file_.read(out, frames * frameBytes_, done).ok() ? done / frameBytes_ : 0;
        }
        const uint64_t wanted = std::min(frames, kBlockFrames);
        if (!file_.read(raw_.data(), wanted * fileFrameBytes_, done).ok()) {
            return 0;
        }
        const uint64_t got = done / fileFrameBytes_;
        takeSamples(*sample_, raw_.data(), got * (frameBytes_ / bytes_), out);
        return got;
    }

    File file_;
    uint64_t offset_;
    uint64_t frames_;
    uint32_t bytes_;
    uint64_t frameBytes_;
    std::optional<WavSample> sample_;  // of the file, where words have to be made of them
    uint64_t fileFrameBytes_;
    std::vector<int32_t> channels_;
    bool loop_;
    bool whole_ = true;  // all channels in the file's order
    uint64_t next_ = 0;  // frame of the file
    std::vector<std::byte> block_;
    std::vector<std::byte> raw_;
};

}  // namespace

bool openRecording(const std::string& path, Recording& recording, std::string& reason) {
    recording = {};
    return endsWith(path, ".wav") ? openWav(path, recording, reason) : openData(path, recording, reason);
}

std::unique_ptr<SampleSource> playRecording(const Recording& recording, const sdk::Measurement& measurement,
                                            bool loop) {
    auto source = std::make_unique<RecordingSource>(recording, measurement.channels, loop);
    if (!source->open(recording.path)) {
        return nullptr;
    }
    return source;
}

}  // namespace tarno2::drivers
