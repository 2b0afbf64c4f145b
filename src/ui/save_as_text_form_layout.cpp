#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QSpinBox>
#include <limits>

#include "records/export_names.h"
#include "ui/save_as_text_form.h"
#include "ui/text.h"

namespace tarno2 {

namespace {

constexpr int kProgressSteps = 1000;

void setCaption(QButtonGroup* group, int id, TextId text) {
    group->button(id)->setText(uiText(text));
}

/// A box with a row for each button of a group, and below them a labelled field.
void fillColumnBox(QGroupBox* box, QButtonGroup* group, QLabel* label = nullptr, QSpinBox* field = nullptr) {
    auto* layout = new QVBoxLayout(box);
    for (QAbstractButton* button : group->buttons()) {
        layout->addWidget(button);
    }
    layout->addStretch(1);
    if (field != nullptr) {
        layout->addWidget(label);
        layout->addWidget(field, 0, Qt::AlignLeft);
        label->setBuddy(field);
        field->setRange(0, ExportFormat::kMaximumPrecision);
    }
}

}  // namespace

QRadioButton* T_SaveAsTextForm::addRadio(QButtonGroup* group, int id, const char* name, QWidget* parent) {
    auto* button = new QRadioButton(parent);
    button->setObjectName(name);
    group->addButton(button, id);
    return button;
}

QWidget* T_SaveAsTextForm::buildColumns() {
    addRadio(firstColumn_, 0, "FirstColumnAbsent", firstColumnBox_);
    addRadio(firstColumn_, 1, "FirstColumnSamples", firstColumnBox_);
    addRadio(firstColumn_, 2, "FirstColumnSeconds", firstColumnBox_);
    addRadio(firstColumn_, 3, "FirstColumnClock", firstColumnBox_);
    addRadio(dataColumn_, 0, "DataColumnCodes", dataColumnBox_);
    addRadio(dataColumn_, 1, "DataColumnVolts", dataColumnBox_);
    addRadio(dataColumn_, 2, "DataColumnUnits", dataColumnBox_);
    addRadio(decimal_, 0, "DecimalPoint", decimalBox_);
    addRadio(decimal_, 1, "DecimalComma", decimalBox_);
    timePrecision_->setObjectName("TimePrecision");
    voltagePrecision_->setObjectName("VoltagePrecision");
    fillColumnBox(firstColumnBox_, firstColumn_, timePrecisionLabel_, timePrecision_);
    fillColumnBox(dataColumnBox_, dataColumn_, voltagePrecisionLabel_, voltagePrecision_);
    fillColumnBox(decimalBox_, decimal_);

    auto* columns = new QWidget(controls_);
    auto* layout = new QHBoxLayout(columns);
    layout->setContentsMargins({});
    layout->addWidget(firstColumnBox_);
    layout->addWidget(dataColumnBox_);
    layout->addWidget(decimalBox_);
    return columns;
}

QWidget* T_SaveAsTextForm::buildDivider() {
    QRadioButton* const tab = addRadio(divider_, 0, "DividerTab", dividerBox_);
    QRadioButton* const symbol = addRadio(divider_, 1, "DividerSymbol", dividerBox_);
    tabCount_->setObjectName("TabCount");
    symbol_->setObjectName("Symbol");
    symbolCount_->setObjectName("SymbolCount");
    symbol_->setMaxLength(1);
    symbol_->setFixedWidth(symbolCount_->sizeHint().width());
    for (QSpinBox* field : {tabCount_, symbolCount_}) {
        field->setRange(1, static_cast<int>(ExportFormat::kMaximumDividerCount));
    }
    tabCountLabel_->setBuddy(tabCount_);
    symbolCountLabel_->setBuddy(symbolCount_);
    auto* layout = new QGridLayout(dividerBox_);
    layout->addWidget(tab, 0, 0);
    layout->addWidget(tabCountLabel_, 0, 2);
    layout->addWidget(tabCount_, 0, 3);
    layout->addWidget(symbol, 1, 0);
    layout->addWidget(symbol_, 1, 1);
    layout->addWidget(symbolCountLabel_, 1, 2);
    layout->addWidget(symbolCount_, 1, 3);
    layout->setColumnStretch(4, 1);
    return dividerBox_;
}

QWidget* T_SaveAsTextForm::buildProgress() {
    files_->setObjectName("ProgressFiles");
    size_->setObjectName("ProgressSize");
    lines_->setObjectName("ProgressLines");
    time_->setObjectName("ProgressTime");
    bar_->setObjectName("ProgressBar");
    bar_->setRange(0, kProgressSteps);
    auto* layout = new QGridLayout(progressBox_);
    const struct {
        QLabel* label;
        QLabel* value;
    } rows[] = {{filesLabel_, files_}, {sizeLabel_, size_}, {linesLabel_, lines_}, {timeLabel_, time_}};
    int row = 0;
    for (const auto& each : rows) {
        layout->addWidget(each.label, row % 2, row / 2 * 2);
        layout->addWidget(each.value, row % 2, row / 2 * 2 + 1);
        ++row;
    }
    layout->setColumnStretch(1, 1);
    layout->setColumnStretch(3, 1);
    layout->addWidget(bar_, 2, 0, 1, 4);
    return progressBox_;
}

QWidget* T_SaveAsTextForm::buildPart() {
    from_->setObjectName("From");
    to_->setObjectName("To");
    every_->setObjectName("Every");
    channels_->setObjectName("Channels");
    constexpr int kMostOften = 1000000;
    every_->setRange(1, kMostOften);
    from_->setText(QString::fromStdString(source_.wish.from));
    to_->setText(QString::fromStdString(source_.wish.to));
    channels_->setText(QString::fromStdString(source_.wish.channels));
    auto* layout = new QGridLayout(partBox_);
    const struct {
        QLabel* label;
        QWidget* field;
    } fields[] = {{fromLabel_, from_}, {toLabel_, to_}, {everyLabel_, every_}, {channelsLabel_, channels_}};
    int column = 0;
    for (const auto& [label, field] : fields) {
        label->setBuddy(field);
        field->setMinimumWidth(every_->sizeHint().width());
        layout->addWidget(label, 0, column++);
        layout->addWidget(field, 0, column);
        layout->setColumnStretch(column++, field == channels_ ? 2 : 1);
    }
    return partBox_;
}

QWidget* T_SaveAsTextForm::buildPreview() {
    preview_->setObjectName("Preview");
    preview_->setReadOnly(true);
    preview_->setLineWrapMode(QPlainTextEdit::NoWrap);
    preview_->setTabChangesFocus(true);
    constexpr int kRows = 5;  // three lines, their margins and a scroll bar
    preview_->setFixedHeight(preview_->fontMetrics().lineSpacing() * kRows);
    (new QVBoxLayout(previewBox_))->addWidget(preview_);
    return previewBox_;
}

void T_SaveAsTextForm::build() {
    fileNameEdit_->setObjectName("FileNameEdit");
    fileNameEdit_->setMaxLength(static_cast<int>(kMaximumOutputName));
    fileNameLabel_->setBuddy(fileNameEdit_);
    fileNameEdit_->setFocus();
    setFileNameButton_->setObjectName("ButtonSetFileName");
    setFileNameButton_->setText(QStringLiteral("…"));
    setFileNameButton_->setAutoDefault(false);
    headings_->setObjectName("Headings");
    marks_->setObjectName("Marks");
    limitLines_->setObjectName("LimitLines");
    maximumLines_->setObjectName("MaximumLines");
    maximumLines_->setRange(static_cast<int>(ExportFormat::kLeastLineLimit), std::numeric_limits<int>::max());
    saveButton_->setObjectName("SaveButton");
    saveButton_->setDefault(true);
    cancelButton_->setObjectName("CancelButton");
    cancelButton_->setAutoDefault(false);

    format_->setObjectName("Format");
    for (const ExporterRow& each : exporters()) {
        format_->addItem(QString::fromUtf8(each.title));
    }
    formatLabel_->setBuddy(format_);
    auto* names = new QHBoxLayout;
    names->addWidget(formatLabel_);
    names->addWidget(format_);
    names->addWidget(fileNameLabel_);
    names->addWidget(fileNameEdit_, 1);
    names->addWidget(setFileNameButton_);
    auto* limit = new QHBoxLayout;
    limit->addWidget(headings_);
    limit->addWidget(marks_);
    limit->addWidget(limitLines_);
    limit->addWidget(maximumLines_);
    limit->addStretch(1);
    auto* choices = new QVBoxLayout(controls_);
    choices->setContentsMargins({});
    choices->addLayout(names);
    choices->addWidget(buildPart());
    choices->addWidget(buildColumns());
    choices->addWidget(buildDivider());
    choices->addLayout(limit);

    auto* buttons = new QHBoxLayout;
    buttons->addStretch(1);
    buttons->addWidget(saveButton_);
    buttons->addWidget(cancelButton_);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(controls_);
    layout->addWidget(buildPreview());
    layout->addWidget(buildProgress());
    layout->addStretch(1);
    layout->addLayout(buttons);
}

void T_SaveAsTextForm::loadCaptions() {
    setWindowTitle(plainText(TextId::ExportWindow) + ' ' + fromFileName(source_.dataFile));
    fileNameLabel_->setText(uiText(TextId::ExportFileName));
    firstColumnBox_->setTitle(uiText(TextId::ExportFirstColumn));
    setCaption(firstColumn_, 0, TextId::ExportFirstAbsent);
    setCaption(firstColumn_, 1, TextId::ExportFirstSamples);
    setCaption(firstColumn_, 2, TextId::ExportFirstSeconds);
    setCaption(firstColumn_, 3, TextId::ExportFirstClock);
    timePrecisionLabel_->setText(uiText(TextId::ExportTimePrecision));
    dataColumnBox_->setTitle(uiText(TextId::ExportDataColumn));
    setCaption(dataColumn_, 0, TextId::ExportCodes);
    setCaption(dataColumn_, 1, TextId::ExportVolts);
    setCaption(dataColumn_, 2, TextId::ExportUnits);
    voltagePrecisionLabel_->setText(uiText(TextId::ExportVoltagePrecision));
    decimalBox_->setTitle(uiText(TextId::ExportDecimal));
    setCaption(decimal_, 0, TextId::ExportDecimalPoint);
    setCaption(decimal_, 1, TextId::ExportDecimalComma);
    dividerBox_->setTitle(uiText(TextId::ExportDivider));
    setCaption(divider_, 0, TextId::ExportDividerTab);
    setCaption(divider_, 1, TextId::ExportDividerSymbol);
    tabCountLabel_->setText(uiText(TextId::ExportDividerCount));
    symbolCountLabel_->setText(uiText(TextId::ExportDividerCount));
    headings_->setText(uiText(TextId::ExportHeadings));
    marks_->setText(uiText(TextId::ExportMarks));
    limitLines_->setText(uiText(TextId::ExportMaxLines));
    progressBox_->setTitle(uiText(TextId::ExportProgress));
    filesLabel_->setText(uiText(TextId::ExportProgressFiles));
    sizeLabel_->setText(uiText(TextId::ExportProgressSize));
    linesLabel_->setText(uiText(TextId::ExportProgressLines));
    timeLabel_->setText(uiText(TextId::ExportProgressTime));
    saveButton_->setText(uiText(TextId::ExportSave));
    cancelButton_->setText(uiText(TextId::ExportCancel));
    loadNewCaptions();
    Timer1Timer();
}

void T_SaveAsTextForm::loadNewCaptions() {
    formatLabel_->setText(uiText(TextId::ExportFormatLabel));
    partBox_->setTitle(uiText(TextId::ExportPartBox));
    fromLabel_->setText(uiText(TextId::ExportFrom));
    toLabel_->setText(uiText(TextId::ExportTo));
    everyLabel_->setText(uiText(TextId::ExportEvery));
    channelsLabel_->setText(uiText(TextId::ExportChannels));
    previewBox_->setTitle(uiText(TextId::ExportPreview));
    preview_->setAccessibleName(uiText(TextId::ExportPreview));
    symbol_->setAccessibleName(uiText(TextId::ExportDividerSymbol));
    maximumLines_->setAccessibleName(uiText(TextId::ExportMaxLines));
    from_->setToolTip(uiText(TextId::ExportPlaceHint));
    to_->setToolTip(uiText(TextId::ExportPlaceHint));
    every_->setToolTip(uiText(TextId::ExportEveryHint));
    channels_->setToolTip(uiText(TextId::ExportChannelsHint));
}

}  // namespace tarno2
