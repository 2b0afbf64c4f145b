#include "ui/panels/file_panel.h"

#include <QComboBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalBlocker>
#include <QSpinBox>
#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

#include "config/files/figure_text.h"
#include "core/devices/board_options.h"
#include "platform/codepage1251.h"
#include "ui/number_box.h"
#include "ui/panels/option_box.h"
#include "ui/panels/panel_layout.h"
#include "ui/text.h"

namespace tarno2 {

namespace {

constexpr double kLargestStopValue = 1e9;
constexpr int kLongestComment = 1000;
constexpr std::array kStopRules = {TextId::StopByHand, TextId::StopAfterTime, TextId::StopAfterSize};
constexpr std::array kTimeUnits = {TextId::AxisXSeconds, TextId::AxisXMinutes, TextId::AxisXHours};
constexpr std::array kSizeUnits = {TextId::SizeBytes, TextId::SizeKilobytes, TextId::SizeMegabytes};

QString sizeText(double bytes) {
    constexpr double kMost = 1.8e19;
    return fromCodePage(formatSize(static_cast<uint64_t>(std::clamp(std::round(bytes), 0.0, kMost))));
}

uint64_t wholeSeconds(double seconds) {
    constexpr double kMost = 1e12;
    return static_cast<uint64_t>(std::clamp(seconds, 0.0, kMost));
}

QString rateText(double bytesPerSecond) {
    return fromCodePage(formatRate(bytesPerSecond));
}

/// A line with two fields.
QHBoxLayout* makeRow(QWidget* first, QWidget* second) {
    auto* row = new QHBoxLayout;
    row->addWidget(first, 1);
    row->addWidget(second);
    return row;
}

}  // namespace

FilePanel::FilePanel(QWidget* parent)
    : SettingsPanel(parent),
      nameLabel_(new QLabel(this)),
      nameEdit_(new QLineEdit(this)),
      chooseButton_(new QPushButton(this)),
      problemLabel_(makeText(this, QStringLiteral("FileProblemLabel"))),
      commentLabel_(new QLabel(this)),
      commentEdit_(new QLineEdit(this)),
      stopLabel_(new QLabel(this)),
      stopMode_(makeList(this, QStringLiteral("StopModeBox"))),
      stopValue_(new NumberBox(this)),
      stopUnit_(makeList(this, QStringLiteral("StopPowerBox"))),
      cutMode_(new OptionBox(this)),
      cutValue_(new QSpinBox(this)),
      automaticCut_(new OptionBox(this)),
      speedCheck_(new OptionBox(this)),
      freeLabel_(makeText(this, QStringLiteral("FreeSpaceLabel"))),
      speedLabel_(makeText(this, QStringLiteral("DiskSpeedLabel"))),
      needLabel_(makeText(this, QStringLiteral("NeedLabel"))),
      lastsLabel_(makeText(this, QStringLiteral("DiskLastsLabel"))),
      piecesLabel_(makeText(this, QStringLiteral("PiecesLabel"))),
      warningLabel_(makeText(this, QStringLiteral("DiskWarningLabel"))) {
    setObjectName(QStringLiteral("FilePanel"));
    nameEdit_->setObjectName(QStringLiteral("FileNameEdit"));
    commentEdit_->setObjectName(QStringLiteral("CommentEdit"));
    commentEdit_->setMaxLength(kLongestComment);
    chooseButton_->setObjectName(QStringLiteral("ButtonSetFileName"));
    stopValue_->setObjectName(QStringLiteral("StopValueBox"));
    cutMode_->setObjectName(QStringLiteral("CutModeBox"));
    cutValue_->setObjectName(QStringLiteral("CutModeValueBox"));
    automaticCut_->setObjectName(QStringLiteral("AutoModeCutBox"));
    speedCheck_->setObjectName(QStringLiteral("HDDTestSpeedBox"));
    // As precise as the settings file.
    stopValue_->setDecimals(6);
    stopValue_->setRange(0.0, kLargestStopValue);
    cutValue_->setRange(1, std::numeric_limits<int>::max());
    cutValue_->setAccelerated(true);
    stopUnit_->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    chooseButton_->setText(QStringLiteral("\u2026"));
    chooseButton_->setFixedWidth(chooseButton_->fontMetrics().averageCharWidth() * 6);
    layOut();
    for (QWidget* control :
         std::initializer_list<QWidget*>{nameEdit_, chooseButton_, commentEdit_, stopMode_, stopValue_, stopUnit_,
                                         cutMode_, cutValue_, automaticCut_, speedCheck_}) {
        manage(control);
    }
    connectControls();
    retranslate();
}

void FilePanel::layOut() {
    QFormLayout* layout = makePanelLayout(this);
    layout->addRow(nameLabel_);
    layout->addRow(makeRow(nameEdit_, chooseButton_));
    layout->addRow(problemLabel_);
    layout->addRow(commentLabel_, commentEdit_);
    layout->addRow(stopLabel_, stopMode_);
    layout->addRow(makeRow(stopValue_, stopUnit_));
    layout->addRow(cutMode_);
    layout->addRow(makeRow(cutValue_, automaticCut_));
    layout->addRow(freeLabel_);
    layout->addRow(speedCheck_);
    layout->addRow(speedLabel_);
    layout->addRow(needLabel_);
    layout->addRow(lastsLabel_);
    layout->addRow(piecesLabel_);
    layout->addRow(warningLabel_);
    nameLabel_->setBuddy(nameEdit_);
    commentLabel_->setBuddy(commentEdit_);
    stopLabel_->setBuddy(stopMode_);
}

void FilePanel::connectControls() {
    connect(nameEdit_, &QLineEdit::textEdited, this, [this] { nameChanged_ = true; });
    connect(nameEdit_, &QLineEdit::editingFinished, this, [this] {
        if (nameChanged_) {
            nameChanged_ = false;
            emit fileNameEdited();
        }
    });
    connect(chooseButton_, &QPushButton::clicked, this, &FilePanel::chooseFileName);
    connect(commentEdit_, &QLineEdit::textEdited, this, &SettingsPanel::changed);
    connect(stopMode_, &QComboBox::activated, this, [this] {
        fillUnits();
        showAvailability();
        emit changed();
    });
    connect(stopUnit_, &QComboBox::activated, this, &SettingsPanel::changed);
    connect(stopValue_, &QDoubleSpinBox::valueChanged, this, &SettingsPanel::changed);
    connect(cutValue_, &QSpinBox::valueChanged, this, &SettingsPanel::changed);
    for (OptionBox* box : {cutMode_, automaticCut_}) {
        connect(box, &OptionBox::clicked, this, [this] {
            showAvailability();
            emit changed();
        });
    }
    connect(speedCheck_, &OptionBox::clicked, this, [this](bool on) {
        emit diskSpeedCheckChanged(on);
        emit changed();
    });
}

void FilePanel::load(const ProgramSettings& settings) {
    stopMode_->setCurrentIndex(static_cast<int>(settings.wish.stopRule));
    fillUnits();
    stopUnit_->setCurrentIndex(settings.stopPower);
    commentEdit_->setText(QString::fromStdString(typedToUtf8(settings.wish.comment)));
    const QSignalBlocker quietStop(stopValue_);
    const QSignalBlocker quietCut(cutValue_);
    stopValue_->setValue(settings.stopValue);
    cutValue_->setValue(settings.wish.cutMegabytes);
    cutMode_->setWish(settings.wish.cut);
    automaticCut_->setWish(settings.wish.automaticCut);
    speedCheck_->setChecked(settings.checkDiskSpeed);
    showAvailability();
}

void FilePanel::store(ProgramSettings& settings) const {
    settings.wish.comment = commentEdit_->text().trimmed().toStdString();
    settings.wish.stopRule = static_cast<StopRule>(stopMode_->currentIndex());
    settings.stopPower = stopUnit_->currentIndex();
    settings.stopValue = stopValue_->value();
    settings.wish.cut = cutMode_->wish();
    settings.wish.automaticCut = automaticCut_->wish();
    settings.wish.cutMegabytes = cutValue_->value();
    settings.checkDiskSpeed = speedCheck_->isChecked();
}

void FilePanel::retranslate() {
    nameLabel_->setText(uiText(TextId::DataFile));
    stopLabel_->setText(uiText(TextId::StopRule));
    cutMode_->setText(uiText(TextId::CutMode));
    automaticCut_->setText(uiText(TextId::CutModeAuto));
    speedCheck_->setText(uiText(TextId::DiskSpeedCheck));
    const int rule = std::max(stopMode_->currentIndex(), 0);
    stopMode_->clear();
    for (const TextId id : kStopRules) {
        stopMode_->addItem(uiText(id));
    }
    stopMode_->setCurrentIndex(rule);
    fillUnits();
    setHint(chooseButton_, plainText(TextId::MenuChooseFile));
    chooseButton_->setAccessibleName(plainText(TextId::MenuChooseFile));
    nameEdit_->setAccessibleName(uiText(TextId::DataFile));
    commentLabel_->setText(uiText(TextId::OperatorComment));
    setHint(commentEdit_, uiText(TextId::OperatorCommentHint));
    for (QWidget* end : std::initializer_list<QWidget*>{stopMode_, stopValue_, stopUnit_}) {
        end->setAccessibleName(uiText(TextId::StopRule));
    }
    cutValue_->setAccessibleName(uiText(TextId::CutMode));
    setHint(stopMode_, uiText(TextId::StopRule));
    setHint(cutMode_, uiText(TextId::CutMode));
    setHint(cutValue_, uiText(TextId::CutMode));
    setHint(speedCheck_, uiText(TextId::DiskSpeedCheckHint));
    showAvailability();
    showDisk();
    showNeedTexts();
}

void FilePanel::boardChanged(BoardSelection& selection) {
    cutMode_->setOffered(offers(selection.driver().facts(), BoardOption::CutMode));
    showAvailability();
}

/// The units of the stop value belong to its rule; the place in the list stays.
void FilePanel::fillUnits() {
    const int unit = std::max(stopUnit_->currentIndex(), 0);
    stopUnit_->clear();
    for (const TextId id : stopMode_->currentIndex() == static_cast<int>(StopRule::Size) ? kSizeUnits : kTimeUnits) {
        stopUnit_->addItem(uiText(id, {QString()}).trimmed());
    }
    stopUnit_->setCurrentIndex(unit);
}

void FilePanel::showAvailability() {
    const bool hasEnd = stopMode_->currentIndex() != static_cast<int>(StopRule::Manual);
    setAvailable(stopValue_, hasEnd, uiText(TextId::StopByHand));
    setAvailable(stopUnit_, hasEnd, uiText(TextId::StopByHand));
    const QString noCut = cutMode_->offered() ? uiText(TextId::CutMode) : uiText(TextId::NotOfferedHint);
    setAvailable(cutMode_, cutMode_->offered(), noCut);
    automaticCut_->setOffered(cutMode_->offered());
    setAvailable(automaticCut_, cutMode_->isChecked(), noCut);
    setAvailable(cutValue_, cutMode_->isChecked() && !automaticCut_->isChecked(),
                 automaticCut_->isChecked() ? uiText(TextId::CutModeAuto) : noCut);
}

std::string FilePanel::fileName() const {
    return toFileName(nameEdit_->text());
}

void FilePanel::setFileName(const std::string& name) {
    nameChanged_ = false;
    nameEdit_->setText(fromFileName(name));
    // A path is told apart by its end.
    nameEdit_->setCursorPosition(static_cast<int>(nameEdit_->text().size()));
    setHint(nameEdit_, nameEdit_->text());
}

void FilePanel::showMeasuring() {
    measuring_ = true;
    showDisk();
    speedLabel_->repaint();
}

void FilePanel::showFindings(const FileNameFindings& findings) {
    measuring_ = false;
    findings_ = findings;
    setHint(nameEdit_, nameEdit_->text());
    showDisk();
    showNeedTexts();
}

void FilePanel::showNeed(const RecordingNeed& need) {
    need_ = need;
    showNeedTexts();
}

void FilePanel::showDisk() {
    const bool known = findings_.diskKnown();
    QString problem = findings_.problem ? uiText(*findings_.problem) : QString();
    // The letters that the system can't have in a name are shown as such.
    if (const QString possible = fromFileName(fileName()); findings_.problem && possible != nameEdit_->text()) {
        problem += QStringLiteral(": ") + possible;
    }
    showText(problemLabel_, problem, true);
    showText(freeLabel_, known ? uiText(TextId::FreeSpace, {QString::fromStdString(findings_.disk.fileSystem),
                                                            sizeText(static_cast<double>(findings_.disk.freeBytes))})
                               : QString());
    if (measuring_) {
        showText(speedLabel_, uiText(TextId::DiskSpeedMeasuring));
    } else if (!known) {
        showText(speedLabel_, QString());
    } else if (findings_.speedKnown()) {
        showText(speedLabel_, uiText(TextId::DiskSpeed, {rateText(findings_.bytesPerSecond())}));
    } else {
        showText(speedLabel_,
                 uiText(findings_.speedCode == kDiskSpeedOff ? TextId::DiskSpeedOff : TextId::DiskSpeedNotMeasured));
    }
}

void FilePanel::showNeedTexts() {
    const bool known = findings_.diskKnown();
    const double speed = findings_.speedKnown() ? findings_.speed : 0.0;
    const bool slow = diskTooSlow(need_, speed);
    const bool small = known && diskTooSmall(need_, findings_.disk.freeBytes);
    showText(needLabel_,
             need_.known() ? uiText(TextId::DiskNeed, {sizeText(need_.bytesPerSecond), sizeText(need_.bytesPerHour())})
                           : QString(),
             slow);
    showText(lastsLabel_,
             need_.known() && known
                 ? uiText(TextId::DiskLasts, {QString::fromStdString(formatDuration(
                                                 wholeSeconds(diskLastsSeconds(need_, findings_.disk.freeBytes))))})
                 : QString(),
             small);
    showText(piecesLabel_,
             need_.pieces > 1 ? uiText(TextId::RunFiles) + QStringLiteral(": %1").arg(need_.pieces) : QString());
    if (slow) {
        showText(warningLabel_,
                 uiText(TextId::DiskTooSlow, {rateText(need_.bytesPerSecond), rateText(findings_.bytesPerSecond())}),
                 true);
    } else {
        showText(warningLabel_, small ? uiText(TextId::FreeSpaceTooSmall) : QString(), true);
    }
}

}  // namespace tarno2
