// Recordings that are opened to be looked at: letters that choose (d: lines of the port, b: both), then description and
// data file of the first piece and of the next.

#include <thread>

#include "display/convert_for_display.h"
#include "display/file_screens.h"
#include "display/overview.h"
#include "display/recorded.h"
#include "fuzz/scratch_folder.h"

namespace {

using namespace tarno2;

constexpr size_t kMostMemory = size_t{1} << 20;

void convert(const SignalFormat& format, const Screen& screen, int32_t mode) {
    require(screen.words.size() >= screen.rows * format.frameBytes());
    DisplayConverter converter;
    converter.word = format.word;
    const size_t count = screen.rows * format.channelCount();
    size_t got = 0;
    size_t columns = 0;
    std::vector<int32_t> colors;
    if (format.word.sampleWidth == 2) {
        const int16_t* shown = nullptr;
        ConvertForDisplay16(converter, reinterpret_cast<const int16_t*>(screen.words.data()), count, &shown, &got,
                            format.channelCount(), &columns, mode, {}, {}, &colors);
    } else {
        const int32_t* shown = nullptr;
        ConvertForDisplay32(converter, reinterpret_cast<const int32_t*>(screen.words.data()), count, &shown, &got,
                            format.channelCount(), &columns, mode, {}, {}, &colors);
    }
}

void look(ScreenSource& source, const SignalFormat& format, int32_t mode) {
    const uint64_t frames = source.frameCount();
    Screen screen;
    const uint64_t ranges[][2] = {{0, frames}, {frames / 3, frames / 2}, {frames, frames + 1}, {0, 1}};
    for (const auto& range : ranges) {
        for (const size_t buckets : {size_t{1}, size_t{7}, size_t{1000}}) {
            if (source.build(range[0], range[1], buckets, screen) && screen.rows > 0) {
                convert(format, screen, mode);
            }
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const ScratchFolder folder;
    folder.empty();
    InputParts parts(data, size);
    const auto choice = parts.choice();
    uint64_t bytes = 0;
    for (const char* name : {"run", "run_1"}) {
        const auto description = parts.next();
        const auto samples = parts.next();
        if (description.empty()) {
            break;
        }
        bytes += samples.size();
        folder.write(std::string(name) + ".txt", description);
        folder.write(std::string(name) + ".dat", samples);
    }
    OpenProblem problem;
    const auto frames = RecordedFrames::open(folder.file("run.dat"), problem);
    require((frames == nullptr) == (problem.kind != OpenProblem::None));
    if (frames == nullptr) {
        return 0;
    }
    const SignalFormat& format = frames->format();
    require(frames->frameBytes() > 0 && frames->frameCount() <= bytes / frames->frameBytes());
    const int32_t mode = choice.has('d') ? 2 : choice.has('b') ? 1 : 0;
    FileScreens files(*frames, format);
    look(files, format, mode);
    Overview overview(*frames, format, {}, kMostMemory);
    look(overview, format, mode);
    while (!overview.complete()) {
        std::this_thread::yield();
    }
    require(overview.failed() || overview.framesDone() == frames->frameCount());
    look(overview, format, mode);
    return 0;
}
