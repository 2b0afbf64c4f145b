// The first start of the window, without settings, and the next one.

#include "ui/first_page.h"

#include <QCommandLinkButton>

#include "platform/file.h"
#include "platform/paths.h"
#include "tests/core/settings_driver.h"
#include "tests/ui/main_window.h"
#include "ui/setups_window.h"

namespace tarno2::test {
namespace {

class FirstStart : public MainWindow {
protected:
    FirstStart() { languageTable().select(kLanguageEnglish); }
    ~FirstStart() override { drop(); }

    [[nodiscard]] bool pageIsThere() { return form().findChild<FirstPage*>() != nullptr; }
    [[nodiscard]] bool waitForSignal() {
        return QTest::qWaitFor([this] { return !pageIsThere() && find("T_ShowForm")->isVisible(); }, 30000);
    }
    /// The page is gone in a window of a program that was killed meanwhile, and in one that was closed.
    void expectNeverAgain() {
        const std::string kept = readFile(folder_.file("Tarno2.cfg"));
        ASSERT_NE(kept, "");
        ASSERT_TRUE(close());
        for (const std::string& settings : {kept, readFile(folder_.file("Tarno2.cfg"))}) {
            folder_.write("Tarno2.cfg", settings);
            openAgain();
            EXPECT_FALSE(pageIsThere());
            EXPECT_TRUE(find("T_ShowForm")->isVisible());
            drop();
        }
    }
};

TEST_F(FirstStart, ClosesThePageForGood) {
    openAgain();
    EXPECT_TRUE(find("FirstPage")->isVisible());
    EXPECT_FALSE(find("T_ShowForm")->isVisible());
    find<QAction>("RussianChoose")->trigger();
    EXPECT_EQ(find<QLabel>("FirstTitle")->text(), QStringLiteral("Первые шаги"));
    find<QAction>("EnglishChoose")->trigger();
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Escape);
    ASSERT_TRUE(waitForSignal());
    expectNeverAgain();
}

TEST_F(FirstStart, ShowsTheSignalOfTheSimulatedBoard) {
    openAgain();
    click("FirstSimulator");
    ASSERT_TRUE(waitForState(TextId::StatusMonitoring)) << attention().toStdString();
    ASSERT_TRUE(waitForSignal());
    EXPECT_EQ(form().selection().driverName(), "Simulator");
    press(Qt::Key_F6);
    ASSERT_TRUE(QTest::qWaitFor([this] { return !form().control().running(); }));
    EXPECT_TRUE(recordings().empty());
    expectNeverAgain();
}

TEST_F(FirstStart, ASetupThatIsLoadedInsteadCounts) {
    ASSERT_TRUE(createFolders(folder_.file("Setups")).ok());
    folder_.write("Setups/own.setup", "//\r\nDriver = Replay\r\n\r\n");
    openAgain();
    ASSERT_TRUE(QTest::qWaitFor([this] { return !form().looksForBoard(); }, 30000));
    EXPECT_NE(form().selection().driverName(), "Replay");
    inDialog<SetupsWindow>(form(), [](SetupsWindow& window) {
        window.list("own");
        clickIn(window, "LoadSetupButton");
        window.reject();
    });
    form().SetupsClick();
    ASSERT_TRUE(QTest::qWaitFor([this] { return !form().looksForBoard(); }, 30000));
    ASSERT_TRUE(waitForSignal());
    EXPECT_EQ(form().selection().driverName(), "Replay");
    EXPECT_EQ(find<QComboBox>("DriverBox")->currentText(), "Replay");
}

TEST_F(FirstStart, OpensTheSample) {
    openAgain();
    auto* sample = find<QCommandLinkButton>("FirstSample");
#ifdef TARNO2_HAS_SAMPLE
    ASSERT_TRUE(sample->isEnabled());
    click("FirstSample");
    ASSERT_TRUE(waitForSignal());
    EXPECT_TRUE(find("T_ShowForm")->windowTitle().contains("sample"));
    expectNeverAgain();
#else
    EXPECT_FALSE(sample->isEnabled());
    EXPECT_EQ(sample->description(), uiText(TextId::FirstNoSampleHint));
#endif
}

TEST_F(FirstStart, TellsWhyThereIsNoSoundCard) {
    if (kPathSeparator != '/') {
        GTEST_SKIP() << "registry folders of the environment are there on POSIX alone";
    }
    const ScopedEnvironment none("TARNO2_REGISTRY", folder_.file("none"));
    openAgain();
    for (const char* driver : {"Sound", "Simulator"}) {
        auto* choice = find<QCommandLinkButton>((std::string("First") + driver).c_str());
        EXPECT_FALSE(choice->isEnabled());
        EXPECT_EQ(choice->description(), uiText(TextId::FirstNoDriverHint, {driver}));
    }
    drop();
    const InstalledDriver broken("Sound", folder_.file("gone.so"));
    openAgain();
    click("FirstSound");
    EXPECT_TRUE(find<QCommandLinkButton>("FirstSound")->description().contains("gone.so"));
    EXPECT_TRUE(pageIsThere());
}

}  // namespace
}  // namespace tarno2::test
