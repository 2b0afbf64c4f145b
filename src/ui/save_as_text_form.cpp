#include "ui/save_as_text_form.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QCloseEvent>
#include <QCoreApplication>
#include <QDir>
#include <QFileDialog>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QSpinBox>
#include <new>
#include <utility>

#include "config/files/found_labels.h"
#include "config/files/found_marks.h"
#include "platform/clock.h"
#include "records/export_names.h"
#include "records/record_description.h"
#include "ui/text.h"

namespace tarno2 {

namespace {

constexpr int kProgressInterval = 1500;  // ms
/// Lines that every spreadsheet takes.
constexpr int kUsualLimit = 1000000;

/// The message by which the worker tells its end: the user's base of messages, 1024, and 101.
constexpr auto kConversionEnded = static_cast<QEvent::Type>(1125);
static_assert(kConversionEnded >= QEvent::User && kConversionEnded <= QEvent::MaxUser);

class ConversionEnded : public QEvent {
public:
    explicit ConversionEnded(ConversionResult how) : QEvent(kConversionEnded), result(std::move(how)) {}
    const ConversionResult result;
};

}  // namespace

T_SaveAsTextForm::T_SaveAsTextForm(TextExportSettings& settings, TextExportSource source, QWidget* parent)
    : QDialog(parent),
      settings_(settings),
      source_(std::move(source)),
      described_(readRecordedKeys(RecordDescription::fileNameFor(source_.dataFile))),
      controls_(new QWidget(this)),
      fileNameLabel_(new QLabel(controls_)),
      fileNameEdit_(new QLineEdit(controls_)),
      setFileNameButton_(new QPushButton(controls_)),
      firstColumnBox_(new QGroupBox(controls_)),
      firstColumn_(new QButtonGroup(this)),
      timePrecisionLabel_(new QLabel(firstColumnBox_)),
      timePrecision_(new QSpinBox(firstColumnBox_)),
      dataColumnBox_(new QGroupBox(controls_)),
      dataColumn_(new QButtonGroup(this)),
      voltagePrecisionLabel_(new QLabel(dataColumnBox_)),
      voltagePrecision_(new QSpinBox(dataColumnBox_)),
      decimalBox_(new QGroupBox(controls_)),
      decimal_(new QButtonGroup(this)),
      dividerBox_(new QGroupBox(controls_)),
      divider_(new QButtonGroup(this)),
      tabCountLabel_(new QLabel(dividerBox_)),
      tabCount_(new QSpinBox(dividerBox_)),
      symbol_(new QLineEdit(dividerBox_)),
      symbolCountLabel_(new QLabel(dividerBox_)),
      symbolCount_(new QSpinBox(dividerBox_)),
      headings_(new QCheckBox(controls_)),
      marks_(new QCheckBox(controls_)),
      limitLines_(new QCheckBox(controls_)),
      maximumLines_(new QSpinBox(controls_)),
      progressBox_(new QGroupBox(this)),
      filesLabel_(new QLabel(progressBox_)),
      sizeLabel_(new QLabel(progressBox_)),
      linesLabel_(new QLabel(progressBox_)),
      timeLabel_(new QLabel(progressBox_)),
      files_(new QLabel(progressBox_)),
      size_(new QLabel(progressBox_)),
      lines_(new QLabel(progressBox_)),
      time_(new QLabel(progressBox_)),
      bar_(new QProgressBar(progressBox_)),
      saveButton_(new QPushButton(this)),
      cancelButton_(new QPushButton(this)) {
    build();
    loadCaptions();
    resize(sizeHint());
    showSettings();
    connectControls();
}

// The settings may be gone by now.
T_SaveAsTextForm::~T_SaveAsTextForm() {
    endConversion();
}

void T_SaveAsTextForm::connectControls() {
    timer_.setInterval(kProgressInterval);
    connect(&timer_, &QTimer::timeout, this, &T_SaveAsTextForm::Timer1Timer);
    connect(saveButton_, &QPushButton::clicked, this, &T_SaveAsTextForm::SaveButtonClick);
    connect(cancelButton_, &QPushButton::clicked, this, &T_SaveAsTextForm::CancelButtonClick);
    connect(setFileNameButton_, &QPushButton::clicked, this, &T_SaveAsTextForm::ButtonSetFileNameClick);
    connect(firstColumn_, &QButtonGroup::idToggled, this, &T_SaveAsTextForm::FirstColumnModeGroupClick);
    connect(dataColumn_, &QButtonGroup::idToggled, this, &T_SaveAsTextForm::DataColumnModeClick);
    connect(divider_, &QButtonGroup::idToggled, this, &T_SaveAsTextForm::DividerGroupBoxClick);
    connect(limitLines_, &QCheckBox::toggled, maximumLines_, &QWidget::setEnabled);
}

void T_SaveAsTextForm::showSettings() {
    settings_ = withinLimits(settings_);
    fileNameEdit_->setText(fromFileName(defaultOutputName(source_.dataFile)));
    firstColumn_->button(settings_.firstColumnMode)->setChecked(true);
    timePrecision_->setValue(settings_.timePrecision);
    dataColumn_->button(settings_.dataColumnMode)->setChecked(true);
    voltagePrecision_->setValue(settings_.voltagePrecision);
    decimal_->button(settings_.fractionalDivider)->setChecked(true);
    divider_->button(settings_.columnDividerMode)->setChecked(true);
    tabCount_->setValue(settings_.columnDividerCount);
    symbolCount_->setValue(settings_.columnDividerCount);
    symbol_->setText(fromCodePage(std::string(1, static_cast<char>(settings_.columnDivider))));
    headings_->setChecked(settings_.header == 1);
    marks_->setChecked(settings_.marks == 1);
    limitLines_->setChecked(settings_.maxLineCount > 0);
    maximumLines_->setValue(settings_.maxLineCount > 0 ? settings_.maxLineCount : kUsualLimit);
    maximumLines_->setEnabled(limitLines_->isChecked());
    showFields();
}

void T_SaveAsTextForm::readControls() {
    settings_.firstColumnMode = firstColumn_->checkedId();
    settings_.timePrecision = timePrecision_->value();
    settings_.dataColumnMode = dataColumn_->checkedId();
    settings_.voltagePrecision = voltagePrecision_->value();
    settings_.fractionalDivider = decimal_->checkedId();
    settings_.columnDividerMode = divider_->checkedId();
    const QSpinBox* const count = settings_.columnDividerMode == 1 ? symbolCount_ : tabCount_;
    settings_.columnDividerCount = static_cast<uint8_t>(count->value());
    // An empty field keeps the symbol that was there.
    if (const std::string symbol = toCodePage(symbol_->text()); !symbol.empty()) {
        settings_.columnDivider = static_cast<uint8_t>(symbol.front());
    }
    settings_.header = headings_->isChecked() ? 1 : 0;
    settings_.marks = marks_->isChecked() ? 1 : 0;
    settings_.maxLineCount = limitLines_->isChecked() ? maximumLines_->value() : 0;
}

void T_SaveAsTextForm::showFields() {
    readControls();
    const ExportFields fields = usedFields(settings_);
    timePrecision_->setEnabled(fields.timePrecision);
    timePrecisionLabel_->setEnabled(fields.timePrecision);
    voltagePrecision_->setEnabled(fields.voltagePrecision);
    voltagePrecisionLabel_->setEnabled(fields.voltagePrecision);
    tabCount_->setEnabled(fields.tabCount);
    tabCountLabel_->setEnabled(fields.tabCount);
    symbol_->setEnabled(fields.symbol);
    symbolCount_->setEnabled(fields.symbolCount);
    symbolCountLabel_->setEnabled(fields.symbolCount);
}

void T_SaveAsTextForm::FirstColumnModeGroupClick() {
    showFields();
}

void T_SaveAsTextForm::DataColumnModeClick() {
    showFields();
}

void T_SaveAsTextForm::DividerGroupBoxClick() {
    showFields();
}

void T_SaveAsTextForm::ButtonSetFileNameClick() {
    const QString name =
        QFileDialog::getSaveFileName(this, plainText(TextId::ExportWindow), fileNameEdit_->text(),
                                     QStringLiteral("*.csv;;*.txt;;") + uiText(TextId::AllFilesFilter));
    if (!name.isEmpty()) {
        fileNameEdit_->setText(QDir::toNativeSeparators(name));
    }
}

void T_SaveAsTextForm::setRunning(bool running) {
    running_ = running;
    controls_->setEnabled(!running);
    saveButton_->setEnabled(!running);
    if (running) {
        timer_.start();
    } else {
        timer_.stop();
    }
}

void T_SaveAsTextForm::SaveButtonClick() {
    if (running_) {
        return;
    }
    readControls();
    began_ = tickCount();
    stop_ = false;
    for (auto* counter :
         {&progress_.totalLines, &progress_.totalFiles, &progress_.lines, &progress_.files, &progress_.bytes}) {
        *counter = 0;
    }
    const auto body = [this, output = toFileName(fileNameEdit_->text()), format = exportFormat(settings_),
                       inputs = conversionInputs(described_, source_.known)] {
        QCoreApplication::postEvent(this, new ConversionEnded(convert(output, format, inputs)));
    };
    setRunning(true);
    if (!worker_.create(body)) {
        ConversionResult result;
        result.status = ConversionResult::NoMemory;
        conversionEnded(result);
        return;
    }
    worker_.resume();
    Timer1Timer();
}

// On the worker's thread: a passport may be long.
ConversionResult T_SaveAsTextForm::convert(const std::string& output, const ExportFormat& format,
                                           ConversionInputs inputs) {
    try {
        unitsKnown_ = true;
        if (format.units || format.headings) {
            FoundLabels found = findLabels(source_.dataFile, inputs.channelCount);
            inputs.labels = std::move(found.labels);
            if (format.units && source_.known.ranges.empty()) {
                putRangesInOrder(inputs, described_);
            }
            unitsKnown_ = found.problem.empty() || !format.units;
        }
        if (format.marks) {
            const uint64_t frameBytes = inputs.frameBytes();
            inputs.marks = marksOfFile(findRecordedMarks(source_.dataFile, frameBytes), source_.dataFile, frameBytes);
        }
        return convertToText(source_.dataFile, output, format, inputs, progress_, stop_);
    } catch (const std::bad_alloc&) {
        ConversionResult result;
        result.status = ConversionResult::NoMemory;
        return result;
    }
}

void T_SaveAsTextForm::CancelButtonClick() {
    if (running_) {
        stop_ = true;
    } else {
        close();
    }
}

void T_SaveAsTextForm::Timer1Timer() {
    if (running_) {
        elapsed_ = tickCount() - began_;
    }
    const ConversionState state(progress_);
    const ProgressTexts texts = progressTexts(state, elapsed_);
    files_->setText(fromCodePage(texts.files));
    size_->setText(fromCodePage(texts.size));
    lines_->setText(fromCodePage(texts.lines));
    time_->setText(fromCodePage(texts.time));
    bar_->setValue(state.thousandths());
}

void T_SaveAsTextForm::customEvent(QEvent* event) {
    if (event->type() == kConversionEnded) {
        conversionEnded(static_cast<ConversionEnded*>(event)->result);
    }
}

void T_SaveAsTextForm::conversionEnded(const ConversionResult& result) {
    worker_.join();
    Timer1Timer();
    setRunning(false);
    switch (result.status) {
        case ConversionResult::Finished:
            connect(report(QMessageBox::Information, finishedText(result)), &QDialog::finished, this,
                    &T_SaveAsTextForm::close);
            break;
        case ConversionResult::Stopped:
            report(QMessageBox::Information, uiText(TextId::ExportInterrupted));
            break;
        default:
            report(QMessageBox::Warning, failureText(result));
            break;
    }
}

// Without a loop of its own: the window may be closed and deleted while the message stands.
QMessageBox* T_SaveAsTextForm::report(QMessageBox::Icon icon, const QString& text) {
    auto* const box = new QMessageBox(icon, plainText(TextId::ExportReport), text, QMessageBox::NoButton, this);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->addButton(uiText(TextId::ButtonOk), QMessageBox::AcceptRole);
    box->open();
    return box;
}

QString T_SaveAsTextForm::finishedText(const ConversionResult& result) const {
    QStringList lines{uiText(TextId::ExportFinished)};
    if (result.leftoverBytes != 0) {
        lines << uiText(TextId::LastFrameIncomplete, {fromFileName(source_.dataFile)});
    }
    if (!unitsKnown_) {
        lines << uiText(TextId::ExportUnitsUnknown);
    }
    if (lacksPacketFrequency(described_, source_.known, exportFormat(settings_))) {
        lines << uiText(TextId::PacketFrequencyUnknown);
    }
    if (timeRunsOnOverGaps(described_, exportFormat(settings_))) {
        lines << uiText(TextId::TriggeredTimeRunsOn);
    }
    return lines.join(QStringLiteral("\n\n"));
}

QString T_SaveAsTextForm::failureText(const ConversionResult& result) const {
    const QString file = fromFileName(result.subject);
    const QString why = QString::fromLocal8Bit(result.error.text());
    switch (result.status) {
        case ConversionResult::BadInput:
            if (described_.readable) {
                return uiText(TextId::DescriptionKeyWrong, {fromFileName(source_.dataFile), file});
            }
            return described_.error.notFound() ? uiText(TextId::DescriptionMissing, {fromFileName(source_.dataFile)})
                                               : uiText(TextId::RecordingNotRead,
                                                        {fromFileName(RecordDescription::fileNameFor(source_.dataFile)),
                                                         QString::fromLocal8Bit(described_.error.text())});
        case ConversionResult::CannotRead:
            return uiText(TextId::RecordingNotRead, {file, why});
        case ConversionResult::CannotCreate:
        case ConversionResult::CannotWrite:
            return uiText(TextId::FileNotWritten, {file, why});
        case ConversionResult::OutputIsInput:
            return uiText(TextId::ExportOntoItself);
        case ConversionResult::BadName:
            return uiText(TextId::FileNameError);
        default:
            return uiText(TextId::Attention, {QString::fromStdString(describe(result))});
    }
}

void T_SaveAsTextForm::endConversion() {
    if (running_) {
        stop_ = true;
        worker_.join();
        // Its message would come to a window that is closed.
        QCoreApplication::removePostedEvents(this, kConversionEnded);
        Timer1Timer();
        setRunning(false);
    }
}

void T_SaveAsTextForm::FormClose() {
    endConversion();
    readControls();
}

void T_SaveAsTextForm::reject() {
    close();
}

void T_SaveAsTextForm::closeEvent(QCloseEvent* event) {
    FormClose();
    event->accept();
    QDialog::done(QDialog::Rejected);
}

}  // namespace tarno2
