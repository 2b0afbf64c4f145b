// Recordings of the simulated board in the main window while the signal view runs.

#include <cstring>
#include <gtest/gtest.h>

#include "drivers/simulator/counter_signal.h"
#include "platform/file.h"
#include "platform/paths.h"
#include "tests/ui/main_window.h"
#include "ui/show_form.h"

namespace tarno2::test {
namespace {

class RecordingView : public MainWindow {
protected:
    void open() {
        wanted_.wish.useDigitalPort = true;
        wanted_.axisXValue = 0.1;
        MainWindow::open();
        view_ = find<T_ShowForm>("T_ShowForm");
        press(Qt::Key_F5);
        ASSERT_TRUE(form().control().running());
    }
    void waitForFrames(uint64_t more) {
        const uint64_t wanted = view_->frameCount() + more;
        ASSERT_TRUE(QTest::qWaitFor([&] { return view_->frameCount() >= wanted; }, 60000)) << wanted;
    }
    /// What is in the file after a stop.
    std::string stopped() {
        press(Qt::Key_F6);
        EXPECT_TRUE(QTest::qWaitFor([this] { return !form().control().running(); }, 60000));
        return readFile(wanted_.wish.fileName);
    }

    const ScopedEnvironment signal_{"TARNO2_SIMULATOR", "Signal=Counter"};
    T_ShowForm* view_ = nullptr;
};

TEST_F(RecordingView, ShowsEveryFrameInEveryModeAndLosesNone) {
    open();
    for (int follow = 0; follow < 3; ++follow) {
        for (int mode = 0; mode < 3; ++mode) {
            view_->DoNotFolowForDataClick(follow);
            mode == 2 ? view_->OnlyDigitalDataClick() : view_->ShowDigitalClick(mode == 1);
            view_->PixelModeClick(mode == 1);
            waitForFrames(1);
            view_->ScrollBar1KeyDown(33);
            QCoreApplication::processEvents();
        }
    }
    const std::string data = stopped();
    EXPECT_EQ(view_->frameCount(), data.size() / 4);
    for (size_t i = 0; i < data.size() / 2; ++i) {
        uint16_t word = 0;
        std::memcpy(&word, data.data() + i * 2, 2);
        ASSERT_EQ(word, drivers::counterWord(i, 16)) << i;
    }
}

TEST_F(RecordingView, WithoutThePlottingLibraryEverythingIsRecordedAsBefore) {
    if (kPathSeparator != '/') {
        GTEST_SKIP() << "registry folders of the environment are there on POSIX alone";
    }
    const std::string registry = folder_.file("registry.d");
    ASSERT_TRUE(createDirectory(registry).ok());
    folder_.write("registry.d/simulator.reg",
                  "Windows Registry Editor Version 5.00\r\n\r\n[HKEY_LOCAL_MACHINE\\SOFTWARE\\Kestrel Lines "
                  "LTD\\Drivers\\1.0\\Simulator]\r\n\"path\"=\"" TARNO2_BIN "/simulator.so\"\r\n");
    const ScopedEnvironment without("TARNO2_REGISTRY", registry);
    open();
    EXPECT_EQ(find<QLabel>("PaintBox1")->text(), "Can't load scopera.dll\nShow not posible.");
    find<QAction>("RussianChoose")->trigger();
    EXPECT_TRUE(find<QLabel>("PaintBox1")->text().startsWith(QStringLiteral("Не удалось загрузить scopera.dll")));
    view_->DoNotFolowForDataClick(0);
    view_->ADCCodes1Click(3);
    waitForFrames(1000);
    EXPECT_GE(stopped().size(), 4000U);
}

// Drivers whose names are not plain ASCII.
TEST_F(RecordingView, DriversOfAnyLettersCanBeChosen) {
    if (kPathSeparator != '/') {
        GTEST_SKIP() << "registry folders of the environment are there on POSIX alone";
    }
    const std::string catalogue = "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Kestrel Lines LTD\\Drivers\\1.0\\";
    folder_.write("drivers.reg", "Windows Registry Editor Version 5.00\n\n" + catalogue +
                                     "Absent]\n\"path\"=\"absent.so\"\n\n" + catalogue +
                                     "Плата №1]\n\"path\"=\"" TARNO2_BIN "/simulator.so\"\n");
    const ScopedEnvironment registry("TARNO2_REGISTRY", folder_.path());
    wanted_.wish.driver = "Absent";
    MainWindow::open();
    auto* drivers = find<QComboBox>("DriverBox");
    QTest::keyClick(drivers, Qt::Key_Down);
    EXPECT_EQ(drivers->currentText(), QString::fromUtf8("Плата №1"));
    EXPECT_GT(find<QComboBox>("BaseBox")->count(), 1) << "the boards of the simulator";
}

}  // namespace
}  // namespace tarno2::test
