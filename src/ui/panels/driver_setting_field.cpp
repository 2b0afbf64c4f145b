#include "ui/panels/driver_setting_field.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QRegularExpression>
#include <QSignalBlocker>
#include <QSpinBox>
#include <QVBoxLayout>
#include <QValidator>
#include <algorithm>
#include <limits>
#include <utility>

#include "language/language_table.h"
#include "ui/panels/panel_layout.h"
#include "ui/text.h"

namespace tarno2 {

namespace {

using Type = DriverSetting::Type;

/// Takes a number in the "C" locale, "," for its point, and an empty text. One that was typed in part becomes the value
/// in use when the field is left.
class NumberValidator : public QValidator {
public:
    NumberValidator(bool whole, const DriverSetting& setting, QObject* parent)
        : QValidator(parent),
          setting_(setting),
          form_(whole ? QStringLiteral("^[+-]?\\d+$")
                      : QStringLiteral("^[+-]?(\\d+\\.?\\d*|\\.\\d+)([eE][+-]?\\d+)?$")) {}

    State validate(QString& text, int& /*position*/) const override {
        text.replace(QLatin1Char(','), QLatin1Char('.'));
        const auto match = form_.match(text, 0, QRegularExpression::PartialPreferCompleteMatch);
        return text.isEmpty() || match.hasMatch() ? Acceptable : match.hasPartialMatch() ? Intermediate : Invalid;
    }
    void fixup(QString& text) const override { text = fromFileName(setting_.value); }

private:
    const DriverSetting& setting_;
    QRegularExpression form_;
};

bool isSwitch(const DriverSetting& setting) {
    return setting.type == Type::Integer && setting.bounded && setting.minimum == 0.0 && setting.maximum == 1.0;
}

bool fitsSpinBox(const DriverSetting& setting) {
    return setting.type == Type::Integer && setting.bounded && setting.minimum >= std::numeric_limits<int>::min() &&
           setting.maximum <= std::numeric_limits<int>::max();
}

/// Red that is legible on the ground of the widget.
QColor refusalColor(const QWidget& widget) {
    const bool dark = widget.palette().color(QPalette::Window).lightness() < 128;
    return dark ? QColor(0xFF, 0x8A, 0x80) : QColor(0xB0, 0x00, 0x20);
}

/// Narrower than this its caption stands above it.
void keepLegible(QWidget& field, int digits) {
    field.setMinimumWidth(field.fontMetrics().horizontalAdvance(QLatin1Char('0')) * digits);
}

constexpr int kNumberDigits = 12;
constexpr int kTextDigits = 20;

QString partName(const char* part, const DriverSetting& setting) {
    return QLatin1String(part) + QLatin1Char('_') + QString::fromStdString(setting.key);
}

}  // namespace

DriverSettingField::DriverSettingField(DriverSetting setting, QWidget* parent)
    : QWidget(parent),
      setting_(std::move(setting)),
      editor_(makeEditor()),
      problem_(makeText(this, partName("DriverSettingProblem", setting_))) {
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(2);
    auto* row = new QHBoxLayout;
    row->addWidget(editor_, 1);
    if (setting_.type == Type::File || setting_.type == Type::Folder) {
        chooseButton_ = new QPushButton(QStringLiteral("\u2026"), this);
        chooseButton_->setObjectName(partName("DriverSettingChoose", setting_));
        chooseButton_->setFixedWidth(chooseButton_->fontMetrics().averageCharWidth() * 6);
        connect(chooseButton_, &QPushButton::clicked, this, &DriverSettingField::choosePath);
        row->addWidget(chooseButton_);
    }
    column->addLayout(row);
    column->addWidget(problem_);
    problem_->hide();
    editor_->setObjectName(partName("DriverSetting", setting_));
    editor_->installEventFilter(this);
    editor_->setEnabled(!setting_.fixed);
    if (chooseButton_ != nullptr) {
        chooseButton_->setEnabled(!setting_.fixed);
    }
    putValue();
    retranslate();
}

QWidget* DriverSettingField::makeEditor() {
    if (isSwitch(setting_)) {
        makeBox();
        return box_;
    }
    if (setting_.type == Type::Choice) {
        makeList();
        return list_;
    }
    if (fitsSpinBox(setting_)) {
        makeSpin();
        return spin_;
    }
    makeLine();
    return line_;
}

void DriverSettingField::makeBox() {
    box_ = new QCheckBox(this);
    connect(box_, &QCheckBox::clicked, this, [this] {
        touched_ = true;
        finish();
    });
}

void DriverSettingField::makeLine() {
    line_ = new QLineEdit(this);
    keepLegible(*line_, setting_.type == Type::Text ? kTextDigits : kNumberDigits);
    if (setting_.type == Type::Integer || setting_.type == Type::Real) {
        line_->setValidator(new NumberValidator(setting_.type == Type::Integer, setting_, line_));
    }
    connect(line_, &QLineEdit::textEdited, this, [this] { touched_ = true; });
    connect(line_, &QLineEdit::editingFinished, this, &DriverSettingField::finish);
}

void DriverSettingField::makeSpin() {
    spin_ = new QSpinBox(this);
    keepLegible(*spin_, kNumberDigits);
    spin_->setLocale(QLocale::c());
    spin_->setGroupSeparatorShown(false);
    spin_->setAccelerated(true);
    spin_->setRange(static_cast<int>(setting_.minimum), static_cast<int>(setting_.maximum));
    connect(spin_, &QSpinBox::valueChanged, this, [this] { touched_ = true; });
    connect(spin_, &QSpinBox::editingFinished, this, &DriverSettingField::finish);
}

void DriverSettingField::makeList() {
    list_ = tarno2::makeList(this, {});
    qsizetype longest = setting_.free ? kTextDigits : 0;
    for (size_t i = 0; i < setting_.choices.size(); ++i) {
        const QString text = fromMessage(setting_.choiceTexts[i]);
        list_->addItem(text, fromFileName(setting_.choices[i]));
        longest = std::max(longest, text.size());
    }
    // With the arrow.
    keepLegible(*list_, static_cast<int>(std::clamp<qsizetype>(longest + 4, kNumberDigits, kTextDigits)));
    list_->setEditable(setting_.free);
    list_->setInsertPolicy(QComboBox::NoInsert);
    connect(list_, &QComboBox::activated, this, [this] {
        touched_ = true;
        finish();
    });
    if (QLineEdit* line = list_->lineEdit()) {
        list_->setCompleter(nullptr);
        connect(line, &QLineEdit::textEdited, this, [this] { touched_ = true; });
        connect(line, &QLineEdit::editingFinished, this, &DriverSettingField::finish);
    }
}

QList<QWidget*> DriverSettingField::tabStops() const {
    QList<QWidget*> stops = {editor_};
    if (chooseButton_ != nullptr) {
        stops << chooseButton_;
    }
    return stops;
}

QString DriverSettingField::caption() const {
    const bool russian = languageTable().selected() == kLanguageRussian;
    return QString::fromStdString(russian ? setting_.captionRussian : setting_.caption);
}

void DriverSettingField::retranslate() {
    const QString hint = setting_.fixed ? uiText(TextId::DriverSettingFixed) : QString();
    setToolTip(hint);
    if (box_ != nullptr) {
        box_->setText(caption().replace(QLatin1Char('&'), QLatin1String("&&")));
    }
    editor_->setAccessibleName(caption());
    editor_->setAccessibleDescription(hint);
    if (chooseButton_ != nullptr && !setting_.fixed) {
        const QString choose = uiText(setting_.type == Type::File ? TextId::ChooseFile : TextId::ChooseFolder);
        chooseButton_->setToolTip(choose);
        chooseButton_->setAccessibleName(choose);
    }
}

QString DriverSettingField::typed() const {
    if (line_ != nullptr) {
        return line_->text();
    }
    if (spin_ != nullptr) {
        return QString::number(spin_->value());
    }
    if (box_ != nullptr) {
        return QString::number(box_->isChecked() ? 1 : 0);
    }
    const int entry = list_->findText(list_->currentText());
    return entry >= 0 ? list_->itemData(entry).toString() : list_->currentText();
}

/// Puts the value in use into the field.
void DriverSettingField::putValue() {
    const QSignalBlocker quiet(editor_);
    const QString value = fromFileName(setting_.value);
    if (line_ != nullptr) {
        line_->setText(value);
        // A path is told apart by its end.
        line_->setCursorPosition(static_cast<int>(value.size()));
    } else if (spin_ != nullptr) {
        spin_->setValue(value.toInt());
    } else if (box_ != nullptr) {
        box_->setChecked(value.toInt() != 0);
    } else {
        if (list_->findData(value) < 0 && !list_->isEditable() && !value.isEmpty()) {
            list_->addItem(value, value);
        }
        list_->setCurrentIndex(list_->findData(value));
        if (list_->currentIndex() < 0 && list_->isEditable()) {
            list_->setEditText(value);
        }
    }
    touched_ = refused_ = false;
    problem_->hide();
}

void DriverSettingField::showValue(const std::string& value) {
    const bool same = value == setting_.value;
    setting_.value = value;
    if (!touched_ && !(refused_ && same)) {
        putValue();
    }
}

void DriverSettingField::showRefusal(const QString& why) {
    refused_ = true;
    showText(problem_, why);
    QPalette palette;
    palette.setColor(QPalette::WindowText, refusalColor(*problem_));
    problem_->setPalette(palette);
}

void DriverSettingField::ask() {
    editor_->setFocus();
    if (chooseButton_ != nullptr) {
        choosePath();
    }
}

void DriverSettingField::finish() {
    if (!std::exchange(touched_, false)) {
        return;
    }
    const QString value = typed();
    if (value == fromFileName(setting_.value)) {
        putValue();
    } else {
        emit edited(QString::fromStdString(setting_.key), value);
    }
}

bool DriverSettingField::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::KeyPress && static_cast<QKeyEvent*>(event)->key() == Qt::Key_Escape &&
        (touched_ || refused_)) {
        putValue();
        return true;
    }
    return QWidget::eventFilter(watched, event);
}

QStringList DriverSettingField::nameFilters() const {
    QStringList filters;
    QStringList all;
    for (size_t i = 0; i < setting_.choices.size(); ++i) {
        const QString pattern = fromFileName(setting_.choices[i]);
        const QString told = fromMessage(setting_.choiceTexts[i]);
        filters << (told == pattern ? pattern : told + QStringLiteral(" (") + pattern + QLatin1Char(')'));
        all << pattern;
    }
    if (all.size() > 1) {
        filters.prepend(caption() + QStringLiteral(" (") + all.join(QLatin1Char(' ')) + QLatin1Char(')'));
    }
    return filters << uiText(TextId::AllFilesFilter);
}

void DriverSettingField::choosePath() {
    // The field may go while the dialog is open: the driver decides what it wants to be told.
    const QPointer<DriverSettingField> alive(this);
    QFileDialog dialog(window(), caption(), line_->text());
    if (setting_.type == Type::File) {
        dialog.setFileMode(QFileDialog::ExistingFile);
        dialog.setNameFilters(nameFilters());
        dialog.selectFile(line_->text());
    } else {
        dialog.setFileMode(QFileDialog::Directory);
        dialog.setOption(QFileDialog::ShowDirsOnly);
    }
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty() || alive == nullptr) {
        return;
    }
    line_->setText(QDir::toNativeSeparators(dialog.selectedFiles().first()));
    touched_ = true;
    finish();
}

}  // namespace tarno2
