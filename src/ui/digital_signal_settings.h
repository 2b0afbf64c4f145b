#pragma once

#include <QDialog>
#include <functional>
#include <span>
#include <string>
#include <vector>

#include "config/settings/program_settings.h"

class QGroupBox;
class QLabel;
class QLineEdit;
class QListWidget;
class QPushButton;
class QSlider;

namespace tarno2 {

/// Sets, for each line of the digital port that the signal view draws, its name, its zero level, its height and its
/// colour. Every
/// change goes into the settings at once and is drawn at once.
class T_DigitalSignalSettings : public QDialog {
    Q_OBJECT

public:
    /// `lines`: the lines that the view draws now, and `names` of those that have one; they belong to the view's
    /// settings and outlive the window. `repaint` draws the view.
    T_DigitalSignalSettings(std::span<DigitalLineSettings> lines, std::vector<std::string>& names,
                            std::function<void()> repaint, QWidget* parent = nullptr);

    /// Sets every text again, after a change of the language.
    void loadCaptions();
    /// Shows the selected line's settings; without a selection nothing can be changed.
    void DigitalLineListClick();
    void ZeroLevelTrackChange(int position);
    void AmpLevelTrackChange(int position);
    void ChooseColorButtonClick();
    /// Takes the name that was typed; it counts from the next recording on.
    void LineNameEditChange();

private:
    void build();
    void fillSwatch();
    /// Null when no line is selected.
    [[nodiscard]] DigitalLineSettings* selectedLine();

    [[nodiscard]] QString nameOf(size_t line) const;
    [[nodiscard]] QString itemText(size_t line) const;

    std::span<DigitalLineSettings> lines_;
    std::vector<std::string>& names_;
    std::function<void()> repaint_;
    QGroupBox* lineNumberBox_;
    QListWidget* lineList_;
    QGroupBox* nameBox_;
    QLineEdit* nameEdit_;
    QGroupBox* zeroLevelBox_;
    QSlider* zeroLevelTrack_;
    QLabel* zeroLevelValue_;
    QGroupBox* ampLevelBox_;
    QSlider* ampLevelTrack_;
    QLabel* ampLevelValue_;
    QGroupBox* colorBox_;
    QLabel* colorImage_;
    QPushButton* chooseColorButton_;
    QPushButton* closeButton_;
};

}  // namespace tarno2
