#include "measure/statistics.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <memory>
#include <tuple>
#include <utility>

#include "measure/channel_sums.h"
#include "measure/codes.h"
#include "measure/crossings.h"
#include "measure/line_edges.h"

namespace tarno2 {

namespace {

void takeEdges(const EdgeTimes& edges, double framesPerSecond, SignalStatistics& out) {
    out.edges = edges.count();
    out.duty = edges.duty();
    const std::optional<double> period = edges.period();
    if (period && *period > 0.0 && framesPerSecond > 0.0) {
        out.frequency = framesPerSecond / *period;
    }
}

SignalStatistics ofMoments(const CodeMoments& moments) {
    SignalStatistics out;
    out.minimum = moments.minimum;
    out.maximum = moments.maximum;
    out.mean = moments.mean;
    out.deviation = std::sqrt(moments.variance);
    out.rms = std::hypot(*out.mean, *out.deviation);
    return out;
}

/// What the threads gather, a part each.
struct Gathered {
    Gathered(const SignalFormat& format, const std::vector<FrameSpan>& parts, uint64_t origin) {
        for (size_t i = 0; i < parts.size(); ++i) {
            sums.push_back(ChannelSums::create(format));
            lines.emplace_back(format, origin);
        }
    }
    void join() {
        for (size_t i = 1; i < sums.size(); ++i) {
            sums[0]->join(*sums[i]);
            lines[0].join(lines[i]);
        }
    }
    std::vector<std::unique_ptr<ChannelSums>> sums;
    std::vector<LineWatch> lines;
};

ReadEnd findEdges(FrameSource& source, const SignalFormat& format, const std::vector<FrameSpan>& parts,
                  WorkProgress& progress, SpanStatistics& out) {
    std::vector<CrossingLevels> levels;
    for (const SignalStatistics& channel : out.channels) {
        levels.push_back(CrossingLevels::between(channel.minimum, channel.maximum));
    }
    std::vector<std::unique_ptr<Crossings>> crossings;
    for (size_t i = 0; i < parts.size(); ++i) {
        crossings.push_back(Crossings::create(format, levels, out.span.first));
    }
    const ReadEnd end =
        readParts(source, parts, progress, [&](size_t part, uint64_t first, const std::byte* frames, uint64_t count) {
            crossings[part]->add(first, frames, count);
        });
    if (end == ReadEnd::Whole) {
        for (size_t i = 1; i < crossings.size(); ++i) {
            crossings[0]->join(*crossings[i]);
        }
        for (size_t i = 0; i < out.channels.size(); ++i) {
            takeEdges(crossings[0]->edges(i), format.framesPerSecond, out.channels[i]);
        }
    }
    return end;
}

template <typename Word>
void takeCodes(const SignalFormat& format, const std::byte* frame, std::vector<double>& codes) {
    const MeasuredCodes<Word> code(format.word);
    for (size_t i = 0; i < codes.size(); ++i) {
        Word word{};
        std::memcpy(&word, frame + i * sizeof(Word), sizeof(Word));
        codes[i] = static_cast<double>(code.of(word) + code.bias());
    }
}

}  // namespace

SignalStatistics SignalStatistics::inUnit(const LinearScale& scale) const {
    SignalStatistics out = *this;
    std::tie(out.minimum, out.maximum) = std::minmax({scale.of(minimum), scale.of(maximum)});
    if (mean && deviation) {
        out.mean = scale.of(*mean);
        out.deviation = *deviation * std::abs(scale.factor);
        out.rms = std::hypot(*out.mean, *out.deviation);
    }
    if (duty && scale.factor < 0.0) {
        out.duty = 1.0 - *duty;
    }
    return out;
}

ReadEnd measure(FrameSource& source, const SignalFormat& format, FrameSpan span, WorkProgress& progress,
                SpanStatistics& out) {
    const std::vector<FrameSpan> parts = partsOf(span, format.frameBytes());
    Gathered gathered(format, parts, span.first);
    out = {};
    out.span = span;
    progress.begin(span.count() * 2);
    const ReadEnd end =
        readParts(source, parts, progress, [&](size_t part, uint64_t first, const std::byte* frames, uint64_t count) {
            gathered.sums[part]->add(frames, count);
            gathered.lines[part].add(first, frames, count);
        });
    if (end != ReadEnd::Whole) {
        return end;
    }
    gathered.join();
    for (size_t i = 0; i < format.channelCount(); ++i) {
        out.channels.push_back(ofMoments(gathered.sums[0]->moments(i)));
    }
    for (size_t i = 0; i < gathered.lines[0].count(); ++i) {
        SignalStatistics line;
        takeEdges(gathered.lines[0].edges(i), format.framesPerSecond, line);
        out.lines.push_back(line);
    }
    return findEdges(source, format, parts, progress, out);
}

std::optional<SpanStatistics> measureExtremes(const Screen& screen, const SignalFormat& format, FrameSpan span) {
    if (screen.rows == 0) {
        return std::nullopt;
    }
    SpanStatistics out;
    out.span = span;
    out.fromExtremes = true;
    out.channels.resize(format.channelCount());
    out.lines.resize(format.word.digitalLines());
    for (size_t row = 0; row < screen.rows; ++row) {
        const FrameValues values = valuesOf(format, screen.words.data() + row * format.frameBytes());
        for (size_t i = 0; i < out.channels.size(); ++i) {
            SignalStatistics& channel = out.channels[i];
            channel.minimum = row == 0 ? values.codes[i] : std::min(channel.minimum, values.codes[i]);
            channel.maximum = row == 0 ? values.codes[i] : std::max(channel.maximum, values.codes[i]);
        }
    }
    return out;
}

FrameValues valuesOf(const SignalFormat& format, const std::byte* frame) {
    FrameValues values;
    values.codes.resize(format.channelCount());
    if (format.word.sampleWidth == 4) {
        takeCodes<int32_t>(format, frame, values.codes);
    } else {
        takeCodes<int16_t>(format, frame, values.codes);
    }
    values.lines = linesOf(format.word, frame);
    return values;
}

}  // namespace tarno2
