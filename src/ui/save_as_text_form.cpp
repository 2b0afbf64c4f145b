#include "ui/save_as_text_form.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QCloseEvent>
#include <QComboBox>
#include <QCoreApplication>
#include <QDir>
#include <QFileDialog>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QSpinBox>
#include <new>
#include <utility>

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

QString dialogFilter(const ExporterRow& row) {
    const QString own = QStringLiteral("*.") + QLatin1String(row.extension) + QStringLiteral(";;");
    return (row.options & kTextOptions) != 0 ? own + QStringLiteral("*.txt;;") : own;
}

class ConversionEnded : public QEvent {
public:
    explicit ConversionEnded(ExportOutcome how) : QEvent(kConversionEnded), outcome(std::move(how)) {}
    const ExportOutcome outcome;
};

}  // namespace

T_SaveAsTextForm::T_SaveAsTextForm(TextExportSettings& settings, TextExportSource source, QWidget* parent)
    : QDialog(parent),
      settings_(settings),
      source_(std::move(source)),
      described_(readRecordedKeys(RecordDescription::fileNameFor(source_.dataFile))),
      controls_(new QWidget(this)),
      formatLabel_(new QLabel(controls_)),
      format_(new QComboBox(controls_)),
      fileNameLabel_(new QLabel(controls_)),
      fileNameEdit_(new QLineEdit(controls_)),
      setFileNameButton_(new QPushButton(controls_)),
      partBox_(new QGroupBox(controls_)),
      fromLabel_(new QLabel(partBox_)),
      from_(new QLineEdit(partBox_)),
      toLabel_(new QLabel(partBox_)),
      to_(new QLineEdit(partBox_)),
      everyLabel_(new QLabel(partBox_)),
      every_(new QSpinBox(partBox_)),
      channelsLabel_(new QLabel(partBox_)),
      channels_(new QLineEdit(partBox_)),
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
      previewBox_(new QGroupBox(this)),
      preview_(new QPlainTextEdit(previewBox_)),
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
    setObjectName(QStringLiteral("T_SaveAsTextForm"));
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
    connect(format_, &QComboBox::currentIndexChanged, this, &T_SaveAsTextForm::formatChosen);
    // A preview reads from the disk: not at every letter.
    constexpr int kPreviewDelay = 200;  // ms
    previewTimer_.setInterval(kPreviewDelay);
    previewTimer_.setSingleShot(true);
    connect(&previewTimer_, &QTimer::timeout, this, &T_SaveAsTextForm::showPreview);
    const auto later = [this] { previewTimer_.start(); };
    for (QLineEdit* const field : {from_, to_, channels_, symbol_}) {
        connect(field, &QLineEdit::textChanged, this, later);
    }
    for (QSpinBox* const field : {every_, timePrecision_, voltagePrecision_, tabCount_, symbolCount_}) {
        connect(field, &QSpinBox::valueChanged, this, later);
    }
    for (QButtonGroup* const group : {firstColumn_, dataColumn_, decimal_, divider_}) {
        connect(group, &QButtonGroup::idToggled, this, later);
    }
    connect(headings_, &QCheckBox::toggled, this, later);
    previewTimer_.start();
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
    const bool isText = (row().options & kTextOptions) != 0;
    for (QWidget* const each : std::initializer_list<QWidget*>{firstColumnBox_, decimalBox_, dividerBox_, headings_,
                                                               marks_, limitLines_, previewBox_}) {
        each->setEnabled(isText);
    }
    maximumLines_->setEnabled(isText && limitLines_->isChecked());
    voltagePrecision_->setEnabled(isText && fields.voltagePrecision);
    voltagePrecisionLabel_->setEnabled(isText && fields.voltagePrecision);
    dataColumnBox_->setEnabled((row().options & kDataOption) != 0);
}

const ExporterRow& T_SaveAsTextForm::row() const {
    return exporters()[static_cast<size_t>(std::max(format_->currentIndex(), 0))];
}

void T_SaveAsTextForm::formatChosen() {
    // The name follows where it has the ending of the format before.
    const QString ending = QLatin1Char('.') + QString::fromStdString(extension_);
    extension_ = row().extension;
    QString name = fileNameEdit_->text();
    if (name.endsWith(ending, Qt::CaseInsensitive)) {
        name.chop(ending.size());
        fileNameEdit_->setText(name + QLatin1Char('.') + QString::fromStdString(extension_));
    }
    if (row().usuallyVolts && dataColumn_->checkedId() == 0) {
        dataColumn_->button(1)->setChecked(true);
    }
    showFields();
    showPreview();
}

/// What the controls ask for.
ExportTask T_SaveAsTextForm::task() const {
    ExportTask task;
    task.row = &row();
    task.dataFile = source_.dataFile;
    task.outputName = toFileName(fileNameEdit_->text());
    if (task.outputName == kStandardOutput) {
        task.outputName.insert(0, "./");  // a file of that name: a window has no standard output
    }
    task.format = exportFormat(settings_);
    task.wish = {from_->text().trimmed().toStdString(), to_->text().trimmed().toStdString(),
                 static_cast<uint64_t>(every_->value()), channels_->text().trimmed().toStdString()};
    return task;
}

void T_SaveAsTextForm::showPreview() {
    constexpr uint64_t kLines = 3;
    QString text;
    if ((row().options & kTextOptions) != 0 && !running_) {
        readControls();
        ExportTask first = task();
        first.format.marks = false;  // looking for them may take long
        if (lookAround(first, described_, source_.known).wishProblem == WishProblem::None) {
            text = QString::fromStdString(previewText(first, kLines));
        }
    }
    preview_->setPlainText(text.remove(QLatin1Char('\r')).trimmed().isEmpty() ? QString() : text.chopped(1));
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
    const QString name = QFileDialog::getSaveFileName(this, plainText(TextId::ExportWindow), fileNameEdit_->text(),
                                                      dialogFilter(row()) + uiText(TextId::AllFilesFilter));
    if (!name.isEmpty()) {
        fileNameEdit_->setText(QDir::toNativeSeparators(name));
        confirmed_ = fileNameEdit_->text();
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
    if (!running_) {
        start(confirmed_ == fileNameEdit_->text());
    }
}

void T_SaveAsTextForm::start(bool replace) {
    readControls();
    began_ = tickCount();
    stop_ = false;
    for (auto* counter :
         {&progress_.totalLines, &progress_.totalFiles, &progress_.lines, &progress_.files, &progress_.bytes}) {
        *counter = 0;
    }
    ExportTask wanted = task();
    wanted.replace = replace;
    const auto body = [this, wanted = std::move(wanted)] {
        QCoreApplication::postEvent(this, new ConversionEnded(convert(wanted)));
    };
    setRunning(true);
    if (!worker_.create(body)) {
        ExportOutcome outcome;
        outcome.result.status = ConversionResult::NoMemory;
        conversionEnded(outcome);
        return;
    }
    worker_.resume();
    Timer1Timer();
}

// On the worker's thread: a passport may be long.
ExportOutcome T_SaveAsTextForm::convert(ExportTask task) {
    ExportOutcome outcome;
    try {
        outcome.around = lookAround(task, described_, source_.known);
        if (outcome.around.wishProblem == WishProblem::None) {
            outcome.result = exportRecording(task, progress_, stop_, outcome.notes);
        }
    } catch (const std::bad_alloc&) {
        outcome.result.status = ConversionResult::NoMemory;
    }
    return outcome;
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
        conversionEnded(static_cast<ConversionEnded*>(event)->outcome);
    }
}

void T_SaveAsTextForm::conversionEnded(const ExportOutcome& outcome) {
    worker_.join();
    Timer1Timer();
    setRunning(false);
    showFields();
    if (outcome.around.wishProblem != WishProblem::None) {
        report(QMessageBox::Warning, wishText(outcome.around));
        return;
    }
    switch (outcome.result.status) {
        case ConversionResult::Finished:
            connect(report(QMessageBox::Information, finishedText(outcome)), &QDialog::finished, this,
                    &T_SaveAsTextForm::close);
            break;
        case ConversionResult::Stopped:
            report(QMessageBox::Information, uiText(TextId::ExportInterrupted));
            break;
        case ConversionResult::OutputExists:
            askToReplace(fromFileName(outcome.result.subject));
            break;
        default:
            report(QMessageBox::Warning, failureText(outcome));
            break;
    }
}

void T_SaveAsTextForm::askToReplace(const QString& file) {
    auto* const box = new QMessageBox(QMessageBox::Question, plainText(TextId::ExportReport),
                                      uiText(TextId::ExportExists, {file}), QMessageBox::NoButton, this);
    box->setAttribute(Qt::WA_DeleteOnClose);
    const QPushButton* const replace = box->addButton(uiText(TextId::ExportReplace), QMessageBox::AcceptRole);
    box->setDefaultButton(box->addButton(uiText(TextId::ExportCancel), QMessageBox::RejectRole));
    connect(replace, &QPushButton::clicked, this, [this] { start(true); });
    box->open();
}

// Without a loop of its own: the window may be closed and deleted while the message stands.
QMessageBox* T_SaveAsTextForm::report(QMessageBox::Icon icon, const QString& text) {
    auto* const box = new QMessageBox(icon, plainText(TextId::ExportReport), text, QMessageBox::NoButton, this);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->addButton(uiText(TextId::ButtonOk), QMessageBox::AcceptRole);
    box->open();
    return box;
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
