// SPDX-License-Identifier: MIT

#ifndef TARNO2_DRIVER_MARKS_H
#define TARNO2_DRIVER_MARKS_H

#include <algorithm>
#include <atomic>
#include <cstring>
#include <deque>
#include <mutex>
#include <stdint.h>
#include <string>

#include <tarno2/IADCDevice.h>

namespace tarno2 {
namespace sdk {

/// What a board wants to be marked in its stream, until the host asks for it. Any thread.
class Marks {
public:
    /// The host asks several times a second; a driver that marks faster than this loses marks.
    static const size_t kMost = 1024;

    Marks() : waiting_(0) {}

    /// For a measurement that begins.
    void clear() {
        const std::lock_guard<std::mutex> lock(mutex_);
        marks_.clear();
        waiting_ = 0;
    }
    /// False when there is no room for it.
    bool put(uint64_t position, const std::string& text) {
        ADCMark mark = ADCMark();
        mark.m_nThere = 1;
        mark.m_nPosition = position;
        std::memcpy(mark.m_sText, text.data(), std::min(text.size(), sizeof mark.m_sText - 1));
        const std::lock_guard<std::mutex> lock(mutex_);
        if (marks_.size() >= kMost) {
            return false;
        }
        marks_.push_back(mark);
        waiting_ = marks_.size();
        return true;
    }
    /// The oldest one; one that is not there when there is none. Without a lock as long as nothing waits.
    ADCMark take() {
        ADCMark mark = ADCMark();
        if (waiting_ == 0) {
            return mark;
        }
        const std::lock_guard<std::mutex> lock(mutex_);
        if (!marks_.empty()) {
            mark = marks_.front();
            marks_.pop_front();
            waiting_ = marks_.size();
        }
        return mark;
    }

private:
    std::mutex mutex_;
    std::deque<ADCMark> marks_;
    std::atomic<size_t> waiting_;
};

}  // namespace sdk
}  // namespace tarno2

#endif  // TARNO2_DRIVER_MARKS_H
