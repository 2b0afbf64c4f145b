#include "records/frame_formatter.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "records/column_text.h"
#include "records/heading_line.h"
#include "records/line_formatter.h"

namespace tarno2 {

namespace {

constexpr unsigned kByte = 8;

uint32_t word16(const uint8_t* sample) {
    return sample[0] | static_cast<uint32_t>(sample[1]) << kByte;
}

uint32_t word32(const uint8_t* sample) {
    return word16(sample) | word16(sample + 2) << (2 * kByte);
}

ExportFormat withinLimits(ExportFormat format) {
    format.timePrecision = std::clamp(format.timePrecision, 0, ExportFormat::kMaximumPrecision);
    format.voltagePrecision = std::clamp(format.voltagePrecision, 0, ExportFormat::kMaximumPrecision);
    return format;
}

}  // namespace

FrameFormatter::FrameFormatter(const ExportFormat& format, const ConversionInputs& inputs, uint64_t frames,
                               const FrameChoice& choice)
    : inputs_(inputs),
      from_(choice.from),
      every_(choice.every),
      format_(withinLimits(format)),
      tables_(format_, inputs),
      marks_(markColumn(format_, inputs.marks)),
      longestLine_(calculateLongestLine(frames)) {
    if (tables_.stride() != 0) {
        for (size_t bit = 0; bit < digitalTexts_.size(); ++bit) {
            *std::copy(format_.divider.begin(), format_.divider.end(), digitalTexts_[bit].begin()) =
                static_cast<char>('0' + bit);
        }
    }
}

FrameFormatter::Marks FrameFormatter::markColumn(const ExportFormat& format, const Marks& marks) {
    Marks column;
    for (const auto& [frame, text] : format.marks ? marks : Marks()) {
        column.emplace(frame, quotedColumn(text, format));
    }
    return column;
}

// The column of the marks, when there is one, and the line end.
char* FrameFormatter::endLine(char* to, uint64_t frame, Marks::const_iterator& nextMark) const {
    if (format_.marks) {
        to = std::copy(format_.divider.begin(), format_.divider.end(), to);
        if (nextMark != marks_.end() && nextMark->first == frame) {
            to = std::copy(nextMark->second.begin(), nextMark->second.end(), to);
            ++nextMark;
        }
    }
    *to++ = '\r';
    *to++ = '\n';
    return to;
}

size_t FrameFormatter::calculateLongestLine(uint64_t frames) const {
    constexpr size_t kLineEndLength = 2;
    constexpr size_t kLongestClock = 48;
    std::array<char, kLongestFirstColumn> text{};
    const char* const end = writeFirst(text.data(), frames);
    const auto lastFirstColumn = static_cast<size_t>(end - text.data());
    size_t longest = format_.firstColumn == FirstColumn::Clock ? kLongestClock : lastFirstColumn;
    for (size_t channel = 0; channel < inputs_.channelCount; ++channel) {
        longest += tables_.longestColumn(channel);
    }
    size_t longestMark = format_.marks ? format_.divider.size() : 0;
    for (const auto& [frame, mark] : marks_) {
        longestMark = std::max(longestMark, format_.divider.size() + mark.size());
    }
    return longest + inputs_.digitalLines * (format_.divider.size() + 1) + longestMark + kLineEndLength;
}

double FrameFormatter::seconds(uint64_t frameOfFile) const {
    return format_.hasTime() ? static_cast<double>(frameOfFile) / inputs_.frequency : 0.0;
}

char* FrameFormatter::writeFirst(char* to, uint64_t frame) const {
    const uint64_t ofFile = from_ + frame * every_;
    return writeFirstColumn(to, format_, ofFile, seconds(ofFile));
}

uint32_t FrameFormatter::word(const uint8_t* sample) const {
    return inputs_.bytesPerSample == 2 ? word16(sample) : word32(sample);
}

uint32_t FrameFormatter::port(uint32_t firstWord) const {
    return (firstWord & inputs_.digitalMask) >> inputs_.digitalShift;
}

FrameFormatter::Text FrameFormatter::format(const uint8_t* frames, size_t count, uint64_t firstFrame, char* out,
                                            const std::atomic<bool>& stop) const {
    switch (tables_.stride()) {
        case ColumnTables::kShortStride:
            return formatFromTables<ColumnTables::kShortStride>(frames, count, firstFrame, out, stop);
        case ColumnTables::kLongStride:
            return formatFromTables<ColumnTables::kLongStride>(frames, count, firstFrame, out, stop);
        default:
            return formatFromValues(frames, count, firstFrame, out, stop);
    }
}

template <size_t Stride>
FrameFormatter::Text FrameFormatter::formatFromTables(const uint8_t* frames, size_t count, uint64_t firstFrame,
                                                      char* out, const std::atomic<bool>& stop) const {
    const uint32_t shift = inputs_.codeShift;
    const uint32_t codeMask = (uint32_t{1} << inputs_.codeBits) - 1;
    const size_t digitalLength = format_.divider.size() + 1;
    auto nextMark = marks_.lower_bound(firstFrame);
    char* to = out;
    size_t line = 0;
    while (line < count) {
        to = writeFirst(to, firstFrame + line);
        uint32_t digital = port(word16(frames));
        for (const char* const table : tables_.channels()) {
            const char* const entry = table + ((word16(frames) >> shift) & codeMask) * Stride;
            // Always the whole entry: what is too much gets overwritten, and a copy of fixed size is one instruction.
            std::memcpy(to, entry, Stride);
            to += static_cast<uint8_t>(entry[Stride - 1]);
            frames += 2;
        }
        for (uint32_t i = 0; i < inputs_.digitalLines; ++i) {
            std::memcpy(to, digitalTexts_[digital & 1U].data(), ColumnTables::kLongStride);
            to += digitalLength;
            digital >>= 1U;
        }
        to = endLine(to, firstFrame + line, nextMark);
        ++line;
        if (stop.load(std::memory_order_relaxed)) {
            break;
        }
    }
    return {line, static_cast<size_t>(to - out)};
}

FrameFormatter::Text FrameFormatter::formatFromValues(const uint8_t* frames, size_t count, uint64_t firstFrame,
                                                      char* out, const std::atomic<bool>& stop) const {
    LineFormatter formatter(format_, from_ + firstFrame * every_, every_);
    std::vector<double> row(inputs_.channelCount);
    std::vector<int8_t> digital(inputs_.digitalLines);
    const size_t space = count * longestLine_ + kSlack;
    auto nextMark = marks_.lower_bound(firstFrame);
    Text text;
    while (text.lines < count) {
        const uint32_t bits = port(word(frames));
        for (size_t i = 0; i < digital.size(); ++i) {
            digital[i] = static_cast<int8_t>((bits >> i) & 1U);
        }
        for (size_t channel = 0; channel < row.size(); ++channel) {
            row[channel] = columnValue(format_, inputs_, channel, word(frames));
            frames += inputs_.bytesPerSample;
        }
        size_t length = 0;
        if (formatter.format(out + text.bytes, space - text.bytes, length,
                             seconds(from_ + (firstFrame + text.lines) * every_), row, digital) != 0) {
            break;
        }
        text.bytes += length;
        if (format_.marks) {
            constexpr size_t kLineEndLength = 2;
            char* const end = out + text.bytes - kLineEndLength;
            text.bytes = static_cast<size_t>(endLine(end, firstFrame + text.lines, nextMark) - out);
        }
        ++text.lines;
        if (stop.load(std::memory_order_relaxed)) {
            break;
        }
    }
    return text;
}

}  // namespace tarno2
