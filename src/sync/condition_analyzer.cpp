#include "sync/condition_analyzer.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <utility>

namespace tarno2 {

namespace {

/// Codes strictly above or below the threshold.
template <typename Width>
Condition<Width> level(int32_t mode, int32_t threshold, WordShift shift, int64_t place) {
    const int64_t code = Width::analysisCode(threshold);
    switch (mode) {
        case 0:
            return Condition<Width>::atLeast(code + 1, shift, place);
        case 1:
            return Condition<Width>::atMost(code - 1, shift, place);
        default:
            return Condition<Width>::never();
    }
}

/// What the first frame behind an edge meets and the last one before it does not.
template <typename Width>
Condition<Width> edge(int32_t mode, int32_t threshold, WordShift shift, int64_t place) {
    switch (mode) {
        case 0:
            return Condition<Width>::atLeast(threshold, shift, place);
        case 1:
            return Condition<Width>::atMost(threshold, shift, place);
        default:
            return Condition<Width>::never();
    }
}

template <typename Width>
Condition<Width> portBit(int32_t mode, int32_t bit, uint32_t portShift) {
    if (mode != 0 && mode != 1) {
        return Condition<Width>::never();
    }
    return Condition<Width>::port(Width::portMask(bit, portShift), mode == 0);
}

}  // namespace

ConditionAnalyzer::ConditionAnalyzer(const SynchroSettings& settings, const SynchroSizes& sizes,
                                     const SampleFacts& facts)
    : settings_(settings),
      prehistory_(static_cast<uint32_t>(std::max(sizes.prehistory, 0))),
      history_(static_cast<uint32_t>(std::max(sizes.history, 0))),
      facts_(facts) {
    settings_.started = false;
    settings_.stopped = false;
}

uint32_t ConditionAnalyzer::recordFrames() const {
    return settings_.SynchroAnalyzeMode == kModeSynchronisation ? prehistory_ + history_ : 0;
}

// The position is counted from the end as it always was in recordings of such boards: channels - position, so that
// position 0 lies in the next frame.
int64_t ConditionAnalyzer::place(int32_t position, size_t channels) const {
    return facts_.backwardOrder ? static_cast<int64_t>(channels) - position : position;
}

// Analysis and synchronisation read the format bit in opposite senses.
template <typename Width>
WordShift ConditionAnalyzer::wordShift(Comparison comparison, bool packed) const {
    if (!packed) {
        return {};
    }
    const bool bit = (facts_.formatFlags & 1U) != 0;
    const bool codeAlone = comparison == Comparison::Analysis ? bit : !bit;
    return codeAlone ? WordShift{0, facts_.codeShift & 31U} : Width::wholeWord(comparison, facts_.codeShift);
}

template <typename Width>
std::optional<Condition<Width>> ConditionAnalyzer::stageCondition(Stage stage, size_t channels, bool packed) const {
    struct Analog {
        bool enabled;
        int32_t mode;
        int32_t channel;
        int32_t code;
    };
    struct Port {
        bool enabled;
        int32_t mode;
        int32_t bit;
    };
    const SynchroSettings& s = settings_;
    const auto of = [stage](const auto& start, const auto& write, const auto& stop) {
        return stage == Stage::Start ? start : stage == Stage::Write ? write : stop;
    };
    if (s.analysisOnAnalog) {
        const Analog asked =
            of(Analog{s.startAnalogEnabled, s.AnalyzeAnalogStartMode, s.AnalyzeAnalogStartChannel, s.startCode},
               Analog{s.writeAnalogEnabled, s.AnalyzeAnalogWriteMode, s.AnalyzeAnalogWriteChannel, s.writeCode},
               Analog{s.stopAnalogEnabled, s.AnalyzeAnalogStopMode, s.AnalyzeAnalogStopChannel, s.stopCode});
        if (!asked.enabled) {
            return std::nullopt;
        }
        return level<Width>(asked.mode, asked.code, wordShift<Width>(Comparison::Analysis, packed),
                            place(asked.channel, channels));
    }
    const Port asked = of(Port{s.portStartEnabled, s.AnalyzePortStartMode, s.AnalyzePortStartBit},
                          Port{s.portWriteEnabled, s.AnalyzePortWriteMode, s.AnalyzePortWriteBit},
                          Port{s.portStopEnabled, s.AnalyzePortStopMode, s.AnalyzePortStopBit});
    if (!asked.enabled) {
        return std::nullopt;
    }
    return portBit<Width>(asked.mode, asked.bit, facts_.portShift);
}

// The word lies in the frame itself or in the one behind it; another position is none of a frame's channels.
template <typename Width>
Condition<Width> ConditionAnalyzer::triggerCondition(size_t channels, bool packed) const {
    if (settings_.synchroOnAnalog) {
        const int64_t word = place(settings_.SynchroAnalogChannelNumber, channels);
        if (word < 0 || word >= 2 * static_cast<int64_t>(channels)) {
            return Condition<Width>::never();
        }
        return edge<Width>(settings_.SynchroAnalogMode, settings_.synchroCode,
                           wordShift<Width>(Comparison::Synchronisation, packed), word);
    }
    if (settings_.synchroOnPort) {
        return portBit<Width>(settings_.SynchroPortMode, settings_.SynchroPortBit, facts_.portShift);
    }
    return Condition<Width>::never();
}

// The scans for start and stop end at the sample whose index is the number of frames: of several channels only that
// part of the block is looked at.
template <typename Width>
int32_t ConditionAnalyzer::analyse(const Block<Width>& block, bool packed, Output<Width>& output) {
    if (!settings_.analysisOnAnalog && !settings_.analysisOnPort) {
        return 0;
    }
    const size_t bound = block.frames;
    size_t opening = 0;
    if (!settings_.started) {
        if (const auto start = stageCondition<Width>(Stage::Start, block.channels, packed)) {
            const FrameRange range = block.askable({0, block.frames}, start->place(), bound);
            opening = findMet(block, range, *start);
            if (range.empty() || opening == range.end) {
                return 0;
            }
        }
        settings_.started = true;
    }
    int32_t result = 0;
    size_t closing = block.frames;
    if (const auto stop = stageCondition<Width>(Stage::Stop, block.channels, packed)) {
        const FrameRange range = block.askable({opening, block.frames}, stop->place(), bound);
        const size_t found = findMet(block, range, *stop);
        if (!range.empty() && found != range.end) {
            settings_.stopped = true;
            closing = found;
            result = 1;
        }
    }
    // The last frame before the end is left out.
    if (closing <= opening + 1) {
        return result;
    }
    const FrameRange kept{opening, closing - 1};
    const auto write = stageCondition<Width>(Stage::Write, block.channels, packed);
    if (!write) {
        output = {block.frame(kept.first), (kept.end - kept.first) * block.channels};
        return result;
    }
    using Word = typename Width::Word;
    output_.resize(std::max(output_.size(), block.size() * sizeof(Word)));
    const size_t bytes = keepMet(block, block.askable(kept, write->place(), block.size()), *write, output_.data());
    output = {reinterpret_cast<const Word*>(output_.data()), bytes / sizeof(Word)};
    return result;
}

void ConditionAnalyzer::reserve(size_t channels, size_t sampleBytes, size_t largestBlock) {
    if (settings_.SynchroAnalyzeMode == kModeSynchronisation) {
        makeEventRoom(channels, sampleBytes);
    } else if (settings_.SynchroAnalyzeMode == kModeAnalysis) {
        output_.reserve(largestBlock);
    }
}

void ConditionAnalyzer::makeEventRoom(size_t channels, size_t sampleBytes) {
    if (!event_.allocated() || event_.frameBytes() != channels * sampleBytes) {
        event_.allocate(channels, sampleBytes, prehistory_, history_);
        events_.reserve(1);
        held_.resize(2 * channels * sampleBytes);
        holding_ = false;
    }
}

template <typename Width>
int32_t ConditionAnalyzer::synchronise(const Block<Width>& block, bool packed, Output<Width>& output) {
    using Word = typename Width::Word;
    const size_t frameBytes = block.channels * sizeof(Word);
    makeEventRoom(block.channels, sizeof(Word));
    if (event_.complete()) {
        event_.restart();  // it was written
    }
    const Condition<Width> trigger = triggerCondition<Width>(block.channels, packed);
    if (holding_) {
        std::memcpy(held_.data() + frameBytes, block.words, frameBytes);
        consumeFrom_ = blockStart_ - 1;
        // A record without history leaves the frame that triggered it to the next record.
        holding_ = consume<Width>({reinterpret_cast<const Word*>(held_.data()), block.channels, 1}, trigger,
                                  2 * block.channels) == 0;
    }
    consumeFrom_ = blockStart_;
    const size_t frames = event_.complete() ? 0 : consume<Width>(block, trigger, block.size());
    if (event_.complete()) {
        addEvent();
        const std::span<const std::byte> record = event_.record();
        output = {reinterpret_cast<const Word*>(record.data()), record.size() / sizeof(Word)};
    }
    if (frames < block.frames) {
        samplesTaken_ = frames * block.channels;
        return 0;
    }
    return std::exchange(recordInBlock_, false) && settings_.StopAfterTrigged ? 1 : 0;
}

// Takes the block's frames into the record until it is complete; returns how many. Of the block's words and those
// behind it so many may be looked at; the last frame is held until the next block when the word that it is searched by
// is not among them.
template <typename Width>
size_t ConditionAnalyzer::consume(const Block<Width>& block, const Condition<Width>& trigger, size_t words) {
    for (size_t frame = 0; frame < block.frames;) {
        if (!event_.ringFull()) {
            const auto* next = reinterpret_cast<const std::byte*>(block.frame(frame));
            frame += event_.fillRing(next, block.frames - frame);
            previousKnown_ = false;
        } else if (event_.triggered() || search<Width>(block, trigger, words, frame)) {
            const auto* next = reinterpret_cast<const std::byte*>(block.frame(frame));
            frame += event_.addHistory(next, block.frames - frame);
            previousKnown_ = false;
            if (event_.complete()) {
                return frame;
            }
        } else if (frame < block.frames) {
            std::memcpy(held_.data(), block.frame(frame), event_.frameBytes());
            holding_ = true;
            break;
        }
    }
    return block.frames;
}

// Looks for the edge from `frame` on; frames before it go into the prehistory. True when found: `frame` is then the one
// that triggered, otherwise the first one that can't be asked yet, or the end of the block. A frame that has no sample
// before it to be compared with, at the beginning and behind copied frames, is only the one before the next.
template <typename Width>
bool ConditionAnalyzer::search(const Block<Width>& block, const Condition<Width>& trigger, size_t words,
                               size_t& frame) {
    using Word = typename Width::Word;
    const FrameRange range = block.askable({frame, block.frames}, trigger.place(), words);
    if (range.empty()) {
        return false;
    }
    const Word before = previousKnown_ ? static_cast<Word>(previous_) : block.word(frame, trigger.place());
    const size_t stop = findEdge(block, range, trigger, before);
    const bool found = stop != range.end;
    if (!found) {
        previous_ = block.word(stop - 1, trigger.place());
        previousKnown_ = true;
    }
    event_.push(reinterpret_cast<const std::byte*>(block.frame(frame)), stop - frame);
    frame = stop;
    if (found) {
        event_.trigger();
        triggerFrame_ = consumeFrom_ + frame;
    }
    return found;
}

void ConditionAnalyzer::addEvent() {
    ++eventCount_;
    recordInBlock_ = true;
    SynchroEvent event;
    event.point = eventCount_ * prehistory_;
    event.prehistory = prehistory_;
    event.history = history_;
    event.streamFrame = triggerFrame_;
    if (settings_.synchroOnAnalog) {
        event.mode = 0;
        event.condition = settings_.SynchroAnalogMode;
        event.channel = settings_.SynchroAnalogChannelNumber;
        event.value = settings_.SynchroAnalogValue;
    } else {
        event.mode = 1;
        event.condition = settings_.SynchroPortMode;
        event.channel = settings_.SynchroPortBit;
    }
    events_.push_back(event);
}

template <typename Width>
int32_t ConditionAnalyzer::call(const typename Width::Word* samples, size_t sampleCount,
                                const typename Width::Word** samplesToWrite, size_t* countToWrite, size_t channels,
                                size_t* channelsOut, bool packed) {
    const auto give = [&](Output<Width> output, size_t channelsWritten) {
        if (samplesToWrite != nullptr) {
            *samplesToWrite = output.empty() ? nullptr : output.data();
        }
        if (countToWrite != nullptr) {
            *countToWrite = output.size();
        }
        if (channelsOut != nullptr) {
            *channelsOut = channelsWritten;
        }
    };
    events_.clear();
    give({}, 0);
    if (samplesToWrite == nullptr || countToWrite == nullptr || channelsOut == nullptr) {
        return -1;
    }
    if (samples == nullptr || sampleCount == 0 || channels == 0) {
        return -2;
    }
    samplesTaken_ = sampleCount;
    const Block<Width> block{samples, channels, sampleCount / channels};
    Output<Width> output;
    int32_t result = 0;
    try {
        if (settings_.SynchroAnalyzeMode == kModeAnalysis) {
            result = analyse<Width>(block, packed, output);
        } else if (settings_.SynchroAnalyzeMode != kModeSynchronisation) {
            output = {samples, sampleCount};
        } else if (block.frames > 0) {
            result = synchronise<Width>(block, packed, output);
            blockStart_ += samplesTaken_ / channels;
        }
    } catch (const std::bad_alloc&) {
        events_.clear();
        return -3;
    }
    give(output, channels);
    return result;
}

int32_t Analyze16(ConditionAnalyzer& analyzer, const int16_t* samples, size_t sampleCount,
                  const int16_t** samplesToWrite, size_t* countToWrite, size_t channels, size_t* channelsOut,
                  bool packed) {
    return analyzer.call<Samples16>(samples, sampleCount, samplesToWrite, countToWrite, channels, channelsOut, packed);
}

int32_t Analyze32(ConditionAnalyzer& analyzer, const int32_t* samples, size_t sampleCount,
                  const int32_t** samplesToWrite, size_t* countToWrite, size_t channels, size_t* channelsOut,
                  bool packed) {
    return analyzer.call<Samples32>(samples, sampleCount, samplesToWrite, countToWrite, channels, channelsOut, packed);
}

}  // namespace tarno2
