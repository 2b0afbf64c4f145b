// Recordings of the simulated board in the main window while the signal view runs.

#include <QApplication>
#include <QLabel>
#include <QTest>
#include <cstring>
#include <gtest/gtest.h>

#include "config/settings/settings_file.h"
#include "drivers/simulator/counter_signal.h"
#include "language/language_table.h"
#include "platform/file.h"
#include "platform/paths.h"
#include "tests/support/temporary_folder.h"
#include "ui/main_form.h"
#include "ui/show_form.h"

namespace tarno2::test {
namespace {

class RecordingView : public ::testing::Test {
protected:
    void open(const std::string& registry) {
        registry_ = std::make_unique<ScopedEnvironment>("TARNO2_REGISTRY", registry);
        languageTable().select(kLanguageEnglish);
        ProgramSettings settings;
        settings.wish.driver = "Simulator";
        settings.wish.frequency = 100e3;
        settings.checkDiskSpeed = false;
        settings.wish.useDigitalPort = true;
        settings.channels[0].active = settings.channels[1].active = true;
        settings.axisXValue = 0.1;
        settings.wish.fileName = folder_.file("run.dat");
        ASSERT_TRUE(WriteConfig(folder_.path(), settings));
        form_ = std::make_unique<T_MainForm>(folder_.path(), std::nullopt);
        form_->present();
        ASSERT_TRUE(QTest::qWaitForWindowActive(form_.get()));
        view_ = form_->findChild<T_ShowForm*>();
        ASSERT_NE(view_, nullptr);
    }
    ~RecordingView() override {
        if (form_) {
            form_->close();
        }
    }
    void waitForFrames(uint64_t more) {
        const uint64_t wanted = view_->frameCount() + more;
        ASSERT_TRUE(QTest::qWaitFor([&] { return view_->frameCount() >= wanted; }, 60000)) << wanted;
    }
    void stop() {
        QTest::keyClick(form_.get(), Qt::Key_F6);
        ASSERT_TRUE(QTest::qWaitFor([this] { return !form_->control().running(); }, 60000));
    }

    TemporaryFolder folder_;
    std::unique_ptr<ScopedEnvironment> registry_;
    ScopedEnvironment signal_{"TARNO2_SIMULATOR", "Signal=Counter"};
    std::unique_ptr<T_MainForm> form_;
    T_ShowForm* view_ = nullptr;
};

TEST_F(RecordingView, ShowsEveryFrameInEveryModeAndLosesNone) {
    open(std::string(TARNO2_BIN) + "/registry.d");
    QTest::keyClick(form_.get(), Qt::Key_F5);
    ASSERT_TRUE(form_->control().running());
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
    stop();
    const std::string data = readFile(folder_.file("run.dat"));
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
    open(registry);
    auto* text = form_->findChild<QLabel*>("PaintBox1");
    ASSERT_NE(text, nullptr);
    EXPECT_EQ(text->text(), "Can't load scopera.dll\nShow not posible.");
    QTest::keyClick(form_.get(), Qt::Key_F5);
    waitForFrames(1000);
    stop();
    EXPECT_GE(readFile(folder_.file("run.dat")).size(), 4000U);
}

}  // namespace
}  // namespace tarno2::test
