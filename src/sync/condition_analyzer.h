#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "records/record_description.h"
#include "sync/condition.h"
#include "sync/event_buffer.h"
#include "sync/frame_scan.h"
#include "sync/synchro_settings.h"

namespace tarno2 {

/// How the board lays code and port out in a sample word, and the words in a frame.
struct SampleFacts {
    uint32_t formatFlags = 0;    ///< bit 0 chooses how the code of a packed word is read
    uint32_t codeShift = 0;      ///< low bits of a packed word that are not the code's
    uint32_t portShift = 0;      ///< where bit 0 of the port lies in the word
    bool backwardOrder = false;  ///< frames hold the channels in reverse order
};

/// The evaluator's memory of one recording: decides block after block which frames reach the file. docs/
/// synchronisation.md tells what each mode keeps. One thread; no files, no waiting.
class ConditionAnalyzer {
public:
    /// `settings` with channels as positions in the frame and thresholds as codes.
    ConditionAnalyzer(const SynchroSettings& settings, const SynchroSizes& sizes, const SampleFacts& facts);

    /// The settings, with the state of the start and stop conditions.
    [[nodiscard]] const SynchroSettings& settings() const { return settings_; }
    /// The events of the last call, one a record that it handed out. Valid until the next call.
    [[nodiscard]] std::span<const SynchroEvent> events() const { return events_; }
    /// Frames of a record; 0 unless the mode writes records.
    [[nodiscard]] uint32_t recordFrames() const;
    /// Makes room for frames of so many channels and blocks of at most so many bytes, so that calls need no more
    /// memory. Without it they take what they need. Throws std::bad_alloc.
    void reserve(size_t channels, size_t sampleBytes, size_t largestBlock);
    /// Of the samples of the last call those that were looked at. It ends early with each complete record: that has to
    /// be written before the rest is handed over.
    [[nodiscard]] size_t samplesTaken() const { return samplesTaken_; }

private:
    friend int32_t Analyze16(ConditionAnalyzer& analyzer, const int16_t* samples, size_t sampleCount,
                             const int16_t** samplesToWrite, size_t* countToWrite, size_t channels, size_t* channelsOut,
                             bool packed);
    friend int32_t Analyze32(ConditionAnalyzer& analyzer, const int32_t* samples, size_t sampleCount,
                             const int32_t** samplesToWrite, size_t* countToWrite, size_t channels, size_t* channelsOut,
                             bool packed);

    enum class Stage { Start, Write, Stop };
    template <typename Width>
    using Block = FrameBlock<typename Width::Word>;
    template <typename Width>
    using Output = std::span<const typename Width::Word>;

    template <typename Width>
    int32_t call(const typename Width::Word* samples, size_t sampleCount, const typename Width::Word** samplesToWrite,
                 size_t* countToWrite, size_t channels, size_t* channelsOut, bool packed);
    template <typename Width>
    int32_t analyse(const Block<Width>& block, bool packed, Output<Width>& output);
    template <typename Width>
    int32_t synchronise(const Block<Width>& block, bool packed, Output<Width>& output);

    template <typename Width>
    size_t consume(const Block<Width>& block, const Condition<Width>& trigger, size_t words);
    template <typename Width>
    bool search(const Block<Width>& block, const Condition<Width>& trigger, size_t words, size_t& frame);
    void addEvent();
    void makeEventRoom(size_t channels, size_t sampleBytes);

    template <typename Width>
    [[nodiscard]] std::optional<Condition<Width>> stageCondition(Stage stage, size_t channels, bool packed) const;
    template <typename Width>
    [[nodiscard]] Condition<Width> triggerCondition(size_t channels, bool packed) const;
    template <typename Width>
    [[nodiscard]] WordShift wordShift(Comparison comparison, bool packed) const;
    [[nodiscard]] int64_t place(int32_t position, size_t channels) const;

    SynchroSettings settings_;
    uint32_t prehistory_;
    uint32_t history_;
    SampleFacts facts_;

    int32_t previous_ = 0;         ///< the sample before the next one that is tested
    bool previousKnown_ = false;   ///< not at the beginning, and not behind frames that were copied
    std::vector<std::byte> held_;  ///< two frames: one whose sample is the next block's, and that block's first
    bool holding_ = false;
    uint64_t blockStart_ = 0;    ///< frame of the stream that the block begins with
    uint64_t consumeFrom_ = 0;   ///< the one that `consume` begins with
    uint64_t triggerFrame_ = 0;  ///< that triggered the record being gathered
    uint64_t eventCount_ = 0;
    bool recordInBlock_ = false;  ///< one became complete in the block of which a rest is awaited
    EventBuffer event_;
    size_t samplesTaken_ = 0;
    std::vector<std::byte> output_;  ///< frames that were chosen one by one
    std::vector<SynchroEvent> events_;
};

/// Evaluates the next block of a recording with 16-bit samples, or what `samplesTaken` left of the last one.
/// `samplesToWrite` and `countToWrite` get what is to be written, valid until the next call and as long as the block;
/// `channelsOut` its channels. `packed`: the port's bits share the word with the code. A last part of a frame is left
/// out. 0: go on; 1: stop the recording once this is written; -1: an output argument is missing; -2: no samples or no
/// channels; -3: out of memory. With a negative result the outputs are empty.
int32_t Analyze16(ConditionAnalyzer& analyzer, const int16_t* samples, size_t sampleCount,
                  const int16_t** samplesToWrite, size_t* countToWrite, size_t channels, size_t* channelsOut,
                  bool packed);
/// The same with 32-bit samples.
int32_t Analyze32(ConditionAnalyzer& analyzer, const int32_t* samples, size_t sampleCount,
                  const int32_t** samplesToWrite, size_t* countToWrite, size_t channels, size_t* channelsOut,
                  bool packed);

}  // namespace tarno2
