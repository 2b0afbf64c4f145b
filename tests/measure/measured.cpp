// Prints what is measured of a recording, for a comparison with other programs.
//
//   tarno2-measured FILE FIRST END WINDOW LENGTH AVERAGED
//
// A line a channel, in volts: minimum maximum mean rms deviation frequency duty; then "spectrum", blocks and width of a
// bin, and a line a channel with the powers of the bins. What is missing is "nan". WINDOW is a number of the settings.

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <limits>

#include "display/recorded.h"
#include "measure/spectrum.h"
#include "measure/statistics.h"

namespace tarno2::test {
namespace {

void print(const SignalStatistics& volts) {
    const double missing = std::numeric_limits<double>::quiet_NaN();
    std::printf("%.17g %.17g %.17g %.17g %.17g %.17g %.17g\n", volts.minimum, volts.maximum,
                volts.mean.value_or(missing), volts.rms.value_or(missing), volts.deviation.value_or(missing),
                volts.frequency.value_or(missing), volts.duty.value_or(missing));
}

int run(char** arguments) {
    OpenProblem problem;
    const auto frames = RecordedFrames::open(arguments[1], problem);
    if (!frames) {
        std::fprintf(stderr, "%s can't be opened: %s\n", arguments[1], problem.detail.c_str());
        return 1;
    }
    const FrameSpan span{std::strtoull(arguments[2], nullptr, 10), std::strtoull(arguments[3], nullptr, 10)};
    const SignalFormat& format = frames->format();
    SpectrumWish wish;
    wish.window = static_cast<SpectrumWindow>(std::atoi(arguments[4]));
    wish.length = std::strtoull(arguments[5], nullptr, 10);
    wish.averaged = std::atoi(arguments[6]) != 0;
    for (size_t i = 0; i < format.channelCount(); ++i) {
        wish.channels.push_back({i, axisYScale(format, i, AxisYUnit::Volts)});
    }
    WorkProgress progress;
    SpanStatistics statistics;
    Spectrum spectrum;
    if (measure(*frames, format, span, progress, statistics) != ReadEnd::Whole ||
        spectrumOf(*frames, format, span, wish, progress, spectrum) != SpectrumEnd::Whole) {
        std::fprintf(stderr, "%s can't be measured\n", arguments[1]);
        return 1;
    }
    for (size_t i = 0; i < format.channelCount(); ++i) {
        print(statistics.channels[i].inUnit(wish.channels[i].scale));
    }
    std::printf("spectrum %llu %.17g\n", static_cast<unsigned long long>(spectrum.blocks), spectrum.binWidth);
    for (const auto& powers : spectrum.powers) {
        for (const double power : powers) {
            std::printf("%.17g ", power);
        }
        std::printf("\n");
    }
    return 0;
}

}  // namespace
}  // namespace tarno2::test

int main(int count, char** arguments) {
    if (count != 7) {
        std::fprintf(stderr, "FILE FIRST END WINDOW LENGTH AVERAGED\n");
        return 2;
    }
    try {
        return tarno2::test::run(arguments);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
}
