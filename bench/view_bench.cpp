// What the signal view takes of a processor under a recording: the simulator's board gives noise at 10 MS/s in real
// time, the whole way goes to a file, and the view fetches, converts and paints as often as it does in the program.

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
#include "platform/paths.h"
#include "ui/show_form.h"

namespace tarno2::bench {

namespace {

constexpr uint32_t kChannels = 16;
constexpr double kSamplesPerSecond = 10e6;
constexpr double kSeconds = 10.0;
constexpr double kTarget = 0.4;
constexpr int kSlowest = 20;  ///< paints a second that still count as 25, for a machine that does other work

/// Measures how long the window's thread is busy, and counts the paints of one widget.
class Application final : public QApplication {
public:
    using QApplication::QApplication;

    bool notify(QObject* receiver, QEvent* event) override {
        paints_ += receiver == watched && event->type() == QEvent::Paint ? 1 : 0;
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
    void restart() { busy_ = longest_ = paints_ = 0; }
    [[nodiscard]] double busy() const { return busy_; }
    [[nodiscard]] double longest() const { return longest_; }
    [[nodiscard]] double paints() const { return paints_; }

    const QObject* watched = nullptr;

private:
    int depth_ = 0;
    double busy_ = 0.0;
    double longest_ = 0.0;
    double paints_ = 0.0;
};

/// Whether the view took little, painted often enough, and the recording is whole.
bool measure(Application& application, ISCOPERA* scoper, double screenSeconds) {
    const ScratchFolder folder;
    const auto half = static_cast<uint64_t>(kSamplesPerSecond / 4 * 2);
    SimulatedBoard board(folder.path(), kChannels, half, Pace::RealTime, Signal::Noise);
    ProgramSettings settings;
    settings.axisXValue = screenSeconds;
    T_ShowForm form(settings, scoper);
    form.resize(1000, 700);
    form.show();
    form.tap().prepare(kChannels * 2, half, kSamplesPerSecond * 2);
    LiveRecording recording;
    recording.format.word.sampleWidth = 2;
    recording.format.word.signedCodes = true;
    recording.format.minimumCode = -32768;
    recording.format.maximumCode = 32767;
    recording.format.framesPerSecond = kSamplesPerSecond / kChannels;
    for (uint32_t i = 0; i < kChannels; ++i) {
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
    std::printf("view of %5.2f s: %4.1f %% of a processor, %.1f paints a second, the longest turn %.1f ms; ",
                screenSeconds, share * 100, rate, application.longest() * 1e3);
    if (!fault.empty()) {
        std::printf("THE RECORDING FAILED: %s\n", fault.c_str());
        return false;
    }
    std::printf("%.1f MB recorded whole in %.1f s\n", static_cast<double>(bytes) / 1e6, seconds);
    form.recordingStopped();
    return share < kTarget && rate >= kSlowest;
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
    std::printf("The signal view, 1000 x 700, under a recording of %u channels of noise at %.0f MS/s in all\n",
                kChannels, kSamplesPerSecond / 1e6);
    bool fast = true;
    for (const double screenSeconds : {0.01, 1.0, 8.0}) {
        fast = measure(application, scoper.object(), screenSeconds) && fast;
    }
    std::printf("%s: asked are less than %.0f %% of a processor and whole recordings\n", fast ? "ok" : "TOO SLOW",
                kTarget * 100);
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
