#include "ui/main_status_bar.h"

#include <QToolButton>

#include "language/language_table.h"
#include "ui/shortened_label.h"
#include "ui/text.h"

namespace tarno2 {

namespace {

void showIn(ShortenedLabel* label, const QString& text, bool warning) {
    label->setStyleSheet(warning ? QStringLiteral("background: #ffb300; color: #000000; border-radius: 3px;")
                                 : QString());
    label->setWhole(warning ? QStringLiteral("\u26A0 ") + text : text);
}

}  // namespace

MainStatusBar::MainStatusBar(QWidget* parent) : QStatusBar(parent) {
    board_ = new ShortenedLabel(this);
    board_->setObjectName(QStringLiteral("BoardStateLabel"));
    disk_ = new ShortenedLabel(this);
    disk_->setObjectName(QStringLiteral("DiskStateLabel"));
    need_ = new ShortenedLabel(this);
    need_->setObjectName(QStringLiteral("NeedStateLabel"));
    languageLabel_ = new QToolButton(this);
    languageLabel_->setObjectName(QStringLiteral("LanguageInterfaceLabel"));
    languageLabel_->setAutoRaise(true);
    languageLabel_->setFocusPolicy(Qt::NoFocus);
    languageButton_ = new QToolButton(this);
    languageButton_->setObjectName(QStringLiteral("SelectLanguageButton"));
    languageButton_->setFocusPolicy(Qt::TabFocus);
    addWidget(board_);
    addWidget(disk_);
    addWidget(need_);
    addPermanentWidget(languageLabel_);
    addPermanentWidget(languageButton_);
    for (const QToolButton* button : {languageLabel_, languageButton_}) {
        connect(button, &QToolButton::clicked, this, &MainStatusBar::languageAsked);
    }
    retranslate();
}

void MainStatusBar::setBoard(const QString& text, bool warning) {
    showIn(board_, text, warning);
}

void MainStatusBar::setDisk(const QString& text) {
    showIn(disk_, text, false);
}

void MainStatusBar::setNeed(const QString& text, bool warning) {
    showIn(need_, text, warning);
}

void MainStatusBar::retranslate() {
    const bool russian = languageTable().selected() == kLanguageRussian;
    languageButton_->setText(russian ? QStringLiteral("RU") : QStringLiteral("EN"));
    languageButton_->setToolTip(uiText(TextId::SelectLanguage));
    languageButton_->setAccessibleName(uiText(TextId::SelectLanguage));
    languageLabel_->setText(uiText(TextId::SelectLanguage));
}

}  // namespace tarno2
