#pragma once

#include <string>

#include "config/files/file_name_check.h"
#include "core/recording/recording_need.h"
#include "ui/panels/settings_panel.h"

class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QSpinBox;
class QDoubleSpinBox;

namespace tarno2 {

class OptionBox;

/// Where the recording goes and when it ends: `FileNameEdit`, `ButtonSetFileName`, `StopModeBox`, `StopValueBox`,
/// `StopPowerBox`, `CutModeBox`, `CutModeValueBox`, `AutoModeCutBox`, `HDDTestSpeedBox`, `CommentEdit`, and the labels
/// `FreeSpaceLabel`, `DiskSpeedLabel`, `NeedLabel`, `DiskLastsLabel`, `PiecesLabel`, `FileProblemLabel`,
/// `DiskWarningLabel`.
class FilePanel final : public SettingsPanel {
    Q_OBJECT

public:
    explicit FilePanel(QWidget* parent = nullptr);

    [[nodiscard]] TextId title() const override { return TextId::PanelFile; }
    [[nodiscard]] bool concernsBoard() const override { return false; }
    /// The file name field is the window's matter: see `setFileName`.
    void load(const ProgramSettings& settings) override;
    void store(ProgramSettings& settings) const override;
    void retranslate() override;
    void boardChanged(BoardSelection& selection) override;

    /// The name field, in the system's own bytes.
    [[nodiscard]] std::string fileName() const;
    /// Emits no signal.
    void setFileName(const std::string& name);

    /// The disk's speed is being measured: stays until `showFindings`. Paints at once.
    void showMeasuring();
    /// What was found out about the name and its disk.
    void showFindings(const FileNameFindings& findings);
    /// What the settings will write. With a need greater than the disk's speed both turn into a warning.
    void showNeed(const RecordingNeed& need);

signals:
    /// Editing of the name has ended: Enter, or the field was left after a change.
    void fileNameEdited();
    void chooseFileName();
    void diskSpeedCheckChanged(bool on);

private:
    void layOut();
    void connectControls();
    void fillUnits();
    void showAvailability();
    void showDisk();
    void showNeedTexts();

    QLabel* nameLabel_;
    QLineEdit* nameEdit_;
    QPushButton* chooseButton_;
    QLabel* problemLabel_;
    QLabel* commentLabel_;
    QLineEdit* commentEdit_;
    QLabel* stopLabel_;
    QComboBox* stopMode_;
    QDoubleSpinBox* stopValue_;
    QComboBox* stopUnit_;
    OptionBox* cutMode_;
    QSpinBox* cutValue_;
    OptionBox* automaticCut_;
    OptionBox* speedCheck_;
    QLabel* freeLabel_;
    QLabel* speedLabel_;
    QLabel* needLabel_;
    QLabel* lastsLabel_;
    QLabel* piecesLabel_;
    QLabel* warningLabel_;
    FileNameFindings findings_;
    RecordingNeed need_;
    bool measuring_ = false;
    bool nameChanged_ = false;  ///< by typing, since editing began
};

}  // namespace tarno2
