#include "ui/scale_dialog.h"

#include <QDialogButtonBox>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>

#include "config/settings/field_text.h"
#include "records/number_text.h"
#include "ui/panels/panel_layout.h"
#include "ui/text.h"

namespace tarno2 {

namespace {

std::optional<double> numberIn(const QLineEdit& edit) {
    return parseNumberField(edit.text().toStdString());
}

void putNumber(QLineEdit& edit, double value) {
    edit.setText(QString::fromStdString(exactNumberText(value)));
    edit.setCursorPosition(0);
}

}  // namespace

ScaleDialog::ScaleDialog(int32_t channel, const ChannelLabel& label, QWidget* parent)
    : QDialog(parent),
      byFactor_(named<QRadioButton>("ScaleByFactor", this)),
      byPoints_(named<QRadioButton>("ScaleByPoints", this)),
      factorLabel_(new QLabel(this)),
      offsetLabel_(new QLabel(this)),
      factor_(named<QLineEdit>("ScaleFactor", this)),
      offset_(named<QLineEdit>("ScaleOffset", this)),
      pointLabels_{new QLabel(this), new QLabel(this)},
      volts_{named<QLineEdit>("ScaleVolts1", this), named<QLineEdit>("ScaleVolts2", this)},
      values_{named<QLineEdit>("ScaleValue1", this), named<QLineEdit>("ScaleValue2", this)},
      note_(makeText(this, QStringLiteral("ScaleNote"))) {
    setObjectName(QStringLiteral("ScaleDialog"));
    setWindowTitle(uiText(TextId::ScaleWindow, {QString::number(channel)}));
    putNumber(*factor_, label.factor);
    putNumber(*offset_, label.offset);
    for (int i = 0; i < 2; ++i) {
        putNumber(*volts_[i], i);
        putNumber(*values_[i], label.inUnit(i));
    }
    build();
    byFactor_->setChecked(true);
    showWay();
    factor_->setFocus();
    factor_->selectAll();
}

void ScaleDialog::build() {
    byFactor_->setText(uiText(TextId::ScaleByFactor));
    byPoints_->setText(uiText(TextId::ScaleByPoints));
    factorLabel_->setText(uiText(TextId::ScaleFactor));
    offsetLabel_->setText(uiText(TextId::ScaleOffset));
    factorLabel_->setBuddy(factor_);
    offsetLabel_->setBuddy(offset_);
    showText(note_, uiText(TextId::ScaleHint));
    auto* grid = new QGridLayout(this);
    grid->addWidget(byFactor_, 0, 0, 1, 3);
    grid->addWidget(factorLabel_, 1, 0);
    grid->addWidget(factor_, 1, 1, 1, 2);
    grid->addWidget(offsetLabel_, 2, 0);
    grid->addWidget(offset_, 2, 1, 1, 2);
    grid->addWidget(byPoints_, 3, 0, 1, 3);
    for (int i = 0; i < 2; ++i) {
        pointLabels_[i]->setText(uiText(TextId::ScalePoint, {QString::number(i + 1)}));
        pointLabels_[i]->setBuddy(volts_[i]);
        values_[i]->setAccessibleName(pointLabels_[i]->text());
        grid->addWidget(pointLabels_[i], 4 + i, 0);
        grid->addWidget(volts_[i], 4 + i, 1);
        grid->addWidget(values_[i], 4 + i, 2);
    }
    grid->addWidget(note_, 6, 0, 1, 3);
    grid->setRowStretch(7, 1);
    auto* buttons = new QDialogButtonBox(this);
    buttons->addButton(uiText(TextId::ButtonOk), QDialogButtonBox::AcceptRole);
    buttons->addButton(uiText(TextId::ButtonCancelScale), QDialogButtonBox::RejectRole);
    grid->addWidget(buttons, 8, 0, 1, 3);
    setTabOrder(offset_, volts_[0]);
    setTabOrder(volts_[0], values_[0]);
    setTabOrder(values_[0], volts_[1]);
    setTabOrder(volts_[1], values_[1]);
    connect(buttons, &QDialogButtonBox::accepted, this, &ScaleDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &ScaleDialog::reject);
    connect(byFactor_, &QRadioButton::toggled, this, &ScaleDialog::showWay);
}

void ScaleDialog::showWay() {
    const bool factor = byFactor_->isChecked();
    for (QWidget* widget : {static_cast<QWidget*>(factorLabel_), static_cast<QWidget*>(offsetLabel_),
                            static_cast<QWidget*>(factor_), static_cast<QWidget*>(offset_)}) {
        widget->setEnabled(factor);
    }
    for (int i = 0; i < 2; ++i) {
        pointLabels_[i]->setEnabled(!factor);
        volts_[i]->setEnabled(!factor);
        values_[i]->setEnabled(!factor);
    }
}

std::optional<UnitScale> ScaleDialog::typed() const {
    if (byFactor_->isChecked()) {
        const auto factor = numberIn(*factor_);
        const auto offset = numberIn(*offset_);
        return factor && offset && isScale(*factor, *offset) ? std::optional(UnitScale{*factor, *offset})
                                                             : std::nullopt;
    }
    const std::optional<double> volts[] = {numberIn(*volts_[0]), numberIn(*volts_[1])};
    const std::optional<double> values[] = {numberIn(*values_[0]), numberIn(*values_[1])};
    return volts[0] && volts[1] && values[0] && values[1] ? scaleThrough(*volts[0], *values[0], *volts[1], *values[1])
                                                          : std::nullopt;
}

void ScaleDialog::accept() {
    const auto scale = typed();
    if (!scale) {
        showText(note_, uiText(TextId::ScaleInvalid), true);
        return;
    }
    emit chosen(scale->factor, scale->offset);
    QDialog::accept();
}

}  // namespace tarno2
