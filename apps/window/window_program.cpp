#include "apps/window/window_program.h"

#include <QApplication>
#include <QMessageBox>
#include <QWindow>
#include <array>
#include <exception>
#include <optional>
#include <string>

#include "apps/console/console_program.h"
#include "apps/console/stop_relay.h"
#include "config/auto_settings.h"
#include "config/debug_log.h"
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

void runForm(std::optional<AutoSettings> console, StopRelay& relay) {
    try {
        T_MainForm form(programDirectory(), std::move(console));
        QObject::connect(&form, &T_MainForm::closed, qApp, &QCoreApplication::quit, Qt::QueuedConnection);
        QObject::connect(
            qApp, &QGuiApplication::commitDataRequest, &form, [&form] { form.requestEnd(); }, Qt::DirectConnection);
        relay.attach([&form] { QMetaObject::invokeMethod(&form, &T_MainForm::requestEnd, Qt::QueuedConnection); });
        form.present();
        QApplication::exec();
        relay.detach();
    } catch (const std::exception& error) {
        relay.detach();
        DEBUG_LOG("!!!! Exception: %s", error.what());
        exitWithCriticalError(kWindowNotMade);
    }
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
    TerminationWatcher watcher([&relay] { relay.request(); });
    int count = 1;
    std::array<char*, 2> arguments = {program.data(), nullptr};
    Application application(count, arguments.data());
    Application::setApplicationName(QStringLiteral("Tarno2"));
    Application::setWindowIcon(programIcon());
    Application::setQuitOnLastWindowClosed(false);
    if (line.mode == CommandLine::Mode::Usage) {
        QMessageBox::information(nullptr, uiText(TextId::Information), uiText(TextId::Usage));
        return 0;
    }
    std::optional<AutoSettings> console;
    bool usable = true;
    if (line.mode == CommandLine::Mode::Console) {
        console = LoadAutoSettings(line.path, programDirectory());
        usable = console.has_value();
    }
    if (usable) {
        runForm(std::move(console), relay);
    }
    logConsoleExit();
    watcher.finished();
    return 0;
}

}  // namespace tarno2
