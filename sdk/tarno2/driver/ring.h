// SPDX-License-Identifier: MIT

#ifndef TARNO2_DRIVER_RING_H
#define TARNO2_DRIVER_RING_H

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <cstring>
#include <mutex>
#include <stdint.h>
#include <vector>

#include <tarno2/IADCDevice.h>
#include <tarno2/driver/data_event.h>

namespace tarno2 {
namespace sdk {

/// The ring of a board: two halves of whole frames, the count of samples put into it since the start, the event of full
/// halves, and the end of the stream.
///
/// One thread writes and one reads at a time; a late reader and the writer never touch one half at once. `configure`
/// and `begin` belong to the calls of the host, when nothing is written. The counts may be asked by anybody.
class Ring {
public:
    Ring()
        : samples_(0),
          half_(0),
          bytes_(2),
          written_(0),
          fetched_(0),
          released_(0),
          cause_(kADCEndNone),
          endPosition_(0),
          lost_(0),
          ending_(false) {}

    /// Makes it anew, `samples` long (a multiple of 2 x channels), all zero. Throws std::bad_alloc.
    void configure(uint32_t samples, uint32_t bytesPerSample) {
        memory_.assign(static_cast<size_t>(samples) * bytesPerSample, 0);
        samples_ = samples;
        half_ = samples / 2;
        bytes_ = bytesPerSample;
        begin();
    }
    /// Empty, for a measurement that begins.
    void begin() {
        written_ = 0;
        fetched_ = 0;
        released_ = 0;
        ending_ = false;
        cause_ = kADCEndNone;
        event_.reset();
    }

    uint32_t samples() const { return samples_; }
    uint32_t half() const { return half_; }
    uint32_t bytesPerSample() const { return bytes_; }
    /// Set once a half, and with the end of the stream; invalid when the system had none left.
    DataEvent& event() { return event_; }
    const DataEvent& event() const { return event_; }

    /// Samples put into the ring since the start.
    uint64_t written() const { return written_.load(std::memory_order_acquire); }
    /// How far a reader that reads in sequence has come, samples.
    uint64_t fetched() const { return fetched_.load(std::memory_order_acquire); }
    /// Samples that can be written before such a reader takes the ring for one that has run over. It does so when ten
    /// elevenths of it are unread, and what it has fetched counts as unread until it has asked for the count.
    size_t room() const {
        const uint64_t samples = samples_;
        const uint64_t fullest = std::max(samples * 10 / 11, static_cast<uint64_t>(half_) + 1) - 1;
        const uint64_t end = std::min(released_.load(std::memory_order_acquire) + samples, fetched() + fullest);
        return static_cast<size_t>(end - std::min(end, written()));
    }
    /// Writer: waits until there is room for a frame of so many samples, and returns the room in whole frames, as
    /// samples; 0 after `endWaiting`.
    size_t waitForRoom(size_t frame) {
        std::unique_lock<std::mutex> lock(roomMutex_);
        roomMade_.wait(lock, [this, frame] { return ending_ || room() >= frame; });
        return ending_ ? 0 : room() / frame * frame;
    }
    /// Any thread: the writer waits no more, until `begin`.
    void endWaiting() {
        ending_ = true;
        roomMade();
    }
    /// Reader: the count was asked for.
    void release() {
        const uint64_t position = fetched();
        if (released_.exchange(position, std::memory_order_acq_rel) != position) {
            roomMade();
        }
    }

    /// Writer: appends samples, whatever the reader has fetched. Nothing after the end of the stream.
    void write(const void* samples, size_t count) {
        const unsigned char* from = static_cast<const unsigned char*>(samples);
        while (count > 0 && !ended()) {
            const uint64_t position = written_.load(std::memory_order_relaxed);
            const size_t part = static_cast<size_t>(std::min<uint64_t>(count, half_ - position % half_));
            {
                const std::lock_guard<std::mutex> lock(lockOf(position));
                std::memcpy(at(position), from, part * bytes_);
                // Counted before the half is let go: a reader that met overwritten samples sees it in the count.
                written_.store(position + part, std::memory_order_release);
            }
            if ((position + part) % half_ == 0) {
                event_.set();
            }
            from += part * bytes_;
            count -= part;
        }
    }
    /// Writer, for samples that are made in their place: where a position lies, the lock of its half, and the new
    /// count.
    unsigned char* at(uint64_t position) { return memory_.data() + position % samples_ * bytes_; }
    std::mutex& lockOf(uint64_t position) { return halfLocks_[position % samples_ < half_ ? 0 : 1]; }
    void setWritten(uint64_t position) { written_.store(position, std::memory_order_release); }

    /// Writer: nothing follows what was written. The first end counts.
    void end(uint32_t cause, uint64_t lost) {
        if (ended()) {
            return;
        }
        endPosition_ = written();
        lost_ = lost;
        cause_.store(cause, std::memory_order_release);
        event_.set();
    }
    bool ended() const { return cause_.load(std::memory_order_acquire) != kADCEndNone; }
    ADCStreamEnd streamEnd() const {
        ADCStreamEnd end = ADCStreamEnd();
        end.m_nCause = cause_.load(std::memory_order_acquire);
        if (end.m_nCause != kADCEndNone) {
            end.m_nPosition = endPosition_;
            end.m_nLost = lost_;
        }
        return end;
    }

    /// Reader: copies samples; false when they don't lie in the ring. Reading on from where the reader stands moves it
    /// forward, and one that never asks for the count has done then with what it fetched before; looking anywhere else
    /// does neither.
    bool read(void* destination, uint32_t count, uint32_t offset) {
        if (offset > samples_ || count > samples_ - offset) {
            return false;
        }
        const uint64_t position = positionOf(offset);
        unsigned char* out = static_cast<unsigned char*>(destination);
        for (uint32_t done = 0; done < count;) {
            const uint32_t from = offset + done;
            const uint32_t part = std::min(count - done, from < half_ ? half_ - from : samples_ - from);
            const std::lock_guard<std::mutex> lock(halfLocks_[from < half_ ? 0 : 1]);
            std::memcpy(out + static_cast<size_t>(done) * bytes_, at(from), static_cast<size_t>(part) * bytes_);
            done += part;
        }
        if (position == fetched_.load(std::memory_order_relaxed)) {
            released_.store(position, std::memory_order_release);
            fetched_.store(position + count, std::memory_order_release);
            roomMade();
        }
        return true;
    }
    /// The absolute index of the sample that a reader in sequence means by this offset.
    uint64_t positionOf(uint32_t offset) const {
        const uint64_t fetched = fetched_.load(std::memory_order_relaxed);
        return samples_ == 0 ? 0 : fetched + (offset + samples_ - fetched % samples_) % samples_;
    }

private:
    Ring(const Ring&);
    Ring& operator=(const Ring&);

    // With the lock, so that a writer that has just looked misses nothing.
    void roomMade() {
        const std::lock_guard<std::mutex> lock(roomMutex_);
        roomMade_.notify_all();
    }

    std::vector<unsigned char> memory_;
    uint32_t samples_;
    uint32_t half_;
    uint32_t bytes_;
    std::mutex halfLocks_[2];
    DataEvent event_;
    std::atomic<uint64_t> written_;
    std::atomic<uint64_t> fetched_;
    std::atomic<uint64_t> released_;  // all before may be overwritten
    std::atomic<uint32_t> cause_;
    std::atomic<uint64_t> endPosition_;
    std::atomic<uint64_t> lost_;
    std::atomic<bool> ending_;
    std::mutex roomMutex_;
    std::condition_variable roomMade_;
};

}  // namespace sdk
}  // namespace tarno2

#endif  // TARNO2_DRIVER_RING_H
