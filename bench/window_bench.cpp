// How the main window feels: the longest time that its event loop was busy with 160 channels, and how long the program
// takes until its window can be used, beside an empty window in the same run.
//
//   tarno2-bench-window             both; fails when a target is missed
//   tarno2-bench-window --empty     shows an empty window, prints "usable" and ends
//   tarno2-bench-window --main      the same with the main window

#include <QAbstractButton>
#include <QAbstractEventDispatcher>
#include <QApplication>
#include <QElapsedTimer>
#include <QKeyEvent>
#include <QMainWindow>
#include <QProcess>
#include <QTimer>
#include <QWheelEvent>
#include <algorithm>
#include <cstdio>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "apps/window/window_program.h"
#include "bench/scratch_folder.h"
#include "bench/stopwatch.h"
#include "config/settings/settings_file.h"
#include "platform/paths.h"
#include "ui/channel_table.h"
#include "ui/main_form.h"

namespace tarno2::bench {

namespace {

constexpr double kStallTarget = 0.1;
constexpr double kStartTarget = 0.1;
constexpr double kOpenTarget = 0.05;
constexpr int kStarts = 9;

/// The longest time between two looks of the event loop at its timers.
class StallWatch : public QObject {
public:
    StallWatch() {
        timer_.setTimerType(Qt::PreciseTimer);
        timer_.setInterval(1);
        QObject::connect(&timer_, &QTimer::timeout, this, [this] {
            longest_ = std::max(longest_, clock_.nsecsElapsed());
            clock_.start();
        });
        clock_.start();
        timer_.start();
    }
    [[nodiscard]] double seconds() const { return static_cast<double>(longest_) * 1e-9; }

private:
    QTimer timer_;
    QElapsedTimer clock_;
    qint64 longest_ = 0;
};

/// Runs the event loop for so long and calls `act` every ten milliseconds. The longest stall.
double stallDuring(int milliseconds, const std::function<void()>& act) {
    QEventLoop loop;
    QTimer acting;
    QObject::connect(&acting, &QTimer::timeout, &loop, act);
    acting.start(10);
    QTimer::singleShot(milliseconds, &loop, &QEventLoop::quit);
    const StallWatch watch;
    loop.exec();
    return watch.seconds();
}

void press(QWidget& widget, int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
    for (const QEvent::Type type : {QEvent::KeyPress, QEvent::KeyRelease}) {
        QKeyEvent event(type, key, modifiers);
        QCoreApplication::sendEvent(&widget, &event);
    }
}

ProgramSettings settingsIn(const ScratchFolder& folder) {
    ProgramSettings settings;
    settings.wish.driver = "Simulator";
    settings.wish.base = 2;
    settings.wish.frequency = 10e6;
    settings.checkDiskSpeed = false;
    settings.extendedChannelMode = true;
    settings.wish.fileName = folder.file("run.dat");
    settings.channels[0].active = true;
    return settings;
}

/// The longest time from the click that opens a part of the window until it is painted.
double openTime(T_MainForm& form, const char* button) {
    auto& opener = *form.findChild<QAbstractButton*>(QLatin1String(button));
    double longest = 0.0;
    for (int i = 0; i < kStarts; ++i) {
        if (opener.isChecked()) {
            opener.click();
            QCoreApplication::processEvents();
        }
        const Stopwatch watch;
        opener.click();
        QCoreApplication::processEvents();
        longest = std::max(longest, watch.seconds());
    }
    return longest;
}

bool measureOpening() {
    const ScratchFolder folder;
    if (!WriteConfig(folder.path(), settingsIn(folder))) {
        return false;
    }
    T_MainForm form(folder.path(), std::nullopt);
    form.present();
    stallDuring(500, [] {});
    const double panel = openTime(form, "PanelHeader4");
    const double table = openTime(form, "ChannelTableButton");
    std::printf("until a part of the window is open, 160 channels, longest of %d\n", kStarts);
    std::printf("  the panel of the channels %26.1f ms\n  the channel table %34.1f ms\n", panel * 1e3, table * 1e3);
    return std::max(panel, table) < kOpenTarget;
}

bool printStall(const char* what, double seconds) {
    std::printf("%-56s %6.1f ms\n", what, seconds * 1e3);
    return seconds < kStallTarget;
}

bool measureStalls() {
    const ScratchFolder folder;
    if (!WriteConfig(folder.path(), settingsIn(folder))) {
        std::printf("no settings file\n");
        return false;
    }
    T_MainForm form(folder.path(), std::nullopt);
    form.present();
    stallDuring(500, [] {});
    auto& table = *form.findChild<ChannelTable*>();
    auto& all = *form.findChild<QAbstractButton*>(QStringLiteral("SelectAllButton"));

    std::printf("longest stall of the event loop, 160 channels\n");
    static_cast<void>(printStall("  nothing to do: what the machine adds", stallDuring(4000, [] {})));
    bool fast = printStall("  switching all on, and half of them on and off", stallDuring(1000, [&all, &form] {
                               all.click();
                               form.findChild<QAbstractButton*>(QStringLiteral("InvertSelectionButton"))->click();
                           }));
    if (table.activeCount() == 0) {
        all.click();
    }
    int presses = 0;
    const auto scroll = [&table, &presses] {
        press(table, ++presses % 8 < 4 ? Qt::Key_PageDown : Qt::Key_PageUp, Qt::ControlModifier);
        press(table, presses % 8 < 4 ? Qt::Key_PageDown : Qt::Key_PageUp);
    };
    fast &= printStall("  scrolling", stallDuring(2000, scroll));
    form.StartButtonClick();
    if (!form.control().running()) {
        std::printf("  the recording did not start\n");
        return false;
    }
    fast &= printStall("  recording at 10 MS/s in all", stallDuring(4000, [] {}));
    fast &= printStall("  recording at 10 MS/s in all, scrolling", stallDuring(4000, scroll));
    const uint64_t bytes = form.control().running() ? form.control().session()->writer().totalBytes() : 0;
    form.StopButtonClick();
    std::printf("  (%zu channels, %.0f MB recorded)\n", static_cast<size_t>(table.activeCount()),
                static_cast<double>(bytes) / 1e6);
    return fast && bytes > 100'000'000;
}

/// Prints a word when the event loop has nothing left to do after the window was painted, then ends the program.
void reportUsable(QWidget& window) {
    auto* dispatcher = QAbstractEventDispatcher::instance();
    QObject::connect(dispatcher, &QAbstractEventDispatcher::aboutToBlock, &window, [&window] {
        if (!window.isVisible() || !window.testAttribute(Qt::WA_WState_ExplicitShowHide)) {
            return;
        }
        std::printf("usable\n");
        std::fflush(stdout);
        QCoreApplication::exit(0);
    });
}

int showEmpty(QApplication& application) {
    QMainWindow window;
    window.resize(900, 600);
    reportUsable(window);
    window.show();
    return application.exec();
}

int showMain(QApplication& application) {
    T_MainForm form(programDirectory(), std::nullopt);
    reportUsable(form);
    form.present();
    return application.exec();
}

/// Seconds from the start of a process until it says that its window can be used; the median of several starts.
double startTime(const QString& program, const QString& which) {
    std::vector<double> times;
    for (int i = 0; i <= kStarts; ++i) {
        QProcess process;
        const Stopwatch watch;
        process.start(program, {which});
        if (!process.waitForReadyRead(30000)) {
            return -1.0;
        }
        // The first start fills the system's caches.
        if (i > 0) {
            times.push_back(watch.seconds());
        }
        process.waitForFinished();
    }
    std::nth_element(times.begin(), times.begin() + kStarts / 2, times.end());
    return times[kStarts / 2];
}

bool measureStarts(const QString& program) {
    const ScratchFolder folder;
    if (!WriteConfig(folder.path(), settingsIn(folder))) {
        return false;
    }
    qputenv("TARNO2_HOME", QByteArray::fromStdString(folder.path()));
    const double empty = startTime(program, QStringLiteral("--empty"));
    const double whole = startTime(program, QStringLiteral("--main"));
    std::printf("from the start of the process to a usable window, median of %d\n", kStarts);
    std::printf("  an empty window %36.0f ms\n  the main window %36.0f ms\n", empty * 1e3, whole * 1e3);
    return whole > 0.0 && whole < kStartTarget;
}

}  // namespace

}  // namespace tarno2::bench

int main(int argc, char** argv) {
    using namespace tarno2::bench;
    const std::string which = argc > 1 ? argv[1] : "";
    // As the program does it, before anything else of the toolkit.
    if (which == "--main" && !tarno2::displayCanBeOpened()) {
        return 1;
    }
    QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    if (which == "--empty") {
        return showEmpty(application);
    }
    if (which == "--main") {
        return showMain(application);
    }
    bool good = measureStarts(QCoreApplication::applicationFilePath());
    good &= measureOpening();
    good &= measureStalls();
    std::printf("targets: stalls below %.0f ms, a usable window within %.0f ms, a part of it within %.0f ms: %s\n",
                kStallTarget * 1e3, kStartTarget * 1e3, kOpenTarget * 1e3, good ? "met" : "MISSED");
    return good ? 0 : 1;
}
