#pragma once

#include <QWidget>
#include <cstdint>
#include <vector>

#include "ui/panels/settings_lock.h"
#include "ui/panels/settings_panel.h"

class QLabel;
class QScrollArea;
class QToolButton;
class QVBoxLayout;

namespace tarno2 {

/// The settings panels: a rail of icons, each of which opens its panel beside the rail and closes it (Alt and its
/// number, Space, a click). Of the open ones, the one that was opened last is seen, and those before it as far as there
/// is height. A padlock beside the names says that the settings are locked. Window thread.
class PanelStack : public QWidget {
    Q_OBJECT

public:
    explicit PanelStack(QWidget* parent = nullptr);

    /// Appends a panel and takes it over.
    void add(SettingsPanel* panel);
    /// A part of the window that stands below the panels, and the button on the rail that shows it.
    void setDrawer(QWidget* drawer, QToolButton* button);
    void showDrawer(bool shown);

    /// The panel that was opened last, from 0; -1 when all are closed. The numbers are those of `ShowSettingMember`.
    [[nodiscard]] int openMember() const { return open_.empty() ? -1 : open_.back(); }
    /// Opens a panel in front of those that are open; any number that is none closes all.
    void open(int member);
    /// Only the rail is left; the open panels come back with it unfolded.
    void setFolded(bool folded);
    [[nodiscard]] bool folded() const { return folded_; }
    /// Panels are seen beside the rail.
    [[nodiscard]] bool unfolded() const { return !folded_ && !open_.empty(); }
    /// Nothing is.
    [[nodiscard]] bool bare() const;

    // For all panels at once.
    void load(const ProgramSettings& settings);
    void store(ProgramSettings& settings) const;
    void retranslate();
    void boardChanged(BoardSelection& selection);
    void setLocked(SettingsLock lock);

    /// Wide enough for each panel, so that opening another one moves nothing beside the stack.
    [[nodiscard]] QSize minimumSizeHint() const override;
    [[nodiscard]] QSize sizeHint() const override;

signals:
    /// The operator has opened a panel, or closed it (-1).
    void memberOpened(int member);
    /// Panels have come beside the rail, or the last one has gone.
    void unfoldedChanged(bool unfolded);
    /// The operator has changed a setting in one of the panels.
    void changed();

protected:
    void resizeEvent(QResizeEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    /// The open panels, a bit each.
    [[nodiscard]] int32_t openMembers() const;
    struct Member {
        QToolButton* icon;
        QWidget* section;  ///< name, padlock and panel
        QLabel* name;
        QLabel* padlock;
        QScrollArea* area;
    };
    void press(int member);
    void setOpen(int member, bool open);
    void showOpen();
    void drawIcons();
    [[nodiscard]] std::vector<int> fitting() const;

    QVBoxLayout* rail_;
    QWidget* column_;
    QVBoxLayout* sections_;
    std::vector<SettingsPanel*> panels_;
    std::vector<Member> members_;
    QWidget* drawer_ = nullptr;
    QToolButton* drawerIcon_ = nullptr;
    std::vector<int> open_;  ///< in the order in which they were opened
    bool folded_ = false;
    SettingsLock lock_ = SettingsLock::None;
    bool wasUnfolded_ = false;
};

}  // namespace tarno2
