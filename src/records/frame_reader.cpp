#include "records/frame_reader.h"

#include <algorithm>
#include <cstring>

namespace tarno2 {

namespace {

constexpr size_t kBlock = size_t{1} << 18;
/// Frames that lie further apart are read one by one.
constexpr size_t kFar = size_t{1} << 14;

uint32_t loadWord(const uint8_t* sample, size_t bytes) {
    uint32_t word = 0;
    for (size_t i = 0; i < bytes; ++i) {
        word |= uint32_t{sample[i]} << (8 * i);
    }
    return word;
}

void storeWord(uint32_t word, uint8_t* sample, size_t bytes) {
    for (size_t i = 0; i < bytes; ++i) {
        sample[i] = static_cast<uint8_t>(word >> (8 * i));
    }
}

size_t chosenBytes(const ConversionInputs& inputs, const FrameChoice& choice) {
    return inputs.bytesPerSample * (choice.columns.empty() ? inputs.channelCount : choice.columns.size());
}

}  // namespace

FrameReader::FrameReader(File& data, const ConversionInputs& inputs, const FrameChoice& choice, uint64_t frames)
    : data_(data),
      choice_(choice),
      bytes_(inputs.bytesPerSample),
      inBytes_(inputs.frameBytes()),
      outBytes_(chosenBytes(inputs, choice)),
      portMask_(inputs.digitalLines > 0 ? inputs.digitalMask : 0),
      total_(choice.count(frames)),
      plain_(choice.columns.empty() && choice.every == 1) {
    if (!plain_) {
        const bool far = choice.every > kFar / inBytes_;
        block_.resize((far ? 1 : std::max<size_t>(kBlock / inBytes_, 1)) * inBytes_);
    }
}

OsError FrameReader::read(uint8_t* out, size_t count, size_t& done) {
    done = 0;
    const OsError error = plain_ ? readPlain(out, count, done) : readPicked(out, count, done);
    taken_ += done;
    return error;
}

OsError FrameReader::readPlain(uint8_t* out, size_t count, size_t& done) {
    if (!placed_) {
        if (const OsError error = data_.seek(choice_.frameOf(taken_) * inBytes_); !error.ok()) {
            return error;
        }
        placed_ = true;
    }
    size_t got = 0;
    const OsError error = data_.read(out, count * inBytes_, got);
    done = got / inBytes_;
    return error;
}

OsError FrameReader::readPicked(uint8_t* out, size_t count, size_t& done) {
    const size_t perBlock = block_.size() / inBytes_;
    while (done < count) {
        const uint64_t span = std::min<uint64_t>((count - done - 1) * choice_.every + 1, perBlock);
        if (const OsError error = data_.seek(choice_.frameOf(taken_ + done) * inBytes_); !error.ok()) {
            return error;
        }
        size_t got = 0;
        if (const OsError error = data_.read(block_.data(), static_cast<size_t>(span) * inBytes_, got); !error.ok()) {
            return error;
        }
        const size_t whole = got / inBytes_;
        for (size_t i = 0; i < whole; i += choice_.every, ++done) {
            pick(&block_[i * inBytes_], out + done * outBytes_);
        }
        if (whole < span) {
            break;
        }
    }
    return {};
}

void FrameReader::pick(const uint8_t* frame, uint8_t* out) const {
    if (choice_.columns.empty()) {
        std::memcpy(out, frame, inBytes_);
        return;
    }
    uint8_t* to = out;
    for (const uint32_t column : choice_.columns) {
        std::memcpy(to, frame + column * bytes_, bytes_);
        to += bytes_;
    }
    if (portMask_ != 0) {
        storeWord((loadWord(out, bytes_) & ~portMask_) | (loadWord(frame, bytes_) & portMask_), out, bytes_);
    }
}

}  // namespace tarno2
