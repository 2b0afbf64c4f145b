#pragma once

#include <QString>
#include <cstdint>

#include "ui/panels/board_need.h"
#include "ui/panels/settings_panel.h"

class QComboBox;
class QLabel;
class QPushButton;

namespace tarno2 {

class DriverSettingsForm;
class MarkLineRow;
class OptionBox;

/// Driver and what it wants to be told, board, DRQ number, and what the board can switch: `DriverBox`,
/// `DriverSettingsForm`, `BaseBox`, `SearchAgainButton`, `DrqBox`, `DiffModeBox`, `DigitalPortBox`,
/// `HardwareAverageBox`, `BoardFactsLabel`, `BoardNeedButton`.
class BoardPanel final : public SettingsPanel {
    Q_OBJECT

public:
    explicit BoardPanel(QWidget* parent = nullptr);

    [[nodiscard]] TextId title() const override { return TextId::PanelBoard; }
    void load(const ProgramSettings& settings) override;
    void store(ProgramSettings& settings) const override;
    void retranslate() override;
    void boardChanged(BoardSelection& selection) override;
    /// The driver looks for its board, and takes its time.
    void setLooking(bool looking);
    /// The driver has found further boards, or has ended its search.
    void showSearch(const BoardSelection& selection);
    /// Fields for what the driver is told: also what is being typed counts, and what was refused is shown.
    [[nodiscard]] DriverSettingsForm& driverSettings() { return *settings_; }
    /// Does what the button beside the need says.
    void meetNeed();

signals:
    void driverChosen(const QString& name);
    void searchAsked();
    /// The driver lacks something, or nothing any more.
    void needChanged(const BoardNeed& need);
    void baseChosen(uint32_t number);
    void drqChosen(int number);
    void hardwareAverageChanged(bool on);

private:
    void fillDrivers(BoardSelection& selection);
    void fillBoards(const BoardSelection& selection);
    void fillDrqNumbers(BoardSelection& selection);
    void showFacts();
    void showNeed();

    QLabel* driverLabel_;
    QLabel* baseLabel_;
    QLabel* drqLabel_;
    QComboBox* driverBox_;
    DriverSettingsForm* settings_;
    QComboBox* baseBox_;
    QPushButton* searchButton_;
    QComboBox* drqBox_;
    OptionBox* differential_;
    OptionBox* digitalPort_;
    OptionBox* hardwareAverage_;
    QLabel* markLabel_;
    MarkLineRow* markLine_;
    QLabel* factsLabel_;
    NeedLine* needLine_;
    BoardSelection* selection_ = nullptr;  ///< shown last; not to be asked while it looks for a board
    BoardNeed need_;
    BoardFacts facts_;
    QString driverName_;
    QString problem_;  ///< why there is no board; empty when there is one
    bool driversInstalled_ = false;
    bool driverLoaded_ = false;
    bool driverMissing_ = false;  ///< the one that is chosen is not installed
    bool boardMissing_ = false;   ///< the one that is chosen is not in the driver's list
    bool boardUsable_ = false;
    bool looking_ = false;
    bool searching_ = false;  ///< the driver goes on searching for boards by itself
    int32_t drqNumber_ = 0;
};

}  // namespace tarno2
