#pragma once

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <thread>

namespace tarno2::test {

/// Sends frames at the pace of a device: `write(first, count)` for those that are due, every few milliseconds. Ends
/// after so many frames, or when `write` returns false; returns how many there were.
template <typename Write>
uint64_t sendPaced(uint64_t frames, double framesPerSecond, Write write) {
    const auto begin = std::chrono::steady_clock::now();
    for (uint64_t sent = 0;;) {
        const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - begin;
        const auto due = std::min(frames, static_cast<uint64_t>(elapsed.count() * framesPerSecond));
        if (due > sent) {
            if (!write(sent, due - sent)) {
                return sent;
            }
            sent = due;
        }
        if (sent == frames) {
            return sent;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
}

}  // namespace tarno2::test
