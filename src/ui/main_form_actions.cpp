// What the menus hold, and what they do beside recording.

#include <QAction>
#include <QActionGroup>
#include <QDir>
#include <QDockWidget>
#include <QFileDialog>
#include <QMenu>
#include <QMenuBar>

#include "config/files/recording_name.h"
#include "config/logs/debug_log.h"
#include "config/settings/language_choice.h"
#include "display/recorded.h"
#include "language/language_table.h"
#include "platform/file.h"
#include "ui/about_box.h"
#include "ui/additional_mode_facts.h"
#include "ui/help.h"
#include "ui/main_form.h"
#include "ui/main_status_bar.h"
#include "ui/message_list.h"
#include "ui/panels/channels_panel.h"
#include "ui/panels/file_panel.h"
#include "ui/panels/panel_stack.h"
#include "ui/panels/program_panel.h"
#include "ui/save_as_text_form.h"
#include "ui/show_form.h"
#include "ui/text.h"
#include "ui/toolkit_texts.h"

namespace tarno2 {

QMenu* T_MainForm::addMenu(TextId text) {
    QMenu* menu = menuBar()->addMenu(QString());
    menus_.emplace_back(menu, text);
    return menu;
}

QAction* T_MainForm::addAction(TextId text, void (T_MainForm::*handler)(), const QKeySequence& key) {
    auto* action = new QAction(this);
    action->setShortcut(key);
    QMainWindow::addAction(action);
    if (handler != nullptr) {
        connect(action, &QAction::triggered, this, handler);
    }
    actions_.emplace_back(action, text);
    return action;
}

QAction* T_MainForm::addToggle(TextId text, std::function<void(bool)> toggled) {
    auto* action = new QAction(this);
    action->setCheckable(true);
    QMainWindow::addAction(action);
    connect(action, &QAction::toggled, this, std::move(toggled));
    actions_.emplace_back(action, text);
    return action;
}

void T_MainForm::buildActions() {
    start_ = addAction(TextId::CommandStart, &T_MainForm::StartButtonClick, QKeySequence(Qt::Key_F5));
    stop_ = addAction(TextId::CommandStop, &T_MainForm::StopButtonClick, QKeySequence(Qt::Key_F6));
    cycle_ = addToggle(TextId::CommandCycleStart, [this](bool down) { btnAutoStartClick(down); });
    chooseFile_ =
        addAction(TextId::MenuChooseFile, &T_MainForm::ButtonSetFileNameClick, QKeySequence(Qt::CTRL | Qt::Key_D));
    additional_ =
        addAction(TextId::MenuAdditionalSettings, &T_MainForm::AdditionalFileModeClick, QKeySequence(Qt::Key_F7));
    additional_->setObjectName(QStringLiteral("AdditionalFileMode"));
    saveAsText_ =
        addAction(TextId::MenuSaveAsText, &T_MainForm::SaveAsTextButtonClick, QKeySequence(Qt::CTRL | Qt::Key_T));
    saveAsText_->setObjectName(QStringLiteral("SaveAsTextButton"));
    showSignal_ = addToggle(TextId::MenuShowSignal, [this](bool shown) { signalDock_->setVisible(shown); });
    detachSignal_ = addToggle(TextId::MenuDetachSignal, [this](bool apart) { signalDock_->setFloating(apart); });
    connect(signalDock_, &QDockWidget::visibilityChanged, this,
            [this] { showSignal_->setChecked(!signalDock_->isHidden()); });
    connect(signalDock_, &QDockWidget::topLevelChanged, detachSignal_, &QAction::setChecked);
    showPanels_ = addToggle(TextId::MenuShowPanels, [this](bool shown) { panels_->setVisible(shown); });
    showMessages_ = addToggle(TextId::MenuShowMessages, [this](bool shown) { messages_->setVisible(shown); });
    showMessages_->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_L));
    showPanels_->setChecked(true);
    showMessages_->setChecked(true);
    extendedChannels_ =
        addToggle(TextId::MenuExtendedChannels, [this](bool on) { channelsPanel_->setExtendedView(on); });
    openRecording_ = addAction(TextId::MenuOpenRecording, &T_MainForm::OpenRecordingClick, QKeySequence::Open);
    digitalLines_ = addAction(TextId::DigitalLineSettings, &T_MainForm::DigitalSettingsClick);
    auto* languages = new QActionGroup(this);
    russianChoose_ = addAction(TextId::LanguageRussian, &T_MainForm::RussianChooseClick);
    englishChoose_ = addAction(TextId::LanguageEnglish, &T_MainForm::EnglishChooseClick);
    russianChoose_->setObjectName(QStringLiteral("RussianChoose"));
    englishChoose_->setObjectName(QStringLiteral("EnglishChoose"));
    for (QAction* action : {russianChoose_, englishChoose_}) {
        action->setCheckable(true);
        languages->addAction(action);
    }
}

void T_MainForm::buildMenus() {
    QMenu* file = addMenu(TextId::MenuFile);
    file->addAction(openRecording_);
    file->addAction(chooseFile_);
    file->addAction(saveAsText_);
    file->addAction(addAction(TextId::MenuRecover, &T_MainForm::RecoverRecordingsClick));
    file->addSeparator();
    QAction* exit = addAction(TextId::MenuExit, nullptr, QKeySequence(Qt::CTRL | Qt::Key_Q));
    connect(exit, &QAction::triggered, this, &QWidget::close);
    file->addAction(exit);
    QMenu* recording = addMenu(TextId::MenuRecording);
    recording->addActions({start_, stop_, cycle_});
    recording->addSeparator();
    recording->addAction(additional_);
    QMenu* view = addMenu(TextId::MenuView);
    view->addActions({showSignal_, detachSignal_});
    view->addSeparator();
    view->addActions({showPanels_, showMessages_, extendedChannels_});
    QMenu* settings = addMenu(TextId::MenuSettings);
    selectLanguageMenu_ = settings->addMenu(QString());
    selectLanguageMenu_->setObjectName(QStringLiteral("SelectLanguageMenu"));
    menus_.emplace_back(selectLanguageMenu_, TextId::SelectLanguage);
    settings->addAction(digitalLines_);
    selectLanguageMenu_->addActions({russianChoose_, englishChoose_});
    QMenu* help = addMenu(TextId::MenuHelp);
    help->addAction(addAction(TextId::MenuManual, &T_MainForm::HelpClick, QKeySequence(Qt::Key_F1)));
    help->addAction(addAction(TextId::MenuAbout, &T_MainForm::AboutClick));
}

void T_MainForm::SetCaptions() {
    translateToolkit();
    setWindowTitle(uiText(TextId::ProgramName));
    for (const auto& [action, id] : actions_) {
        action->setText(uiText(id));
    }
    for (const auto& [menu, id] : menus_) {
        menu->setTitle(uiText(id));
    }
    if (showForm_ != nullptr) {
        showForm_->retranslate();
    }
    if (textForm_ != nullptr) {
        textForm_->loadCaptions();
    }
    strip_->retranslate();
    panels_->retranslate();
    messages_->retranslate();
    statusLine_->retranslate();
    const bool russian = languageTable().selected() == kLanguageRussian;
    (russian ? russianChoose_ : englishChoose_)->setChecked(true);
    showBoardStatus();
    showDisk();
    showNeed();
    refreshRun();
}

void T_MainForm::SelectLanguageButtonClick() {
    guarded("SelectLanguageButtonClick", [this] {
        DEBUG_LOG("SelectLanguageButtonClick");
        selectLanguageMenu_->popup(QCursor::pos());
    });
}

void T_MainForm::RussianChooseClick() {
    guarded("RussianChooseClick", [this] { chooseLanguage(InterfaceLanguage::Russian); });
}

void T_MainForm::EnglishChooseClick() {
    guarded("EnglishChooseClick", [this] { chooseLanguage(InterfaceLanguage::English); });
}

void T_MainForm::chooseLanguage(InterfaceLanguage language) {
    switchLanguage(language);
    settings_.language = language;
    programPanel_->setLanguage(language);
    SetCaptions();
}

void T_MainForm::ButtonSetFileNameClick() {
    guarded("ButtonSetFileNameClick", [this] {
        DEBUG_LOG("ButtonSetFileNameClick");
        QFileDialog dialog(this, plainText(TextId::DataFile), fromFileName(fileName()));
        dialog.setAcceptMode(QFileDialog::AcceptSave);
        dialog.setNameFilters({uiText(TextId::DataFileFilter), uiText(TextId::AllFilesFilter)});
        dialog.setDefaultSuffix(QStringLiteral("dat"));
        // What happens to a recording of that name is asked when the next one starts.
        dialog.setOption(QFileDialog::DontConfirmOverwrite);
        if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) {
            DEBUG_LOG("ButtonSetFileNameClick Cancel");
            return;
        }
        const std::string name = toFileName(QDir::toNativeSeparators(dialog.selectedFiles().first()));
        DEBUG_LOG("ButtonSetFileNameClick Result file = \"%s\"", name.c_str());
        setFileName(name);
        FileNameEditChange();
    });
}

void T_MainForm::AdditionalFileModeClick() {
    guarded("AdditionalFileModeClick", [this] {
        DEBUG_LOG("AdditionalFileModeClick");
        additionalWindow_->setFacts(additionalModeFacts(settings(), selection_));
        additionalWindow_->open();
    });
}

void T_MainForm::SaveAsTextButtonClick() {
    guarded("SaveAsTextButtonClick", [this] {
        DEBUG_LOG("SaveAsTextButtonClick");
        if (textForm_ != nullptr) {
            textForm_->raise();
            textForm_->activateWindow();
            return;
        }
        const QString chosen = QFileDialog::getOpenFileName(
            this, plainText(TextId::ExportWindow), fromFileName(shownFile()),
            uiText(TextId::DataFileFilter) + QStringLiteral(";;") + uiText(TextId::AllFilesFilter));
        if (chosen.isEmpty()) {
            return;
        }
        TextExportSource source{dataFileOf(toFileName(QDir::toNativeSeparators(chosen))), {}};
        if (isOfLastRun(source.dataFile)) {
            source.known = runInputs_;
        }
        textForm_ = new T_SaveAsTextForm(settings_.textExport, std::move(source), this);
        textForm_->setAttribute(Qt::WA_DeleteOnClose);
        textForm_->show();
    });
}

bool T_MainForm::isOfLastRun(const std::string& dataFile) const {
    for (uint32_t piece = 0; !runFile_.empty() && fileExists(RecordingName(runFile_).piece(piece)); ++piece) {
        if (isSameFile(dataFile, RecordingName(runFile_).piece(piece))) {
            return true;
        }
    }
    return false;
}

void T_MainForm::HelpClick() {
    guarded("HelpClick", [this] {
        DEBUG_LOG("HelpClick");
        if (openManual()) {
            return;
        }
        messages_->add(MessageList::Kind::Attention, uiText(TextId::HelpNotFound));
        if (!control_.running()) {
            tell(uiText(TextId::HelpNotFound));
        }
    });
}

void T_MainForm::AboutClick() {
    guarded("AboutClick", [this] {
        AboutBox::Facts facts;
        if (!search_.busy() && selection_.driver().loaded()) {
            facts.driver = selection_.driver().name();
            static_cast<void>(selection_.driver().device().get(kADCGetAbiVersion, facts.driverInterface));
        }
        facts.programDirectory = programDirectory_;
        AboutBox box(facts, this);
        connect(&box, &AboutBox::manualAsked, this, &T_MainForm::HelpClick);
        box.exec();
    });
}

}  // namespace tarno2
