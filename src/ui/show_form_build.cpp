// What the signal view is made of.

#include <QAction>
#include <QActionGroup>
#include <QLabel>
#include <QMenu>
#include <QScrollBar>
#include <QSplitter>
#include <QToolBar>
#include <QToolButton>
#include <QVBoxLayout>

#include "measure/transform.h"
#include "ui/cursor_tools.h"
#include "ui/digital_signal_settings.h"
#include "ui/mark_list_window.h"
#include "ui/measurement_panel.h"
#include "ui/overview_strip.h"
#include "ui/show_form.h"
#include "ui/show_tools.h"
#include "ui/spectrum_pane.h"
#include "ui/text.h"

namespace tarno2 {

void T_ShowForm::build() {
    setObjectName(QStringLiteral("T_ShowForm"));
    splitter_ = new QSplitter(Qt::Horizontal, this);
    splitter_->setObjectName(QStringLiteral("Splitter1"));
    buildPicture();
    buildActions();
    splitter_->setStretchFactor(0, 1);
    splitter_->setChildrenCollapsible(false);
    scrollBar_ = new QScrollBar(Qt::Horizontal, this);
    scrollBar_->setObjectName(QStringLiteral("ScrollBar1"));
    scrollBar_->setFocusPolicy(Qt::StrongFocus);
    scrollBar_->installEventFilter(this);
    status_ = new QLabel(this);
    status_->setObjectName(QStringLiteral("MousePlace"));
    // As wide as the places of the mouse become, so that the scroll bar keeps its length.
    status_->setMinimumWidth(fontMetrics().horizontalAdvance(QStringLiteral("X 888888.8888 ms  Y -8888.888 mV  ")));
    status_->setIndent(fontMetrics().averageCharWidth());
    tools_ = new ShowTools(this);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(bar_);
    rows_ = new QSplitter(Qt::Vertical, this);
    rows_->addWidget(splitter_);
    rows_->setChildrenCollapsible(false);
    layout->addWidget(rows_, 1);
    buildSpectrum();
    buildCursorTools();
    strip_ = new OverviewStrip(this);
    connect(strip_, &OverviewStrip::wanted, this, &T_ShowForm::stripWanted);
    layout->addWidget(strip_);
    auto* below = new QHBoxLayout;
    below->addWidget(scrollBar_, 1);
    below->addWidget(status_);
    layout->addLayout(below);
    layout->addWidget(tools_);
    connect(splitter_, &QSplitter::splitterMoved, this, &T_ShowForm::Splitter1Moved);
    connect(scrollBar_, &QScrollBar::valueChanged, this, &T_ShowForm::ScrollBar1Change);
    connectTools();
    heldChip_->raise();
}

void T_ShowForm::buildPicture() {
    picture_ = scoper_ != nullptr ? static_cast<QWidget*>(scoper_->CreateView(splitter_)) : nullptr;
    if (picture_ == nullptr) {
        auto* label = new QLabel(splitter_);
        label->setAlignment(Qt::AlignCenter);
        label->setWordWrap(true);
        picture_ = label;
        scoper_ = nullptr;
    } else {
        drawing_ = std::make_unique<SignalDrawing>(*scoper_, settings_);
        drawing_->setEnabled(false);
        listenToScoper();
    }
    picture_->setObjectName(QStringLiteral("PaintBox1"));
    // The axis below it takes three lines.
    picture_->setMinimumSize(fontMetrics().averageCharWidth() * 20, fontMetrics().lineSpacing() * 9);
    splitter_->addWidget(picture_);
    heldChip_ = new QLabel(this);
    heldChip_->setObjectName(QStringLiteral("HeldChip"));
    heldChip_->setAttribute(Qt::WA_TransparentForMouseEvents);
    heldChip_->setStyleSheet(QStringLiteral(
        "background: #f0b429; color: #201800; border-radius: 4px; padding: 2px 8px; font-weight: bold;"));
    heldChip_->hide();
}

void T_ShowForm::buildSpectrum() {
    if (scoper_ == nullptr || !RealTransform::available()) {
        return;
    }
    spectrum_ = new SpectrumPane(settings_, rows_);
    rows_->addWidget(spectrum_);
    rows_->setStretchFactor(0, 1);
    spectrum_->hide();
    if (settings_.spectrumHeight > 0) {
        rows_->setSizes({rows_->height(), settings_.spectrumHeight});
    }
    connect(spectrum_, &SpectrumPane::changed, this, &T_ShowForm::userChanged);
    connect(rows_, &QSplitter::splitterMoved, this, [this] { settings_.spectrumHeight = spectrum_->height(); });
}

void T_ShowForm::buildCursorTools() {
    if (scoper_ == nullptr) {
        return;
    }
    auto* panel = new MeasurementPanel(this);
    layout()->addWidget(panel);
    cursorTools_ = std::make_unique<CursorTools>(settings_, *scoper_, *panel, nullptr);
    connect(cursorTools_.get(), &CursorTools::changed, this, &T_ShowForm::userChanged);
    connect(cursorTools_.get(), &CursorTools::message, this, &T_ShowForm::message);
    // A click into the picture gives it the keys.
    picture_->setFocusPolicy(Qt::ClickFocus);
}

void T_ShowForm::listenToScoper() {
    SCOPERAEvents events{};
    events.m_pContext = this;
    events.m_pRangeChanged = [](void* context, int32_t axis, double lower, double upper, int32_t cause) {
        static_cast<T_ShowForm*>(context)->rangeChanged(axis, lower, upper, cause);
    };
    events.m_pAutomaticWanted = [](void* context) { static_cast<T_ShowForm*>(context)->PaintBox1DblClick(); };
    events.m_pColumnSwitched = [](void* context, uint32_t column, int32_t visible) {
        static_cast<T_ShowForm*>(context)->switchColumn(column, visible != 0);
    };
    events.m_pMouseMoved = [](void* context, double x, double y, int32_t inside, int32_t lane) {
        static_cast<T_ShowForm*>(context)->PaintBox1MouseMove(x, y, inside != 0, lane);
    };
    events.m_pMousePressed = [](void* context, int32_t button, double, double) {
        static_cast<T_ShowForm*>(context)->PaintBox1MouseDown(button);
    };
    events.m_pCursorsMoved = [](void* context, const SCOPERACursors* places) {
        static_cast<T_ShowForm*>(context)->cursorTools_->dragged(*places);
    };
    events.m_pPaintWanted = [](void* context, uint32_t) { static_cast<T_ShowForm*>(context)->FormResize(); };
    events.m_pFlagClicked = [](void* context, uint64_t number) {
        static_cast<T_ShowForm*>(context)->FlagClick(number);
    };
    listenToLanes(events);
    scoper_->SetEvents(&events);
}

QAction* T_ShowForm::addAction(TextId text, std::function<void()> handler) {
    auto* action = new QAction(this);
    connect(action, &QAction::triggered, this, std::move(handler));
    actions_.emplace_back(action, text);
    menu_->addAction(action);
    return action;
}

// The menu of the picture's right mouse button.
void T_ShowForm::buildActions() {
    menu_ = new QMenu(this);
    showModes_ = new QActionGroup(this);
    addAction(TextId::ShowAnalog, [this] { ShowDigitalClick(false); });
    addAction(TextId::ShowAnalogAndDigital, [this] { ShowDigitalClick(true); });
    addAction(TextId::ShowDigital, [this] { OnlyDigitalDataClick(); });
    for (int mode = 0; mode < 3; ++mode) {
        QAction* action = actions_[static_cast<size_t>(mode)].first;
        action->setCheckable(true);
        action->setData(mode);
        showModes_->addAction(action);
    }
    menu_->addSeparator();
    pixelMode_ = addAction(TextId::PixelMode, [this] { PixelModeClick(pixelMode_->isChecked()); });
    pixelMode_->setCheckable(true);
    const auto part = [this](TextId text, bool ProgramSettings::*shown) {
        QAction* action = addAction(text, [] {});
        action->setCheckable(true);
        action->setEnabled(scoper_ != nullptr);
        connect(action, &QAction::triggered, this, [this, shown](bool on) {
            settings_.*shown = on;
            userChanged();
        });
        return action;
    };
    legend_ = part(TextId::ViewLegend, &ProgramSettings::viewLegend);
    cursors_ = part(TextId::ViewCursors, &ProgramSettings::viewCursors);
    lanes_ = addAction(TextId::ViewLanes, [this] { LanesClick(lanes_->isChecked()); });
    commonScale_ = addAction(TextId::ViewCommonScale, [this] { CommonScaleClick(commonScale_->isChecked()); });
    for (QAction* action : {lanes_, commonScale_}) {
        action->setCheckable(true);
        action->setEnabled(scoper_ != nullptr);
    }
    addAction(TextId::ViewShowAll, [this] { ShowAllClick(); });
    spectrumShown_ = part(TextId::ViewSpectrum, &ProgramSettings::viewSpectrum);
    spectrumShown_->setEnabled(scoper_ != nullptr && RealTransform::available());
    cursorKeys_ = {addAction(TextId::CursorNext, [this] { CursorClick(); }),
                   addAction(TextId::SnapToEdge, [this] { SnapClick(); })};
    menu_->addSeparator();
    marksAction_ = addAction(TextId::MenuMarks, [this] { MarksClick(); });
    digitalLines_ = addAction(TextId::DigitalLineSettings, [this] { DigitalSignalSettingsClick(); });
    savePicture_ = addAction(TextId::SavePicture, [this] { savePicture(); });
    copyPicture_ = addAction(TextId::CopyPicture, [this] { copyPicture(); });
    savePart_ = addAction(TextId::SavePart, [this] { SavePartClick(); });
    savePicture_->setEnabled(scoper_ != nullptr);
    copyPicture_->setEnabled(scoper_ != nullptr);

    buildBar();
}

void T_ShowForm::connectTools() {
    connect(tools_, &ShowTools::axisXKey, this, &T_ShowForm::AxisXEditKeyDown);
    connect(tools_, &ShowTools::axisYKey, this, &T_ShowForm::AxisYEditKeyDown);
    connect(tools_, &ShowTools::axisXButton, this, &T_ShowForm::AxisXButtonClick);
    connect(tools_, &ShowTools::axisXUnit, this, &T_ShowForm::Samples1Click);
    connect(tools_, &ShowTools::axisXClock, this, &T_ShowForm::ClockClick);
    connect(tools_, &ShowTools::axisYUnit, this, &T_ShowForm::ADCCodes1Click);
    connect(tools_, &ShowTools::axisYAutomatic, this, &T_ShowForm::AxisYAutoClick);
    connect(tools_, &ShowTools::showModeButton, this, &T_ShowForm::ShowModeButtonClick);
    connect(tools_, &ShowTools::follow, this, &T_ShowForm::DoNotFolowForDataClick);
    connect(tools_, &ShowTools::showSettings, this, &T_ShowForm::ShowSettingsClick);
    connect(tools_, &ShowTools::backToLive, this, &T_ShowForm::backToLive);
}

QAction* T_ShowForm::addBarAction(TextId text, ViewIcon icon, const QKeySequence& key, std::function<void()> handler) {
    auto* action = new QAction(this);
    connect(action, &QAction::triggered, this, std::move(handler));
    actions_.emplace_back(action, text);
    icons_.emplace_back(action, icon);
    action->setShortcut(key);
    action->setShortcutContext(Qt::WidgetWithChildrenShortcut);
    addAction(action);
    return action;
}

// Keys of letters belong to fields first while somebody types there.
void T_ShowForm::buildBar() {
    bar_ = new QToolBar(this);
    bar_->setObjectName(QStringLiteral("ViewBar"));
    bar_->setIconSize({16, 16});
    bar_->addAction(addBarAction(TextId::ViewFit, ViewIcon::Fit, Qt::Key_F, [this] { FitClick(); }));
    zoomBack_ = addBarAction(TextId::ViewZoomBack, ViewIcon::Back, Qt::Key_Backspace, [this] { ZoomBackClick(); });
    zoomBack_->setEnabled(false);
    bar_->addAction(zoomBack_);
    QAction* zoomIn = addBarAction(TextId::ViewZoomIn, ViewIcon::ZoomIn, Qt::Key_Plus, [this] { ZoomInClick(); });
    zoomIn->setShortcuts({Qt::Key_Plus, Qt::Key_Equal});
    bar_->addAction(zoomIn);
    bar_->addAction(addBarAction(TextId::ViewZoomOut, ViewIcon::ZoomOut, Qt::Key_Minus, [this] { ZoomOutClick(); }));
    addBarAction(TextId::SampleAPixel, ViewIcon::SampleAPixel, Qt::Key_1, [this] { SampleAPixelClick(); });
    addBarAction(TextId::FirstFrame, ViewIcon::FirstFrame, Qt::Key_Home, [this] { FirstFrameClick(); });
    addBarAction(TextId::NewestFrame, ViewIcon::NewestFrame, Qt::Key_End, [this] { NewestFrameClick(); });
    goToTime_ = addBarAction(TextId::GoToTime, ViewIcon::GoToTime, Qt::CTRL | Qt::Key_G, [this] { GoToTimeClick(); });
    bar_->addAction(goToTime_);
    menu_->insertAction(marksAction_, goToTime_);
    bar_->addSeparator();
    for (const auto& [action, icon] :
         {std::pair{lanes_, ViewIcon::Lanes}, std::pair{legend_, ViewIcon::Legend},
          std::pair{cursors_, ViewIcon::Cursors}, std::pair{spectrumShown_, ViewIcon::Spectrum},
          std::pair{pixelMode_, ViewIcon::Points}, std::pair{marksAction_, ViewIcon::Marks},
          std::pair{savePicture_, ViewIcon::SavePicture}, std::pair{copyPicture_, ViewIcon::CopyPicture},
          std::pair{savePart_, ViewIcon::SavePart}}) {
        icons_.emplace_back(action, icon);
        bar_->addAction(action);
    }
    bar_->insertSeparator(marksAction_);
    lanes_->setShortcut(Qt::Key_L);
    spectrumShown_->setShortcut(Qt::Key_S);
    cursorKeys_[0]->setShortcut(Qt::Key_C);
    cursorKeys_[1]->setShortcut(Qt::Key_E);
    for (QAction* action : {lanes_, spectrumShown_, cursorKeys_[0], cursorKeys_[1]}) {
        action->setShortcutContext(Qt::WidgetWithChildrenShortcut);
        addAction(action);
    }
    buildRecordsButton();
    bar_->addAction(addBarAction(TextId::ViewKeys, ViewIcon::Keys, Qt::Key_Question, [this] { KeysClick(); }));
    drawIcons();
}

// The button switches between the records and the signal in its course; its menu says how many.
void T_ShowForm::buildRecordsButton() {
    recordsShown_ = addBarAction(TextId::ViewRecords, ViewIcon::Records, Qt::Key_R,
                                 [this] { RecordsClick(recordsShown_->isChecked() ? recordsWanted_ : 0); });
    recordsShown_->setCheckable(true);
    recordsShown_->setEnabled(scoper_ != nullptr);
    recordsMenu_ = new QMenu(this);
    for (const int count : {1, 10, 100}) {
        QAction* action = recordsMenu_->addAction(QString(), this, [this, count] { RecordsClick(count); });
        action->setData(count);
        action->setCheckable(true);
    }
    recordsShown_->setMenu(recordsMenu_);
    bar_->addAction(recordsShown_);
    menu_->insertAction(marksAction_, recordsShown_);
    if (auto* button = qobject_cast<QToolButton*>(bar_->widgetForAction(recordsShown_))) {
        button->setPopupMode(QToolButton::MenuButtonPopup);
    }
}

void T_ShowForm::drawIcons() {
    for (const auto& [action, icon] : icons_) {
        action->setIcon(viewIcon(icon, palette()));
    }
}

void T_ShowForm::retranslate() {
    for (const auto& [action, text] : actions_) {
        action->setText(uiText(text));
    }
    tools_->retranslate();
    scrollBar_->setAccessibleName(plainText(TextId::MenuShowSignal));
    if (cursorTools_) {
        cursorTools_->retranslate();
    }
    if (spectrum_ != nullptr) {
        spectrum_->retranslate();
    }
    savePart_->setToolTip(uiText(TextId::SavePartHint));
    for (QAction* action : recordsMenu_->actions()) {
        action->setText(uiText(TextId::ViewRecordsLast, {action->data().toString()}));
    }
    if (auto* label = qobject_cast<QLabel*>(picture_)) {
        label->setText(uiText(TextId::ScoperaNotLoaded));
    } else {
        picture_->setToolTip(uiText(TextId::ViewMouseHint));
    }
    if (drawing_) {
        drawing_->retranslate();
    }
    if (digitalSettings_) {
        digitalSettings_->loadCaptions();
    }
    if (markList_) {
        markList_->retranslate();
    }
    redraw();
}

}  // namespace tarno2
