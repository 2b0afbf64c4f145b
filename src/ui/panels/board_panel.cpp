#include "ui/panels/board_panel.h"

#include <QComboBox>
#include <QFormLayout>
#include <QLabel>
#include <QPushButton>
#include <QSignalBlocker>
#include <algorithm>

#include "core/devices/board_options.h"
#include "platform/c_locale.h"
#include "ui/panels/driver_settings_form.h"
#include "ui/panels/mark_line_row.h"
#include "ui/panels/option_box.h"
#include "ui/panels/panel_layout.h"
#include "ui/text.h"

namespace tarno2 {

namespace {

QString missingBoard(uint32_t number) {
    return uiText(TextId::NotFoundEntry, {QString::fromStdString(formatText("%03X", number))});
}

}  // namespace

BoardPanel::BoardPanel(QWidget* parent)
    : SettingsPanel(parent),
      driverLabel_(new QLabel(this)),
      baseLabel_(new QLabel(this)),
      drqLabel_(new QLabel(this)),
      driverBox_(makeList(this, QStringLiteral("DriverBox"))),
      settings_(new DriverSettingsForm(driverBox_, this)),
      baseBox_(makeList(this, QStringLiteral("BaseBox"))),
      searchButton_(named<QPushButton>("SearchAgainButton", this)),
      drqBox_(makeList(this, QStringLiteral("DrqBox"))),
      differential_(new OptionBox(this)),
      digitalPort_(new OptionBox(this)),
      hardwareAverage_(new OptionBox(this)),
      markLabel_(new QLabel(this)),
      markLine_(new MarkLineRow(this)),
      factsLabel_(makeText(this, QStringLiteral("BoardFactsLabel"))),
      needLine_(new NeedLine(QStringLiteral("BoardNeed"), true, this)) {
    setObjectName(QStringLiteral("BoardPanel"));
    differential_->setObjectName(QStringLiteral("DiffModeBox"));
    digitalPort_->setObjectName(QStringLiteral("DigitalPortBox"));
    hardwareAverage_->setObjectName(QStringLiteral("HardwareAverageBox"));
    QFormLayout* layout = makePanelLayout(this);
    layout->addRow(driverLabel_, driverBox_);
    layout->addRow(settings_);
    layout->addRow(baseLabel_, baseBox_);
    layout->addRow(QString(), searchButton_);
    layout->addRow(drqLabel_, drqBox_);
    layout->addRow(needLine_);
    layout->addRow(factsLabel_);
    for (OptionBox* box : {differential_, digitalPort_, hardwareAverage_}) {
        layout->addRow(box);
        connect(box, &OptionBox::clicked, this, &SettingsPanel::changed);
    }
    layout->addRow(markLabel_, markLine_);
    driverLabel_->setBuddy(driverBox_);
    baseLabel_->setBuddy(baseBox_);
    drqLabel_->setBuddy(drqBox_);
    connect(markLine_, &MarkLineRow::changed, this, &SettingsPanel::changed);
    for (QWidget* control : std::initializer_list<QWidget*>{markLine_, driverBox_, settings_, baseBox_, searchButton_,
                                                            drqBox_, differential_, digitalPort_, hardwareAverage_}) {
        manage(control);
    }
    connect(driverBox_, &QComboBox::activated, this, [this](int row) {
        emit driverChosen(driverBox_->itemData(row).toString());
        emit changed();
    });
    connect(baseBox_, &QComboBox::activated, this, [this](int row) {
        emit baseChosen(baseBox_->itemData(row).toUInt());
        emit changed();
    });
    connect(drqBox_, &QComboBox::activated, this, [this](int row) {
        drqNumber_ = drqBox_->itemData(row).toInt();
        emit drqChosen(drqNumber_);
        emit changed();
    });
    connect(hardwareAverage_, &OptionBox::clicked, this, &BoardPanel::hardwareAverageChanged);
    connect(searchButton_, &QPushButton::clicked, this, &BoardPanel::searchAsked);
    connect(needLine_, &NeedLine::asked, this, &BoardPanel::meetNeed);
    retranslate();
}

void BoardPanel::load(const ProgramSettings& settings) {
    drqNumber_ = settings.drqNumber;
    const int row = drqBox_->findData(drqNumber_);
    drqBox_->setCurrentIndex(std::max(row, 0));
    differential_->setWish(settings.wish.hasMode(kBoardDifferential));
    digitalPort_->setWish(settings.wish.useDigitalPort);
    hardwareAverage_->setWish(settings.wish.hardwareAverage);
    markLine_->setWish(settings.wish.markLine, settings.wish.markEdge);
}

void BoardPanel::store(ProgramSettings& settings) const {
    if (driverBox_->currentIndex() >= 0) {
        settings.wish.driver = toFileName(driverBox_->currentData().toString());
    }
    if (const uint32_t number = baseBox_->currentData().toUInt(); number != 0) {
        settings.wish.base = number;
    }
    settings.drqNumber = drqNumber_;
    settings.wish.setMode(kBoardDifferential, differential_->wish());
    settings.wish.useDigitalPort = digitalPort_->wish();
    settings.wish.hardwareAverage = hardwareAverage_->wish();
    settings.wish.markLine = markLine_->line();
    settings.wish.markEdge = markLine_->edge();
}

void BoardPanel::retranslate() {
    driverLabel_->setText(uiText(TextId::StatusDriver));
    baseLabel_->setText(uiText(TextId::PanelBoard));
    searchButton_->setText(uiText(TextId::SearchAgain));
    settings_->retranslate();
    drqLabel_->setText(uiText(TextId::BoardDrq));
    differential_->setText(uiText(TextId::DifferentialInputs));
    digitalPort_->setText(uiText(TextId::UseDigitalPort));
    hardwareAverage_->setText(uiText(TextId::HardwareAverage));
    markLabel_->setText(uiText(TextId::MarkLineLabel));
    markLine_->retranslate();
    if (baseBox_->count() == 1 && baseBox_->itemData(0).toUInt() == 0) {
        baseBox_->setItemText(0, uiText(TextId::UnknownBoard));
    }
    // What is missing stands last.
    if (const int last = driverBox_->count() - 1; driverMissing_) {
        driverBox_->setItemText(last, uiText(TextId::NotFoundEntry, {driverBox_->itemData(last).toString()}));
    }
    if (const int last = baseBox_->count() - 1; boardMissing_) {
        baseBox_->setItemText(last, missingBoard(baseBox_->itemData(last).toUInt()));
    }
    setHint(driverBox_, uiText(TextId::BoardDriverHint));
    setHint(searchButton_, uiText(TextId::SearchAgainHint));
    setHint(drqBox_, uiText(TextId::BoardDrq));
    setHint(differential_, uiText(TextId::DifferentialInputsHint));
    setHint(digitalPort_, uiText(TextId::UseDigitalPortHint));
    setHint(hardwareAverage_, uiText(TextId::HardwareAverageHint));
    showFacts();
}

void BoardPanel::boardChanged(BoardSelection& selection) {
    selection_ = &selection;
    facts_ = selection.driver().facts();
    boardUsable_ = selection.driver().startAllowed();
    driverLoaded_ = selection.driver().loaded();
    driverName_ = fromFileName(selection.driverName());
    problem_ = fromMessage(selection.problem());
    searching_ = selection.searching();
    markLine_->setLines(facts_.formatKnown ? facts_.format.m_nDigitalLines : 0);
    fillDrivers(selection);
    settings_->showSettings(selection.driverName(), selection.settings());
    fillBoards(selection);
    fillDrqNumbers(selection);
    showFacts();
}

void BoardPanel::setLooking(bool looking) {
    looking_ = looking;
    showFacts();
}

void BoardPanel::meetNeed() {
    if (need_.way == BoardNeed::Way::Search) {
        emit searchAsked();
    } else if (need_.way != BoardNeed::Way::None) {
        settings_->askFirst();
    }
}

void BoardPanel::showSearch(const BoardSelection& selection) {
    searching_ = selection.searching();
    fillBoards(selection);
    showFacts();
}

void BoardPanel::fillDrivers(BoardSelection& selection) {
    const QSignalBlocker quiet(driverBox_);
    driverBox_->clear();
    for (const std::string& installed : BoardSelection::installedDrivers()) {
        const QString name = fromFileName(installed);
        driverBox_->addItem(name, name);
    }
    driversInstalled_ = driverBox_->count() > 0;
    const QString chosen =
        fromFileName(selection.driver().loaded() ? selection.driver().name() : selection.driverName());
    driverMissing_ = !chosen.isEmpty() && driverBox_->findData(chosen) < 0 && !selection.driver().loaded();
    if (!chosen.isEmpty() && driverBox_->findData(chosen) < 0) {
        driverBox_->addItem(driverMissing_ ? uiText(TextId::NotFoundEntry, {chosen}) : chosen, chosen);
    }
    driverBox_->setCurrentIndex(chosen.isEmpty() ? -1 : driverBox_->findData(chosen));
}

void BoardPanel::fillBoards(const BoardSelection& selection) {
    const QSignalBlocker quiet(baseBox_);
    baseBox_->clear();
    for (const ADCBoardEntry& board : selection.boards()) {
        baseBox_->addItem(fromMessage(board.m_sName), board.m_nNumber);
    }
    const uint32_t chosen = selection.boardNumber();
    const bool absent = chosen != 0 && baseBox_->findData(chosen) < 0;
    boardMissing_ = absent && !searching_;
    if (absent) {
        baseBox_->addItem(boardMissing_ ? missingBoard(chosen) : QString::fromStdString(formatText("%03X", chosen)),
                          chosen);
    }
    if (baseBox_->count() == 0) {
        baseBox_->addItem(uiText(TextId::UnknownBoard), 0U);
    }
    baseBox_->setCurrentIndex(std::max(baseBox_->findData(chosen), 0));
}

void BoardPanel::fillDrqNumbers(BoardSelection& selection) {
    const QSignalBlocker quiet(drqBox_);
    drqBox_->clear();
    for (const int32_t number : selection.drqNumbers()) {
        drqBox_->addItem(QString::number(number), number);
    }
    drqBox_->setCurrentIndex(std::max(drqBox_->findData(drqNumber_), 0));
}

void BoardPanel::showFacts() {
    const QString reason = uiText(TextId::NotOfferedHint);
    const auto offer = [&](OptionBox* box, BoardOption option) {
        box->setOffered(offers(facts_, option));
        setAvailable(box, box->offered(), reason);
    };
    offer(differential_, BoardOption::Differential);
    offer(digitalPort_, BoardOption::DigitalPort);
    offer(hardwareAverage_, BoardOption::HardwareAverage);
    // The name may be longer than the field.
    setHint(baseBox_, uiText(TextId::BoardNumberHint) + QLatin1Char('\n') + baseBox_->currentText());
    // Few boards have DRQ numbers: the others don't show the choice at all.
    const bool hasDrq = drqBox_->count() > 0;
    drqLabel_->setVisible(hasDrq);
    drqBox_->setVisible(hasDrq);
    setAvailable(driverBox_, driversInstalled_, uiText(TextId::NoDriverInstalled));
    setAvailable(baseBox_, baseBox_->currentData().toUInt() != 0, problem_.isEmpty() ? reason : problem_);

    if (looking_) {
        showText(factsLabel_, uiText(TextId::LookingForBoard));
    } else if (searching_) {
        showText(factsLabel_, uiText(TextId::SearchingForBoards));
    } else if (boardUsable_) {
        showText(factsLabel_, uiText(TextId::BoardFacts,
                                     {QString::number(facts_.channelCount), QString::number(facts_.format.m_nCodeBits),
                                      QString::number(facts_.packed() ? facts_.format.m_nDigitalLines : 0)}));
    } else if (!driversInstalled_) {
        showText(factsLabel_, uiText(TextId::NoDriverInstalled), true);
    } else if (!driverLoaded_ && !driverName_.isEmpty()) {
        showText(factsLabel_, uiText(TextId::DriverNotLoaded, {driverName_, problem_}), true);
    } else {
        const QString noBoard = uiText(TextId::PanelBoard) + QStringLiteral(": ") + uiText(TextId::UnknownBoard);
        showText(factsLabel_, problem_.isEmpty() ? noBoard : problem_, true);
    }
    showNeed();
}

// The button that searches again is in the panel anyway.
void BoardPanel::showNeed() {
    need_ = looking_ || selection_ == nullptr ? BoardNeed() : boardNeed(*selection_);
    needLine_->setNeed(need_.way == BoardNeed::Way::Search ? BoardNeed() : need_);
    emit needChanged(need_);
}

}  // namespace tarno2
