// What the user does in the signal view.

#include <QAction>
#include <QCloseEvent>
#include <QCursor>
#include <QFileDialog>
#include <QFileInfo>
#include <QKeyEvent>
#include <QMenu>
#include <QScrollBar>
#include <QSplitter>
#include <algorithm>
#include <cmath>
#include <string>
#include <utility>

#include "display/axis_x.h"
#include "display/axis_y.h"
#include "display/follow.h"
#include "display/scroll.h"
#include "ui/cursor_tools.h"
#include "ui/digital_signal_settings.h"
#include "ui/show_form.h"
#include "ui/show_tools.h"
#include "ui/text.h"

namespace tarno2 {

namespace {

constexpr int kEnter = 13;

std::optional<ScrollKey> scrollKeyOf(int key) {
    switch (key) {
        case Qt::Key_PageUp:
            return ScrollKey::PageUp;
        case Qt::Key_PageDown:
            return ScrollKey::PageDown;
        case Qt::Key_Left:
            return ScrollKey::Left;
        case Qt::Key_Right:
            return ScrollKey::Right;
        default:
            return std::nullopt;
    }
}

}  // namespace

void T_ShowForm::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    FormResize();
}

void T_ShowForm::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    FormShow();
}

void T_ShowForm::hideEvent(QHideEvent* event) {
    QWidget::hideEvent(event);
    FormHide();
}

void T_ShowForm::closeEvent(QCloseEvent* event) {
    FormClose();
    QWidget::closeEvent(event);
}

void T_ShowForm::FormResize() {
    redraw();
}

void T_ShowForm::FormShow() {
    shown_ = true;
    tap_.setWatched(live_ != nullptr && !file_);
    if (drawing_) {
        drawing_->setEnabled(true);
    }
    redraw();
}

void T_ShowForm::FormHide() {
    shown_ = false;
    tap_.setWatched(false);
    paintTimer_.stop();
    endWork();
    stripTimer_.stop();
    if (drawing_) {
        drawing_->setEnabled(false);
    }
}

// The window with the settings of digital lines goes with the view.
void T_ShowForm::FormClose() {
    if (digitalSettings_) {
        digitalSettings_->close();
    }
}

void T_ShowForm::Splitter1Moved() {
    userChanged();
}

void T_ShowForm::ScrollBar1Change(int value) {
    if (!stays()) {
        return;
    }
    setPosition(reach().low + value * scrollStep_);
    userChanged();
}

// Who moves along a running signal wants to look at that place, so it no longer slides away.
void T_ShowForm::ScrollBar1KeyDown(int key) {
    if (frameCount() == 0) {
        return;
    }
    if (!stays()) {
        if (key == static_cast<int>(ScrollKey::PageDown) || key == static_cast<int>(ScrollKey::Right)) {
            return;
        }
        setPosition(shownFrames().low);
        held_ = true;
    }
    const auto page = static_cast<uint64_t>(std::max(std::llround(span()), 1LL));
    const PictureEdges all = reach();
    const auto from = static_cast<uint64_t>(std::max(position_ - all.low, 0.0));
    setPosition(all.low +
                static_cast<double>(scrolledPosition(from, key, page, static_cast<uint64_t>(std::ceil(all.width())))));
    userChanged();
}

void T_ShowForm::keyPressEvent(QKeyEvent* event) {
    if (cursorTools_ && cursorTools_->keyPressed(*event)) {
        return;
    }
    if (const auto key = scrollKeyOf(event->key())) {
        ScrollBar1KeyDown(static_cast<int>(*key));
        return;
    }
    QWidget::keyPressEvent(event);
}

// The scroll bar's own keys move by other steps.
bool T_ShowForm::eventFilter(QObject* watched, QEvent* event) {
    if (watched == scrollBar_ && event->type() == QEvent::KeyPress) {
        if (const auto key = scrollKeyOf(static_cast<QKeyEvent*>(event)->key())) {
            ScrollBar1KeyDown(static_cast<int>(*key));
            return true;
        }
    }
    return QWidget::eventFilter(watched, event);
}

void T_ShowForm::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange) {
        drawIcons();
    }
}

void T_ShowForm::PaintBox1DblClick() {
    settings_.axisYAutoMode = true;
    forgetZoomY();
    if (fixed()) {
        showWhole();
    } else {
        held_ = false;
        if (wholeSpan_) {
            setSpan(*wholeSpan_);
            wholeSpan_.reset();
        }
    }
    userChanged();
}

void T_ShowForm::PaintBox1MouseDown(int button) {
    if (button == kScoperaRightButton) {
        menu_->popup(QCursor::pos());
    }
}

void T_ShowForm::PaintBox1MouseMove(double x, double y, bool inside, int lane) {
    mouse_.reset();
    AxisRange horizontal;
    if (inside && scoper_->GetRange(kScoperaAxisX, &horizontal.low, &horizontal.high) == 1) {
        mouse_ = {(x - horizontal.low) / (horizontal.high - horizontal.low), y, lane};
    }
    showStatus();
}

void T_ShowForm::rangeChanged(int axis, double lower, double upper, int cause) {
    guarded("rangeChanged", [=, this] {
        if (shownSignal() == nullptr || !(lower < upper)) {
            return;
        }
        leavePart(cause);
        if (axis == kScoperaAxisX) {
            zoomedX(lower, upper, cause);
        } else {
            zoomedY(lower, upper);
        }
        userChanged();
    });
}

// The wheel over a running signal changes how much of it is seen; who drags it, marks a rectangle or moves it by a key
// wants to look at that place, so it no longer slides away.
void T_ShowForm::zoomedX(double lower, double upper, int cause) {
    const double rate = shownSignal()->format().framesPerSecond;
    const double origin = shownFrames().origin;
    if (!fixed() && !wholeSpan_) {
        wholeSpan_ = span();
    }
    setSpan(frameOfAxisX(upper - lower, unitX(), rate));
    const bool chosenPlace = cause == kScoperaCauseDrag || cause == kScoperaCauseRectangle || cause == kScoperaCauseKey;
    if (!stays() && !chosenPlace) {
        return;
    }
    held_ = held_ || !stays();
    setPosition(origin + frameOfAxisX(lower, unitX(), rate));
}

// The limits come in the unit that is shown; the scale of the settings is in the user's.
void T_ShowForm::zoomedY(double lower, double upper) {
    const AxisYUnit shown = drawing_->unitY();
    const bool volts = kindOf(shown) == AxisYKind::Volts;
    const double micro = volts ? unitsPerVolt(AxisYUnit::Microvolts) / unitsPerVolt(shown) : 1.0;
    settings_.axisYLower = lower * micro;
    settings_.axisYUpper = upper * micro;
    settings_.axisYAutoMode = false;
    settings_.axisYValue = std::max(std::abs(lower), std::abs(upper)) / unitsPerVolt(shown) *
                           drawing_->userUnitsPerVolt(shownSignal()->format());
}

void T_ShowForm::forgetZoomY() {
    settings_.axisYLower = settings_.axisYUpper = 0.0;
    if (drawing_) {
        drawing_->resetScaleY();
    }
}

void T_ShowForm::PixelModeClick(bool points) {
    settings_.pixelsMode = points;
    userChanged();
}

void T_ShowForm::DoNotFolowForDataClick(int mode) {
    if (mode == static_cast<int>(FollowMode::None) && !stays()) {
        setPosition(static_cast<double>(shownFrames().first));
    }
    settings_.followToData = std::clamp(mode, 0, 2);
    held_ = false;
    userChanged();
}

void T_ShowForm::ShowModeButtonClick() {
    tools_->openFollowMenu();
}

void T_ShowForm::setShowMode(int mode) {
    settings_.showSignalMode = mode;
    forgetZoomY();
    userChanged();
}

void T_ShowForm::ShowDigitalClick(bool digital) {
    setShowMode(digital ? 1 : 0);
}

void T_ShowForm::OnlyDigitalDataClick() {
    setShowMode(2);
}

void T_ShowForm::ShowSettingsClick() {
    menu_->popup(QCursor::pos());
}

void T_ShowForm::DigitalSignalSettingsClick() {
    const int lines = std::min(digitalLines(), static_cast<int>(settings_.digitalLines.size()));
    if (digitalSettings_) {
        digitalSettings_->close();
    }
    digitalSettings_ = new T_DigitalSignalSettings(
        std::span(settings_.digitalLines).first(static_cast<size_t>(lines)), settings_.wish.lineNames,
        [this] { userChanged(); }, this);
    digitalSettings_->setAttribute(Qt::WA_DeleteOnClose);
    digitalSettings_->show();
}

// The dialog knows the whole name when it asks about a file that is there. A recording that begins meanwhile takes away
// the views below the first one.
void T_ShowForm::savePicture() {
    const QPointer<T_ShowForm> here(this);
    QFileDialog dialog(window(), titleText(TextId::SavePicture),
                       QFileInfo(fromFileName(settings_.wish.fileName)).absolutePath());
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setNameFilters({QStringLiteral("PNG (*.png)"), QStringLiteral("SVG (*.svg)")});
    dialog.setDefaultSuffix(QStringLiteral("png"));
    connect(&dialog, &QFileDialog::filterSelected, &dialog, [&dialog](const QString& filter) {
        dialog.setDefaultSuffix(filter.startsWith(QStringLiteral("SVG")) ? QStringLiteral("svg")
                                                                         : QStringLiteral("png"));
    });
    if (dialog.exec() != QDialog::Accepted || !here || dialog.selectedFiles().isEmpty()) {
        return;
    }
    const QString file = dialog.selectedFiles().first();
    const QString ending = QFileInfo(file).suffix().toLower();
    if (ending != QStringLiteral("png") && ending != QStringLiteral("svg")) {
        emit message(uiText(TextId::PictureNoName, {QFileInfo(file).fileName()}));
        return;
    }
    tell(savePictures(pictures(), file));
}

void T_ShowForm::copyPicture() {
    tell(copyPictures(pictures()));
}

void T_ShowForm::tell(const std::optional<PictureProblem>& problem) {
    if (problem) {
        emit message(uiText(TextId::FileNotWritten, {problem->file, problem->why}));
    }
}

std::vector<ViewPicture> T_ShowForm::pictures() const {
    if (first_ != nullptr) {
        return first_->pictures();
    }
    return pictures_ ? pictures_() : std::vector{picture()};
}

// In numbers of the file that it begins in; what lies in a later one is left out.
void T_ShowForm::SavePartClick() {
    if (!canSavePart()) {
        return;
    }
    const ShownFrames shown = shownFrames();
    const auto last = static_cast<double>(frameCount());
    FrameSpan span{static_cast<uint64_t>(std::clamp(shown.low, 0.0, last)),
                   static_cast<uint64_t>(std::clamp(std::ceil(shown.high), 0.0, last))};
    span = cursorTools_ ? cursorTools_->between().value_or(span) : span;
    const RecordedFrames::PieceFrames piece = file_->frames().pieceOf(span.first);
    FrameWish wish;
    wish.from = std::to_string(span.first - piece.first);
    wish.to = std::to_string(std::min(span.end, piece.end) - piece.first);
    if (drawing_ && !drawing_->hidden().empty()) {
        for (const SignalDrawing::Column& column : drawing_->columns()) {
            if (column.visible && column.key >= 0) {
                wish.channels += (wish.channels.empty() ? "" : ",") + std::to_string(column.key);
            }
        }
    }
    emit savePartWanted(piece.file, wish);
}

void T_ShowForm::Samples1Click(int tag) {
    const AxisXUnit before = unitX();
    const double frames = span();
    settings_.axisXUnit = std::clamp(tag, 0, 5);
    (file_ ? fileClock_ : settings_.viewClock) = false;
    if (live_ && live_->format().framesPerSecond > 0.0 && !fixed()) {
        setSpan(frames);
    } else if (before != AxisXUnit::Samples && settings_.axisXUnit != 0) {
        // From one unit of time to another no rate is needed.
        settings_.axisXValue = axisXOfFrame(frameOfAxisX(settings_.axisXValue, before, 1.0),
                                            static_cast<AxisXUnit>(settings_.axisXUnit), 1.0);
    }
    userChanged();
}

void T_ShowForm::ADCCodes1Click(int tag) {
    tag = std::clamp(tag, -1, static_cast<int>(AxisYUnit::Units));
    if (kindOf(static_cast<AxisYUnit>(tag)) != kindOf(static_cast<AxisYUnit>(settings_.axisYMode))) {
        forgetZoomY();
    }
    settings_.axisYMode = tag;
    AxisXEditKeyDown(kEnter);
}

void T_ShowForm::AxisXButtonClick() {
    tools_->openAxisXMenu();
}

void T_ShowForm::AxisXEditKeyDown(int key) {
    if (key != kEnter) {
        return;
    }
    if (const auto typed = tools_->typedX()) {
        wholeSpan_.reset();
        const ShownSignal* signal = shownSignal();
        if (fixed()) {
            setSpan(frameOfAxisX(*typed, unitX(), signal->format().framesPerSecond));
        } else {
            settings_.axisXValue = *typed;
        }
    }
    userChanged();
}

void T_ShowForm::AxisYEditKeyDown(int key) {
    if (key != kEnter) {
        return;
    }
    if (const auto typed = tools_->typedY()) {
        settings_.axisYValue = *typed;
        settings_.axisYAutoMode = false;
        settings_.axisYLower = settings_.axisYUpper = 0.0;
    }
    userChanged();
}

void T_ShowForm::AxisYAutoClick(bool automatic) {
    settings_.axisYAutoMode = automatic;
    forgetZoomY();
    userChanged();
}

}  // namespace tarno2
