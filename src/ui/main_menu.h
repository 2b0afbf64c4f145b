#pragma once

#include <QKeySequence>
#include <utility>
#include <vector>

#include "language/text_ids.h"
#include "ui/panels/settings_lock.h"

class QAction;
class QMainWindow;
class QMenu;

namespace tarno2 {

/// The commands of the main window: its menus, their keys and their texts. The window connects what they do. All belong
/// to the window, which outlives this. Window thread.
class MainMenu {
public:
    explicit MainMenu(QMainWindow& window);
    /// Sets every text in the language chosen last.
    void retranslate();
    /// While a recording runs, or the board is monitored, some commands are off.
    void setLocked(SettingsLock lock);

private:
    QAction* add(TextId text, const QKeySequence& key = {});
    QAction* addToggle(TextId text, const QKeySequence& key = {});
    QMenu* addMenu(TextId text);
    void buildMenus();

    QMainWindow& window_;
    std::vector<std::pair<QAction*, TextId>> actions_;
    std::vector<std::pair<QMenu*, TextId>> menus_;

public:
    QAction* const start;
    QAction* const monitor;
    QAction* const stop;
    QAction* const cycle;
    QAction* const mark;
    QAction* const chooseFile;
    QAction* const additional;
    QAction* const saveAsText;
    QAction* const showSignal;
    QAction* const marks;
    QAction* const detachSignal;
    QAction* const showPanels;
    QAction* const channelTable;
    QAction* const showMessages;
    QAction* const extendedChannels;
    QAction* const openRecording;
    QAction* const compareRecording;
    QAction* const digitalLines;
    QAction* const russian;
    QAction* const english;
    QAction* const recover;
    QAction* const setups;
    QAction* const autoSettings;
    QAction* const exit;
    QAction* const manual;
    QAction* const about;
    QMenu* selectLanguage = nullptr;
    QMenu* view = nullptr;
    QMenu* recent = nullptr;
};

}  // namespace tarno2
