#pragma once

#include <cstdint>
#include <optional>

namespace tarno2 {

/// Edges of one signal that follow each other, in turns.
struct EdgeRun {
    uint64_t count = 0;
    bool rising = false;   ///< the last one
    double last = 0.0;     ///< its time
    double earlier = 0.0;  ///< of the one before, if there are two
    double balance = 0.0;  ///< times of the falling ones less those of the rising ones
};

/// Rising and falling edges of one signal, summed up as they come, in turns. Times are frames, broken ones too.
class EdgeTimes {
public:
    void rise(double time) {
        if (rises_ == 0) {
            firstRise_ = time;
        } else if (lastFall_) {
            high_ += *lastFall_ - lastRise_;
        }
        lastRise_ = time;
        lastFall_.reset();
        ++rises_;
    }
    void fall(double time) {
        (rises_ > 0 ? lastFall_ : firstFall_) = time;
        ++falls_;
    }
    /// Takes over edges that followed a rising one, which is known, and perhaps others.
    void add(const EdgeRun& run);
    /// Takes over the edges that followed, of a stretch that begins where this one ends.
    void join(const EdgeTimes& next);

    [[nodiscard]] uint64_t rises() const { return rises_; }
    [[nodiscard]] uint64_t count() const { return rises_ + falls_; }
    /// Of the whole periods from the first rising edge to the last, frames. Nothing with fewer than two.
    [[nodiscard]] std::optional<double> period() const;
    /// Part of those periods in which the signal was high, 0 to 1.
    [[nodiscard]] std::optional<double> duty() const;

private:
    uint64_t rises_ = 0;
    uint64_t falls_ = 0;
    double firstRise_ = 0.0;
    double lastRise_ = 0.0;
    double high_ = 0.0;                ///< from the first rising edge to the last
    std::optional<double> lastFall_;   ///< after the last rising edge
    std::optional<double> firstFall_;  ///< before the first rising edge
};

}  // namespace tarno2
