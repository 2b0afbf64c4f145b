#include "measure/line_edges.h"

#include <bit>
#include <cstring>
#include <utility>

#include "display/sample_code.h"

namespace tarno2 {

namespace {

uint32_t maskOf(uint32_t lines) {
    return lines >= 32 ? ~uint32_t{0} : (uint32_t{1} << lines) - 1;
}

template <typename Word>
uint32_t linesOfWord(const SampleWordFormat& word, Word first) {
    return static_cast<uint32_t>(SampleCode<Word>(word).lines(first)) & maskOf(word.digitalLines());
}

}  // namespace

uint32_t linesOf(const SampleWordFormat& word, const std::byte* frame) {
    if (word.sampleWidth == 4) {
        int32_t first = 0;
        std::memcpy(&first, frame, sizeof first);
        return linesOfWord(word, first);
    }
    int16_t first = 0;
    std::memcpy(&first, frame, sizeof first);
    return linesOfWord(word, first);
}

LineWatch::LineWatch(const SignalFormat& format, uint64_t origin, Found found)
    : word_(format.word),
      channels_(format.channelCount()),
      origin_(origin),
      found_(std::move(found)),
      edges_(format.word.digitalLines()) {}

void LineWatch::add(uint64_t firstFrame, const std::byte* frames, uint64_t count) {
    if (count == 0 || edges_.empty()) {
        return;
    }
    const auto firstTime = static_cast<double>(firstFrame - origin_);
    if (!begun_) {
        begun_ = true;
        first_ = last_ = linesOf(word_, frames);
        start_ = firstTime;
    }
    if (word_.sampleWidth == 4) {
        lookAt(reinterpret_cast<const int32_t*>(frames), firstTime, count);
    } else {
        lookAt(reinterpret_cast<const int16_t*>(frames), firstTime, count);
    }
}

template <typename Word>
void LineWatch::lookAt(const Word* words, double firstTime, uint64_t count) {
    const SampleCode<Word> code(word_);
    const uint32_t mask = maskOf(static_cast<uint32_t>(edges_.size()));
    for (uint64_t i = 0; i < count; ++i, words += channels_) {
        const uint32_t lines = static_cast<uint32_t>(code.lines(*words)) & mask;
        if (lines != last_) {
            change(lines, firstTime + static_cast<double>(i));
        }
    }
}

void LineWatch::change(uint32_t lines, double time) {
    for (uint32_t changed = lines ^ last_; changed != 0; changed &= changed - 1) {
        const auto line = static_cast<size_t>(std::countr_zero(changed));
        const bool rising = ((lines >> line) & 1U) != 0;
        if (rising) {
            edges_[line].rise(time);
        } else {
            edges_[line].fall(time);
        }
        if (found_) {
            found_(line, rising, time);
        }
    }
    last_ = lines;
}

void LineWatch::join(const LineWatch& next) {
    if (!next.begun_) {
        return;
    }
    if (begun_ && next.first_ != last_) {
        change(next.first_, next.start_);
    }
    for (size_t i = 0; i < edges_.size(); ++i) {
        edges_[i].join(next.edges_[i]);
    }
}

}  // namespace tarno2
