// What the window keeps between two runs, and what it does beside recording.

#include <QClipboard>
#include <QDir>
#include <QDockWidget>
#include <QGuiApplication>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QSplitter>
#include <QTableView>
#include <QWheelEvent>
#include <gmock/gmock.h>

#include "config/logs/version.h"
#include "config/settings/settings_file.h"
#include "platform/file.h"
#include "platform/paths.h"
#include "tests/ui/main_window.h"
#include "ui/about_box.h"
#include "ui/help.h"
#include "ui/message_list.h"
#include "ui/show_form.h"

namespace tarno2::test {
namespace {

class WindowSettings : public MainWindow {
protected:
    [[nodiscard]] ProgramSettings kept() const {
        ProgramSettings settings;
        EXPECT_TRUE(LoadConfig(folder_.path(), settings).ok());
        return settings;
    }
};

TEST_F(WindowSettings, AllThatTheOperatorSetIsThereAfterARestart) {
    open();
    auto* board = find<QComboBox>("BaseBox");
    board->setFocus();
    QTest::keyClick(board, Qt::Key_Down);
    openPanel(2);
    type("FrequencyBox", "250000");
    openPanel(4);
    auto* channels = find<QTableView>("ChannelTable");
    EXPECT_EQ(channels->model()->rowCount(), 160);
    click("SelectAllButton");
    EXPECT_EQ(find<QLabel>("FrequencyPerChannelLabel")->text(), "Per channel: 1562.5 Hz");
    click("ExtendedChannelModeBox");
    click("btnAutoStart");
    openPanel(5);
    click("StayOnTopBox");
    find<QAction>("RussianChoose")->trigger();
    openPanel(3);
    type("FileNameEdit", QString::fromStdString(folder_.file("other/my name.dat")));
    find<QDockWidget>("SignalDock")->hide();
    form().setGeometry(30, 40, 1000, 640);
    ASSERT_TRUE(close());

    const ProgramSettings settings = kept();
    EXPECT_EQ(settings.wish.base, 2U);
    EXPECT_EQ(settings.wish.frequency, 250000.0);
    EXPECT_TRUE(settings.extendedChannelMode && settings.wish.cycleStart && settings.stayOnTop);
    EXPECT_EQ(settings.language, InterfaceLanguage::Russian);
    EXPECT_EQ(settings.showSettingMember, 2);
    EXPECT_FALSE(settings.showFormVisible);

    openAgain();
    EXPECT_EQ(stateWord(), QStringLiteral("Готов"));
    EXPECT_EQ(nameField(), folder_.file("data/run.dat")) << "nothing was recorded under the other name";
    EXPECT_EQ(find<QComboBox>("BaseBox")->currentData().toInt(), 2);
    EXPECT_EQ(find<QComboBox>("FrequencyBox")->currentText(), "250000");
    EXPECT_TRUE(find<QLabel>("ActiveChannelsLabel")->text().contains("160"));
    EXPECT_TRUE(find<QPushButton>("btnAutoStart")->isChecked());
    EXPECT_TRUE(find<QAbstractButton>("ExtendedChannelModeBox")->isChecked());
    EXPECT_TRUE(form().windowFlags().testFlag(Qt::WindowStaysOnTopHint));
    EXPECT_TRUE(find("FileNameEdit")->isVisible());
    EXPECT_TRUE(find<QDockWidget>("SignalDock")->isHidden());
    EXPECT_EQ(form().geometry().topLeft(), QPoint(30, 40));
    EXPECT_EQ(form().height(), 640);
}

TEST_F(WindowSettings, TheSizeOfTheWindowIsKeptAsANumber) {
    open();
    form().showMaximized();
    ASSERT_TRUE(close());
    EXPECT_EQ(kept().formVisible, 2);
    openAgain();
    EXPECT_TRUE(form().isMaximized());
    form().showMinimized();
    ASSERT_TRUE(close());
    EXPECT_EQ(kept().formVisible, 0);
    openAgain();
    EXPECT_FALSE(form().isMinimized()) << "who starts it wants to see it";
    ASSERT_TRUE(close());
    EXPECT_EQ(kept().formVisible, 1);
}

TEST_F(WindowSettings, ThePartsOfTheWindowAreAsTheyWere) {
    open();
    auto* view = find<T_ShowForm>("T_ShowForm");
    press(Qt::Key_L, Qt::ControlModifier);
    const auto splitterOf = [](QWidget* part) { return qobject_cast<QSplitter*>(part->parentWidget()); };
    const auto columns = [&] { return splitterOf(find("PanelHeader1")->parentWidget()); };
    const auto rows = [&] { return splitterOf(find("MessageList")->parentWidget()); };
    const QList<int> columnsBefore = columns()->sizes();
    columns()->setSizes({columnsBefore.first() + 20, columnsBefore.last() - 20});
    rows()->setSizes({form().height() - 130, 130});
    for (const TextId part : {TextId::ViewLegend, TextId::ViewCursors}) {
        for (QAction* action : view->findChildren<QAction*>()) {
            if (action->text() == uiText(part)) {
                action->trigger();
            }
        }
    }
    click("MoreFiguresButton");
    QApplication::processEvents();
    const QList<int> widths = columns()->sizes();
    const int messages = rows()->sizes().last();
    ASSERT_NE(widths, columnsBefore);
    ASSERT_TRUE(close());

    openAgain();
    EXPECT_EQ(columns()->sizes(), widths);
    EXPECT_EQ(rows()->sizes().last(), messages);
    EXPECT_TRUE(form().programSettings().viewLegend && form().programSettings().viewCursors);
    EXPECT_TRUE(find("FramesCell")->isVisible());
    click("UnfoldMessagesButton");
    press(Qt::Key_B, Qt::ControlModifier);
    press(Qt::Key_K, Qt::ControlModifier);
    ASSERT_TRUE(close());
    openAgain();
    EXPECT_FALSE(find("MessageList")->isVisible());
    EXPECT_TRUE(find("NewestMessage")->isVisible());
    EXPECT_FALSE(find("ChannelTable")->isVisible());
    EXPECT_FALSE(find("DriverBox")->isVisible());
    EXPECT_TRUE(find("PanelHeader1")->isVisible()) << "the rail stays";
    EXPECT_EQ(kept().messagesHeight, messages) << "it comes back as high as it was";
    press(Qt::Key_B, Qt::ControlModifier);
    EXPECT_TRUE(find("DriverBox")->isVisible());
    EXPECT_EQ(columns()->sizes().first(), widths.first());
}

TEST_F(WindowSettings, TheSettingsMakeRoomWhileItRecords) {
    wanted_.foldOnStart = true;
    open();
    record();
    EXPECT_FALSE(find("DriverBox")->isVisible());
    press(Qt::Key_F6);
    ASSERT_TRUE(waitForState(TextId::StatusStopped));
    EXPECT_TRUE(find("DriverBox")->isVisible());
    press(Qt::Key_B, Qt::ControlModifier);
    record();
    press(Qt::Key_F6);
    ASSERT_TRUE(waitForState(TextId::StatusStopped));
    EXPECT_FALSE(find("DriverBox")->isVisible()) << "who folded them does not want them back";
}

// What is cut can't be read; what scrolls can.
TEST_F(WindowSettings, NothingIsCutOnASmallScreen) {
    wanted_.language = InterfaceLanguage::Russian;
    open();
    const auto* area = qobject_cast<QScrollArea*>(form().centralWidget());
    // Words and figures grow where there is room for them.
    for (int width = 1400; width >= 1024; width -= 10) {
        form().resize(width, 700);
        QApplication::processEvents();
        EXPECT_FALSE(area->horizontalScrollBar()->isVisible()) << width;
        EXPECT_TRUE(find<QAbstractButton>("ConditionsButton")->text().startsWith("Синхронизация\n")) << width;
    }
    form().resize(1024, 700);
    for (int panel = 1; panel <= 5; ++panel) {
        openPanel(panel);
        QApplication::processEvents();
        EXPECT_EQ(form().size(), QSize(1024, 700));
        EXPECT_FALSE(area->horizontalScrollBar()->isVisible()) << panel;
        EXPECT_FALSE(area->verticalScrollBar()->isVisible()) << panel << ": it scrolls by itself";
    }
    form().resize(910, 480);
    QApplication::processEvents();
    EXPECT_EQ(form().size(), QSize(910, 480));
}

// Who scrolls the panel does not change what passes below the pointer.
TEST_F(WindowSettings, TheWheelChangesOnlyWhatHasTheFocus) {
    open();
    openPanel(3);
    const auto turn = [](QWidget* widget) {
        const QPointF at = widget->rect().center();
        QWheelEvent event(at, widget->mapToGlobal(at), {}, {0, -120}, Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase,
                          false);
        QApplication::sendEvent(widget, &event);
    };
    auto* rule = find<QComboBox>("StopModeBox");
    auto* value = find<QDoubleSpinBox>("StopValueBox");
    rule->setCurrentIndex(1);
    emit rule->activated(1);
    const double before = value->value();
    find("ChannelTable")->setFocus();
    turn(rule);
    turn(value);
    EXPECT_EQ(rule->currentIndex(), 1);
    EXPECT_EQ(value->value(), before);
    EXPECT_FALSE(rule->hasFocus());
    value->setFocus();
    turn(value);
    EXPECT_LT(value->value(), before);
    rule->setFocus();
    turn(rule);
    EXPECT_EQ(rule->currentIndex(), 2);
}

TEST_F(WindowSettings, TheLastRecordingIsOfferedAsTextAfterARestart) {
    open();
    record();
    press(Qt::Key_F6);
    const std::string recorded = folder_.file("data/run.dat");
    EXPECT_NE(nameField(), recorded) << "the next one is proposed";
    ASSERT_TRUE(close());
    EXPECT_EQ(kept().wish.fileName, recorded);

    openAgain();
    EXPECT_NE(nameField(), recorded);
    EXPECT_EQ(parentFolder(nameField()), folder_.file("data"));
    QStringList offered;
    inDialog<QFileDialog>(form(), [&offered](QFileDialog& dialog) {
        offered = dialog.selectedFiles();
        QTest::keyClick(&dialog, Qt::Key_Escape);
    });
    press(Qt::Key_T, Qt::ControlModifier);
    EXPECT_EQ(offered, QStringList(QDir::fromNativeSeparators(QString::fromStdString(recorded))));
    ASSERT_TRUE(close());
    EXPECT_EQ(kept().wish.fileName, recorded) << "a run without a recording";
}

TEST_F(WindowSettings, ABoardOrDriverThatIsMissingIsKeptAndNoOtherRecords) {
    const struct {
        const char* driver;
        uint32_t base;
        const char* box;
        const char* shown;
        const char* told;
    } cases[] = {
        {"Simulator", 7, "BaseBox", "007", "the driver has no board 007"},
        {"Gone", 2, "DriverBox", "Gone", "Driver \"Gone\" can not be loaded: no driver of this name is installed"}};
    wanted_.autoStartOnRun = true;
    for (const auto& each : cases) {
        wanted_.wish.driver = each.driver;
        wanted_.wish.base = each.base;
        wanted_.wish.frequency = 12345.0;
        open();
        auto* box = find<QComboBox>(each.box);
        const QString missing = uiText(TextId::NotFoundEntry, {QString::fromLatin1(each.shown)});
        EXPECT_EQ(box->currentText(), missing);
        EXPECT_TRUE(listHas(QString::fromLatin1(each.told)));
        QCoreApplication::processEvents();
        press(Qt::Key_F5);
        ASSERT_TRUE(QTest::qWaitFor([this] { return !form().looksForBoard(); }, 30000));
        EXPECT_FALSE(form().control().running());
        find<QAction>("RussianChoose")->trigger();
        EXPECT_EQ(box->currentText(), uiText(TextId::NotFoundEntry, {QString::fromLatin1(each.shown)}));
        find<QAction>("EnglishChoose")->trigger();
        ASSERT_TRUE(close());
        EXPECT_EQ(kept().wish.driver, each.driver);
        EXPECT_EQ(kept().wish.base, each.base);
        EXPECT_EQ(kept().wish.frequency, 12345.0);
        EXPECT_THAT(recordings(), testing::IsEmpty());
    }
    wanted_.wish.driver = "Simulator";
    wanted_.wish.base = 7;
    wanted_.autoStartOnRun = false;
    open();
    auto* board = find<QComboBox>("BaseBox");
    board->setFocus();
    QTest::keyClick(board, Qt::Key_Home);
    record();
    press(Qt::Key_F6);
    ASSERT_TRUE(close());
    EXPECT_EQ(kept().wish.base, 1U);
}

TEST_F(WindowSettings, TheToolkitSpeaksRussianToo) {
    open();
    find<QAction>("RussianChoose")->trigger();
    EXPECT_EQ(QCoreApplication::translate("QPlatformTheme", "Cancel"), QStringLiteral("Отмена"));
    find<QAction>("EnglishChoose")->trigger();
    EXPECT_EQ(QCoreApplication::translate("QPlatformTheme", "Cancel"), QStringLiteral("Cancel"));
}

TEST_F(WindowSettings, OnesThatCanNotBeReadAreToldAndKept) {
    const std::string path = folder_.write("Tarno2.cfg", "Driver = Simulator\r\nBase = 3\r\n");
    File holder;
    ASSERT_TRUE(holder.open(path, FileMode::OpenExisting, FileAccess::Read, FileShare::None).ok());
    openAgain();
    ASSERT_TRUE(holder.close().ok());
    EXPECT_TRUE(attention().contains("The settings can not be read: ")) << attention().toStdString();
    EXPECT_TRUE(listHas("Tarno2_old1.cfg"));
    ASSERT_TRUE(close());
    EXPECT_EQ(readFile(folder_.file("Tarno2_old1.cfg")), "Driver = Simulator\r\nBase = 3\r\n");
    EXPECT_EQ(kept().wish.base, 1U);
}

TEST_F(WindowSettings, TheFirstFrequencyIsTheBoardsOwn) {
    for (const char* file : {"", "Driver = Simulator\r\nBase = 3\r\n"}) {
        if (file[0] != 0) {
            folder_.write("Tarno2.cfg", file);
        }
        openAgain();
        const float own = form().selection().driver().facts().boardFrequency;
        ASSERT_GT(own, 0.0F);
        EXPECT_EQ(find<QComboBox>("FrequencyBox")->currentText().toFloat(), own) << file;
        ASSERT_TRUE(close());
        EXPECT_EQ(kept().wish.frequency, static_cast<double>(own)) << file;
    }
}

TEST_F(WindowSettings, APlaceOffEveryScreenIsCorrected) {
    wanted_.mainFormPos = {9000, -5000, 800, 600};
    wanted_.showFormPos = {-7000, 200, 500, 300};
    open();
    const QRect screen = QGuiApplication::primaryScreen()->availableGeometry();
    EXPECT_TRUE(screen.intersects(form().geometry()));
    EXPECT_TRUE(screen.contains(form().geometry().topLeft()));
    auto* signal = find<QDockWidget>("SignalDock");
    ASSERT_TRUE(signal->isFloating());
    EXPECT_TRUE(screen.contains(signal->geometry().topLeft()));
    record();
    signal->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(signal));
    QTest::keyClick(signal, Qt::Key_F6);
    EXPECT_TRUE(waitForState(TextId::StatusStopped)) << "keys of commands hold there, too";
    find<QAction>("RussianChoose")->trigger();
    ASSERT_TRUE(close());
    EXPECT_TRUE(screen.contains(QPoint(kept().mainFormPos.left, kept().mainFormPos.top)));
}

TEST_F(WindowSettings, SettingsThatCanNotBeWrittenAreTold) {
    open();
    // A folder of that name takes no settings.
    ASSERT_TRUE(removeFile(folder_.file("Tarno2.cfg")).ok());
    ASSERT_TRUE(createDirectory(folder_.file("Tarno2.cfg")).ok());
    answer(TextId::ButtonOk);
    ASSERT_TRUE(close());
    ASSERT_EQ(asked_.size(), 1);
    EXPECT_EQ(asked_.front(), uiText(TextId::SettingsNotSaved, {QString::fromStdString(folder_.path())}));
}

TEST_F(WindowSettings, TheNameComesFromTheDialog) {
    open();
    chooseFile(form(), QString::fromStdString(folder_.file("chosen")));
    press(Qt::Key_D, Qt::ControlModifier);
    EXPECT_EQ(nameField(), folder_.file("chosen.dat"));
    chooseFile(form(), {});
    click("ButtonSetFileName");
    EXPECT_EQ(nameField(), folder_.file("chosen.dat"));
    const std::vector<std::string> lines = log();
    auto line = std::find(lines.begin(), lines.end(), "ButtonSetFileNameClick");
    ASSERT_LE(5, lines.end() - line);
    EXPECT_EQ(*++line, "ButtonSetFileNameClick Result file = \"" + folder_.file("chosen.dat") + "\"");
    EXPECT_EQ(*++line, "FileNameEditChange: File = \"" + folder_.file("chosen.dat") + "\" RezultCode = 0");
    EXPECT_EQ(*++line, "HDD speed: Check OFF");
    EXPECT_EQ(*++line, "ButtonSetFileNameClick");
    EXPECT_EQ(*++line, "ButtonSetFileNameClick Cancel");
}

TEST_F(WindowSettings, TheDiskIsMeasuredWhenTheNameIsDoneAndOnceAFolder) {
    open();
    openPanel(3);
    const auto measured = [this] { return find<QLabel>("DiskSpeedLabel")->text(); };
    click("HDDTestSpeedBox");
    EXPECT_TRUE(measured().startsWith("Disk speed: ")) << measured().toStdString();
    EXPECT_TRUE(measured().endsWith("B/s"));
    EXPECT_EQ(QGuiApplication::overrideCursor(), nullptr);
    type("FileNameEdit", QString::fromStdString(folder_.file("data/second.dat")));
    EXPECT_EQ(listDirectory(folder_.path()).size(), 2U) << "the folder made for the test is gone";
    const std::vector<std::string> lines = log();
    EXPECT_EQ(std::count(lines.begin(), lines.end(), "Disk speed check change : ON"), 1);
    std::vector<std::string> speeds;
    for (const std::string& line : lines) {
        if (line.starts_with("HDD speed: ")) {
            speeds.push_back(line);
        }
    }
    ASSERT_EQ(speeds.size(), 2U);
    EXPECT_EQ(speeds[0], speeds[1]) << "remembered";
}

TEST_F(WindowSettings, AboutTellsVersionsAndHelpIsLookedFor) {
    open();
    QString text;
    inDialog<AboutBox>(form(), [&text](AboutBox& box) {
        text = box.findChild<QLabel*>("AboutText")->text();
        QTest::keyClick(&box, Qt::Key_Escape);
    });
    form().AboutClick();
    for (const QString& part : {QString::fromLatin1(kVersionText), QString::fromLatin1(qVersion()),
                                QStringLiteral("Simulator"), QString::fromStdString(folder_.path())}) {
        EXPECT_TRUE(text.contains(part)) << part.toStdString() << '\n' << text.toStdString();
    }
    if (!manualFile().isEmpty()) {
        GTEST_SKIP() << "the manual lies beside the tests";
    }
    answer(TextId::ButtonOk);
    press(Qt::Key_F1);
    EXPECT_EQ(asked_, QStringList("Help file not founded."));
    EXPECT_TRUE(listHas("Help file not founded."));
}

TEST_F(WindowSettings, MessagesUnfoldByKeyAndAreCopied) {
    open();
    record();
    press(Qt::Key_F6);
    ASSERT_TRUE(QTest::qWaitFor([this] { return listHas("Recording ended"); }, 30000));
    auto* list = find<MessageList>("MessageList");
    ASSERT_GE(list->count(), 2);
    EXPECT_TRUE(find<QLabel>("NewestMessage")->text().contains("frames, "));
    QTest::keyClick(list, Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(QGuiApplication::clipboard()->text().count('\n'), list->count() - 1);
    EXPECT_FALSE(list->isVisible());
    press(Qt::Key_L, Qt::ControlModifier);
    EXPECT_TRUE(list->isVisible());
    press(Qt::Key_L, Qt::ControlModifier);
    EXPECT_FALSE(list->isVisible());
}

TEST_F(WindowSettings, TheLanguageMenuHangsOnBothButtons) {
    open();
    auto* menu = find<QMenu>("SelectLanguageMenu");
    for (const char* name : {"SelectLanguageButton", "LanguageInterfaceLabel"}) {
        click(name);
        EXPECT_TRUE(menu->isVisible()) << name;
        QTest::keyClick(menu, Qt::Key_Escape);
    }
}

}  // namespace
}  // namespace tarno2::test
