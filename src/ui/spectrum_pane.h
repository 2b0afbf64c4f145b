#pragma once

#include <QElapsedTimer>
#include <QTimer>
#include <QWidget>
#include <memory>
#include <optional>
#include <vector>

#include "config/settings/program_settings.h"
#include "measure/latest_worker.h"
#include "measure/spectrum.h"
#include "ui/measured_columns.h"

class QAction;
class QComboBox;
class QLabel;
class QTableWidget;
class QToolButton;

namespace tarno2 {

class ShortenedLabel;
class SpectrumPicture;

/// The spectrum of the channels that are shown: over the picture, or between the cursors. With a table of the strongest
/// lines of one channel. A worker makes it; of a running signal a few times a second. Window thread.
class SpectrumPane : public QWidget {
    Q_OBJECT

public:
    /// `settings` outlives it.
    SpectrumPane(ProgramSettings& settings, QWidget* parent);
    ~SpectrumPane() override;

    /// After each drawing of the signal. `between`: what lies between the cursors, if they are shown.
    void drawn(ShownSignal& signal, const ShownFrames& shown, const SignalDrawing& drawing,
               const std::optional<FrameSpan>& between, bool following);
    /// Ends all work: the signal goes away.
    void forget();
    void retranslate();

signals:
    /// Another spectrum is wanted: the signal has to be drawn anew.
    void changed();

private:
    /// What the last spectrum was made of.
    struct Wanted {
        FrameSpan span;
        SpectrumWindow window = SpectrumWindow::Hann;
        size_t length = 0;
        bool averaged = true;
        std::vector<size_t> channels;
        friend bool operator==(const Wanted&, const Wanted&) = default;
    };

    void build();
    void connectAll();
    void loadSettings();
    void keepSettings();
    [[nodiscard]] FrameSpan spanOf(ShownSignal& signal, const ShownFrames& shown,
                                   const std::optional<FrameSpan>& between) const;
    void takeColumns(const ShownSignal& signal, const SignalDrawing& drawing);
    void startWorker(ShownSignal& signal, const Wanted& wanted);
    void finished(uint64_t number, SpectrumEnd end, const Spectrum& spectrum);
    void showSpectrum();
    void showFigures();
    [[nodiscard]] SpectrumScale scale() const;
    [[nodiscard]] QString unit() const;
    [[nodiscard]] QString levelText(double power, double fullScale) const;

    ProgramSettings& settings_;
    QComboBox* window_;
    QComboBox* scale_;
    QComboBox* length_;
    QToolButton* more_;
    QAction* averaged_ = nullptr;
    QAction* logarithmic_ = nullptr;
    QAction* whole_ = nullptr;
    ShortenedLabel* facts_;
    QComboBox* channel_;
    QTableWidget* peaks_;
    QLabel* figures_;
    SpectrumPicture* picture_;

    std::vector<MeasuredColumn> columns_;  ///< channels that are shown
    std::vector<double> fullScales_;       ///< volts, of those
    size_t marked_ = SIZE_MAX;             ///< channel that the user has marked last
    std::optional<Wanted> wanted_;
    Spectrum spectrum_;
    std::vector<size_t> channels_;  ///< of the spectrum
    uint64_t number_ = 0;
    uint64_t startedAt_ = 0;
    QElapsedTimer clock_;
    LatestWorker worker_;
};

}  // namespace tarno2
