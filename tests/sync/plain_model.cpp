#include "tests/sync/plain_model.h"

namespace tarno2::test {

namespace {

constexpr int kStart = 0;
constexpr int kWrite = 1;
constexpr int kStop = 2;

int32_t shiftedRight(int32_t value, uint32_t count) {
    return value >> (count % 32);
}

int32_t shiftedThereAndBack(int32_t value, uint32_t count) {
    return static_cast<int32_t>(static_cast<uint32_t>(value) << (count % 32)) >> (count % 32);
}

}  // namespace

Evaluated PlainModel::evaluate(const std::vector<int32_t>& block, int64_t channels, bool packed) {
    Evaluated out;
    if (block.empty() || channels == 0) {
        out.result = -2;
        return out;
    }
    block_ = &block;
    channels_ = channels;
    frames_ = static_cast<int64_t>(block.size()) / channels;
    packed_ = packed;
    if (settings_.SynchroAnalyzeMode == 1) {
        analyse(out);
    } else if (settings_.SynchroAnalyzeMode == 2) {
        synchronise(out);
    } else {
        out.samples = block;
    }
    return out;
}

int32_t PlainModel::analysisValue(int32_t sample) const {
    if (!packed_) {
        return sample;
    }
    if (facts_.formatFlags & 1U) {
        return shiftedRight(sample, facts_.codeShift);
    }
    return width_ == 16 ? sample : shiftedThereAndBack(sample, 16 - facts_.codeShift);
}

int32_t PlainModel::synchroValue(int32_t sample) const {
    if (!packed_) {
        return sample;
    }
    if (!(facts_.formatFlags & 1U)) {
        return shiftedRight(sample, facts_.codeShift);
    }
    return width_ == 16 ? sample : shiftedThereAndBack(sample, 32 - facts_.codeShift);
}

bool PlainModel::bit(int32_t sample, int32_t number) const {
    uint32_t mask = 1U << (static_cast<uint32_t>(number) % 32);
    if (width_ == 16) {
        mask &= 0xFFFFU;
    }
    return (static_cast<uint32_t>(sample) & mask << (facts_.portShift % 32)) != 0;
}

bool PlainModel::enabled(int stage) const {
    const auto& s = settings_;
    if (s.analysisOnAnalog) {
        return stage == kStart ? s.startAnalogEnabled : stage == kWrite ? s.writeAnalogEnabled : s.stopAnalogEnabled;
    }
    return stage == kStart ? s.portStartEnabled : stage == kWrite ? s.portWriteEnabled : s.portStopEnabled;
}

int64_t PlainModel::testedIndex(int stage, int64_t frame) const {
    const auto& s = settings_;
    if (!s.analysisOnAnalog) {
        return frame * channels_;
    }
    const int64_t position = stage == kStart   ? s.AnalyzeAnalogStartChannel
                             : stage == kWrite ? s.AnalyzeAnalogWriteChannel
                                               : s.AnalyzeAnalogStopChannel;
    return frame * channels_ + (facts_.backwardOrder ? channels_ - position : position);
}

bool PlainModel::meets(int stage, int64_t frame) const {
    const auto& s = settings_;
    const int64_t index = testedIndex(stage, frame);
    if (index < 0 || index >= size()) {
        return false;
    }
    const int32_t sample = (*block_)[static_cast<size_t>(index)];
    if (!s.analysisOnAnalog) {
        const int32_t mode = stage == kStart   ? s.AnalyzePortStartMode
                             : stage == kWrite ? s.AnalyzePortWriteMode
                                               : s.AnalyzePortStopMode;
        const int32_t number = stage == kStart   ? s.AnalyzePortStartBit
                               : stage == kWrite ? s.AnalyzePortWriteBit
                                                 : s.AnalyzePortStopBit;
        return (mode == 0 && bit(sample, number)) || (mode == 1 && !bit(sample, number));
    }
    const int32_t mode = stage == kStart   ? s.AnalyzeAnalogStartMode
                         : stage == kWrite ? s.AnalyzeAnalogWriteMode
                                           : s.AnalyzeAnalogStopMode;
    int32_t code = stage == kStart ? s.startCode : stage == kWrite ? s.writeCode : s.stopCode;
    if (width_ == 16) {
        code = static_cast<int16_t>(code);
    }
    const int32_t value = analysisValue(sample);
    return (mode == 0 && value > code) || (mode == 1 && value < code);
}

/// The first frame from `frame` on that meets the stage's condition, or -1.
int64_t PlainModel::find(int stage, int64_t frame) const {
    for (; frame < frames_ && testedIndex(stage, frame) < frames_; ++frame) {
        if (meets(stage, frame)) {
            return frame;
        }
    }
    return -1;
}

void PlainModel::analyse(Evaluated& out) {
    if (!settings_.analysisOnAnalog && !settings_.analysisOnPort) {
        return;
    }
    int64_t opening = 0;
    if (!settings_.started && enabled(kStart)) {
        opening = find(kStart, 0);
        if (opening < 0) {
            return;
        }
    }
    settings_.started = true;
    int64_t closing = frames_;
    if (enabled(kStop)) {
        const int64_t found = find(kStop, opening);
        if (found >= 0) {
            closing = found;
            out.result = 1;
        }
    }
    for (int64_t frame = opening; frame < closing - 1; ++frame) {
        if (!enabled(kWrite) || meets(kWrite, frame)) {
            const Frame kept = frameAt(frame);
            out.samples.insert(out.samples.end(), kept.begin(), kept.end());
        }
    }
}

PlainModel::Frame PlainModel::frameAt(int64_t frame) const {
    const auto begin = block_->begin() + frame * channels_;
    return {begin, begin + channels_};
}

/// Index of the sample that a trigger is looked for in, which may lie in the frame behind; -1 for none of a frame.
int64_t PlainModel::triggerIndex(int64_t frame) const {
    int64_t place = 0;
    if (settings_.synchroOnAnalog) {
        const int64_t position = settings_.SynchroAnalogChannelNumber;
        place = facts_.backwardOrder ? channels_ - position : position;
    }
    return place >= 0 && place < 2 * channels_ ? frame * channels_ + place : -1;
}

bool PlainModel::triggers(int32_t before, int32_t now) const {
    const auto& s = settings_;
    if (s.synchroOnAnalog) {
        before = synchroValue(before);
        now = synchroValue(now);
        return (s.SynchroAnalogMode == 0 && before < s.synchroCode && s.synchroCode <= now) ||
               (s.SynchroAnalogMode == 1 && before > s.synchroCode && s.synchroCode >= now);
    }
    if (s.synchroOnPort) {
        const bool was = bit(before, s.SynchroPortBit);
        const bool is = bit(now, s.SynchroPortBit);
        return (s.SynchroPortMode == 0 && is && !was) || (s.SynchroPortMode == 1 && !is && was);
    }
    return false;
}

/// Works on the stream that has not been taken yet: a frame may have to wait for the sample that it is searched by.
void PlainModel::synchronise(Evaluated& out) {
    if (!recordBegun_) {
        record_ = {};
        record_.ringFull = sizes_.prehistory == 0;
        recordBegun_ = true;
    }
    waiting_.insert(waiting_.end(), block_->begin(), block_->begin() + size());
    block_ = &waiting_;
    frames_ = static_cast<int64_t>(waiting_.size()) / channels_;
    int64_t frame = 0;
    while (frame < frames_ && takeFrame(frame, out)) {
        ++frame;
    }
    waiting_.erase(waiting_.begin(), waiting_.begin() + frame * channels_);
    if (settings_.StopAfterTrigged && !out.events.empty()) {
        out.result = 1;
    }
}

/// False when the frame has to wait.
bool PlainModel::takeFrame(int64_t frame, Evaluated& out) {
    if (!record_.ringFull) {
        record_.prehistory.push_back(frameAt(frame));
        record_.ringFull = static_cast<int32_t>(record_.prehistory.size()) == sizes_.prehistory;
        previous_.reset();
        return true;
    }
    if (!record_.triggered) {
        return search(frame, out);
    }
    const Frame next = frameAt(frame);
    record_.history.insert(record_.history.end(), next.begin(), next.end());
    ++record_.historyFrames;
    previous_.reset();
    completeIfFull(out);
    return true;
}

bool PlainModel::search(int64_t frame, Evaluated& out) {
    const int64_t index = triggerIndex(frame);
    if (index >= size()) {
        return false;
    }
    if (index >= 0) {
        const int32_t now = (*block_)[static_cast<size_t>(index)];
        if (previous_ && triggers(*previous_, now)) {
            record_.triggered = true;
            if (sizes_.history == 0) {
                previous_.reset();
                completeIfFull(out);
            }
            return takeFrame(frame, out);
        }
        previous_ = now;
    }
    record_.prehistory.push_back(frameAt(frame));
    record_.prehistory.pop_front();
    return true;
}

void PlainModel::completeIfFull(Evaluated& out) {
    if (record_.historyFrames < sizes_.history) {
        return;
    }
    counter_ += static_cast<uint64_t>(sizes_.prehistory);
    SynchroEvent event;
    event.point = counter_;
    event.prehistory = static_cast<uint32_t>(sizes_.prehistory);
    event.history = static_cast<uint32_t>(sizes_.history);
    const bool analog = settings_.synchroOnAnalog;
    event.mode = analog ? 0 : 1;
    event.condition = analog ? settings_.SynchroAnalogMode : settings_.SynchroPortMode;
    event.channel = analog ? settings_.SynchroAnalogChannelNumber : settings_.SynchroPortBit;
    event.value = analog ? settings_.SynchroAnalogValue : 0.0;
    out.events.push_back(event);
    for (const Frame& frame : record_.prehistory) {
        out.samples.insert(out.samples.end(), frame.begin(), frame.end());
    }
    out.samples.insert(out.samples.end(), record_.history.begin(), record_.history.end());
    record_ = {};
    record_.ringFull = sizes_.prehistory == 0;
}

}  // namespace tarno2::test
