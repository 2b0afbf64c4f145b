// Measurements that are kept under a name, and files that record them unattended.

#include <QDir>
#include <QFileDialog>
#include <QPushButton>

#include "config/logs/debug_log.h"
#include "config/settings/auto_settings_writer.h"
#include "config/settings/driver_values.h"
#include "config/settings/setup_file.h"
#include "ui/additional_mode_window.h"
#include "ui/main_form.h"
#include "ui/main_menu.h"
#include "ui/message_bar.h"
#include "ui/panels/panel_stack.h"
#include "ui/setups_window.h"
#include "ui/show_form.h"
#include "ui/text.h"

namespace tarno2 {

void T_MainForm::SetupsClick() {
    guarded("SetupsClick", [this] {
        SetupsWindow window(programDirectory_, this);
        connect(&window, &SetupsWindow::saveAsked, this,
                [this](const QString& name) { guarded("SaveSetup", [&] { saveSetup(name); }); });
        connect(&window, &SetupsWindow::loadAsked, this, [this, &window](const QString& name) {
            guarded("LoadSetup", [&] {
                if (loadSetup(name)) {
                    window.accept();
                }
            });
        });
        window.exec();
    });
}

void T_MainForm::saveSetup(const QString& name) {
    if (search_.busy()) {
        tell(uiText(TextId::SetupNotNow));
        return;
    }
    storeControls();
    ProgramSettings kept = settings_;
    kept.wish.fileName = fileName();
    const std::string path = setupPath(programDirectory_, toFileName(name));
    if (writeSetup(path, kept)) {
        messages_->add(MessageList::Kind::Information, uiText(TextId::SetupSaved, {name}));
    } else {
        tell(uiText(TextId::SetupNotWritten, {fromFileName(path)}));
    }
}

bool T_MainForm::loadSetup(const QString& name) {
    if (control().running() || search_.busy()) {
        tell(uiText(TextId::SetupNotNow));
        return false;
    }
    storeControls();
    ProgramSettings loaded = settings_;
    OsError why;
    const SetupRead read = readSetup(setupPath(programDirectory_, toFileName(name)), loaded, why);
    if (read != SetupRead::Done) {
        tell(uiText(TextId::SetupNotRead,
                    {name, read == SetupRead::NoSetup ? uiText(TextId::SetupNoSettings) : fromMessage(why.text())}));
        return false;
    }
    endFirstPage();
    settings_ = std::move(loaded);
    showLoaded();
    messages_->add(MessageList::Kind::Information, uiText(TextId::SetupLoaded, {name}));
    return true;
}

// Like settings that were there from the start.
void T_MainForm::showLoaded() {
    whenFound_ = nullptr;
    settings_.showFormVisible = menu_.showSignal->isChecked();
    selection().setDriverSettings(settings_.driverSettings);
    panels_->load(settings_);
    menu_.extendedChannels->setChecked(settings_.extendedChannelMode);
    btnAutoStartClick(settings_.wish.cycleStart);
    setFileName(settings_.wish.fileName);
    additionalWindow_->ReloadControls();
    renewSignalView();
    lookForBoard([this, saved = settings_] { return selection().applySaved(saved); },
                 [this](ApplyOutcome outcome) { applyBoard(outcome); });
    FileNameEditChange();
    showConditions();
}

// Without its board nobody knows which modes, channels and options are recorded.
bool T_MainForm::boardTellsAll() {
    if (!search_.busy() && !afterSearch_ && host_.watch().board() == BoardStatus::Ready) {
        return true;
    }
    tell(uiText(TextId::AutoSettingsNeedBoard));
    return false;
}

void T_MainForm::AutoSettingsClick() {
    guarded("AutoSettingsClick", [this] {
        if (!boardTellsAll()) {
            return;
        }
        QFileDialog dialog(this, titleText(TextId::MenuAutoSettings));
        dialog.setAcceptMode(QFileDialog::AcceptSave);
        dialog.setNameFilters({uiText(TextId::AutoSettingsFilter), uiText(TextId::AllFilesFilter)});
        dialog.setDefaultSuffix(QStringLiteral("txt"));
        if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) {
            return;
        }
        // A search may have begun meanwhile.
        if (!boardTellsAll()) {
            return;
        }
        const std::string path = toFileName(QDir::toNativeSeparators(dialog.selectedFiles().first()));
        RecordingWish wish = settings();
        wish.fileName = fileName();
        if (!selection().drqNumbers().empty()) {
            wish.drqNumber = settings_.drqNumber;
        }
        wish.driverSettings = driverValuesText(driverValuesOf(selection().driverSettings(), wish.driver));
        if (writeAutoSettings(path, wish).ok()) {
            messages_->add(MessageList::Kind::Information, uiText(TextId::AutoSettingsSaved, {fromFileName(path)}));
        } else {
            tell(uiText(TextId::SetupNotWritten, {fromFileName(path)}));
        }
    });
}

}  // namespace tarno2
