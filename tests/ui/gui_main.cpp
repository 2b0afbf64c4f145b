#include <QApplication>
#include <QFont>
#include <gtest/gtest.h>

// A program of tests has one application object for all of them; it runs without a display unless it is told one.
int main(int argc, char** argv) {
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    QApplication application(argc, argv);
    // Sizes are the same on every system.
    QApplication::setStyle(QStringLiteral("fusion"));
    QApplication::setFont(QFont(QStringLiteral("DejaVu Sans"), 9));
    QApplication::setQuitOnLastWindowClosed(false);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
