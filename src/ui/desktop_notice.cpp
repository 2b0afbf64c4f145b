#include "ui/desktop_notice.h"

#include "ui/program_icon.h"

#ifdef TARNO2_DBUS
#include <QDBusConnection>
#include <QDBusMessage>
#include <QStringList>
#include <QVariantMap>
#else
#include <QCoreApplication>
#include <QSystemTrayIcon>
#include <QTimer>
#endif

namespace tarno2 {

#ifdef TARNO2_DBUS

void tellDesktop(const QString& title, const QString& message) {
    // Without its address the library would start a bus of its own.
    if (!qEnvironmentVariableIsSet("DBUS_SESSION_BUS_ADDRESS") || !QDBusConnection::sessionBus().isConnected()) {
        return;
    }
    constexpr uint32_t kReplacesNone = 0;
    constexpr int32_t kUsualTime = -1;
    QDBusMessage notice = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.Notifications"), QStringLiteral("/org/freedesktop/Notifications"),
        QStringLiteral("org.freedesktop.Notifications"), QStringLiteral("Notify"));
    // Texts are markup there.
    notice << QStringLiteral("Tarno2") << kReplacesNone << QStringLiteral("tarno2") << title << message.toHtmlEscaped()
           << QStringList() << QVariantMap() << kUsualTime;
    QDBusConnection::sessionBus().send(notice);
}

#else

void tellDesktop(const QString& title, const QString& message) {
    constexpr int kShownMs = 15000;
    if (!QSystemTrayIcon::isSystemTrayAvailable()) {
        return;
    }
    auto* icon = new QSystemTrayIcon(programIcon(), QCoreApplication::instance());
    icon->show();
    icon->showMessage(title, message, programIcon());
    QTimer::singleShot(kShownMs, icon, &QObject::deleteLater);
}

#endif

}  // namespace tarno2
