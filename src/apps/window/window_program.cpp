#include "apps/window/window_program.h"

#include <QAbstractEventDispatcher>
#include <QApplication>
#include <QMessageBox>
#include <QTimer>
#include <QWindow>
#include <array>
#include <cstdlib>
#include <exception>
#include <functional>
#include <optional>
#include <string>
#include <thread>
#include <utility>

#include "apps/console/console_program.h"
#include "apps/console/stop_relay.h"
#include "config/logs/console_log.h"
#include "config/logs/debug_log.h"
#include "config/settings/auto_settings.h"
#include "language/language_table.h"
#include "platform/child_probe.h"
#include "platform/paths.h"
#include "platform/termination.h"
#include "ui/critical_error.h"
#include "ui/main_form.h"
#include "ui/program_icon.h"
#include "ui/text.h"

namespace tarno2 {

namespace {

constexpr int kDisplayWatchMs = 500;

/// Nothing that a handler throws may end the program.
class Application final : public QApplication {
public:
    using QApplication::QApplication;

    bool notify(QObject* receiver, QEvent* event) override {
        try {
            return QApplication::notify(receiver, event);
        } catch (const std::exception& error) {
            DEBUG_LOG("!!!! Exception: %s", error.what());
        } catch (...) {
            DEBUG_LOG("!!!! Exception");
        }
        return false;
    }
};

/// What takes the place of the end that the toolkit brings about when it finds its display gone, as long as it lives.
class OnDisplayLoss {
public:
    /// `goOn` is called on this thread, in the midst of the toolkit's work, which it never goes back to.
    explicit OnDisplayLoss(std::function<void()> goOn) {
        if (next_ == nullptr) {
            thread_ = std::this_thread::get_id();
            next_ = qInstallMessageHandler(takeMessage);
            std::atexit(takeOver);
        }
        action_ = std::move(goOn);
    }
    ~OnDisplayLoss() { action_ = {}; }
    OnDisplayLoss(const OnDisplayLoss&) = delete;
    OnDisplayLoss& operator=(const OnDisplayLoss&) = delete;

private:
    static void takeOver() {
        if (const auto goOn = action_; goOn && std::this_thread::get_id() == thread_) {
            std::atexit(takeOver);  // the toolkit may not leave it at once
            goOn();
        }
    }
    // The toolkit's last words: some of its platforms end the program in a way that nothing else can notice.
    static void takeMessage(QtMsgType type, const QMessageLogContext& context, const QString& message) {
        next_(type, context, message);
        if (type == QtFatalMsg || message.contains(QLatin1String("connection broke")) ||
            message.contains(QLatin1String("connection experienced a fatal error"))) {
            takeOver();
        }
    }

    inline static std::function<void()> action_;
    inline static QtMessageHandler next_ = nullptr;
    inline static std::thread::id thread_;
};

/// The toolkit looks whether its display is still there when its loop is woken up. Timers don't do that, and the one
/// wake-up that a lost display brings is lost when it comes in the midst of another: then nothing would notice.
class DisplayWatch {
public:
    DisplayWatch() {
        QObject::connect(&timer_, &QTimer::timeout, &timer_, [] { QAbstractEventDispatcher::instance()->wakeUp(); });
        timer_.start(kDisplayWatchMs);
    }

private:
    QTimer timer_;
};

/// Returns the exit status.
int runForm(const CommandLine& line, std::optional<RecordingWish> console, StopRelay& relay) {
    try {
        T_MainForm form(programDirectory(), std::move(console));
        const auto status = [&form, &line] {
            return exitStatus(line, form.control().outcome(), form.control().lastResult());
        };
        const OnDisplayLoss withoutDisplay([&form, &status] {
            form.runWithoutDisplay();
            const int code = status();
            logConsoleExit();
            std::_Exit(code);
        });
        QObject::connect(&form, &T_MainForm::closed, qApp, &QCoreApplication::quit, Qt::QueuedConnection);
        QObject::connect(
            qApp, &QGuiApplication::commitDataRequest, &form, [&form] { form.requestShutdown(); },
            Qt::DirectConnection);
        const StopRelay::Attached attached(
            relay, [&form] { QMetaObject::invokeMethod(&form, &T_MainForm::requestEnd, Qt::QueuedConnection); });
        const DisplayWatch displayWatch;
        form.present();
        QApplication::exec();
        return status();
    } catch (const std::exception& error) {
        DEBUG_LOG("!!!! Exception: %s", error.what());
        exitWithCriticalError(kWindowNotMade);
    }
    return exitStatus(line, RecordingOutcome::NothingRecorded, {});
}

}  // namespace

bool displayCanBeOpened() {
    return succeedsInChild([] {
        int count = 1;
        std::array<char, 7> name = {'T', 'a', 'r', 'n', 'o', '2', '\0'};
        std::array<char*, 2> arguments = {name.data(), nullptr};
        const QGuiApplication probe(count, arguments.data());
        QWindow window;
        window.create();
        return window.handle() != nullptr;  // a system that lets the toolkit start may still refuse windows
    });
}

int runWindowProgram(std::string program, const CommandLine& line) {
    // The watch for signals comes before the threads of the toolkit.
    StopRelay relay;
    std::optional<TerminationWatcher> watcher(std::in_place, [&relay] { relay.request(); });
    // Until there is a window that could go on without its display.
    const OnDisplayLoss withoutWindow([&watcher, &line] {
        if (line.mode == CommandLine::Mode::Console) {
            watcher.reset();
            consoleLog().log(text(TextId::Attention).c_str(), text(TextId::DisplayGone).c_str());
            std::_Exit(runWithoutWindow(line));
        }
    });
    int count = 1;
    std::array<char*, 2> arguments = {program.data(), nullptr};
    std::optional<Application> application(std::in_place, count, arguments.data());
    Application::setApplicationName(QStringLiteral("Tarno2"));
    Application::setWindowIcon(programIcon());
    Application::setQuitOnLastWindowClosed(false);
    if (line.mode == CommandLine::Mode::Usage) {
        QMessageBox::information(nullptr, uiText(TextId::Information), uiText(TextId::Usage));
        return line.status ? static_cast<int>(RecordingOutcome::NothingRecorded) : 0;
    }
    std::optional<RecordingWish> console;
    bool usable = true;
    if (line.mode == CommandLine::Mode::Console) {
        console = LoadAutoSettings(line.path, programDirectory());
        usable = console.has_value();
    }
    const int status =
        usable ? runForm(line, std::move(console), relay) : exitStatus(line, RecordingOutcome::NothingRecorded, {});
    logConsoleExit();
    watcher->finished();
    const OnDisplayLoss afterwards([status] { std::_Exit(status); });
    application.reset();
    return status;
}

}  // namespace tarno2
