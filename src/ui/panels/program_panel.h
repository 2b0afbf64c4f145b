#pragma once

#include <QString>
#include <string>

#include "ui/panels/settings_panel.h"

class QComboBox;
class QLabel;
class QRadioButton;
class QSpinBox;

namespace tarno2 {

class OptionBox;

/// The program's own settings: `RussianChooseButton`, `EnglishChooseButton`, `StayOnTopBox`, `AutoStartOnRunBox`,
/// `CycleStartBox`, `FoldOnStartBox`, `ColorSchemeBox`, `AxisFontNameBox`, `AxisFontSizeBox`, `DebugModeBox`,
/// `DebugLogPathLabel`, `ProgramFolderLabel`. What does not touch a running recording is never locked: language, place
/// on top, cycle start, axis font.
class ProgramPanel final : public SettingsPanel {
    Q_OBJECT

public:
    explicit ProgramPanel(QWidget* parent = nullptr);

    [[nodiscard]] TextId title() const override { return TextId::PanelProgram; }
    [[nodiscard]] bool concernsBoard() const override { return false; }
    void load(const ProgramSettings& settings) override;
    void store(ProgramSettings& settings) const override;
    void retranslate() override;

    // These follow changes that were made elsewhere and say nothing of it.
    void setLanguage(InterfaceLanguage language);
    void setCycleStart(bool on);
    /// `directory` as `programDirectory()` gives it.
    void setProgramFolder(const std::string& directory);
    /// The log is open or not, and where it lies (or would).
    void setDebugLog(bool open, const std::string& path);

signals:
    void russianChosen();
    void englishChosen();
    void stayOnTopChanged(bool on);
    void colorSchemeChanged(int scheme);
    void cycleStartChanged(bool on);
    void axisFontChanged();
    void debugLogChanged(bool on);

protected:
    void showEvent(QShowEvent* event) override;

private:
    void connectControls();

    QLabel* languageLabel_;
    QRadioButton* russian_;
    QRadioButton* english_;
    OptionBox* stayOnTop_;
    OptionBox* startOnLoad_;
    OptionBox* cycleStart_;
    OptionBox* foldOnStart_;
    QLabel* schemeLabel_;
    QComboBox* scheme_;
    QLabel* fontLabel_;
    QComboBox* fontName_;
    QSpinBox* fontSize_;
    OptionBox* debugLog_;
    QLabel* debugPathLabel_;
    QLabel* folderLabel_;
    QString programFolder_;
    QString debugLogPath_;
    bool fontsListed_ = false;
};

}  // namespace tarno2
