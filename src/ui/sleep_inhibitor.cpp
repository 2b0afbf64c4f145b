#include "ui/sleep_inhibitor.h"

#include <QString>

#ifdef TARNO2_DBUS
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <array>
#endif

namespace tarno2 {

SleepInhibitor::~SleepInhibitor() {
    release();
}

#ifdef TARNO2_DBUS

namespace {

/// Desktops agree on a call "Inhibit" that returns a cookie, but neither on its place nor on its arguments.
struct Service {
    const char* name;
    const char* path;
    const char* interface;
    const char* release;
    bool isSessionManager;  ///< wants a window and flags besides
};

constexpr std::array<Service, 2> kServices = {{
    {"org.freedesktop.PowerManagement", "/org/freedesktop/PowerManagement/Inhibit",
     "org.freedesktop.PowerManagement.Inhibit", "UnInhibit", false},
    {"org.gnome.SessionManager", "/org/gnome/SessionManager", "org.gnome.SessionManager", "Uninhibit", true},
}};
constexpr uint32_t kNoWindow = 0;
constexpr uint32_t kSuspending = 4;

QDBusMessage call(size_t index, const char* method) {
    const Service& service = kServices.at(index);
    QDBusMessage message = QDBusMessage::createMethodCall(QLatin1String(service.name), QLatin1String(service.path),
                                                          QLatin1String(service.interface), QLatin1String(method));
    message.setAutoStartService(false);
    return message;
}

void giveBack(size_t index, uint32_t cookie) {
    QDBusMessage message = call(index, kServices.at(index).release);
    message << cookie;
    QDBusConnection::sessionBus().send(message);
}

}  // namespace

void SleepInhibitor::hold(const QString& reason) {
    release();
    // Without its address the library would start a bus of its own.
    if (!qEnvironmentVariableIsSet("DBUS_SESSION_BUS_ADDRESS") || !QDBusConnection::sessionBus().isConnected()) {
        return;
    }
    for (size_t i = 0; i < kServices.size(); ++i) {
        QDBusMessage message = call(i, "Inhibit");
        message << QStringLiteral("Tarno2");
        if (kServices.at(i).isSessionManager) {
            message << kNoWindow << reason << kSuspending;
        } else {
            message << reason;
        }
        auto* watcher = new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(message), this);
        connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, i, asked = holds_](auto* answered) {
            answered->deleteLater();
            const QDBusPendingReply<uint32_t> reply = *answered;
            if (reply.isError()) {
                return;
            }
            if (asked == holds_) {
                held_.push_back({i, reply.value()});
            } else {
                giveBack(i, reply.value());
            }
        });
    }
}

void SleepInhibitor::release() {
    ++holds_;
    for (const Held& held : held_) {
        giveBack(held.service, held.cookie);
    }
    held_.clear();
}

#else

void SleepInhibitor::hold(const QString& /*reason*/) {}

void SleepInhibitor::release() {}

#endif

}  // namespace tarno2
