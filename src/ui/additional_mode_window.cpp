#include "ui/additional_mode_window.h"

#include <QAction>
#include <QCheckBox>
#include <QCloseEvent>
#include <QComboBox>
#include <QGroupBox>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMessageBox>
#include <QRadioButton>
#include <QScopedValueRollback>
#include <QSlider>
#include <QStackedWidget>
#include <algorithm>
#include <iterator>

#include "config/files/figure_text.h"
#include "config/logs/debug_log.h"
#include "display/synchro_sketch.h"
#include "ui/panels/panel_layout.h"
#include "ui/synchro_picture.h"
#include "ui/text.h"

namespace tarno2 {

namespace {

bool isEnter(int key) {
    return key == Qt::Key_Return || key == Qt::Key_Enter;
}

}  // namespace

void T_AdditionalModeWindow::connectControls() {
    using Window = T_AdditionalModeWindow;
    const struct {
        QAbstractButton* button;
        void (Window::*handler)();
    } clicks[] = {
        {accept_, &Window::AcceptButtonClick},
        {cancel_, &Window::reject},
        {off_, &Window::OffButtonClick},
        {analyze_, &Window::AnalyzeButtonClick},
        {synchronize_, &Window::SynchroButtonClick},
        {analogRadio_, &Window::AnalogRadioClick},
        {portRadio_, &Window::PortRadioClick},
        {synchroAnalogRadio_, &Window::SynchroAnalogRadioClick},
        {synchroPortRadio_, &Window::SynchroPortRadioClick},
        {start_.mode, &Window::AnalogStartModeButtonClick},
        {write_.mode, &Window::AnalogWriteModeButtonClick},
        {stop_.mode, &Window::AnalogStopModeButtonClick},
        {start_.unit, &Window::StartValueUnitClick},
        {write_.unit, &Window::WriteValueUnitClick},
        {stop_.unit, &Window::StopValueUnitClick},
        {portStart_.mode, &Window::PortStartModeButtonClick},
        {portWrite_.mode, &Window::PortWriteModeButtonClick},
        {portStop_.mode, &Window::PortStopModeButtonClick},
        {synchro_.mode, &Window::AnalogSynchroModeButtonClick},
        {synchro_.unit, &Window::SynchroValueUnitClick},
        {portSynchro_.mode, &Window::PortSynchroModeButtonClick},
    };
    for (const auto& click : clicks) {
        connect(click.button, &QAbstractButton::clicked, this, click.handler);
    }
    for (const AnalogConditionControls* const condition : analogConditions()) {
        connect(condition->channel, &QComboBox::currentTextChanged, this, &Window::refresh);
        connect(condition->value, &QLineEdit::textChanged, this, &Window::refresh);
    }
    for (const PortConditionControls* condition : portConditions()) {
        connect(condition->bit, &QComboBox::currentTextChanged, this, &Window::refresh);
    }
    for (const QLineEdit* edit : {bufferEdit_, prehistoryEdit_}) {
        connect(edit, &QLineEdit::textChanged, this, &Window::refresh);
    }
    connect(bufferBar_, &QSlider::valueChanged, this, &Window::BufferBarChange);
    connect(prehistoryBar_, &QSlider::valueChanged, this, &Window::PrehistoryBarChange);
}

void T_AdditionalModeWindow::connectPopups() {
    for (const QMenu* popup : {unitPopup_, analogPopup_, portPopup_, synchroAnalogPopup_, synchroPortPopup_}) {
        connect(popup, &QMenu::triggered, this, &T_AdditionalModeWindow::PopupItemClick);
    }
}

std::array<AnalogConditionControls*, 4> T_AdditionalModeWindow::analogConditions() {
    return {&start_, &write_, &stop_, &synchro_};
}

std::array<const PortConditionControls*, 4> T_AdditionalModeWindow::portConditions() const {
    return {&portStart_, &portWrite_, &portStop_, &portSynchro_};
}

void T_AdditionalModeWindow::setFacts(AdditionalModeFacts facts) {
    facts_ = std::move(facts);
    fillBoxes();
    refresh();
}

void T_AdditionalModeWindow::fillBoxes() {
    for (AnalogConditionControls* condition : analogConditions()) {
        condition->fillChannels(facts_.board);
    }
    for (const PortConditionControls* condition : portConditions()) {
        condition->fillBits(facts_.digitalLines);
    }
}

void T_AdditionalModeWindow::showEvent(QShowEvent* event) {
    if (!event->spontaneous()) {
        FormShow();
    }
    QDialog::showEvent(event);
}

void T_AdditionalModeWindow::FormShow() {
    setTexts();
    fitBufferBar();
    fillBoxes();
    showPage();
    shownSettings_ = settings_;
    shownSizes_ = sizes_;
    shownForm_ = form();
}

/// The bar's range follows the number of channels; the bar keeps its place in it as far as it can.
void T_AdditionalModeWindow::fitBufferBar() {
    const BarRange range = bufferBarRange(facts_.board.channels.size());
    bufferBar_->setRange(range.minimum, range.maximum);
    bufferBar_->setPageStep(std::max(1, range.maximum / 50));
    // A size from the settings that the bar could not show before finds its place now.
    if (const auto frames = typedInteger(bufferEdit_->text().toStdString())) {
        const QScopedValueRollback busy(bufferBusy_, true);
        bufferBar_->setValue(range.clamped(*frames));
    }
}

void T_AdditionalModeWindow::ReloadControls() {
    SynchroForm loaded = form();
    fillSynchroForm(settings_, sizes_, loaded);
    setForm(loaded);
}

SynchroForm T_AdditionalModeWindow::form() const {
    SynchroForm result;
    result.mode = analyze_->isChecked() ? 1 : synchronize_->isChecked() ? 2 : 0;
    result.analysisOnPort = portRadio_->isChecked();
    result.analog = {start_.read(), write_.read(), stop_.read()};
    result.port = {portStart_.read(), portWrite_.read(), portStop_.read()};
    result.synchroOnPort = synchroPortRadio_->isChecked();
    result.synchroAnalog = synchro_.read();
    result.synchroPort = portSynchro_.read();
    result.buffer = bufferEdit_->text().toStdString();
    result.prehistory = prehistoryEdit_->text().toStdString();
    result.stopAfterTrigged = stopAfter_->isChecked();
    return result;
}

void T_AdditionalModeWindow::setForm(const SynchroForm& form) {
    (form.mode == 1 ? analyze_ : form.mode == 2 ? synchronize_ : off_)->setChecked(true);
    (form.analysisOnPort ? portRadio_ : analogRadio_)->setChecked(true);
    (form.synchroOnPort ? synchroPortRadio_ : synchroAnalogRadio_)->setChecked(true);
    const AnalogConditionForm* levels[] = {&form.analog[0], &form.analog[1], &form.analog[2], &form.synchroAnalog};
    const PortConditionForm* bits[] = {&form.port[0], &form.port[1], &form.port[2], &form.synchroPort};
    for (size_t i = 0; i < std::size(levels); ++i) {
        analogConditions()[i]->write(*levels[i]);
        portConditions()[i]->write(*bits[i]);
    }
    setSizeBars(form);
    stopAfter_->setChecked(form.stopAfterTrigged);
    showPage();
}

/// The edits show the form's sizes exactly, the bars as near as they can.
void T_AdditionalModeWindow::setSizeBars(const SynchroForm& form) {
    const QScopedValueRollback bufferBusy(bufferBusy_, true);
    const QScopedValueRollback prehistoryBusy(prehistoryBusy_, true);
    bufferEdit_->setText(QString::fromStdString(form.buffer));
    prehistoryEdit_->setText(QString::fromStdString(form.prehistory));
    fitBufferBar();
    const int32_t buffer = typedInteger(form.buffer).value_or(bufferBar_->value());
    prehistoryBar_->setValue(prehistoryTyped(form.prehistory, buffer, prehistoryBar_->value()).bar);
}

void T_AdditionalModeWindow::showPage() {
    if (analyze_->isChecked()) {
        AnalyzeButtonClick();
    } else if (synchronize_->isChecked()) {
        SynchroButtonClick();
    } else {
        OffButtonClick();
    }
}

void T_AdditionalModeWindow::OffButtonClick() {
    analysisPage_->setEnabled(false);
    synchroPage_->setEnabled(false);
    pages_->setCurrentWidget(offNote_);
    refresh();
}

void T_AdditionalModeWindow::AnalyzeButtonClick() {
    analysisPage_->setEnabled(true);
    synchroPage_->setEnabled(false);
    pages_->setCurrentWidget(analysisPage_);
    portRadio_->isChecked() ? PortRadioClick() : AnalogRadioClick();
}

void T_AdditionalModeWindow::SynchroButtonClick() {
    analysisPage_->setEnabled(false);
    synchroPage_->setEnabled(true);
    pages_->setCurrentWidget(synchroPage_);
    synchroPortRadio_->isChecked() ? SynchroPortRadioClick() : SynchroAnalogRadioClick();
}

void T_AdditionalModeWindow::AnalogRadioClick() {
    analogData_->setEnabled(true);
    portData_->setEnabled(false);
    analysisSources_->setCurrentWidget(analogData_);
    refresh();
}

void T_AdditionalModeWindow::PortRadioClick() {
    analogData_->setEnabled(false);
    portData_->setEnabled(true);
    analysisSources_->setCurrentWidget(portData_);
    refresh();
}

void T_AdditionalModeWindow::SynchroAnalogRadioClick() {
    synchro_.box->setEnabled(true);
    portSynchro_.box->setEnabled(false);
    synchroSources_->setCurrentWidget(synchro_.box);
    refresh();
}

void T_AdditionalModeWindow::SynchroPortRadioClick() {
    synchro_.box->setEnabled(false);
    portSynchro_.box->setEnabled(true);
    synchroSources_->setCurrentWidget(portSynchro_.box);
    refresh();
}

void T_AdditionalModeWindow::openPopup(TaggedButton* button) {
    popupButton_ = button;
    for (QAction* item : button->popup()->actions()) {
        if (item->data().toInt() == button->tag()) {
            button->popup()->setActiveAction(item);
        }
    }
    button->popup()->popup(button->mapToGlobal(QPoint(0, button->height())));
}

void T_AdditionalModeWindow::PopupItemClick(const QAction* item) {
    popupButton_->setTag(item->data().toInt());
    refresh();
}

void T_AdditionalModeWindow::BufferBarChange() {
    if (bufferBusy_) {
        return;
    }
    const QScopedValueRollback busy(bufferBusy_, true);
    bufferEdit_->setText(QString::number(bufferBar_->value()));
    showPrehistory();
}

void T_AdditionalModeWindow::PrehistoryBarChange() {
    if (prehistoryBusy_) {
        return;
    }
    const QScopedValueRollback busy(prehistoryBusy_, true);
    showPrehistory();
}

void T_AdditionalModeWindow::showPrehistory() {
    prehistoryEdit_->setText(QString::number(prehistoryFrames(bufferBar_->value(), prehistoryBar_->value())));
    refresh();  // in a small buffer another percentage may be the same number
}

void T_AdditionalModeWindow::SynchroBufferSizeEditKeyDown(int key) {
    if (!isEnter(key) || bufferBusy_) {
        return;
    }
    const QScopedValueRollback busy(bufferBusy_, true);
    const TypedSize typed =
        bufferTyped(bufferEdit_->text().toStdString(), {bufferBar_->minimum(), bufferBar_->maximum()});
    bufferBar_->setValue(typed.bar);
    if (typed.edit) {
        bufferEdit_->setText(QString::number(*typed.edit));
    }
    showPrehistory();
}

void T_AdditionalModeWindow::SynchroPrehistoryLevelEditKeyDown(int key) {
    if (!isEnter(key) || prehistoryBusy_) {
        return;
    }
    const QScopedValueRollback busy(prehistoryBusy_, true);
    const TypedSize typed =
        prehistoryTyped(prehistoryEdit_->text().toStdString(), bufferBar_->value(), prehistoryBar_->value());
    prehistoryBar_->setValue(typed.bar);
    if (typed.edit) {
        prehistoryEdit_->setText(QString::number(*typed.edit));
    }
    refresh();
}

bool T_AdditionalModeWindow::eventFilter(QObject* watched, QEvent* event) {
    const auto* press = event->type() == QEvent::KeyPress ? static_cast<QKeyEvent*>(event) : nullptr;
    if (press == nullptr || !isEnter(press->key())) {
        return QDialog::eventFilter(watched, event);
    }
    watched == bufferEdit_ ? SynchroBufferSizeEditKeyDown(press->key())
                           : SynchroPrehistoryLevelEditKeyDown(press->key());
    return true;  // must not press the default button as well
}

void T_AdditionalModeWindow::AcceptButtonClick() {
    if (FormCloseQuery()) {
        accept();
    }
}

void T_AdditionalModeWindow::closeEvent(QCloseEvent* event) {
    if (!isVisible() || FormCloseQuery()) {
        accept();
    } else {
        event->ignore();
    }
}

void T_AdditionalModeWindow::reject() {
    if (!isVisible()) {
        return;
    }
    settings_ = shownSettings_;
    sizes_ = shownSizes_;
    setForm(shownForm_);
    QDialog::reject();
}

void T_AdditionalModeWindow::SwitchOff() {
    off_->setChecked(true);
    OffButtonClick();
    FormCloseQuery();
}

bool T_AdditionalModeWindow::FormCloseQuery() {
    DEBUG_LOG("T_AdditionalModeWindow::FormCloseQuery enter");
    const SynchroReading reading = readSynchroForm(form(), settings_, sizes_);
    if (QWidget* offending = control(reading.mistake)) {
        DEBUG_LOG("!!!! T_AdditionalModeWindow::FormCloseQuery: no number in %s",
                  offending->objectName().toStdString().c_str());
        if (!quiet_) {
            complain(offending);
            return false;
        }
        switchSynchronisationOff(settings_);
    }
    if (settings_.SynchroAnalyzeMode == 0) {
        off_->setChecked(true);
    }
    if (reading.nothingAsked || settings_.SynchroAnalyzeMode == 0) {
        OffButtonClick();
    }
    DEBUG_LOG("T_AdditionalModeWindow::FormCloseQuery exit status=NORMAL");
    return true;
}

QWidget* T_AdditionalModeWindow::control(SynchroField field) const {
    QWidget* const controls[] = {nullptr,       start_.channel,  start_.value,     write_.channel, write_.value,
                                 stop_.channel, stop_.value,     portStart_.bit,   portWrite_.bit, portStop_.bit,
                                 bufferEdit_,   prehistoryEdit_, synchro_.channel, synchro_.value, portSynchro_.bit};
    return controls[static_cast<size_t>(field)];
}

void T_AdditionalModeWindow::complain(QWidget* offending) {
    offending->setFocus();
    auto* edit = qobject_cast<QLineEdit*>(offending);
    if (const auto* box = qobject_cast<QComboBox*>(offending)) {
        edit = box->lineEdit();
    }
    if (edit != nullptr) {
        edit->selectAll();
    }
    auto* message = new QMessageBox(this);
    message->setAttribute(Qt::WA_DeleteOnClose);
    message->setText(uiText(TextId::SynchroValueMistake));
    message->addButton(uiText(TextId::ButtonOk), QMessageBox::AcceptRole);
    message->open();
}

void T_AdditionalModeWindow::refresh() {
    // The channel first: what is typed counts in its unit.
    for (AnalogConditionControls* condition : analogConditions()) {
        condition->showFacts(facts_.board);
    }
    SynchroSettings settings = settings_;
    SynchroSizes sizes = sizes_;
    const bool mistaken = readSynchroForm(form(), settings, sizes).mistake != SynchroField::None;
    picture_->setSketch(mistaken ? SynchroSketch{} : sketchSynchronisation(settings, sizes, facts_.board));
    for (QLabel* note : {analysisPortNote_, synchroPortNote_}) {
        showText(note, facts_.board.useDigitalPort ? QString() : uiText(TextId::SynchroPortNotUsed), true);
    }
    percentage_->setText(QStringLiteral("%1 %").arg(prehistoryBar_->value()));
    showRecordLength();
}

void T_AdditionalModeWindow::showRecordLength() {
    const auto frames = typedInteger(bufferEdit_->text().toStdString());
    const auto before = typedInteger(prehistoryEdit_->text().toStdString());
    if (!frames || !before) {
        showText(recordLength_, uiText(TextId::SynchroValueMistake), true);
    } else if (*frames < 1 || *before < 0 || *before > *frames) {
        showText(recordLength_, uiText(TextId::SynchroParametersMistake), true);
    } else if (facts_.framesPerSecond <= 0.0) {
        showText(recordLength_, {});
    } else {
        const std::string bytes = formatSize(static_cast<uint64_t>(*frames) * facts_.frameBytes());
        const QString seconds = QString::number(*frames / facts_.framesPerSecond, 'g', 4);
        showText(recordLength_, uiText(TextId::SynchroRecordLength, {seconds, fromCodePage(bytes).trimmed()}));
    }
}

}  // namespace tarno2
