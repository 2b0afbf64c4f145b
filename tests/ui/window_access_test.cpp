// What the keyboard and a reader of the screen need of every window.

#include <QAbstractScrollArea>
#include <QMap>
#include <QMenuBar>
#include <QScrollBar>
#include <QStatusBar>

#include "tests/ui/main_window.h"
#include "ui/about_box.h"
#include "ui/digital_signal_settings.h"
#include "ui/go_to_dialog.h"
#include "ui/mark_list_window.h"
#include "ui/save_as_text_form.h"
#include "ui/scale_dialog.h"
#include "ui/setups_window.h"

namespace tarno2::test {
namespace {

class WindowAccess : public MainWindow {};

/// What a reader of the screen says of a control.
QString spoken(const QWidget& widget) {
    if (!widget.accessibleName().isEmpty()) {
        return widget.accessibleName();
    }
    if (const auto* button = qobject_cast<const QAbstractButton*>(&widget)) {
        return button->text();
    }
    for (const auto* label : widget.window()->findChildren<QLabel*>()) {
        if (label->buddy() == &widget) {
            return label->text();
        }
    }
    return {};
}

/// Controls that take the keys and have no name, by their object's name.
QStringList nameless(QWidget& window) {
    QStringList found;
    for (const auto* widget : window.findChildren<QWidget*>()) {
        if (takesTab(*widget) && widget->isVisibleTo(&window) && spoken(*widget).isEmpty()) {
            found << QLatin1String(widget->metaObject()->className()) + QLatin1Char(' ') + widget->objectName();
        }
    }
    return found;
}

/// Letters that Alt takes to two visible controls or menus.
QStringList takenTwice(QWidget& window) {
    QMap<QString, QStringList> taken;
    for (const auto* button : window.findChildren<QAbstractButton*>()) {
        if (button->isVisibleTo(&window) && !button->shortcut().isEmpty()) {
            taken[button->shortcut().toString()] << button->text();
        }
    }
    for (const auto* bar : window.findChildren<QMenuBar*>()) {
        for (const QAction* menu : bar->actions()) {
            taken[QKeySequence::mnemonic(menu->text()).toString()] << menu->text();
        }
    }
    for (const auto* label : window.findChildren<QLabel*>()) {
        if (label->buddy() != nullptr && label->isVisibleTo(&window)) {
            if (const QKeySequence key = QKeySequence::mnemonic(label->text()); !key.isEmpty()) {
                taken[key.toString()] << label->text();
            }
        }
    }
    QStringList twice;
    for (auto each = taken.cbegin(); each != taken.cend(); ++each) {
        if (each->size() > 1) {
            twice << each.key() + QStringLiteral(": ") + each->join(QStringLiteral(" | "));
        }
    }
    return twice;
}

TEST_F(WindowAccess, EveryControlHasANameAndNoLetterIsTakenTwice) {
    for (const InterfaceLanguage language : {InterfaceLanguage::English, InterfaceLanguage::Russian}) {
        wanted_.language = language;
        wanted_.extendedChannelMode = true;
        wanted_.showSettingMember = -1;
        wanted_.viewCursors = wanted_.viewSpectrum = true;
        open();
        for (int panel = 1; panel <= 5; ++panel) {
            openPanel(panel);
            EXPECT_EQ(nameless(form()).join('\n').toStdString(), "") << panel;
            EXPECT_EQ(takenTwice(form()).join('\n').toStdString(), "") << panel;
        }
        for (const char* opened : {"AdditionalFileMode", "SetupsAction"}) {
            inDialog<QDialog>(form(), [](QDialog& dialog) {
                EXPECT_EQ(nameless(dialog).join('\n').toStdString(), "") << dialog.objectName().toStdString();
                EXPECT_EQ(takenTwice(dialog).join('\n').toStdString(), "") << dialog.objectName().toStdString();
                dialog.reject();
            });
            find<QAction>(opened)->trigger();
            ASSERT_TRUE(QTest::qWaitFor([] { return QApplication::activeModalWidget() == nullptr; }));
        }
        for (const auto* menu : form().menuBar()->findChildren<QMenu*>()) {
            QSet<QString> letters;
            for (const QAction* action : menu->actions()) {
                const QString letter = QKeySequence::mnemonic(action->text()).toString();
                EXPECT_TRUE(letter.isEmpty() || !letters.contains(letter)) << action->text().toStdString();
                letters.insert(letter);
            }
        }
        ASSERT_TRUE(close());
    }
}

TEST_F(WindowAccess, DialogsNameTheirControls) {
    std::array<DigitalLineSettings, 2> lines;
    std::vector<std::string> names;
    TextExportSettings text;
    for (const InterfaceLanguage language : {InterfaceLanguage::English, InterfaceLanguage::Russian}) {
        wanted_.language = language;
        open();
        T_DigitalSignalSettings digital(lines, names, [] {});
        T_SaveAsTextForm save(text, {});
        MarkListWindow marks(nullptr);
        ScaleDialog scale(1, {}, nullptr);
        AboutBox about({"Simulator", 1, "."}, nullptr);
        GoToDialog place(
            "Go to", "seconds", [](const QString&) { return QString(); }, nullptr);
        for (QWidget* window : std::initializer_list<QWidget*>{&digital, &save, &marks, &scale, &about, &place}) {
            window->show();
            EXPECT_EQ(nameless(*window).join('\n').toStdString(), "") << window->metaObject()->className();
            EXPECT_EQ(takenTwice(*window).join('\n').toStdString(), "") << window->metaObject()->className();
        }
        ASSERT_TRUE(close());
    }
}

// The start, the settings, the channels, the signal, the messages.
TEST_F(WindowAccess, TabGoesThroughTheWindowInTheOrderOfTheWork) {
    wanted_.showSettingMember = 1;
    open();
    const QList<QWidget*> parts = {
        find("StateStrip"), find("PanelHeader1")->parentWidget(),         find("ChannelTable"),
        find("T_ShowForm"), find("UnfoldMessagesButton")->parentWidget(), form().statusBar()};
    QList<qsizetype> walked;
    constexpr int kMostPresses = 500;
    QWidget* stop = find("StartButton");
    for (int presses = 0; presses < kMostPresses; ++presses) {
        qsizetype part = -1;
        for (qsizetype i = 0; i < parts.size(); ++i) {
            part = parts[i] == stop || parts[i]->isAncestorOf(stop) ? i : part;
        }
        if (walked.isEmpty() || walked.last() != part) {
            walked << part;
        }
        stop->setFocus();
        QTest::keyClick(stop, Qt::Key_Tab);
        stop = QApplication::focusWidget();
        if (stop == nullptr || stop == find("MonitorButton")) {
            break;
        }
    }
    EXPECT_EQ(walked, (QList<qsizetype>{0, 1, 2, 3, 4, 5}));
}

}  // namespace
}  // namespace tarno2::test
