#include <algorithm>
#include <iostream>
#include <string>
#include <vector>

#include "apps/options/usual_options.h"
#include "apps/thumbnail/sketch_picture.h"
#include "display/course.h"
#include "display/file_screens.h"
#include "display/recorded.h"
#include "language/language_table.h"
#include "platform/run_program.h"

namespace {

using namespace tarno2;

constexpr int kDone = 0;
constexpr int kFailed = 1;
constexpr int kBadUse = 2;

int complain(const std::string& what) {
    std::cerr << "tarno2-thumbnail: " << what << '\n';
    return kFailed;
}

std::string describe(const std::string& dataFile, const OpenProblem& problem) {
    switch (problem.kind) {
        case OpenProblem::DescriptionMissing:
            return problem.detail + ": no description";
        case OpenProblem::DescriptionNotRead:
            return "the description of " + dataFile + " cannot be read: " + problem.detail;
        case OpenProblem::DescriptionDamaged:
            return "the description of " + dataFile + " lacks " + problem.detail + " or has it wrong";
        case OpenProblem::FileNotRead:
        case OpenProblem::None:
            break;
    }
    return dataFile + ": " + problem.detail;
}

int draw(const std::string& recording, const std::string& output, int size) {
    const std::string dataFile = dataFileOf(recording);
    OpenProblem problem;
    const auto frames = RecordedFrames::open(dataFile, problem);
    if (frames == nullptr) {
        return complain(describe(dataFile, problem));
    }
    // Of a long recording the columns are sampled.
    FileScreens screens(*frames, frames->format());
    Screen screen;
    const uint64_t count = frames->frameCount();
    const auto columns = static_cast<size_t>(size);
    if (count == 0 || !screens.build(0, count, columns, screen)) {
        return complain(dataFile + ": there are no samples");
    }
    std::vector<std::vector<CourseColumn>> channels(std::min(frames->format().channelCount(), kMostSketched));
    for (size_t i = 0; i < channels.size(); ++i) {
        channels[i] = courseOf(screen, frames->format(), i, count, columns);
    }
    const QString name = QString::fromLocal8Bit(output.data(), static_cast<qsizetype>(output.size()));
    return drawSketch(channels, size).save(name, "PNG") ? kDone : complain(output + ": cannot be written");
}

int parseAndRun(int argc, char** argv) {
    constexpr int kUsualSize = 256;
    constexpr int kSmallest = 16;
    constexpr int kLargest = 4096;
    languageTable().select(kLanguageEnglish);
    CLI::App app{"Draws a small picture of a recording of Tarno2, as file managers show it.", "tarno2-thumbnail"};
    app.footer("Exit status: 0 done, 1 the recording can't be read or the picture not be written, 2 bad use.");
    addUsualOptions(app);
    std::string recording;
    std::string output;
    int size = kUsualSize;
    app.add_option("RECORDING", recording, "Data file or description")->required();
    app.add_option("OUTPUT", output, "Picture to write, PNG")->required();
    app.add_option("-s,--size", size, "Width of the picture in pixels, 16 to 4096 (256)")
        ->check(CLI::Range(kSmallest, kLargest));
    try {
        app.parse(argc, argv);
        return draw(recording, output, size);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? kDone : kBadUse;
    }
}

}  // namespace

int main(int argc, char** argv) {
    return runProgram("tarno2-thumbnail", kFailed, [&] { return parseAndRun(argc, argv); });
}
