#pragma once

#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

#include "ui/panels/settings_panel.h"

class QComboBox;
class QLabel;
class QLineEdit;
class QSpinBox;

namespace tarno2 {

class OptionBox;

/// How the board measures: `FrequencyBox` (a list, or a free field when the driver has none), `PacketModeBox`,
/// `PacketFrequencyEdit`, `ExtFreqBox`, `ExtStartBox`, `DecimationBox`, `FrequencyPerChannelLabel`.
class MeasuringPanel final : public SettingsPanel {
    Q_OBJECT

public:
    explicit MeasuringPanel(QWidget* parent = nullptr);

    [[nodiscard]] TextId title() const override { return TextId::PanelMeasuring; }
    void load(const ProgramSettings& settings) override;
    void store(ProgramSettings& settings) const override;
    void retranslate() override;
    void boardChanged(BoardSelection& selection) override;

    /// The number in the frequency field, Hz; 0 when what stands there is none, for the start to refuse.
    [[nodiscard]] double frequency() const;
    /// So many channels are switched on: the rate of each follows.
    void setActiveChannels(int count);

private:
    [[nodiscard]] std::optional<double> typedFrequency() const;
    [[nodiscard]] double packetFrequency() const;
    void fillFrequencies();
    void showFrequency(double hertz);
    void keepFrequency();
    void showAvailability();
    void showRate();
    [[nodiscard]] std::pair<float, float> limits() const;
    [[nodiscard]] double startingFrequency(double otherwise) const;
    [[nodiscard]] QString limitsText() const;
    void fieldEdited();

    QLabel* frequencyLabel_;
    QComboBox* frequencyBox_;
    QLabel* perChannelLabel_;
    OptionBox* packetMode_;
    QLabel* packetLabel_;
    QLineEdit* packetFrequency_;
    OptionBox* externalClock_;
    OptionBox* externalStart_;
    QLabel* decimationLabel_;
    QSpinBox* decimation_;
    BoardFacts facts_;
    QString board_;                        ///< driver and number of the board that the facts are of
    std::vector<double> keptFrequencies_;  ///< that the operator has typed, Hz
    double loadedFrequency_ = 0.0;
    bool frequencyLoaded_ = false;  ///< by `load`, since the last change of board
    int activeChannels_ = 0;
};

}  // namespace tarno2
