#include "ui/show_tools.h"

#include <QAction>
#include <QActionGroup>
#include <QCheckBox>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QToolButton>

#include "config/settings/field_text.h"
#include "ui/text.h"
#include "ui/view_icons.h"

namespace tarno2 {

namespace {

constexpr std::pair<TextId, int> kUnitsX[] = {{TextId::AxisXSamples, 0},      {TextId::AxisXMicroseconds, 1},
                                              {TextId::AxisXMilliseconds, 2}, {TextId::AxisXSeconds, 3},
                                              {TextId::AxisXMinutes, 4},      {TextId::AxisXHours, 5}};
constexpr std::pair<TextId, int> kUnitsY[] = {{TextId::AxisYAuto, -1}, {TextId::Volts, 0},
                                              {TextId::Millivolts, 1}, {TextId::Microvolts, 2},
                                              {TextId::AxisYCodes, 3}, {TextId::AxisYUnits, 4}};
constexpr std::pair<TextId, int> kFollowModes[] = {
    {TextId::FollowNone, 0}, {TextId::FollowRecorder, 1}, {TextId::FollowZeroing, 2}};

// Six digits, and whole numbers beyond them; the first ones are seen in any case. Returns what the field shows.
QString showNumber(QLineEdit& edit, double value) {
    QString text = value >= 999999.5 && value < 1e15 ? QString::number(value, 'f', 0) : QString::number(value, 'g', 6);
    if (edit.text() != text) {
        edit.setText(text);
    }
    edit.setCursorPosition(0);
    return text;
}

std::optional<double> typedNumber(const QLineEdit& edit, const QString& shown) {
    if (edit.text() == shown) {
        return std::nullopt;
    }
    const auto value = parseNumberField(edit.text().toStdString());
    return value > 0.0 ? value : std::nullopt;
}

QToolButton* menuButton(const char* name, QWidget* parent) {
    auto* button = new QToolButton(parent);
    button->setObjectName(name);
    button->setFocusPolicy(Qt::StrongFocus);
    return button;
}

QLineEdit* numberEdit(const char* name, QWidget* parent) {
    auto* edit = new QLineEdit(parent);
    edit->setObjectName(name);
    edit->setMaximumWidth(edit->fontMetrics().horizontalAdvance("0000000000"));
    return edit;
}

}  // namespace

ShowTools::ShowTools(QWidget* parent)
    : QWidget(parent),
      axisXEdit_(numberEdit("AxisXEdit", this)),
      axisXButton_(menuButton("AxisXButton", this)),
      axisXMenu_(new QMenu(this)),
      axisXUnits_(new QActionGroup(this)),
      axisYEdit_(numberEdit("AxisYEdit", this)),
      axisYButton_(menuButton("AxisYButton", this)),
      axisYMenu_(new QMenu(this)),
      axisYUnits_(new QActionGroup(this)),
      axisYAuto_(new QCheckBox(this)),
      showModeButton_(menuButton("ShowModeButton", this)),
      followMenu_(new QMenu(this)),
      followModes_(new QActionGroup(this)),
      settingsButton_(menuButton("ShowSettings", this)),
      fileRow_(new QWidget(this)),
      backButton_(menuButton("BackToLive", fileRow_)),
      fileStatus_(new QLabel(fileRow_)) {
    build();
    connectAll();
    retranslate();
}

void ShowTools::build() {
    for (const auto& [text, tag] : kUnitsX) {
        addItem(axisXUnits_, axisXMenu_, text, tag);
    }
    axisXMenu_->addSeparator();
    axisXClock_ = axisXMenu_->addAction(QString());
    axisXClock_->setObjectName("AxisXClock");
    axisXClock_->setCheckable(true);
    items_.emplace_back(axisXClock_, TextId::ViewClock);
    for (const auto& [text, tag] : kUnitsY) {
        addItem(axisYUnits_, axisYMenu_, text, tag);
    }
    for (const auto& [text, tag] : kFollowModes) {
        addItem(followModes_, followMenu_, text, tag);
        items_.back().first->setIcon(followIcon(tag, palette()));
    }
    axisYAuto_->setObjectName("AxisYAuto");
    fileStatus_->setObjectName("FileStatus");
    // A long line gives way to the controls.
    fileStatus_->setMinimumWidth(0);
    fileStatus_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    auto* fileLayout = new QHBoxLayout(fileRow_);
    fileLayout->setContentsMargins(0, 0, 0, 0);
    fileLayout->addWidget(backButton_);
    fileLayout->addWidget(fileStatus_, 1);
    fileRow_->hide();
    auto* rows = new QVBoxLayout(this);
    rows->setContentsMargins(4, 2, 4, 2);
    rows->setSpacing(2);
    rows->addWidget(fileRow_);
    auto* layout = new QHBoxLayout;
    layout->setSpacing(4);
    rows->addLayout(layout);
    layout->addWidget(new QLabel(QStringLiteral("X"), this));
    layout->addWidget(axisXEdit_);
    layout->addWidget(axisXButton_);
    layout->addSpacing(8);
    layout->addWidget(new QLabel(QStringLiteral("Y"), this));
    layout->addWidget(axisYEdit_);
    layout->addWidget(axisYButton_);
    layout->addWidget(axisYAuto_);
    layout->addSpacing(8);
    layout->addWidget(showModeButton_);
    layout->addWidget(settingsButton_);
    layout->addStretch(1);
}

void ShowTools::connectAll() {
    axisXEdit_->installEventFilter(this);
    axisYEdit_->installEventFilter(this);
    connect(axisXButton_, &QToolButton::clicked, this, &ShowTools::axisXButton);
    connect(axisYButton_, &QToolButton::clicked, this,
            [this] { axisYMenu_->popup(axisYButton_->mapToGlobal(QPoint(0, axisYButton_->height()))); });
    connect(axisXUnits_, &QActionGroup::triggered, this,
            [this](QAction* item) { emit axisXUnit(item->data().toInt()); });
    connect(axisXClock_, &QAction::triggered, this, &ShowTools::axisXClock);
    connect(axisYUnits_, &QActionGroup::triggered, this,
            [this](QAction* item) { emit axisYUnit(item->data().toInt()); });
    connect(axisYAuto_, &QCheckBox::clicked, this, &ShowTools::axisYAutomatic);
    connect(showModeButton_, &QToolButton::clicked, this, &ShowTools::showModeButton);
    connect(followModes_, &QActionGroup::triggered, this, [this](QAction* item) { emit follow(item->data().toInt()); });
    connect(settingsButton_, &QToolButton::clicked, this, &ShowTools::showSettings);
    connect(backButton_, &QToolButton::clicked, this, &ShowTools::backToLive);
}

void ShowTools::addItem(QActionGroup* group, QMenu* menu, TextId text, int tag) {
    QAction* item = menu->addAction(QString());
    item->setData(tag);
    item->setCheckable(true);
    group->addAction(item);
    items_.emplace_back(item, text);
}

void ShowTools::retranslate() {
    for (const auto& [item, text] : items_) {
        item->setText(uiText(text));
    }
    axisYAuto_->setText(uiText(TextId::AxisYAutoScale));
    settingsButton_->setText(QStringLiteral("…"));
    settingsButton_->setToolTip(uiText(TextId::ViewSettings));
    settingsButton_->setAccessibleName(uiText(TextId::ViewSettings));
    backButton_->setText(uiText(TextId::BackToLive));
    axisXEdit_->setToolTip(uiText(TextId::AxisXHint));
    axisXEdit_->setAccessibleName(uiText(TextId::AxisXHint));
    axisYEdit_->setToolTip(uiText(TextId::AxisYHint));
    axisYEdit_->setAccessibleName(uiText(TextId::AxisYHint));
    for (QActionGroup* group : {axisXUnits_, axisYUnits_, followModes_}) {
        if (const QAction* item = group->checkedAction()) {
            check(group, item->data().toInt(),
                  group == axisXUnits_   ? axisXButton_
                  : group == axisYUnits_ ? axisYButton_
                                         : showModeButton_);
        }
    }
}

void ShowTools::check(QActionGroup* group, int tag, QToolButton* button) {
    for (QAction* item : group->actions()) {
        if (item->data().toInt() == tag) {
            item->setChecked(true);
            button->setIcon(item->icon());
            button->setText(item->text() + QStringLiteral(" ▾"));
            button->setToolTip(item->icon().isNull() ? QString() : item->text());
        }
    }
}

void ShowTools::load(const ProgramSettings& settings, double spanX, int followMode) {
    shownX_ = showNumber(*axisXEdit_, spanX);
    shownY_ = showNumber(*axisYEdit_, settings.axisYValue);
    axisYAuto_->setChecked(settings.axisYAutoMode);
    check(axisXUnits_, settings.axisXUnit, axisXButton_);
    check(axisYUnits_, settings.axisYMode, axisYButton_);
    check(followModes_, followMode, showModeButton_);
}

void ShowTools::setClock(bool on, bool known) {
    axisXClock_->setChecked(on);
    axisXClock_->setEnabled(known);
}

void ShowTools::setFileShown(bool file) {
    showModeButton_->setEnabled(!file);
    fileRow_->setVisible(file);
}

void ShowTools::setFileStatus(const QString& text) {
    fileStatus_->setText(text);
}

std::optional<double> ShowTools::typedX() const {
    return typedNumber(*axisXEdit_, shownX_);
}

std::optional<double> ShowTools::typedY() const {
    return typedNumber(*axisYEdit_, shownY_);
}

void ShowTools::openAxisXMenu() {
    axisXMenu_->popup(axisXButton_->mapToGlobal(QPoint(0, axisXButton_->height())));
}

void ShowTools::openFollowMenu() {
    followMenu_->popup(showModeButton_->mapToGlobal(QPoint(0, showModeButton_->height())));
}

bool ShowTools::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() != QEvent::KeyPress) {
        return false;
    }
    const int key = static_cast<QKeyEvent*>(event)->key();
    const bool enter = key == Qt::Key_Return || key == Qt::Key_Enter;
    if (!enter) {
        return false;
    }
    constexpr int kEnter = 13;
    if (watched == axisXEdit_) {
        emit axisXKey(kEnter);
    } else {
        emit axisYKey(kEnter);
    }
    return true;
}

}  // namespace tarno2
