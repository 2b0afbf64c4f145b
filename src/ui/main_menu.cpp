#include "ui/main_menu.h"

#include <QAction>
#include <QActionGroup>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>

#include "language/language_table.h"
#include "ui/help.h"
#include "ui/text.h"

namespace tarno2 {

MainMenu::MainMenu(QMainWindow& window)
    : window_(window),
      start(add(TextId::CommandStart, Qt::Key_F5)),
      monitor(addToggle(TextId::CommandMonitor, Qt::Key_F4)),
      stop(add(TextId::CommandStop, Qt::Key_F6)),
      cycle(addToggle(TextId::CommandCycleStart)),
      mark(add(TextId::CommandMark, Qt::Key_F8)),
      chooseFile(add(TextId::MenuChooseFile, Qt::CTRL | Qt::Key_D)),
      additional(add(TextId::MenuSynchronisation, Qt::Key_F7)),
      saveAsText(add(TextId::MenuSaveAsText, Qt::CTRL | Qt::Key_T)),
      showSignal(addToggle(TextId::MenuShowSignal)),
      marks(add(TextId::MenuMarks, Qt::CTRL | Qt::Key_M)),
      detachSignal(addToggle(TextId::MenuDetachSignal)),
      showPanels(addToggle(TextId::MenuShowPanels, Qt::CTRL | Qt::Key_B)),
      channelTable(addToggle(TextId::MenuChannelTable, Qt::CTRL | Qt::Key_K)),
      showMessages(addToggle(TextId::MenuShowMessages, Qt::CTRL | Qt::Key_L)),
      extendedChannels(addToggle(TextId::MenuExtendedChannels)),
      openRecording(add(TextId::MenuOpenRecording, QKeySequence::Open)),
      compareRecording(add(TextId::MenuCompareRecording, Qt::CTRL | Qt::SHIFT | Qt::Key_O)),
      digitalLines(add(TextId::DigitalLineSettings)),
      russian(addToggle(TextId::LanguageRussian)),
      english(addToggle(TextId::LanguageEnglish)),
      recover(add(TextId::MenuRecover)),
      setups(add(TextId::MenuSetups, Qt::CTRL | Qt::Key_P)),
      autoSettings(add(TextId::MenuAutoSettings)),
      exit(add(TextId::MenuExit, Qt::CTRL | Qt::Key_Q)),
      manual(add(TextId::MenuManual, Qt::Key_F1)),
      about(add(TextId::MenuAbout)) {
    additional->setObjectName(QStringLiteral("AdditionalFileMode"));
    saveAsText->setObjectName(QStringLiteral("SaveAsTextButton"));
    setups->setObjectName(QStringLiteral("SetupsAction"));
    russian->setObjectName(QStringLiteral("RussianChoose"));
    english->setObjectName(QStringLiteral("EnglishChoose"));
    auto* languages = new QActionGroup(&window_);
    languages->addAction(russian);
    languages->addAction(english);
    showPanels->setChecked(true);
    channelTable->setChecked(true);
    mark->setEnabled(false);
    mark->setAutoRepeat(false);
    installHelpKey(*manual);
    buildMenus();
}

QAction* MainMenu::add(TextId text, const QKeySequence& key) {
    auto* action = new QAction(&window_);
    action->setShortcut(key);
    window_.addAction(action);
    actions_.emplace_back(action, text);
    return action;
}

QAction* MainMenu::addToggle(TextId text, const QKeySequence& key) {
    QAction* action = add(text, key);
    action->setCheckable(true);
    return action;
}

QMenu* MainMenu::addMenu(TextId text) {
    QMenu* menu = window_.menuBar()->addMenu(QString());
    menus_.emplace_back(menu, text);
    return menu;
}

void MainMenu::buildMenus() {
    QMenu* file = addMenu(TextId::MenuFile);
    file->addActions({openRecording, compareRecording});
    recent = file->addMenu(QString());
    recent->setObjectName(QStringLiteral("RecentRecordings"));
    menus_.emplace_back(recent, TextId::RecentRecordings);
    file->addActions({chooseFile, saveAsText, recover});
    file->addSeparator();
    file->addAction(exit);
    QMenu* recording = addMenu(TextId::MenuRecording);
    recording->addActions({monitor, start, stop, cycle, mark});
    recording->addSeparator();
    recording->addAction(additional);
    view = addMenu(TextId::MenuView);
    view->addActions({showSignal, detachSignal, marks});
    view->addSeparator();
    view->addActions({showPanels, channelTable, extendedChannels, showMessages});
    QMenu* settings = addMenu(TextId::MenuSettings);
    selectLanguage = settings->addMenu(QString());
    selectLanguage->setObjectName(QStringLiteral("SelectLanguageMenu"));
    menus_.emplace_back(selectLanguage, TextId::SelectLanguage);
    selectLanguage->addActions({russian, english});
    settings->addAction(digitalLines);
    settings->addSeparator();
    settings->addActions({setups, autoSettings});
    addMenu(TextId::MenuHelp)->addActions({manual, about});
}

void MainMenu::retranslate() {
    for (const auto& [action, id] : actions_) {
        action->setText(uiText(id));
    }
    for (const auto& [menu, id] : menus_) {
        menu->setTitle(uiText(id));
    }
    // Whoever looks for his language knows its own name for it.
    russian->setText(QStringLiteral("Русский"));
    english->setText(QStringLiteral("English"));
    (languageTable().selected() == kLanguageRussian ? russian : english)->setChecked(true);
}

void MainMenu::setLocked(SettingsLock lock) {
    for (QAction* action : {openRecording, compareRecording, setups, autoSettings}) {
        action->setEnabled(lock == SettingsLock::None);
    }
    for (QAction* action : {chooseFile, additional}) {
        action->setEnabled(lock != SettingsLock::All);
    }
    recent->setEnabled(lock == SettingsLock::None);
}

}  // namespace tarno2
