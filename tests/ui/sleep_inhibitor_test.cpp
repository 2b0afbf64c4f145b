#include "ui/sleep_inhibitor.h"

#include <QStandardPaths>
#include <QTest>
#include <gtest/gtest.h>

#include "tests/support/process.h"
#include "tests/support/temporary_folder.h"
#include "ui/desktop_notice.h"

namespace tarno2::test {
namespace {

// A bus of its own with nobody on it but us: the calls are seen by a monitor of the bus.
TEST(SleepInhibitor, AsksTheDesktopAndWaitsForNobody) {
    const QString daemon = QStandardPaths::findExecutable("dbus-daemon");
    const QString monitor = QStandardPaths::findExecutable("dbus-monitor");
    if (daemon.isEmpty() || monitor.isEmpty()) {
        GTEST_SKIP() << "no D-Bus here";
    }
    const TemporaryFolder folder;
    const std::string address = folder.write("address", "");
    const std::string calls = folder.write("calls", "");
    const auto says = [](const std::string& file, const std::string& text) {
        return QByteArray(readFile(file).c_str()).count(text.c_str());
    };
    const ChildProcess bus(daemon.toStdString(), {"--session", "--nofork", "--print-address"}, address);
    ASSERT_TRUE(QTest::qWaitFor([&] { return says(address, "\n") > 0; }));
    const std::string printed = readFile(address);
    const ScopedEnvironment session("DBUS_SESSION_BUS_ADDRESS", printed.substr(0, printed.find('\n')));
    const ChildProcess seen(monitor.toStdString(), {"--session", "type='method_call'"}, calls);
    ASSERT_TRUE(QTest::qWaitFor([&] { return says(calls, "\n") > 0; }));
    SleepInhibitor inhibitor;
    inhibitor.hold("Recording");
    EXPECT_TRUE(QTest::qWaitFor([&] { return says(calls, "member=Inhibit") == 2 && says(calls, "uint32 4") == 1; }))
        << readFile(calls);
    EXPECT_EQ(says(calls, "string \"Recording\""), 2);
    tellDesktop("Tarno2", "a < b");
    EXPECT_TRUE(QTest::qWaitFor([&] { return says(calls, "member=Notify") == 1 && says(calls, "a &lt; b") == 1; }))
        << readFile(calls);
}

}  // namespace
}  // namespace tarno2::test
