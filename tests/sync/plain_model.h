#pragma once

#include <cstdint>
#include <deque>
#include <optional>
#include <vector>

#include "sync/condition_analyzer.h"

namespace tarno2::test {

/// What a call of the evaluator gives.
struct Evaluated {
    int32_t result = 0;
    std::vector<int32_t> samples;
    std::vector<SynchroEvent> events;
};

/// The rules of the evaluator once more, frame by frame and without any haste. Samples are numbers of either width.
class PlainModel {
public:
    PlainModel(const SynchroSettings& settings, const SynchroSizes& sizes, const SampleFacts& facts, int width)
        : settings_(settings), sizes_(sizes), facts_(facts), width_(width) {}

    Evaluated evaluate(const std::vector<int32_t>& block, int64_t channels, bool packed);

private:
    struct Record {
        std::deque<std::vector<int32_t>> prehistory;  ///< oldest first
        std::vector<int32_t> history;
        int64_t historyFrames = 0;
        bool ringFull = false;
        bool triggered = false;
    };
    using Frame = std::vector<int32_t>;

    void analyse(Evaluated& out);
    void synchronise(Evaluated& out);
    bool takeFrame(int64_t frame, Evaluated& out);
    bool search(int64_t frame, Evaluated& out);
    void completeIfFull(Evaluated& out);

    [[nodiscard]] bool meets(int stage, int64_t frame) const;
    [[nodiscard]] bool enabled(int stage) const;
    [[nodiscard]] int64_t testedIndex(int stage, int64_t frame) const;
    [[nodiscard]] int64_t find(int stage, int64_t frame) const;
    [[nodiscard]] int32_t analysisValue(int32_t sample) const;
    [[nodiscard]] int32_t synchroValue(int32_t sample) const;
    [[nodiscard]] bool bit(int32_t sample, int32_t number) const;
    [[nodiscard]] int64_t triggerIndex(int64_t frame) const;
    [[nodiscard]] bool triggers(int32_t before, int32_t now) const;
    [[nodiscard]] Frame frameAt(int64_t frame) const;
    [[nodiscard]] int64_t size() const { return frames_ * channels_; }

    SynchroSettings settings_;
    SynchroSizes sizes_;
    SampleFacts facts_;
    int width_;
    const std::vector<int32_t>* block_ = nullptr;
    int64_t channels_ = 1;
    int64_t frames_ = 0;
    bool packed_ = false;
    std::optional<int32_t> previous_;  ///< the sample to compare with; none at first and behind copied frames
    std::vector<int32_t> waiting_;     ///< of the stream, not taken yet
    uint64_t counter_ = 0;
    Record record_;
    bool recordBegun_ = false;
};

}  // namespace tarno2::test
