#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <string>

#include "language/text_ids.h"

namespace tarno2 {

/// Told of a fault of the program itself: the window shows it in a box without title, console mode logs it.
using FaultReporter = std::function<void(const std::string&)>;

/// Counts who still uses an object, and reports when the count doesn't add up; processing goes on then.
/// Counting is safe from any thread.
class HolderCount {
public:
    /// What is told of an object whose count doesn't add up.
    struct Texts {
        TextId underZero;      ///< released more often than held
        TextId heldAtFree;     ///< freed with holders left
        TextId heldAtDestroy;  ///< destroyed with holders left
    };

    HolderCount(const Texts& texts, FaultReporter report);
    /// Reports holders that are left.
    ~HolderCount();
    HolderCount(const HolderCount&) = delete;
    HolderCount& operator=(const HolderCount&) = delete;

    void AddBlock() { ++count_; }
    /// `detail` is added to the report of a count below 0.
    void RelBlock(const std::string& detail = {});
    /// To be called before the object is freed: reports holders that are left.
    void checkFree() const;

    [[nodiscard]] int32_t count() const { return count_.load(); }

private:
    Texts texts_;
    FaultReporter report_;
    std::atomic<int32_t> count_{0};
};

}  // namespace tarno2
