#include "apps/window/window_program.h"

#include <QApplication>
#include <QMessageBox>
#include <QWindow>
#include <array>
#include <cstdlib>
#include <exception>
#include <optional>
#include <string>
#include <utility>

#include "apps/console/console_program.h"
#include "apps/console/stop_relay.h"
#include "apps/window/display_loss.h"
#include "config/logs/console_log.h"
#include "config/logs/debug_log.h"
#include "config/settings/auto_settings.h"
#include "display/recorded.h"
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

/// Returns the exit status.
int runForm(const CommandLine& line, std::optional<RecordingWish> console, StopRelay& relay) {
    try {
        T_MainForm form(programDirectory(), std::move(console));
        const auto status = [&form, &line] {
            return exitStatus(line, form.control().outcome(), form.control().lastResult());
        };
        const OnDisplayLoss withoutDisplay([&form, &status] {
            form.runWithoutDisplay();
            form.host().waitForChecksums();
            const int code = status();
            logConsoleExit();
            std::_Exit(code);
        });
        QObject::connect(&form, &T_MainForm::closed, qApp, &QCoreApplication::quit, Qt::QueuedConnection);
        QObject::connect(
            qApp, &QGuiApplication::commitDataRequest, &form, [&form] { form.requestShutdown(); },
            Qt::DirectConnection);
        const StopRelay::Attached attached(relay, [&form] {
            QMetaObject::invokeMethod(&form, &T_MainForm::requestEnd, Qt::QueuedConnection);
            form.host().endWaiting();
        });
        const DisplayWatch displayWatch;
        form.present();
        if (line.mode == CommandLine::Open) {
            form.showRecording(dataFileOf(line.path));
        }
        QApplication::exec();
        form.host().waitForChecksums();
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
    Application::setDesktopFileName(QStringLiteral("tarno2"));
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
