// The first start: what is offered before anything was chosen.

#include <QDockWidget>

#include "config/settings/settings_file.h"
#include "ui/first_page.h"
#include "ui/main_form.h"
#include "ui/message_bar.h"
#include "ui/recording_stack.h"
#include "ui/show_form.h"
#include "ui/text.h"

namespace tarno2 {

void T_MainForm::showFirstPage() {
    firstPage_ = new FirstPage(signalDock_);
    connect(firstPage_, &FirstPage::skipped, this, &T_MainForm::endFirstPage);
    connect(firstPage_, &FirstPage::chosen, this, [this](FirstPage::Choice choice) {
        guarded("FirstChoice", [this, choice] {
            if (choice == FirstPage::Sample) {
                showRecording(sampleRecording());
            } else {
                tryBoard(choice);
            }
        });
    });
    signalDock_->setWidget(firstPage_);
    signalDock_->show();
}

// The signal is in its place from now on, and the settings are kept at once, or with the end of the program while a
// board is looked for: the page does not come a second time.
void T_MainForm::endFirstPage() {
    if (firstPage_ == nullptr) {
        return;
    }
    firstPage_->disconnect(this);
    firstPage_->deleteLater();
    firstPage_ = nullptr;
    signalDock_->setWidget(signalStack_);
    signalStack_->show();
    showForm_->setFocus();
    // Before the board was found the settings name none yet.
    if (search_.busy()) {
        return;
    }
    guarded("FirstPage", [this] {
        storeControls();
        storePlaces();
        static_cast<void>(WriteConfig(programDirectory_, settings_, settingsUnread_));
    });
}

// Monitoring shows at once that there is a signal, and leaves no file behind.
void T_MainForm::tryBoard(int choice) {
    if (control().running()) {
        return;
    }
    if (search_.busy()) {
        messages_->add(MessageList::Kind::Information, uiText(TextId::LookingForBoard));
        return;
    }
    const auto which = static_cast<FirstPage::Choice>(choice);
    const QString driver = QLatin1String(FirstPage::driverOf(which));
    chooseDriver(driver, &T_MainForm::startMonitoring, [this, which, driver](ApplyOutcome outcome) {
        if (outcome == ApplyOutcome::Done) {
            return;
        }
        whenFound_ = nullptr;
        if (firstPage_ != nullptr) {
            const QString why = fromMessage(selection().problem());
            firstPage_->showProblem(
                which, why.isEmpty() ? uiText(TextId::NeedsBoard, {driver}) : driver + QStringLiteral(": ") + why);
        }
    });
}

}  // namespace tarno2
