// The controls of the synchronisation window: how they are made, arranged and named.

#include <QAction>
#include <QCheckBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QRadioButton>
#include <QSlider>
#include <QStackedWidget>
#include <QVBoxLayout>

#include "ui/additional_mode_window.h"
#include "ui/mnemonics.h"
#include "ui/panels/panel_layout.h"
#include "ui/synchro_picture.h"
#include "ui/text.h"

namespace tarno2 {

namespace {

QStackedWidget* makeStack(QWidget* parent) {
    auto* stack = new QStackedWidget(parent);
    stack->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Maximum);
    return stack;
}

QSlider* makeBar(const char* name, QWidget* parent) {
    auto* bar = named<QSlider>(name, parent);
    bar->setOrientation(Qt::Horizontal);
    return bar;
}

QHBoxLayout* beside(QWidget* first, QWidget* second) {
    auto* row = new QHBoxLayout;
    row->addWidget(first);
    row->addWidget(second);
    row->addStretch();
    return row;
}

void setHint(QWidget* widget, TextId hint) {
    widget->setToolTip(uiText(hint));
    widget->setAccessibleDescription(uiText(hint));
}

}  // namespace

T_AdditionalModeWindow::T_AdditionalModeWindow(SynchroSettings& settings, SynchroSizes& sizes, QWidget* parent)
    : QDialog(parent),
      settings_(settings),
      sizes_(sizes),
      unitPopup_(makePopup("VoltageUnitPopup")),
      analogPopup_(makePopup("AnalogPopup")),
      portPopup_(makePopup("PortPopup")),
      synchroAnalogPopup_(makePopup("SynchroAnalogPopup")),
      synchroPortPopup_(makePopup("SynchroPortPopup")),
      modeBox_(named<QGroupBox>("ModeBox", this)),
      off_(named<QRadioButton>("OffButton", modeBox_)),
      analyze_(named<QRadioButton>("AnalyzeButton", modeBox_)),
      synchronize_(named<QRadioButton>("SynchroButton", modeBox_)),
      pages_(makeStack(this)),
      offNote_(makeText(pages_, {})),
      analysisPage_(named<QWidget>("Panel1", pages_)),
      analogRadio_(named<QRadioButton>("AnalogRadio", analysisPage_)),
      portRadio_(named<QRadioButton>("PortRadio", analysisPage_)),
      analysisSources_(makeStack(analysisPage_)),
      analogData_(named<QWidget>("AnalogDataBox", analysisSources_)),
      portData_(named<QWidget>("PortDataBox", analysisSources_)),
      start_({"AnalogStartBox", "AnalogStartModeButton", "StartChannelBox", "StartValueEdit", "StartValueUnit"},
             analogPopup_, unitPopup_, analogData_),
      write_({"AnalogWriteBox", "AnalogWriteModeButton", "WriteChannelBox", "WriteValueEdit", "WriteValueUnit"},
             analogPopup_, unitPopup_, analogData_),
      stop_({"AnalogStopBox", "AnalogStopModeButton", "StopChannelBox", "StopValueEdit", "StopValueUnit"}, analogPopup_,
            unitPopup_, analogData_),
      portStart_({"PortStartBox", "PortStartModeButton", "PortStartChannelBox"}, portPopup_, portData_),
      portWrite_({"PortWriteBox", "PortWriteModeButton", "PortWriteChannelBox"}, portPopup_, portData_),
      portStop_({"PortStopBox", "PortStopModeButton", "PortStopChannelBox"}, portPopup_, portData_),
      analysisPortNote_(makeText(portData_, {})),
      synchroPage_(named<QWidget>("Panel2", pages_)),
      synchroAnalogRadio_(named<QRadioButton>("SynchroAnalogRadio", synchroPage_)),
      synchroPortRadio_(named<QRadioButton>("SynchroPortRadio", synchroPage_)),
      synchroSources_(makeStack(synchroPage_)),
      synchro_(
          {"AnalogSynchroBox", "AnalogSynchroModeButton", "SynchroChannelBox", "SynchroValueEdit", "SynchroValueUnit"},
          synchroAnalogPopup_, unitPopup_, synchroSources_),
      portSynchro_({"PortSynchroBox", "PortSynchroModeButton", "PortSynchroBitBox"}, synchroPortPopup_,
                   synchroSources_),
      synchroPortNote_(makeText(portSynchro_.box, {})),
      historyBox_(named<QGroupBox>("HistoryBox", synchroPage_)),
      bufferBar_(makeBar("BufferBar", historyBox_)),
      bufferEdit_(named<QLineEdit>("SynchroBufferSizeEdit", historyBox_)),
      prehistoryBox_(named<QGroupBox>("PrehistoryLevel", synchroPage_)),
      prehistoryBar_(makeBar("PrehistoryBar", prehistoryBox_)),
      prehistoryEdit_(named<QLineEdit>("SynchroPrehistoryLevelEdit", prehistoryBox_)),
      percentage_(named<QLabel>("PercentageLabel", prehistoryBox_)),
      recordLength_(makeNote("RecordLengthLabel", 2, synchroPage_)),
      stopAfter_(named<QCheckBox>("StopAfterTrigged", synchroPage_)),
      picture_(named<SynchroPicture>("SynchroPicture", this)),
      accept_(named<QPushButton>("AcceptButton", this)),
      cancel_(named<QPushButton>("CancelButton", this)) {
    setObjectName(QStringLiteral("T_AdditionalModeWindow"));
    assemble();
    setTexts();
    ReloadControls();
}

void T_AdditionalModeWindow::assemble() {
    makeModes();
    makeAnalysisPage();
    makeSynchroPage();
    arrange();
    connectControls();
    connectPopups();
}

QMenu* T_AdditionalModeWindow::makePopup(const char* name) {
    auto* popup = named<QMenu>(name, this);
    for (int tag = 0; tag < 3; ++tag) {
        popup->addAction(QString())->setData(tag);
    }
    return popup;
}

void T_AdditionalModeWindow::makeModes() {
    auto* modes = new QVBoxLayout(modeBox_);
    modes->addWidget(off_);
    modes->addWidget(analyze_);
    modes->addWidget(synchronize_);
    modes->addStretch();
    off_->setChecked(true);
    analogRadio_->setChecked(true);
    synchroAnalogRadio_->setChecked(true);
}

void T_AdditionalModeWindow::makeAnalysisPage() {
    auto* levels = new QHBoxLayout(analogData_);
    auto* bits = new QGridLayout(portData_);
    levels->setContentsMargins(0, 0, 0, 0);
    bits->setContentsMargins(0, 0, 0, 0);
    int column = 0;
    for (const AnalogConditionControls* condition : {&start_, &write_, &stop_}) {
        levels->addWidget(condition->box, 1);
    }
    for (const PortConditionControls* condition : {&portStart_, &portWrite_, &portStop_}) {
        bits->addWidget(condition->box, 0, column);
        bits->setColumnStretch(column++, 1);
    }
    bits->addWidget(analysisPortNote_, 1, 0, 1, column);
    bits->setRowStretch(2, 1);
    analysisSources_->addWidget(analogData_);
    analysisSources_->addWidget(portData_);
    auto* page = new QVBoxLayout(analysisPage_);
    page->setContentsMargins(0, 0, 0, 0);
    page->addLayout(beside(analogRadio_, portRadio_));
    page->addWidget(analysisSources_);
}

void T_AdditionalModeWindow::makeSynchroPage() {
    makeSizes();
    static_cast<QGridLayout*>(portSynchro_.box->layout())->addWidget(synchroPortNote_, 3, 0, 1, 2);
    synchroSources_->addWidget(synchro_.box);
    synchroSources_->addWidget(portSynchro_.box);
    auto* page = new QGridLayout(synchroPage_);
    page->setContentsMargins(0, 0, 0, 0);
    page->addLayout(beside(synchroAnalogRadio_, synchroPortRadio_), 0, 0);
    page->addWidget(synchroSources_, 1, 0, 3, 1);
    page->addWidget(historyBox_, 1, 1);
    page->addWidget(prehistoryBox_, 2, 1);
    page->addWidget(stopAfter_, 3, 1);
    page->setColumnStretch(0, 1);
    page->setColumnStretch(1, 1);
}

void T_AdditionalModeWindow::makeSizes() {
    auto* history = new QGridLayout(historyBox_);
    history->addWidget(bufferBar_, 0, 0);
    history->addWidget(bufferEdit_, 0, 1);
    history->addWidget(recordLength_, 1, 0, 1, 2);
    auto* prehistory = new QHBoxLayout(prehistoryBox_);
    prehistory->addWidget(prehistoryBar_);
    prehistory->addWidget(percentage_);
    prehistory->addWidget(prehistoryEdit_);
    prehistoryBar_->setRange(0, 100);
    percentage_->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    percentage_->setMinimumWidth(percentage_->fontMetrics().horizontalAdvance(QStringLiteral("100 %")));
    for (QLineEdit* edit : {bufferEdit_, prehistoryEdit_}) {
        edit->setFixedWidth(edit->fontMetrics().horizontalAdvance(QStringLiteral("0000000000")) + 16);
        edit->setAlignment(Qt::AlignRight);
        edit->installEventFilter(this);
    }
}

void T_AdditionalModeWindow::arrange() {
    offNote_->setAlignment(Qt::AlignCenter);
    pages_->addWidget(offNote_);
    pages_->addWidget(analysisPage_);
    pages_->addWidget(synchroPage_);
    auto* upper = new QHBoxLayout;
    upper->addWidget(modeBox_);
    upper->addWidget(pages_, 1);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(accept_);
    buttons->addWidget(cancel_);
    auto* window = new QVBoxLayout(this);
    window->addLayout(upper);
    window->addWidget(picture_, 1);
    window->addLayout(buttons);
    accept_->setDefault(true);
}

void T_AdditionalModeWindow::setTexts() {
    setWindowTitle(uiText(TextId::SynchroWindow));
    setPopupTexts();
    setModeTexts();
    const TextId titles[] = {TextId::SynchroStartCondition, TextId::SynchroWriteCondition,
                             TextId::SynchroStopCondition};
    AnalogConditionControls* levels[] = {&start_, &write_, &stop_};
    PortConditionControls* bits[] = {&portStart_, &portWrite_, &portStop_};
    for (size_t i = 0; i < std::size(titles); ++i) {
        levels[i]->setTexts(uiText(titles[i]));
        bits[i]->setTexts(uiText(titles[i]));
    }
    synchro_.setTexts(uiText(TextId::SynchroPictureTrigger));
    portSynchro_.setTexts(uiText(TextId::SynchroPictureTrigger));
    setSizeTexts();
    setMnemonics();
}

void T_AdditionalModeWindow::setPopupTexts() {
    const struct {
        QMenu* popup;
        std::array<TextId, 3> texts;
    } popups[] = {
        {unitPopup_, {TextId::Microvolts, TextId::Millivolts, TextId::Volts}},
        {analogPopup_, {TextId::SynchroIfAbove, TextId::SynchroIfBelow, TextId::SynchroNotUse}},
        {portPopup_, {TextId::SynchroIfOne, TextId::SynchroIfZero, TextId::SynchroNotUse}},
        {synchroAnalogPopup_, {TextId::SynchroLeadingEdge, TextId::SynchroFallingEdge, TextId::SynchroNotUse}},
        {synchroPortPopup_, {TextId::SynchroLeadingEdge, TextId::SynchroFallingEdge, TextId::SynchroNotUse}},
    };
    for (const auto& popup : popups) {
        for (QAction* item : popup.popup->actions()) {
            item->setText(uiText(popup.texts[static_cast<size_t>(item->data().toInt())]));
        }
    }
}

void T_AdditionalModeWindow::setModeTexts() {
    modeBox_->setTitle(uiText(TextId::SynchroModeBox));
    off_->setText(uiText(TextId::SynchroOff));
    analyze_->setText(uiText(TextId::SynchroAnalysis));
    synchronize_->setText(uiText(TextId::SynchroSynchronization));
    setHint(off_, TextId::SynchroOffHint);
    setHint(analyze_, TextId::SynchroAnalysisHint);
    setHint(synchronize_, TextId::SynchroSynchronizationHint);
    offNote_->setText(uiText(TextId::SynchroOffHint));
    analogRadio_->setText(uiText(TextId::SynchroAnalogChannels));
    portRadio_->setText(uiText(TextId::SynchroDigitalPorts));
    synchroAnalogRadio_->setText(uiText(TextId::SynchroAnalogChannel));
    synchroPortRadio_->setText(uiText(TextId::SynchroPortBit));
    for (QRadioButton* port : {portRadio_, synchroPortRadio_}) {
        port->setToolTip(facts_.board.useDigitalPort ? QString() : uiText(TextId::SynchroPortNotUsed));
    }
    accept_->setText(uiText(TextId::SynchroAccept));
    setHint(accept_, TextId::SynchroAcceptHint);
    cancel_->setText(uiText(TextId::ExportCancel));
}

void T_AdditionalModeWindow::setSizeTexts() {
    historyBox_->setTitle(uiText(TextId::SynchroBufferSize));
    prehistoryBox_->setTitle(uiText(TextId::SynchroPrehistorySize));
    for (QWidget* control : {static_cast<QWidget*>(bufferBar_), static_cast<QWidget*>(bufferEdit_)}) {
        setHint(control, TextId::SynchroBufferHint);
        control->setAccessibleName(uiText(TextId::SynchroBufferSize));
    }
    for (QWidget* control : {static_cast<QWidget*>(prehistoryBar_), static_cast<QWidget*>(prehistoryEdit_)}) {
        setHint(control, TextId::SynchroPrehistoryHint);
        control->setAccessibleName(uiText(TextId::SynchroPrehistorySize));
    }
    stopAfter_->setText(uiText(TextId::SynchroStopAfter));
    setHint(stopAfter_, TextId::SynchroStopAfterHint);
}

/// Only what is seen together needs letters of its own.
void T_AdditionalModeWindow::setMnemonics() {
    const QSet<QChar> common = giveMnemonics({cancel_, off_, analyze_, synchronize_, accept_});
    const QSet<QChar> analysis = giveMnemonics({analogRadio_, portRadio_}, common);
    giveMnemonics({start_.box, write_.box, stop_.box}, analysis);
    giveMnemonics({portStart_.box, portWrite_.box, portStop_.box}, analysis);
    const QSet<QChar> synchronisation =
        giveMnemonics({synchroAnalogRadio_, synchroPortRadio_, historyBox_, prehistoryBox_, stopAfter_}, common);
    giveMnemonics({synchro_.box}, synchronisation);
    giveMnemonics({portSynchro_.box}, synchronisation);
}

}  // namespace tarno2
