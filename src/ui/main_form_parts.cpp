// The parts of the window: how they are laid out around the signal, and how they fold.

#include <QAction>
#include <QDockWidget>
#include <QScrollArea>
#include <QSplitter>
#include <QTimer>
#include <QToolButton>
#include <QVBoxLayout>
#include <QWindow>
#include <algorithm>

#include "ui/channel_table.h"
#include "ui/main_form.h"
#include "ui/main_status_bar.h"
#include "ui/message_bar.h"
#include "ui/panels/channels_panel.h"
#include "ui/panels/panel_stack.h"
#include "ui/part_icons.h"
#include "ui/recording_stack.h"
#include "ui/state_strip.h"
#include "ui/text.h"

namespace tarno2 {

namespace {

/// A signal of its own has a whole window's frame, so that it is maximised, and its place among the windows of the
/// desktop.
void frameWindow(QDockWidget& dock, bool floating) {
    const QWidget* const bare = dock.titleBarWidget();
    dock.setTitleBarWidget(floating ? new QWidget(&dock) : nullptr);
    delete bare;
    if (!floating || dock.isHidden()) {
        return;
    }
    dock.setWindowFlags(Qt::Window);
    if (dock.winId() != 0 && dock.windowHandle() != nullptr) {
        dock.windowHandle()->setTransientParent(nullptr);
    }
    dock.show();
}

/// Asks for no more height than it can't do without: the settings scroll by themselves before all of the window does.
class Center : public QWidget {
public:
    using QWidget::QWidget;
    [[nodiscard]] int heightForWidth(int width) const override { return layout()->minimumHeightForWidth(width); }
};

}  // namespace

// The strip above everything; below it the settings, the channel table and the signal; at the bottom the messages.
// Where the screen is too small for it all, it scrolls.
void T_MainForm::buildCenter() {
    auto* center = new Center;
    auto* column = new QVBoxLayout(center);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    strip_ = new StateStrip(center);
    column->addWidget(strip_);
    buildColumns();
    buildRows();
    column->addWidget(rows_, 1);
    auto* scroll = new QScrollArea(this);
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setWidgetResizable(true);
    scroll->setFocusPolicy(Qt::NoFocus);
    scroll->setWidget(center);
    setCentralWidget(scroll);

    statusLine_ = new MainStatusBar(this);
    setStatusBar(statusLine_);
    connect(statusLine_, &MainStatusBar::languageAsked, this, &T_MainForm::SelectLanguageButtonClick);
}

void T_MainForm::buildColumns() {
    right_ = new QMainWindow;
    right_->setObjectName(QStringLiteral("RightSide"));
    right_->setWindowFlags(Qt::Widget);
    signalDock_ = new QDockWidget(right_);
    signalDock_->setObjectName(QStringLiteral("SignalDock"));
    signalDock_->setAllowedAreas(Qt::BottomDockWidgetArea);
    right_->addDockWidget(Qt::BottomDockWidgetArea, signalDock_);
    signalDock_->hide();

    tableButton_ = new QToolButton(panels_);
    tableButton_->setObjectName(QStringLiteral("ChannelTableButton"));
    tableButton_->setAutoRaise(true);
    tableButton_->setCheckable(true);
    tableButton_->setFocusPolicy(Qt::StrongFocus);
    panels_->setDrawer(&channelsPanel_->table(), tableButton_);

    columns_ = new QSplitter(Qt::Horizontal);
    columns_->addWidget(panels_);
    columns_->addWidget(right_);
    columns_->setStretchFactor(0, 0);
    columns_->setStretchFactor(1, 1);
    columns_->setChildrenCollapsible(false);
}

void T_MainForm::buildRows() {
    messages_ = new MessageBar;
    rows_ = new QSplitter(Qt::Vertical);
    rows_->addWidget(columns_);
    rows_->addWidget(messages_);
    rows_->setStretchFactor(0, 1);
    rows_->setStretchFactor(1, 0);
    rows_->setChildrenCollapsible(false);
}

void T_MainForm::connectParts() {
    // What the operator has dragged is kept then: who folds a part changes its size before anybody hears of it.
    for (QSplitter* splitter : {columns_, rows_}) {
        connect(splitter, &QSplitter::splitterMoved, this, &T_MainForm::storePartPlaces);
    }
    connect(menu_.showPanels, &QAction::toggled, this, &T_MainForm::showPanels);
    connect(panels_, &PanelStack::unfoldedChanged, this, [this](bool unfolded) {
        menu_.showPanels->setChecked(unfolded);
        placeColumns();
    });
    // The keys of the commands hold in the signal's own window, too.
    for (QAction* action : findChildren<QAction*>()) {
        if (!action->shortcuts().isEmpty()) {
            signalDock_->addAction(action);
        }
    }
    connect(menu_.showMessages, &QAction::toggled, this, &T_MainForm::showMessageList);
    connect(messages_, &MessageBar::unfoldedChanged, menu_.showMessages, &QAction::setChecked);
    connect(menu_.channelTable, &QAction::toggled, this, &T_MainForm::showTable);
    connect(tableButton_, &QToolButton::toggled, menu_.channelTable, &QAction::setChecked);
    // Without the signal beside it the table has all the width.
    const auto fill = [this] { right_->setVisible(!signalDock_->isHidden() && !signalDock_->isFloating()); };
    connect(signalDock_, &QDockWidget::topLevelChanged, this, [this, fill](bool floating) {
        frameWindow(*signalDock_, floating);
        fill();
        // The keys go with it: else those of the view would be typed into the first field of its window.
        if (!signalDock_->isHidden()) {
            showForm_->setFocus();
        }
    });
    connect(menu_.showSignal, &QAction::toggled, this, fill);
    connect(channelsPanel_, &ChannelsPanel::extendedViewChanged, this, &T_MainForm::makeRoomForTable);
}

void T_MainForm::showPanels(bool shown) {
    if (shown != panels_->unfolded()) {
        panels_->setFolded(!shown);
    }
}

void T_MainForm::showMessageList(bool shown) {
    messages_->setUnfolded(shown);
    if (shown) {
        const int height = settings_.messagesHeight > 0 ? settings_.messagesHeight : fontMetrics().lineSpacing() * 6;
        rows_->setSizes({std::max(rows_->height() - height, 1), height});
    } else {
        rows_->setSizes({rows_->height(), 1});
    }
}

void T_MainForm::showTable(bool shown) {
    panels_->showDrawer(shown);
    tableButton_->setChecked(shown);
    placeColumns();
}

// The settings leave their room to the signal while it is recorded.
void T_MainForm::foldForRun(bool running) {
    if (running ? settings_.foldOnStart && panels_->unfolded() : foldedForRun_) {
        foldedForRun_ = running;
        menu_.showPanels->setChecked(!running);
    }
}

// What is unfolded comes back as wide as it was; the signal has the rest.
void T_MainForm::placeColumns() {
    const int kept = panels_->unfolded() ? settings_.panelsWidth : settings_.tableWidth;
    placeColumns(kept > 0 && !panels_->bare() ? kept : panels_->sizeHint().width());
}

void T_MainForm::placeColumns(int width) {
    columns_->setSizes({width, std::max(columns_->width() - width, 1)});
}

// What the columns of the other view need is known when they were laid out.
void T_MainForm::makeRoomForTable() {
    QTimer::singleShot(0, this, [this] { placeColumns(panels_->sizeHint().width()); });
}

void T_MainForm::storePartPlaces() {
    if (panels_->isVisible() && right_->isVisible() && !panels_->bare()) {
        (panels_->unfolded() ? settings_.panelsWidth : settings_.tableWidth) = panels_->width();
    }
    if (messages_->isVisible() && messages_->unfolded()) {
        settings_.messagesHeight = messages_->height();
    }
}

// Tab goes from the settings to the table, the signal and then the messages. The signal is made last, and anew.
void T_MainForm::orderTabs() {
    QWidget* before = &channelsPanel_->table();
    setTabOrder(tableButton_, before);
    QList<QWidget*> stops;
    for (QWidget* next = signalStack_->nextInFocusChain(); next != signalStack_; next = next->nextInFocusChain()) {
        if (signalStack_->isAncestorOf(next) && next->focusPolicy() != Qt::NoFocus && next->focusProxy() == nullptr) {
            stops << next;
        }
    }
    for (QWidget* stop : stops) {
        setTabOrder(before, stop);
        before = stop;
    }
}

}  // namespace tarno2
