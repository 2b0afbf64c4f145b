// What the signal view takes of a processor under a recording: the simulator's board gives noise at 10 MS/s in real
// time, the whole way goes to a file, and the view fetches, converts and paints as often as it does in the program.
// Then the longest gap between two pictures with 160 channels, and how long it takes until a recording of 4 GiB can be
// used.

#include <QApplication>
#include <QTimer>
#include <algorithm>
#include <atomic>
#include <cstdio>
#include <exception>
#include <string>
#include <thread>

#include "bench/scratch_folder.h"
#include "bench/simulated_board.h"
#include "bench/stopwatch.h"
#include "core/devices/scoper_library.h"
#include "platform/file.h"
#include "platform/paths.h"
#include "records/record_description.h"
#include "ui/show_form.h"

namespace tarno2::bench {

namespace {

constexpr double kSamplesPerSecond = 10e6;
constexpr double kSeconds = 10.0;
constexpr uint32_t kMostChannels = 160;
constexpr double kTarget = 0.25;
constexpr double kGapTarget = 0.08;  ///< s, on a quiet machine
constexpr double kOpeningTarget = 2.0;
constexpr int kSlowest = 20;  ///< paints a second that still count as 25, for a machine that does other work

/// Measures how long the window's thread is busy, and counts the paints of one widget.
class Application final : public QApplication {
public:
    using QApplication::QApplication;

    bool notify(QObject* receiver, QEvent* event) override {
        if (receiver == watched && event->type() == QEvent::Paint) {
            gap_ = paints_ > 0 ? std::max(gap_, sincePaint_.seconds()) : 0.0;
            sincePaint_ = Stopwatch();
            ++paints_;
        }
        if (depth_ > 0) {
            return QApplication::notify(receiver, event);
        }
        ++depth_;
        const Stopwatch watch;
        const bool done = QApplication::notify(receiver, event);
        const double seconds = watch.seconds();
        --depth_;
        busy_ += seconds;
        longest_ = std::max(longest_, seconds);
        return done;
    }
    void restart() { busy_ = longest_ = paints_ = gap_ = 0; }
    [[nodiscard]] double busy() const { return busy_; }
    [[nodiscard]] double longest() const { return longest_; }
    [[nodiscard]] double paints() const { return paints_; }
    [[nodiscard]] double gap() const { return gap_; }  ///< the longest between two paints, s

    const QObject* watched = nullptr;

private:
    int depth_ = 0;
    double busy_ = 0.0;
    double longest_ = 0.0;
    double paints_ = 0.0;
    double gap_ = 0.0;
    Stopwatch sincePaint_;
};

/// Whether the view took little, painted often enough, and the recording is whole.
bool measure(Application& application, ISCOPERA* scoper, uint32_t channels, double screenSeconds) {
    const ScratchFolder folder;
    const auto half = static_cast<uint64_t>(kSamplesPerSecond / 4 * 2);
    SimulatedBoard board(folder.path(), channels, half, Pace::RealTime, Signal::Noise);
    ProgramSettings settings;
    settings.axisXValue = screenSeconds;
    T_ShowForm form(settings, scoper);
    form.resize(1000, 700);
    form.show();
    form.tap().prepare(channels * 2, half, kSamplesPerSecond * 2);
    LiveRecording recording;
    recording.format.word.sampleWidth = 2;
    recording.format.word.signedCodes = true;
    recording.format.minimumCode = -32768;
    recording.format.maximumCode = 32767;
    recording.format.framesPerSecond = kSamplesPerSecond / channels;
    for (uint32_t i = 0; i < channels; ++i) {
        recording.format.channels.push_back({i, 5.0, -5.0});
        recording.channels.push_back(static_cast<int32_t>(i));
    }
    recording.everyFrameWritten = false;
    form.recordingStarted(std::move(recording));
    application.watched = static_cast<QWidget*>(scoper->View());
    const uint64_t bytes = board.wholeHalves(static_cast<uint64_t>(kSamplesPerSecond * 2 * kSeconds));
    std::string fault;
    double seconds = 0.0;
    std::thread recorder([&] {
        try {
            seconds = board.record(folder.file("run.dat"), bytes, &form.tap());
        } catch (const std::exception& e) {
            fault = e.what();
        }
        QMetaObject::invokeMethod(&application, "quit", Qt::QueuedConnection);
    });
    application.restart();
    const Stopwatch watch;
    Application::exec();
    const double all = watch.seconds();
    recorder.join();
    const double share = application.busy() / all;
    const double rate = application.paints() / all;
    std::printf(
        "%u channels, view of %5.2f s: %4.1f %% of a processor, %.1f paints a second, the longest turn %.1f ms, "
        "the longest gap between pictures %.1f ms; ",
        channels, screenSeconds, share * 100, rate, application.longest() * 1e3, application.gap() * 1e3);
    if (!fault.empty()) {
        std::printf("THE RECORDING FAILED: %s\n", fault.c_str());
        return false;
    }
    std::printf("%.1f MB recorded whole in %.1f s\n", static_cast<double>(bytes) / 1e6, seconds);
    form.recordingStopped();
    return share < kTarget && rate >= kSlowest && (channels < kMostChannels || application.gap() <= kGapTarget);
}

/// A file of 4 GiB that takes no room: from the wish to open it until it was painted, zoomed and painted again.
bool measureOpening(Application& application, ISCOPERA* scoper) {
    constexpr uint64_t kBytes = uint64_t{4} << 30;
    constexpr uint32_t kColumns = 16;
    const ScratchFolder folder;
    const std::string name = folder.file("large.dat");
    File file;
    size_t done = 0;
    if (!file.open(name, FileMode::CreateNew, FileAccess::Write, FileShare::Read).ok() || !file.seek(kBytes - 1).ok() ||
        !file.write("", 1, done).ok() || !file.close().ok()) {
        std::printf("no file of 4 GiB can be made here\n");
        return false;
    }
    RecordDescription description;
    description.setFrequency(kSamplesPerSecond);
    description.setSynchronousChannels(0);
    description.setDataCountPerChannel(kBytes / kColumns / 2);
    description.setPacketMode(0, 0.0, 0);
    description.setBackwardOrder(0);
    description.setDataFormat({2, 0, 0xFFFF, 16, 0, 0, 0, 1});
    description.setCreateTime({2026, 2, 2, 3, 4, 5, 6, 0});
    for (uint32_t i = 0; i < kColumns; ++i) {
        description.addChannelRange(5.0, -5.0);
    }
    if (!description.writeForDataFile(name)) {
        return false;
    }
    ProgramSettings settings;
    T_ShowForm form(settings, scoper);
    form.resize(1000, 700);
    form.show();
    Application::processEvents();
    application.watched = static_cast<QWidget*>(scoper->View());
    application.restart();
    const Stopwatch watch;
    const bool opened = form.openRecording(name);
    while (opened && application.paints() < 1.0) {
        Application::processEvents();
    }
    const double shown = watch.seconds();
    form.ZoomInClick();
    const double before = application.paints();
    while (opened && application.paints() <= before) {
        Application::processEvents();
    }
    const double usable = watch.seconds();
    std::printf("4 GiB opened: shown after %.2f s, zoomed after %.2f s\n", shown, usable);
    return opened && usable < kOpeningTarget;
}

int measureAll(int argc, char** argv) {
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    Application application(argc, argv);
    Application::setQuitOnLastWindowClosed(false);
    ScoperLibrary scoper;
    std::string why;
    if (!scoper.load(why)) {
        std::fprintf(stderr, "!!!! the scoper library: %s\n", why.c_str());
        return 2;
    }
    std::printf("The signal view, 1000 x 700, under a recording of noise at %.0f MS/s in all\n",
                kSamplesPerSecond / 1e6);
    bool fast = true;
    for (const double screenSeconds : {0.01, 1.0, 8.0}) {
        fast = measure(application, scoper.object(), 16, screenSeconds) && fast;
    }
    fast = measure(application, scoper.object(), kMostChannels, 1.0) && fast;
    fast = measureOpening(application, scoper.object()) && fast;
    std::printf(
        "%s: asked are less than %.0f %% of a processor and whole recordings, gaps of %.0f ms at most with %u "
        "channels, "
        "and 4 GiB opened in %.0f s\n",
        fast ? "ok" : "TOO SLOW", kTarget * 100, kGapTarget * 1e3, kMostChannels, kOpeningTarget);
    return fast ? 0 : 1;
}

}  // namespace

}  // namespace tarno2::bench

int main(int argc, char** argv) {
    try {
        return tarno2::bench::measureAll(argc, argv);
    } catch (const std::exception& e) {
        std::fprintf(stderr, "!!!! %s\n", e.what());
        return 2;
    }
}
