#pragma once

#include <QDialog>
#include <array>
#include <cstdint>

#include "sync/synchro_check.h"
#include "sync/synchro_form.h"
#include "ui/condition_controls.h"

class QCheckBox;
class QRadioButton;
class QSlider;
class QStackedWidget;

namespace tarno2 {

class SynchroPicture;

/// What the synchronisation window has to know of the recording as it is set up.
struct AdditionalModeFacts {
    SynchroBoardFacts board;
    uint32_t digitalLines = 0;     ///< of the board's port; 0: not known
    double framesPerSecond = 0.0;  ///< frames that reach the synchronisation; 0: not known

    [[nodiscard]] uint64_t frameBytes() const { return uint64_t{board.sampleWidth} * board.channels.size(); }
};

/// The window in which the synchronisation settings are edited. "Accept" and the frame's close button take the controls
/// over into the settings, "Cancel" and Escape take back what was changed since the window was shown.
///
/// Show it with `open()`; `setFacts` before. Its controls keep their state while it is hidden.
class T_AdditionalModeWindow : public QDialog {
    Q_OBJECT

public:
    /// Both outlive the window.
    T_AdditionalModeWindow(SynchroSettings& settings, SynchroSizes& sizes, QWidget* parent = nullptr);

    void setFacts(AdditionalModeFacts facts);
    /// Unattended: a mistake in the controls switches the synchronisation off and asks nobody.
    void setQuiet(bool quiet) { quiet_ = quiet; }
    /// Writes the settings into the controls.
    void ReloadControls();
    /// Chooses "Off" and takes it over into the settings.
    void SwitchOff();
    /// Takes the controls over into the settings. False when a control holds no number: a message says so, the control
    /// gets the focus, and the window has to stay open.
    bool FormCloseQuery();

    void reject() override;

protected:
    void showEvent(QShowEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    // Handlers.
    void FormShow();
    void AcceptButtonClick();
    void OffButtonClick();
    void AnalyzeButtonClick();
    void SynchroButtonClick();
    void AnalogRadioClick();
    void PortRadioClick();
    void SynchroAnalogRadioClick();
    void SynchroPortRadioClick();
    void AnalogStartModeButtonClick() { openPopup(start_.mode); }
    void AnalogWriteModeButtonClick() { openPopup(write_.mode); }
    void AnalogStopModeButtonClick() { openPopup(stop_.mode); }
    void StartValueUnitClick() { openPopup(start_.unit); }
    void WriteValueUnitClick() { openPopup(write_.unit); }
    void StopValueUnitClick() { openPopup(stop_.unit); }
    void PortStartModeButtonClick() { openPopup(portStart_.mode); }
    void PortWriteModeButtonClick() { openPopup(portWrite_.mode); }
    void PortStopModeButtonClick() { openPopup(portStop_.mode); }
    void AnalogSynchroModeButtonClick() { openPopup(synchro_.mode); }
    void SynchroValueUnitClick() { openPopup(synchro_.unit); }
    void PortSynchroModeButtonClick() { openPopup(portSynchro_.mode); }
    void PopupItemClick(const QAction* item);
    void BufferBarChange();
    void PrehistoryBarChange();
    void SynchroBufferSizeEditKeyDown(int key);
    void SynchroPrehistoryLevelEditKeyDown(int key);

    // Making the controls, and their texts.
    QMenu* makePopup(const char* name);
    void assemble();
    void makeModes();
    void makeAnalysisPage();
    void makeSynchroPage();
    void makeSizes();
    void arrange();
    void connectControls();
    void connectPopups();
    void setTexts();
    void setPopupTexts();
    void setModeTexts();
    void setSizeTexts();
    void setMnemonics();

    void openPopup(TaggedButton* button);
    void showPage();
    void fillBoxes();
    void fitBufferBar();
    void showPrehistory();
    [[nodiscard]] SynchroForm form() const;
    void setForm(const SynchroForm& form);
    void setSizeBars(const SynchroForm& form);
    [[nodiscard]] QWidget* control(SynchroField field) const;
    void complain(QWidget* offending);
    void refresh();
    void showRecordLength();
    [[nodiscard]] std::array<AnalogConditionControls*, 4> analogConditions();
    [[nodiscard]] std::array<const PortConditionControls*, 4> portConditions() const;

    SynchroSettings& settings_;
    SynchroSizes& sizes_;
    AdditionalModeFacts facts_;
    bool quiet_ = false;
    bool bufferBusy_ = false;
    bool prehistoryBusy_ = false;
    TaggedButton* popupButton_ = nullptr;  ///< that opened a popup last

    // As they were when the window was shown.
    SynchroSettings shownSettings_;
    SynchroSizes shownSizes_;
    SynchroForm shownForm_;

    QMenu* unitPopup_;
    QMenu* analogPopup_;
    QMenu* portPopup_;
    QMenu* synchroAnalogPopup_;
    QMenu* synchroPortPopup_;

    QGroupBox* modeBox_;
    QRadioButton* off_;
    QRadioButton* analyze_;
    QRadioButton* synchronize_;
    QStackedWidget* pages_;
    QLabel* offNote_;

    QWidget* analysisPage_;
    QRadioButton* analogRadio_;
    QRadioButton* portRadio_;
    QStackedWidget* analysisSources_;
    QWidget* analogData_;
    QWidget* portData_;
    AnalogConditionControls start_;
    AnalogConditionControls write_;
    AnalogConditionControls stop_;
    PortConditionControls portStart_;
    PortConditionControls portWrite_;
    PortConditionControls portStop_;
    QLabel* analysisPortNote_;

    QWidget* synchroPage_;
    QRadioButton* synchroAnalogRadio_;
    QRadioButton* synchroPortRadio_;
    QStackedWidget* synchroSources_;
    AnalogConditionControls synchro_;
    PortConditionControls portSynchro_;
    QLabel* synchroPortNote_;
    QGroupBox* historyBox_;
    QSlider* bufferBar_;
    QLineEdit* bufferEdit_;
    QGroupBox* prehistoryBox_;
    QSlider* prehistoryBar_;
    QLineEdit* prehistoryEdit_;
    QLabel* percentage_;
    QLabel* recordLength_;
    QCheckBox* stopAfter_;

    SynchroPicture* picture_;
    QPushButton* accept_;
    QPushButton* cancel_;
};

}  // namespace tarno2
