#include "display/course.h"

#include <algorithm>

#include "display/sample_code.h"

namespace tarno2 {

namespace {

template <typename Word>
void takeCourse(const Screen& screen, const SignalFormat& format, size_t channel, uint64_t frames,
                std::vector<CourseColumn>& course) {
    const size_t channels = format.channelCount();
    const auto* words = reinterpret_cast<const Word*>(screen.words.data());
    const double columnsAFrame = static_cast<double>(course.size()) / static_cast<double>(frames);
    SampleCode<Word>(format.word).with([&](auto codeOf) {
        for (const Screen::Run& run : screen.runs) {
            for (size_t row = 0; row < run.rows; ++row) {
                const uint64_t bucket = row / screen.rowsPerBucket();
                const auto first = static_cast<double>(run.firstFrame + bucket * screen.bucketFrames);
                const Word word = codeOf(words[(run.firstRow + row) * channels + channel]);
                const auto code = format.word.signedCodes
                                      ? static_cast<int32_t>(word)
                                      : static_cast<int32_t>(static_cast<std::make_unsigned_t<Word>>(word));
                const auto begin = static_cast<size_t>(first * columnsAFrame);
                const auto last =
                    static_cast<size_t>((first + static_cast<double>(screen.bucketFrames) - 1.0) * columnsAFrame);
                for (size_t i = begin; i <= std::min(last, course.size() - 1); ++i) {
                    CourseColumn& column = course[i];
                    column.low = column.known ? std::min(column.low, code) : code;
                    column.high = column.known ? std::max(column.high, code) : code;
                    column.known = true;
                }
            }
        }
    });
}

}  // namespace

std::vector<CourseColumn> courseOf(const Screen& screen, const SignalFormat& format, size_t channel, uint64_t frames,
                                   size_t columns) {
    std::vector<CourseColumn> course(columns);
    if (frames == 0 || columns == 0 || channel >= format.channelCount()) {
        return course;
    }
    if (format.word.sampleWidth == 4) {
        takeCourse<int32_t>(screen, format, channel, frames, course);
    } else {
        takeCourse<int16_t>(screen, format, channel, frames, course);
    }
    return course;
}

}  // namespace tarno2
