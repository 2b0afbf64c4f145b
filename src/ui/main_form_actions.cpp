// What the menus hold, and what they do beside recording.

#include <QAction>
#include <QDir>
#include <QDockWidget>
#include <QFileDialog>
#include <QMenu>
#include <QToolButton>

#include "config/logs/debug_log.h"
#include "config/settings/language_choice.h"
#include "display/recorded.h"
#include "ui/about_box.h"
#include "ui/additional_mode_facts.h"
#include "ui/first_page.h"
#include "ui/help.h"
#include "ui/main_form.h"
#include "ui/main_status_bar.h"
#include "ui/message_bar.h"
#include "ui/panels/channels_panel.h"
#include "ui/panels/file_panel.h"
#include "ui/panels/panel_stack.h"
#include "ui/panels/program_panel.h"
#include "ui/recording_stack.h"
#include "ui/save_as_text_form.h"
#include "ui/show_form.h"
#include "ui/state_strip.h"
#include "ui/text.h"
#include "ui/toolkit_texts.h"

namespace tarno2 {

void T_MainForm::connectMenu() {
    const auto does = [this](QAction* action, void (T_MainForm::*handler)()) {
        connect(action, &QAction::triggered, this, handler);
    };
    does(menu_.start, &T_MainForm::StartButtonClick);
    does(menu_.monitor, &T_MainForm::MonitorClick);
    does(menu_.stop, &T_MainForm::StopButtonClick);
    does(menu_.mark, &T_MainForm::MarkClick);
    connect(menu_.marks, &QAction::triggered, this, [this] { showForm_->MarksClick(); });
    does(menu_.chooseFile, &T_MainForm::ButtonSetFileNameClick);
    does(menu_.additional, &T_MainForm::AdditionalFileModeClick);
    does(menu_.saveAsText, &T_MainForm::SaveAsTextButtonClick);
    does(menu_.openRecording, &T_MainForm::OpenRecordingClick);
    does(menu_.compareRecording, &T_MainForm::CompareRecordingClick);
    does(menu_.recover, &T_MainForm::RecoverRecordingsClick);
    does(menu_.setups, &T_MainForm::SetupsClick);
    does(menu_.autoSettings, &T_MainForm::AutoSettingsClick);
    does(menu_.digitalLines, &T_MainForm::DigitalSettingsClick);
    does(menu_.russian, &T_MainForm::RussianChooseClick);
    does(menu_.english, &T_MainForm::EnglishChooseClick);
    does(menu_.manual, &T_MainForm::HelpClick);
    does(menu_.about, &T_MainForm::AboutClick);
    connect(menu_.exit, &QAction::triggered, this, &QWidget::close);
    connect(menu_.cycle, &QAction::toggled, this, &T_MainForm::btnAutoStartClick);
    connect(menu_.showSignal, &QAction::toggled, signalDock_, &QWidget::setVisible);
    connect(menu_.detachSignal, &QAction::toggled, signalDock_, &QDockWidget::setFloating);
    connect(signalDock_, &QDockWidget::visibilityChanged, this,
            [this] { menu_.showSignal->setChecked(!signalDock_->isHidden()); });
    connect(signalDock_, &QDockWidget::topLevelChanged, menu_.detachSignal, &QAction::setChecked);
    connect(menu_.extendedChannels, &QAction::toggled, this, [this](bool on) { channelsPanel_->setExtendedView(on); });
    connect(menu_.extendedChannels, &QAction::triggered, this, &T_MainForm::makeRoomForTable);
}

void T_MainForm::SetCaptions() {
    translateToolkit();
    setWindowTitle(uiText(TextId::ProgramName));
    menu_.retranslate();
    if (showForm_ != nullptr) {
        signalStack_->retranslate();
    }
    if (firstPage_ != nullptr) {
        firstPage_->retranslate();
    }
    if (textForm_ != nullptr) {
        textForm_->loadCaptions();
    }
    strip_->retranslate();
    panels_->retranslate();
    messages_->retranslate();
    tableButton_->setToolTip(plainText(TextId::MenuChannelTable));
    tableButton_->setAccessibleName(plainText(TextId::MenuChannelTable));
    statusLine_->retranslate();
    showBoard();
    showDisk();
    showNeed();
    host_.follow();
}

void T_MainForm::SelectLanguageButtonClick() {
    guarded("SelectLanguageButtonClick", [this] {
        DEBUG_LOG("SelectLanguageButtonClick");
        menu_.selectLanguage->popup(QCursor::pos());
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
        additionalWindow_->setFacts(additionalModeFacts(host_.settings(), selection()));
        additionalWindow_->open();
    });
}

void T_MainForm::SaveAsTextButtonClick() {
    guarded("SaveAsTextButtonClick", [this] {
        DEBUG_LOG("SaveAsTextButtonClick");
        if (raiseTextForm()) {
            return;
        }
        const QString chosen = QFileDialog::getOpenFileName(
            this, plainText(TextId::ExportWindow), fromFileName(shownFile()),
            uiText(TextId::DataFileFilter) + QStringLiteral(";;") + uiText(TextId::AllFilesFilter));
        if (chosen.isEmpty()) {
            return;
        }
        saveAsText(dataFileOf(toFileName(QDir::toNativeSeparators(chosen))), {});
    });
}

bool T_MainForm::raiseTextForm() {
    if (textForm_ != nullptr) {
        textForm_->raise();
        textForm_->activateWindow();
    }
    return textForm_ != nullptr;
}

void T_MainForm::saveAsText(const std::string& dataFile, const FrameWish& wish) {
    if (raiseTextForm()) {
        return;
    }
    textForm_ = new T_SaveAsTextForm(settings_.textExport, {dataFile, host_.watch().knownInputs(dataFile), wish}, this);
    textForm_->setAttribute(Qt::WA_DeleteOnClose);
    textForm_->show();
}

void T_MainForm::HelpClick() {
    guarded("HelpClick", [this] {
        DEBUG_LOG("HelpClick");
        if (openManual()) {
            return;
        }
        messages_->add(MessageList::Kind::Attention, uiText(TextId::HelpNotFound));
        if (!control().running()) {
            tell(uiText(TextId::HelpNotFound));
        }
    });
}

void T_MainForm::AboutClick() {
    guarded("AboutClick", [this] {
        AboutBox::Facts facts;
        if (!search_.busy() && selection().driver().loaded()) {
            facts.driver = selection().driver().name();
            static_cast<void>(selection().driver().device().get(kADCGetAbiVersion, facts.driverInterface));
        }
        facts.programDirectory = programDirectory_;
        AboutBox box(facts, this);
        connect(&box, &AboutBox::manualAsked, this, &T_MainForm::HelpClick);
        box.exec();
    });
}

}  // namespace tarno2
