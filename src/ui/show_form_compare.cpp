// A signal view among others that show the same time of other recordings.

#include <QAction>
#include <QHBoxLayout>
#include <QLabel>
#include <QScrollBar>
#include <QToolBar>
#include <algorithm>

#include "ui/cursor_tools.h"
#include "ui/overview_strip.h"
#include "ui/show_form.h"
#include "ui/show_tools.h"
#include "ui/spectrum_pane.h"

namespace tarno2 {

void T_ShowForm::lieBelow(T_ShowForm& first, QHBoxLayout& head) {
    first_ = &first;
    setObjectName(QStringLiteral("ComparedView"));
    for (QWidget* own : {static_cast<QWidget*>(bar_), static_cast<QWidget*>(strip_), static_cast<QWidget*>(scrollBar_),
                         static_cast<QWidget*>(tools_)}) {
        own->hide();
    }
    delete spectrum_;
    spectrum_ = nullptr;
    // Several share the height of the window.
    picture_->setMinimumHeight(fontMetrics().lineSpacing() * 5);
    // The name of the recording has the room while the mouse is elsewhere.
    status_->setMinimumWidth(0);
    head.addWidget(status_);
    if (drawing_ && first.drawing_) {
        drawing_->setLanesLike(*first.drawing_);
    }
}

const RecordedFrames* T_ShowForm::shownRecording() const {
    return file_ && !records_ ? &file_->frames() : nullptr;
}

SharedPart T_ShowForm::sharedPart() const {
    SharedPart part{{position_, position_ + fileSpan_}, fileOrigin_, fileClock_, {}};
    if (cursorTools_) {
        part.cursors = cursorTools_->frames();
    }
    return part;
}

void T_ShowForm::setSharedPart(const SharedPart& part) {
    position_ = part.edges.low;
    fileSpan_ = part.edges.width();
    fileOrigin_ = part.origin;
    fileClock_ = part.clock;
    if (cursorTools_ && settings_.viewCursors) {
        cursorTools_->setFrames(part.cursors);
    }
    if (first_ != nullptr) {
        zoomBack_->setEnabled(first_->zoomBack_->isEnabled());
    }
    redraw();
}

// What is beyond it when another recording has gone comes back into the picture.
void T_ShowForm::setReach(const std::optional<PictureEdges>& reach) {
    fileReach_ = reach;
    if (fixed()) {
        setSpan(fileSpan_);
        comeBack();
    }
}

bool T_ShowForm::showsWhole() const {
    return position_ <= reach().low && position_ + fileSpan_ >= reach().high;
}

}  // namespace tarno2
