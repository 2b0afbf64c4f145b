#include "apps/window/display_loss.h"

#include <QGuiApplication>
#include <cstdlib>
#include <memory>
#include <string>
#include <thread>
#include <utility>

#include "platform/library.h"

namespace tarno2 {

namespace {

constexpr int kDisplayWatchMs = 500;

std::function<void()> action;
QtMessageHandler nextHandler = nullptr;
std::thread::id toolkitThread;

void takeOver() {
    if (const auto goOn = action; goOn && std::this_thread::get_id() == toolkitThread) {
        std::atexit(takeOver);  // the toolkit may not leave it at once
        goOn();
    }
}

// The toolkit's last words: some of its platforms end the program in a way that nothing else can notice.
void takeMessage(QtMsgType type, const QMessageLogContext& context, const QString& message) {
    nextHandler(type, context, message);
    if (type == QtFatalMsg || message.contains(QLatin1String("connection broke")) ||
        message.contains(QLatin1String("connection experienced a fatal error"))) {
        takeOver();
    }
}

/// Asks the library through which the toolkit talks to an X server; it is loaded already where there is one.
class DisplayConnection {
public:
    DisplayConnection() {
#if QT_CONFIG(xcb)
        std::string why;
        if (const auto* x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
            x11 != nullptr && library_.load("libxcb.so.1", why)) {
            connection_ = x11->connection();
            hasError_ = reinterpret_cast<HasError>(library_.symbol("xcb_connection_has_error"));
        }
#endif
    }
    [[nodiscard]] bool broken() const {
        return connection_ != nullptr && hasError_ != nullptr && hasError_(connection_) != 0;
    }

private:
    using HasError = int (*)(void* connection);

    Library library_;
    void* connection_ = nullptr;
    HasError hasError_ = nullptr;
};

}  // namespace

OnDisplayLoss::OnDisplayLoss(std::function<void()> goOn) {
    if (nextHandler == nullptr) {
        toolkitThread = std::this_thread::get_id();
        nextHandler = qInstallMessageHandler(takeMessage);
        std::atexit(takeOver);
    }
    action = std::move(goOn);
}

OnDisplayLoss::~OnDisplayLoss() {
    action = {};
}

DisplayWatch::DisplayWatch() {
    QObject::connect(&timer_, &QTimer::timeout, &timer_, [display = std::make_shared<DisplayConnection>()] {
        if (display->broken()) {
            takeOver();
        }
    });
    timer_.start(kDisplayWatchMs);
}

}  // namespace tarno2
