#include "ui/frame_line.h"

namespace tarno2 {

namespace {

constexpr double kMicroseconds = 1e6;

}  // namespace

std::optional<FrameLine> frameLine(const RecordedFrames& first, const RecordedFrames& other, Alignment alignment) {
    const double firstRate = first.format().framesPerSecond;
    const double otherRate = other.format().framesPerSecond;
    if (!(firstRate > 0.0) || !(otherRate > 0.0)) {
        return std::nullopt;
    }
    if (alignment == Alignment::Start) {
        return FrameLine{0.0, otherRate / firstRate};
    }
    const auto& from = first.wallClock();
    const auto& to = other.wallClock();
    if (!from || !to) {
        return std::nullopt;
    }
    const double later = static_cast<double>(microsecondsBetween(*from, *to)) / kMicroseconds;
    return FrameLine{-later * to->framesPerSecond, to->framesPerSecond / from->framesPerSecond};
}

}  // namespace tarno2
