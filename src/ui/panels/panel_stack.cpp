#include "ui/panels/panel_stack.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QScrollArea>
#include <QStyle>
#include <QToolButton>
#include <QVBoxLayout>
#include <algorithm>

#include "ui/panels/padlock.h"
#include "ui/text.h"

namespace tarno2 {

namespace {

/// Scrolls up and down only, so it is never narrower than what it holds.
class PanelArea : public QScrollArea {
public:
    explicit PanelArea(QWidget* parent) : QScrollArea(parent) {
        setWidgetResizable(true);
        setFrameShape(QFrame::NoFrame);
        setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
        // The controls take the focus, and the area scrolls to the one that has it.
        setFocusPolicy(Qt::NoFocus);
    }
    [[nodiscard]] QSize minimumSizeHint() const override {
        const int bar = style()->pixelMetric(QStyle::PM_ScrollBarExtent, nullptr, this);
        return {widget()->minimumSizeHint().width() + bar, 4 * fontMetrics().height()};
    }

protected:
    bool eventFilter(QObject* object, QEvent* event) override {
        if (event->type() == QEvent::LayoutRequest) {
            updateGeometry();
        }
        return QScrollArea::eventFilter(object, event);
    }
};

}  // namespace

PanelStack::PanelStack(QWidget* parent) : QWidget(parent), layout_(new QVBoxLayout(this)) {
    layout_->setContentsMargins(0, 0, 0, 0);
    layout_->setSpacing(1);
    layout_->addStretch(0);
}

void PanelStack::add(SettingsPanel* panel) {
    const int number = static_cast<int>(panels_.size());
    auto* header = new QToolButton(this);
    header->setObjectName(QStringLiteral("PanelHeader%1").arg(number + 1));
    header->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    header->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    header->setFocusPolicy(Qt::StrongFocus);
    header->setCheckable(true);
    auto* lock = new QLabel(header);
    auto* inHeader = new QHBoxLayout(header);
    inHeader->setContentsMargins(0, 0, 6, 0);
    inHeader->addStretch();
    inHeader->addWidget(lock);

    auto* area = new PanelArea(this);
    area->setWidget(panel);

    layout_->insertWidget(layout_->count() - 1, header);
    layout_->insertWidget(layout_->count() - 1, area, 1);
    panels_.push_back(panel);
    members_.push_back({header, lock, area});
    connect(header, &QToolButton::clicked, this, [this, number] {
        open(open_ == number ? -1 : number);
        emit memberOpened(open_);
    });
    connect(panel, &SettingsPanel::changed, this, &PanelStack::changed);
    showOpen();
    retranslate();
}

void PanelStack::open(int member) {
    open_ = member >= 0 && member < static_cast<int>(members_.size()) ? member : -1;
    showOpen();
}

void PanelStack::showOpen() {
    for (size_t i = 0; i < members_.size(); ++i) {
        const bool open = static_cast<int>(i) == open_;
        members_[i].header->setChecked(open);
        members_[i].header->setArrowType(open ? Qt::DownArrow : Qt::RightArrow);
        members_[i].area->setVisible(open);
    }
    // Without an open panel the headers stay at the top.
    layout_->setStretch(layout_->count() - 1, open_ < 0 ? 1 : 0);
}

void PanelStack::load(const ProgramSettings& settings) {
    for (SettingsPanel* panel : panels_) {
        panel->load(settings);
    }
    open(settings.showSettingMember);
}

void PanelStack::store(ProgramSettings& settings) const {
    for (const SettingsPanel* panel : panels_) {
        panel->store(settings);
    }
    settings.showSettingMember = open_;
}

void PanelStack::retranslate() {
    for (size_t i = 0; i < panels_.size(); ++i) {
        const QString name = uiText(panels_[i]->title());
        members_[i].header->setText(QStringLiteral("&%1  %2").arg(i + 1).arg(name));
        members_[i].header->setAccessibleName(name);
        panels_[i]->retranslate();
    }
    setLocked(locked_);
}

void PanelStack::boardChanged(BoardSelection& selection) {
    for (SettingsPanel* panel : panels_) {
        panel->boardChanged(selection);
    }
}

QSize PanelStack::minimumSizeHint() const {
    QSize size = QWidget::minimumSizeHint();
    for (const Member& member : members_) {
        size.setWidth(std::max(size.width(), member.area->minimumSizeHint().width()));
    }
    return size;
}

QSize PanelStack::sizeHint() const {
    return QWidget::sizeHint().expandedTo(minimumSizeHint());
}

void PanelStack::setLocked(bool locked) {
    locked_ = locked;
    for (size_t i = 0; i < panels_.size(); ++i) {
        panels_[i]->setLocked(locked);
        const QString hint = locked ? uiText(TextId::PanelLockedHint) : QString();
        members_[i].header->setToolTip(hint);
        members_[i].padlock->setPixmap(locked ? padlock(*members_[i].header) : QPixmap());
        members_[i].padlock->setToolTip(hint);
    }
}

}  // namespace tarno2
