#include "drivers/sigrok/frame_assembler.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace tarno2::drivers {

namespace {

constexpr size_t kMuch = 65536;

}  // namespace

WordShape WordShape::with(bool analog, uint32_t lines) {
    if (!analog) {
        return {.bytes = lines <= 16 ? 2U : 4U, .codeBits = 0, .lines = std::min(lines, 31U)};
    }
    return {.bytes = 4, .codeBits = lines == 0 ? 32U : lines <= 8 ? 24U : 16U, .lines = std::min(lines, 16U)};
}

FrameAssembler::FrameAssembler(const WordShape& shape, std::vector<double> ranges, size_t capacity)
    : shape_(shape), ranges_(std::move(ranges)), capacity_(capacity), analog_(ranges_.size()) {
    for (Column& column : analog_) {
        column.words.reserve(capacity);
    }
    if (shape.lines > 0) {
        logic_.words.reserve(capacity);
    }
}

/// What was taken goes only when it is much, or room is wanted, so that little is moved for a packet.
bool FrameAssembler::makeRoom(Column& column, size_t count) const {
    const bool much = column.taken >= kMuch && column.taken >= column.size();
    if (much || column.words.size() + count > capacity_) {
        column.words.erase(column.words.begin(), column.words.begin() + static_cast<ptrdiff_t>(column.taken));
        column.taken = 0;
    }
    return column.words.size() + count <= capacity_;
}

uint32_t FrameAssembler::codeOf(float value, double range) const {
    const double end = std::ldexp(1.0, static_cast<int>(shape_.codeBits) - 1);
    const double code = std::isnan(value) ? 0.0 : std::clamp(std::round(value / range * end), -end, end - 1.0);
    return static_cast<uint32_t>(static_cast<int64_t>(code)) << shape_.codeShift();
}

bool FrameAssembler::addAnalog(size_t place, const float* values, size_t count, size_t step) {
    Column& column = analog_[place];
    if (!makeRoom(column, count)) {
        return false;
    }
    for (size_t i = 0; i < count; ++i) {
        column.words.push_back(codeOf(values[i * step], ranges_[place]));
    }
    return true;
}

bool FrameAssembler::addLogic(const uint8_t* states, size_t count, size_t unit) {
    if (shape_.lines == 0) {
        return true;
    }
    if (!makeRoom(logic_, count)) {
        return false;
    }
    const size_t bytes = std::min(unit, sizeof(uint32_t));
    for (size_t i = 0; i < count; ++i, states += unit) {
        uint32_t state = 0;
        for (size_t byte = 0; byte < bytes; ++byte) {
            state |= static_cast<uint32_t>(states[byte]) << 8 * byte;
        }
        logic_.words.push_back(state & shape_.linesMask());
    }
    return true;
}

size_t FrameAssembler::complete() const {
    size_t frames = shape_.lines > 0 ? logic_.size() : capacity_;
    for (const Column& column : analog_) {
        frames = std::min(frames, column.size());
    }
    return frames;
}

size_t FrameAssembler::take(std::byte* destination, size_t frames) {
    const size_t count = std::min(frames, complete());
    for (size_t i = 0; i < count; ++i) {
        const uint32_t lines = shape_.lines > 0 ? logic_.words[logic_.taken + i] : 0;
        if (shape_.codeBits == 0) {
            std::memcpy(destination, &lines, shape_.bytes);
            destination += shape_.bytes;
        }
        for (const Column& column : analog_) {
            const uint32_t word = column.words[column.taken + i] | lines;
            std::memcpy(destination, &word, sizeof word);
            destination += sizeof word;
        }
    }
    for (Column& column : analog_) {
        column.taken += count;
    }
    logic_.taken += shape_.lines > 0 ? count : 0;
    return count;
}

}  // namespace tarno2::drivers
