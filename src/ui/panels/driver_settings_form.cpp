#include "ui/panels/driver_settings_form.h"

#include <QFormLayout>
#include <QLabel>
#include <algorithm>

#include "ui/panels/driver_setting_field.h"
#include "ui/panels/panel_layout.h"

namespace tarno2 {

DriverSettingsForm::DriverSettingsForm(QWidget* before, QWidget* parent)
    : QWidget(parent), layout_(makePanelLayout(this)), gap_(layout_->horizontalSpacing()), before_(before) {
    setObjectName(QStringLiteral("DriverSettingsForm"));
    layout_->setContentsMargins(0, 0, 0, 0);
    // The layout forgets the gap when it looks whether a field fits beside its caption: captions have it.
    layout_->setHorizontalSpacing(0);
    hide();
}

void DriverSettingsForm::showSettings(const std::string& driver, const std::vector<DriverSetting>& settings) {
    std::vector<DriverSetting> shape = settings;
    for (DriverSetting& setting : shape) {
        setting.value.clear();
    }
    if (driver != driver_ || shape != shape_) {
        driver_ = driver;
        shape_ = std::move(shape);
        rebuild(settings);
        return;
    }
    for (size_t i = 0; i < rows_.size(); ++i) {
        rows_[i].field->showValue(settings[i].value);
    }
}

void DriverSettingsForm::rebuild(const std::vector<DriverSetting>& settings) {
    for (const Row& row : rows_) {
        layout_->removeWidget(row.caption);
        layout_->removeWidget(row.field);
        row.caption->hide();
        row.field->hide();
        // One of them may be telling of its edit now.
        row.field->disconnect(this);
        row.caption->deleteLater();
        row.field->setParent(nullptr);
        row.field->deleteLater();
    }
    rows_.clear();
    QWidget* before = before_;
    for (const DriverSetting& setting : settings) {
        const Row row{new QLabel(this), new DriverSettingField(setting, this)};
        row.caption->setTextFormat(Qt::PlainText);
        row.caption->setContentsMargins(0, 0, gap_, 0);
        if (row.field->captioned()) {
            row.caption->hide();
            layout_->addRow(row.field);
        } else if (setting.type == DriverSetting::Type::File || setting.type == DriverSetting::Type::Folder) {
            // A path takes the whole width.
            layout_->addRow(row.caption);
            layout_->addRow(row.field);
        } else {
            layout_->addRow(row.caption, row.field);
        }
        // What follows the form in the panel was made earlier.
        for (QWidget* stop : row.field->tabStops()) {
            setTabOrder(before, stop);
            before = stop;
        }
        connect(row.field, &DriverSettingField::edited, this, &DriverSettingsForm::edited);
        rows_.push_back(row);
    }
    retranslate();
    setVisible(!rows_.empty());
}

void DriverSettingsForm::retranslate() {
    for (const Row& row : rows_) {
        row.caption->setText(row.field->caption());
        row.field->retranslate();
        row.caption->setToolTip(row.field->toolTip());
    }
}

void DriverSettingsForm::showRefusal(const QString& key, const QString& why) {
    for (const Row& row : rows_) {
        if (QString::fromStdString(row.field->key()) == key) {
            row.field->showRefusal(why);
        }
    }
}

bool DriverSettingsForm::refused() const {
    return std::ranges::any_of(rows_, [](const Row& row) { return row.field->refused(); });
}

void DriverSettingsForm::askFirst() {
    const auto first = std::ranges::find_if(rows_, [](const Row& row) { return !row.field->fixed(); });
    if (first != rows_.end()) {
        first->field->ask();
    }
}

void DriverSettingsForm::finish() {
    const std::vector<Row> rows = rows_;
    for (const Row& row : rows) {
        row.field->finish();
    }
}

}  // namespace tarno2
