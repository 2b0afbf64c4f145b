#include "ui/panels/panel_stack.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QResizeEvent>
#include <QScrollArea>
#include <QStyle>
#include <QToolButton>
#include <QVBoxLayout>
#include <algorithm>

#include "ui/panels/padlock.h"
#include "ui/part_icons.h"
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
        setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Maximum);
        // The controls take the focus, and the area scrolls to the one that has it.
        setFocusPolicy(Qt::NoFocus);
    }
    [[nodiscard]] QSize minimumSizeHint() const override {
        const int bar = style()->pixelMetric(QStyle::PM_ScrollBarExtent, nullptr, this);
        return {widget()->minimumSizeHint().width() + bar, 4 * fontMetrics().height()};
    }
    /// As high as its panel, as far as there is room.
    [[nodiscard]] QSize sizeHint() const override {
        const int width = std::max(widget()->minimumSizeHint().width(), viewport()->width());
        const int height =
            widget()->hasHeightForWidth() ? widget()->heightForWidth(width) : widget()->sizeHint().height();
        return {minimumSizeHint().width(), height};
    }

protected:
    bool eventFilter(QObject* object, QEvent* event) override {
        if (event->type() == QEvent::LayoutRequest) {
            updateGeometry();
        }
        return QScrollArea::eventFilter(object, event);
    }
    void resizeEvent(QResizeEvent* event) override {
        QScrollArea::resizeEvent(event);
        if (widget() != nullptr && event->size().width() != event->oldSize().width()) {
            // It keeps heights that it computed for the width before.
            widget()->layout()->invalidate();
        }
    }
};

// What the drawer keeps when the panels could do with all the height.
constexpr int kDrawerLines = 10;

// Of a picture on the rail.
int iconSide(const QWidget& widget) {
    return widget.fontMetrics().height() * 3 / 2;
}

QString memberName(size_t number, const QString& name) {
    return QStringLiteral("%1 (Alt+%2)").arg(name).arg(number + 1);
}

}  // namespace

PanelStack::PanelStack(QWidget* parent)
    : QWidget(parent), rail_(new QVBoxLayout), column_(new QWidget(this)), sections_(new QVBoxLayout(column_)) {
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(0);
    rail_->setContentsMargins(2, 2, 2, 2);
    rail_->setSpacing(2);
    rail_->addStretch(1);
    row->addLayout(rail_);
    sections_->setContentsMargins(0, 0, 0, 0);
    sections_->setSpacing(2);
    sections_->addStretch(0);
    row->addWidget(column_, 1);
}

void PanelStack::add(SettingsPanel* panel) {
    const int number = static_cast<int>(panels_.size());
    auto* icon = new QToolButton(this);
    icon->setObjectName(QStringLiteral("PanelHeader%1").arg(number + 1));
    icon->setToolButtonStyle(Qt::ToolButtonIconOnly);
    icon->setIconSize(QSize(iconSide(*this), iconSide(*this)));
    icon->setFocusPolicy(Qt::StrongFocus);
    icon->setCheckable(true);
    icon->setAutoRaise(true);
    rail_->insertWidget(number, icon);

    auto* section = new QWidget(column_);
    auto* name = new QLabel(section);
    QFont font = name->font();
    font.setBold(true);
    name->setFont(font);
    auto* lock = new QLabel(section);
    auto* title = new QHBoxLayout;
    title->setContentsMargins(9, 4, 9, 0);
    title->addWidget(name);
    title->addStretch();
    title->addWidget(lock);
    auto* area = new PanelArea(section);
    area->setWidget(panel);
    auto* inSection = new QVBoxLayout(section);
    inSection->setContentsMargins(0, 0, 0, 0);
    inSection->setSpacing(0);
    inSection->addLayout(title);
    inSection->addWidget(area, 1);
    sections_->insertWidget(number, section);

    panels_.push_back(panel);
    members_.push_back({icon, section, name, lock, area});
    connect(icon, &QToolButton::clicked, this, [this, number] { press(number); });
    connect(panel, &SettingsPanel::changed, this, &PanelStack::changed);
    showOpen();
    drawIcons();
    retranslate();
}

void PanelStack::setDrawer(QWidget* drawer, QToolButton* button) {
    drawer_ = drawer;
    drawerIcon_ = button;
    drawer->setMinimumHeight(kDrawerLines * fontMetrics().height());
    sections_->insertWidget(static_cast<int>(members_.size()), drawer, 1);
    button->setIconSize(QSize(iconSide(*this), iconSide(*this)));
    rail_->insertSpacing(static_cast<int>(members_.size()), fontMetrics().height() / 2);
    rail_->insertWidget(static_cast<int>(members_.size()) + 1, button);
    drawIcons();
}

void PanelStack::showDrawer(bool shown) {
    drawer_->setVisible(shown);
    showOpen();
}

bool PanelStack::bare() const {
    return column_->isHidden();
}

// What is open but can't be seen comes to the front.
void PanelStack::press(int member) {
    const bool seen = members_[static_cast<size_t>(member)].section->isVisibleTo(this);
    folded_ = false;
    setOpen(member, !seen);
    showOpen();
    emit memberOpened(seen ? -1 : member);
}

void PanelStack::setOpen(int member, bool open) {
    std::erase(open_, member);
    if (open) {
        open_.push_back(member);
    }
}

void PanelStack::open(int member) {
    if (member >= 0 && member < static_cast<int>(members_.size())) {
        setOpen(member, true);
    } else {
        open_.clear();
    }
    showOpen();
}

int32_t PanelStack::openMembers() const {
    int32_t bits = 0;
    for (const int member : open_) {
        bits |= 1 << member;
    }
    return bits;
}

void PanelStack::setFolded(bool folded) {
    if (!folded && open_.empty()) {
        open_.push_back(0);
    }
    folded_ = folded;
    showOpen();
}

/// Those to be seen: the last one, and each before it that still has room.
std::vector<int> PanelStack::fitting() const {
    std::vector<int> seen;
    int left = height() - (drawer_ != nullptr && !drawer_->isHidden() ? kDrawerLines * fontMetrics().height() : 0);
    const std::vector<int> latestFirst(open_.rbegin(), open_.rend());
    for (const int member : latestFirst) {
        left -= panels_[static_cast<size_t>(member)]->sizeHint().height() + 2 * fontMetrics().height();
        if (seen.empty() || left >= 0) {
            seen.push_back(member);
        }
    }
    return seen;
}

void PanelStack::showOpen() {
    const std::vector<int> seen = folded_ ? std::vector<int>() : fitting();
    for (size_t i = 0; i < members_.size(); ++i) {
        const bool open = std::ranges::find(seen, static_cast<int>(i)) != seen.end();
        members_[i].icon->setChecked(open);
        members_[i].section->setVisible(open);
    }
    const bool drawer = drawer_ != nullptr && !drawer_->isHidden();
    column_->setVisible(drawer || !seen.empty());
    // Without a drawer the panels stay at the top.
    sections_->setStretch(sections_->count() - 1, drawer ? 0 : 1);
    setMaximumWidth(column_->isHidden() ? rail_->sizeHint().width() : QWIDGETSIZE_MAX);
    updateGeometry();
    if (wasUnfolded_ != unfolded()) {
        wasUnfolded_ = unfolded();
        emit unfoldedChanged(wasUnfolded_);
    }
}

void PanelStack::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    if (open_.size() > 1) {
        showOpen();
    }
}

void PanelStack::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange) {
        drawIcons();
        setLocked(lock_);
    }
}

void PanelStack::drawIcons() {
    constexpr PartIcon kIcons[] = {PartIcon::Board, PartIcon::Measuring, PartIcon::File, PartIcon::Channels,
                                   PartIcon::Program};
    for (size_t i = 0; i < std::min(members_.size(), std::size(kIcons)); ++i) {
        members_[i].icon->setIcon(partIcon(kIcons[i], palette()));
    }
    if (drawerIcon_ != nullptr) {
        drawerIcon_->setIcon(partIcon(PartIcon::Table, palette()));
    }
}

void PanelStack::load(const ProgramSettings& settings) {
    for (SettingsPanel* panel : panels_) {
        panel->load(settings);
    }
    open_.clear();
    for (int member = 0; member < static_cast<int>(members_.size()); ++member) {
        if ((settings.panelsOpen >> member & 1) != 0) {
            open_.push_back(member);
        }
    }
    open(settings.showSettingMember);
}

void PanelStack::store(ProgramSettings& settings) const {
    for (const SettingsPanel* panel : panels_) {
        panel->store(settings);
    }
    settings.showSettingMember = openMember();
    settings.panelsOpen = open_.size() > 1 ? openMembers() : 0;
}

void PanelStack::retranslate() {
    for (size_t i = 0; i < panels_.size(); ++i) {
        const QString name = uiText(panels_[i]->title());
        members_[i].icon->setText(QStringLiteral("&%1  %2").arg(i + 1).arg(name));
        members_[i].icon->setAccessibleName(name);
        members_[i].name->setText(name);
        panels_[i]->retranslate();
    }
    setLocked(lock_);
}

void PanelStack::boardChanged(BoardSelection& selection) {
    for (SettingsPanel* panel : panels_) {
        panel->boardChanged(selection);
    }
}

QSize PanelStack::minimumSizeHint() const {
    QSize size = QWidget::minimumSizeHint();
    if (unfolded()) {
        for (const Member& member : members_) {
            size.setWidth(std::max(size.width(), rail_->sizeHint().width() + member.area->minimumSizeHint().width()));
        }
    }
    return size;
}

QSize PanelStack::sizeHint() const {
    return QWidget::sizeHint().expandedTo(minimumSizeHint());
}

void PanelStack::setLocked(SettingsLock lock) {
    lock_ = lock;
    for (size_t i = 0; i < panels_.size(); ++i) {
        const bool locked = lock == SettingsLock::All || (lock == SettingsLock::Board && panels_[i]->concernsBoard());
        panels_[i]->setLocked(locked);
        const QString hint = locked ? uiText(TextId::PanelLockedHint) : QString();
        const QString name = memberName(i, uiText(panels_[i]->title()));
        members_[i].icon->setToolTip(locked ? name + QLatin1Char('\n') + hint : name);
        members_[i].padlock->setPixmap(locked ? padlock(*members_[i].name) : QPixmap());
        members_[i].padlock->setToolTip(hint);
    }
}

}  // namespace tarno2
