#pragma once

#include <QStatusBar>
#include <QString>

class QToolButton;

namespace tarno2 {

class ShortenedLabel;

/// The line at the bottom of the main window: the board, the disk, what the settings need of it, and the language.
/// Window thread.
class MainStatusBar : public QStatusBar {
    Q_OBJECT

public:
    explicit MainStatusBar(QWidget* parent = nullptr);

    void setBoard(const QString& text, bool warning);
    void setDisk(const QString& text);
    void setNeed(const QString& text, bool warning);
    void retranslate();

signals:
    /// `SelectLanguageButton` or `LanguageInterfaceLabel` was pressed.
    void languageAsked();

private:
    ShortenedLabel* board_;
    ShortenedLabel* disk_;
    ShortenedLabel* need_;
    QToolButton* languageButton_;
    QToolButton* languageLabel_;
};

}  // namespace tarno2
