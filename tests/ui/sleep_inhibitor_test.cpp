#include "ui/sleep_inhibitor.h"

#include <QProcess>
#include <QStandardPaths>
#include <QTest>
#include <gtest/gtest.h>

namespace tarno2::test {
namespace {

// A bus of its own with nobody on it but us: the calls are seen by a monitor of the bus.
TEST(SleepInhibitor, AsksTheDesktopAndWaitsForNobody) {
    const QString daemon = QStandardPaths::findExecutable("dbus-daemon");
    const QString monitor = QStandardPaths::findExecutable("dbus-monitor");
    if (daemon.isEmpty() || monitor.isEmpty()) {
        GTEST_SKIP() << "no D-Bus here";
    }
    QProcess bus;
    bus.start(daemon, {"--session", "--nofork", "--print-address"});
    ASSERT_TRUE(bus.waitForReadyRead());
    qputenv("DBUS_SESSION_BUS_ADDRESS", bus.readLine().trimmed());
    QProcess seen;
    seen.start(monitor, {"--session", "type='method_call'"});
    ASSERT_TRUE(seen.waitForReadyRead());
    QByteArray calls;
    {
        SleepInhibitor inhibitor;
        inhibitor.hold("Recording");
        EXPECT_TRUE(QTest::qWaitFor([&] {
            calls += seen.readAllStandardOutput();
            return calls.count("member=Inhibit") == 2 && calls.count("uint32 4") == 1;
        })) << calls.toStdString();
    }
    EXPECT_EQ(calls.count("string \"Recording\""), 2);
    seen.kill();
    seen.waitForFinished();
    bus.kill();
    bus.waitForFinished();
    qunsetenv("DBUS_SESSION_BUS_ADDRESS");
}

}  // namespace
}  // namespace tarno2::test
