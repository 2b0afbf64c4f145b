#include "ui/digital_signal_settings.h"

#include <QColorDialog>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QSlider>
#include <algorithm>
#include <utility>

#include "records/channel_label.h"
#include "ui/color.h"
#include "ui/label_field.h"
#include "ui/text.h"

namespace tarno2 {

namespace {

constexpr int kSwatchHeight = 24;

/// A track bar with its number beside it, which keeps its width whatever it says.
void fillTrackBox(QGroupBox* box, QSlider* track, QLabel* value, int lowest, int highest) {
    track->setRange(lowest, highest);
    track->setSingleStep(1);
    track->setPageStep((highest - lowest) / 20);
    track->setValue(0);
    value->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    value->setMinimumWidth(value->fontMetrics().horizontalAdvance(QString::number(-highest)));
    value->setNum(0);
    QObject::connect(track, &QSlider::valueChanged, value, qOverload<int>(&QLabel::setNum));
    auto* layout = new QHBoxLayout(box);
    layout->addWidget(track);
    layout->addWidget(value);
}

}  // namespace

T_DigitalSignalSettings::T_DigitalSignalSettings(std::span<DigitalLineSettings> lines, std::vector<std::string>& names,
                                                 std::function<void()> repaint, QWidget* parent)
    : QDialog(parent),
      lines_(lines),
      names_(names),
      repaint_(std::move(repaint)),
      lineNumberBox_(new QGroupBox(this)),
      lineList_(new QListWidget(lineNumberBox_)),
      nameBox_(new QGroupBox(this)),
      nameEdit_(new QLineEdit(nameBox_)),
      zeroLevelBox_(new QGroupBox(this)),
      zeroLevelTrack_(new QSlider(Qt::Horizontal, zeroLevelBox_)),
      zeroLevelValue_(new QLabel(zeroLevelBox_)),
      ampLevelBox_(new QGroupBox(this)),
      ampLevelTrack_(new QSlider(Qt::Horizontal, ampLevelBox_)),
      ampLevelValue_(new QLabel(ampLevelBox_)),
      colorBox_(new QGroupBox(this)),
      colorImage_(new QLabel(colorBox_)),
      chooseColorButton_(new QPushButton(colorBox_)),
      closeButton_(new QPushButton(this)) {
    setObjectName(QStringLiteral("T_DigitalSignalSettings"));
    build();
    loadCaptions();
    lineList_->clear();
    for (size_t i = 0; i < lines_.size(); ++i) {
        lineList_->addItem(itemText(i));
    }
    DigitalLineListClick();
    connect(lineList_, &QListWidget::itemSelectionChanged, this, &T_DigitalSignalSettings::DigitalLineListClick);
    connect(nameEdit_, &QLineEdit::textEdited, this, &T_DigitalSignalSettings::LineNameEditChange);
    connect(zeroLevelTrack_, &QSlider::valueChanged, this, &T_DigitalSignalSettings::ZeroLevelTrackChange);
    connect(ampLevelTrack_, &QSlider::valueChanged, this, &T_DigitalSignalSettings::AmpLevelTrackChange);
    connect(chooseColorButton_, &QPushButton::clicked, this, [this] { ChooseColorButtonClick(); });
    connect(closeButton_, &QPushButton::clicked, this, &QDialog::close);
}

void T_DigitalSignalSettings::build() {
    lineList_->setObjectName("DigitalLineList");
    nameEdit_->setObjectName("LineNameEdit");
    nameEdit_->setMaxLength(kLongestLabel);
    nameEdit_->setValidator(makeLabelValidator(nameEdit_));
    zeroLevelTrack_->setObjectName("ZeroLevelTrack");
    ampLevelTrack_->setObjectName("AmpLevelTrack");
    colorImage_->setObjectName("DigitalColorImage");
    chooseColorButton_->setObjectName("ChooseColorButton");

    (new QVBoxLayout(lineNumberBox_))->addWidget(lineList_);
    (new QVBoxLayout(nameBox_))->addWidget(nameEdit_);
    fillTrackBox(zeroLevelBox_, zeroLevelTrack_, zeroLevelValue_, -1000, 1000);
    fillTrackBox(ampLevelBox_, ampLevelTrack_, ampLevelValue_, 0, 1000);

    QSizePolicy policy = colorImage_->sizePolicy();
    policy.setHorizontalPolicy(QSizePolicy::Expanding);
    policy.setRetainSizeWhenHidden(true);
    colorImage_->setSizePolicy(policy);
    colorImage_->setMinimumHeight(kSwatchHeight);
    colorImage_->setFrameShape(QFrame::Box);
    colorImage_->setAutoFillBackground(true);
    chooseColorButton_->setAutoDefault(false);
    auto* colorLayout = new QHBoxLayout(colorBox_);
    colorLayout->addWidget(colorImage_, 1);
    colorLayout->addWidget(chooseColorButton_);

    auto* layout = new QGridLayout(this);
    layout->addWidget(lineNumberBox_, 0, 0, 5, 1);
    layout->addWidget(nameBox_, 0, 1);
    layout->addWidget(zeroLevelBox_, 1, 1);
    layout->addWidget(ampLevelBox_, 2, 1);
    layout->addWidget(colorBox_, 3, 1);
    layout->setRowStretch(4, 1);
    layout->setColumnStretch(0, 1);
    layout->setColumnStretch(1, 3);
    layout->addWidget(closeButton_, 5, 1, Qt::AlignRight);
    resize(480, sizeHint().height());
}

void T_DigitalSignalSettings::loadCaptions() {
    setWindowTitle(plainText(TextId::DigitalLineSettings));
    lineNumberBox_->setTitle(uiText(TextId::DigitalLineNumber));
    nameBox_->setTitle(uiText(TextId::LineName));
    nameEdit_->setAccessibleName(uiText(TextId::LineName));
    lineList_->setAccessibleName(uiText(TextId::DigitalLineNumber));
    zeroLevelTrack_->setAccessibleName(uiText(TextId::DigitalZeroLevelCaption));
    ampLevelTrack_->setAccessibleName(uiText(TextId::DigitalSignalLevel));
    zeroLevelBox_->setTitle(uiText(TextId::DigitalZeroLevelCaption));
    ampLevelBox_->setTitle(uiText(TextId::DigitalSignalLevel));
    colorBox_->setTitle(uiText(TextId::ColorCaption));
    chooseColorButton_->setText(uiText(TextId::ColorCaption));
    closeButton_->setText(uiText(TextId::ButtonClose));
}

DigitalLineSettings* T_DigitalSignalSettings::selectedLine() {
    const auto selection = lineList_->selectedItems();
    return selection.isEmpty() ? nullptr : &lines_[static_cast<size_t>(lineList_->row(selection.first()))];
}

void T_DigitalSignalSettings::DigitalLineListClick() {
    const DigitalLineSettings* line = selectedLine();
    for (QWidget* control : {static_cast<QWidget*>(zeroLevelTrack_), static_cast<QWidget*>(ampLevelTrack_),
                             static_cast<QWidget*>(zeroLevelValue_), static_cast<QWidget*>(ampLevelValue_),
                             static_cast<QWidget*>(chooseColorButton_), static_cast<QWidget*>(nameEdit_)}) {
        control->setEnabled(line != nullptr);
    }
    if (line == nullptr) {
        colorImage_->hide();
        nameEdit_->clear();
        return;
    }
    nameEdit_->setText(nameOf(static_cast<size_t>(line - lines_.data())));
    fillSwatch();
    zeroLevelTrack_->setValue(line->zeroLevel);
    ampLevelTrack_->setValue(line->amplitude);
}

void T_DigitalSignalSettings::fillSwatch() {
    QPalette palette = colorImage_->palette();
    palette.setColor(QPalette::Window, fromBgr(selectedLine()->color));
    colorImage_->setPalette(palette);
    colorImage_->show();
}

QString T_DigitalSignalSettings::nameOf(size_t line) const {
    return line < names_.size() ? QString::fromStdString(names_[line]) : QString();
}

QString T_DigitalSignalSettings::itemText(size_t line) const {
    const QString name = nameOf(line);
    return name.isEmpty() ? QString::number(line) : QStringLiteral("%1 %2").arg(line).arg(name);
}

void T_DigitalSignalSettings::LineNameEditChange() {
    const DigitalLineSettings* line = selectedLine();
    if (line == nullptr) {
        return;
    }
    const auto index = static_cast<size_t>(line - lines_.data());
    names_.resize(std::max(names_.size(), index + 1));
    names_[index] = usableLabelText(nameEdit_->text().toStdString());
    lineList_->item(static_cast<int>(index))->setText(itemText(index));
}

void T_DigitalSignalSettings::ZeroLevelTrackChange(int position) {
    if (DigitalLineSettings* line = selectedLine(); line != nullptr && line->zeroLevel != position) {
        line->zeroLevel = position;
        repaint_();
    }
}

void T_DigitalSignalSettings::AmpLevelTrackChange(int position) {
    if (DigitalLineSettings* line = selectedLine(); line != nullptr && line->amplitude != position) {
        line->amplitude = position;
        repaint_();
    }
}

void T_DigitalSignalSettings::ChooseColorButtonClick() {
    DigitalLineSettings* line = selectedLine();
    if (line == nullptr) {
        return;
    }
    const QColor color = QColorDialog::getColor(fromBgr(line->color), this, uiText(TextId::ColorCaption),
                                                QColorDialog::DontUseNativeDialog);
    if (!color.isValid()) {
        return;
    }
    line->color = toBgr(color);
    fillSwatch();
    repaint_();
}

}  // namespace tarno2
