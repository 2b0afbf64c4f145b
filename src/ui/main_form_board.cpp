// The board: how the window has it looked for, and what the driver is told.

#include <QPushButton>
#include <memory>
#include <utility>

#include "config/logs/debug_log.h"
#include "ui/channel_table.h"
#include "ui/main_form.h"
#include "ui/main_status_bar.h"
#include "ui/message_bar.h"
#include "ui/panels/board_panel.h"
#include "ui/panels/channels_panel.h"
#include "ui/panels/driver_settings_form.h"
#include "ui/panels/panel_stack.h"
#include "ui/state_strip.h"
#include "ui/text.h"

namespace tarno2 {

// Until it is found nobody else may use the driver: what asks it is switched off.
void T_MainForm::lookForBoard(std::function<ApplyOutcome()> search, std::function<void(ApplyOutcome)> found) {
    if (search_.busy()) {
        return;
    }
    searchTimer_.stop();
    afterSearch_ = nullptr;
    auto outcome = std::make_shared<ApplyOutcome>(ApplyOutcome::DriverError);
    search_.run([outcome, search = std::move(search)] { *outcome = search(); },
                [this, outcome, found = std::move(found)] {
                    guarded("BoardFound", [&] {
                        showLooking(false);
                        if (selection().searching()) {
                            searchTimer_.start();
                        }
                        if (*outcome == ApplyOutcome::Searching) {
                            afterSearch_ = found;
                            statusLine_->setBoard(uiText(TextId::SearchingForBoards), false);
                        } else {
                            found(*outcome);
                        }
                        boardChanged();
                    });
                    if (!afterSearch_ && whenFound_ != nullptr) {
                        (this->*std::exchange(whenFound_, nullptr))();
                    }
                });
}

// Nobody waits for a driver that searches for boards by itself: it is asked again and again.
void T_MainForm::followSearch() {
    if (search_.busy() || control().running()) {
        return;
    }
    const size_t before = selection().boards().size();
    const bool goesOn = selection().followSearch();
    if (!goesOn) {
        searchTimer_.stop();
    }
    if (!goesOn && afterSearch_) {
        lookForBoard([this] { return selection().chooseFound(); }, std::exchange(afterSearch_, nullptr));
    } else if (!goesOn || selection().boards().size() != before) {
        boardPanel_->showSearch(selection());
    }
}

void T_MainForm::showLooking(bool looking) {
    if (looking) {
        focusBeforeSearch_ = focusWidget();
    }
    panels_->setEnabled(!looking);
    channelsPanel_->table().setEnabled(!looking);
    boardPanel_->setLooking(looking);
    menu_.additional->setEnabled(!looking);
    menu_.autoSettings->setEnabled(!looking);
    allowStarts();
    if (looking) {
        statusLine_->setBoard(uiText(TextId::LookingForBoard), false);
    } else if (focusBeforeSearch_ != nullptr) {
        // What is switched off loses the keys.
        if (focusWidget() == nullptr) {
            focusBeforeSearch_->setFocus();
        }
        focusBeforeSearch_.clear();
    }
}

void T_MainForm::applyBoard(ApplyOutcome outcome) {
    host_.boardApplied(outcome);
    if (outcome == ApplyOutcome::DriverNotFound) {
        showDriverNotLoaded();
    }
}

void T_MainForm::showDriverNotLoaded() {
    messages_->add(
        MessageList::Kind::Attention,
        uiText(TextId::DriverNotLoaded, {fromFileName(selection().driverName()), fromMessage(selection().problem())}));
}

void T_MainForm::showBoard() {
    if (search_.busy() || afterSearch_ || displayGone_) {
        return;
    }
    const BoardStatus status = host_.watch().board();
    QString shown = uiText(TextId::PanelBoard) + QStringLiteral(": ") + uiText(boardStatusWord(status));
    if (const std::string& driver = selection().driverName(); !driver.empty()) {
        shown += QStringLiteral(" (") + fromFileName(driver) + QLatin1Char(')');
    }
    statusLine_->setBoard(shown, status != BoardStatus::Ready);
    strip_->setState(host_.watch().state());
}

void T_MainForm::DriverBoxChange(const QString& name) {
    guarded("DriverBoxChange", [this, &name] { chooseDriver(name, nullptr, [](ApplyOutcome /*outcome*/) {}); });
}

void T_MainForm::chooseDriver(const QString& name, void (T_MainForm::*whenFound)(),
                              const std::function<void(ApplyOutcome)>& chosen) {
    storeControls();
    whenFound_ = whenFound;
    lookForBoard([this, driver = toFileName(name)] { return selection().choose(driver); },
                 [this, chosen](ApplyOutcome outcome) {
                     showChosenBoard(outcome);
                     host_.tellDriverSettings();
                     chosen(outcome);
                 });
}

void T_MainForm::BaseBoxChange(uint32_t number) {
    guarded("BaseBoxChange", [this, number] {
        storeControls();
        whenFound_ = nullptr;
        lookForBoard(
            [this, number] {
                return selection().BaseBoxChange(number) ? ApplyOutcome::Done : ApplyOutcome::BoardError;
            },
            [this](ApplyOutcome outcome) { showChosenBoard(outcome); });
    });
}

void T_MainForm::showChosenBoard(ApplyOutcome outcome) {
    host_.SetErrorCode(statusOf(outcome));
    if (outcome == ApplyOutcome::DriverError) {
        showDriverNotLoaded();
    } else if (outcome != ApplyOutcome::Done && !selection().problem().empty()) {
        messages_->add(MessageList::Kind::Detail, fromMessage(selection().problem()));
    }
}

void T_MainForm::DriverSettingChange(const QString& key, const QString& value) {
    guarded("DriverSettingChange", [&] {
        if (control().running()) {
            return;
        }
        storeControls();
        whenFound_ = nullptr;
        lookForBoard([this, told = DriverValue{key.toStdString(),
                                               toFileName(value)}] { return selection().changeSetting(told); },
                     [this, key](ApplyOutcome outcome) {
                         if (outcome == ApplyOutcome::SettingRefused) {
                             whenFound_ = nullptr;
                             boardPanel_->driverSettings().showRefusal(key, fromMessage(selection().refusal()));
                         } else {
                             showChosenBoard(outcome);
                         }
                     });
    });
}

void T_MainForm::SearchAgainClick() {
    guarded("SearchAgainClick", [this] {
        storeControls();
        whenFound_ = nullptr;
        lookForBoard(
            [this, loaded = selection().driver().loaded(), driver = settings_.wish.driver, base = settings_.wish.base,
             drq = settings_.drqNumber] {
                return loaded ? selection().searchAgain() : selection().apply(driver, base, drq);
            },
            [this](ApplyOutcome outcome) { showChosenBoard(outcome); });
    });
}

void T_MainForm::DrqBoxChange(int number) {
    guarded("DrqBoxChange", [this, number] { selection().setDrqNumber(number); });
}

}  // namespace tarno2
