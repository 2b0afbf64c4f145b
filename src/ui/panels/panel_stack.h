#pragma once

#include <QWidget>
#include <vector>

#include "ui/panels/settings_panel.h"

class QLabel;
class QScrollArea;
class QToolButton;
class QVBoxLayout;

namespace tarno2 {

/// The settings panels one below the other, each under a header that opens it (Alt and its number, Space, a click) and
/// closes the one before. A padlock in the headers says that the settings are locked. Window thread.
class PanelStack : public QWidget {
    Q_OBJECT

public:
    explicit PanelStack(QWidget* parent = nullptr);

    /// Appends a panel and takes it over.
    void add(SettingsPanel* panel);

    /// The open panel, from 0; -1 when all are closed. The numbers are those of `ShowSettingMember`.
    [[nodiscard]] int openMember() const { return open_; }
    /// Opens a panel; any number that is none closes all.
    void open(int member);

    // For all panels at once.
    void load(const ProgramSettings& settings);
    void store(ProgramSettings& settings) const;
    void retranslate();
    void boardChanged(BoardSelection& selection);
    void setLocked(bool locked);

    /// Wide enough for each panel, so that opening another one moves nothing beside the stack.
    [[nodiscard]] QSize minimumSizeHint() const override;
    [[nodiscard]] QSize sizeHint() const override;

signals:
    /// The operator has opened a panel, or closed it (-1).
    void memberOpened(int member);
    /// The operator has changed a setting in one of the panels.
    void changed();

private:
    struct Member {
        QToolButton* header;
        QLabel* padlock;
        QScrollArea* area;
    };
    void showOpen();

    QVBoxLayout* layout_;
    std::vector<SettingsPanel*> panels_;
    std::vector<Member> members_;
    int open_ = -1;
    bool locked_ = false;
};

}  // namespace tarno2
