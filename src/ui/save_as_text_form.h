#pragma once

#include <QDialog>
#include <QEvent>
#include <QMessageBox>
#include <QTimer>
#include <atomic>
#include <string>

#include "config/settings/program_settings.h"
#include "config/settings/text_export.h"
#include "exports/export_recording.h"
#include "platform/thread.h"
#include "records/conversion_inputs.h"
#include "records/text_conversion.h"

class QButtonGroup;
class QCheckBox;
class QComboBox;
class QGroupBox;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QProgressBar;
class QPushButton;
class QRadioButton;
class QSpinBox;

namespace tarno2 {

/// The recording that is converted, and what is known of it besides its description.
struct TextExportSource {
    std::string dataFile;
    KnownInputs known;
    FrameWish wish = {};  ///< what of it the fields ask for at first
};

/// How an export ended, and what is to be told of it.
struct ExportOutcome {
    ConversionResult result;
    ExportSurroundings around;
    ExportNotes notes;
};

/// Converts a recording to text or to the format of another program: the choice of format, frames and columns, and the
/// progress of the conversion, which runs on a thread of its own. The settings are kept when a conversion starts and
/// when the window closes. Window thread.
class T_SaveAsTextForm : public QDialog {
public:
    /// `settings` outlives the window.
    T_SaveAsTextForm(TextExportSettings& settings, TextExportSource source, QWidget* parent = nullptr);
    ~T_SaveAsTextForm() override;

    /// Sets every text again, after a change of the language.
    void loadCaptions();
    void SaveButtonClick();
    void CancelButtonClick();
    /// Shows how far the conversion is.
    void Timer1Timer();
    /// A conversion runs.
    [[nodiscard]] bool running() const { return running_; }
    /// Stops a running conversion and waits for its end.
    void FormClose();
    void ButtonSetFileNameClick();
    void FirstColumnModeGroupClick();
    void DataColumnModeClick();
    void DividerGroupBoxClick();
    void formatChosen();
    void showPreview();
    void reject() override;

protected:
    void closeEvent(QCloseEvent* event) override;
    void customEvent(QEvent* event) override;

private:
    // Construction (save_as_text_form_layout.cpp).
    void build();
    QWidget* buildColumns();
    QWidget* buildDivider();
    QWidget* buildProgress();
    QWidget* buildPart();
    QWidget* buildPreview();
    void loadNewCaptions();
    QRadioButton* addRadio(QButtonGroup* group, int id, const char* name, QWidget* parent);
    void connectControls();

    void showSettings();
    void readControls();
    void showFields();
    void setRunning(bool running);
    void endConversion();
    void start(bool replace);
    void conversionEnded(const ExportOutcome& outcome);
    void askToReplace(const QString& file);
    [[nodiscard]] const ExporterRow& row() const;
    [[nodiscard]] ExportTask task() const;
    QMessageBox* report(QMessageBox::Icon icon, const QString& text);
    // What is reported (save_as_text_form_reports.cpp).
    [[nodiscard]] static QString wishText(const ExportSurroundings& around);
    [[nodiscard]] QString failureText(const ExportOutcome& outcome) const;
    [[nodiscard]] QString finishedText(const ExportOutcome& outcome) const;
    [[nodiscard]] ExportOutcome convert(ExportTask task);

    TextExportSettings& settings_;
    const TextExportSource source_;

    RecordedKeys described_;
    ConversionProgress progress_;
    std::atomic<bool> stop_{false};
    uint64_t began_ = 0;  ///< ms of the tick counter
    uint64_t elapsed_ = 0;
    bool running_ = false;
    Thread worker_;
    QTimer timer_;
    QTimer previewTimer_;
    QString confirmed_;             ///< an output that the user has said may be replaced
    std::string extension_{"csv"};  ///< of the format chosen last

    QWidget* controls_;
    // In the order of the keyboard.
    QLabel* formatLabel_;
    QComboBox* format_;
    QLabel* fileNameLabel_;
    QLineEdit* fileNameEdit_;
    QPushButton* setFileNameButton_;
    QGroupBox* partBox_;
    QLabel* fromLabel_;
    QLineEdit* from_;
    QLabel* toLabel_;
    QLineEdit* to_;
    QLabel* everyLabel_;
    QSpinBox* every_;
    QLabel* channelsLabel_;
    QLineEdit* channels_;
    QGroupBox* firstColumnBox_;
    QButtonGroup* firstColumn_;
    QLabel* timePrecisionLabel_;
    QSpinBox* timePrecision_;
    QGroupBox* dataColumnBox_;
    QButtonGroup* dataColumn_;
    QLabel* voltagePrecisionLabel_;
    QSpinBox* voltagePrecision_;
    QGroupBox* decimalBox_;
    QButtonGroup* decimal_;
    QGroupBox* dividerBox_;
    QButtonGroup* divider_;
    QLabel* tabCountLabel_;
    QSpinBox* tabCount_;
    QLineEdit* symbol_;
    QLabel* symbolCountLabel_;
    QSpinBox* symbolCount_;
    QCheckBox* headings_;
    QCheckBox* marks_;
    QCheckBox* limitLines_;
    QSpinBox* maximumLines_;
    QGroupBox* previewBox_;
    QPlainTextEdit* preview_;
    QGroupBox* progressBox_;
    QLabel* filesLabel_;
    QLabel* sizeLabel_;
    QLabel* linesLabel_;
    QLabel* timeLabel_;
    QLabel* files_;
    QLabel* size_;
    QLabel* lines_;
    QLabel* time_;
    QProgressBar* bar_;
    QPushButton* saveButton_;
    QPushButton* cancelButton_;
};

}  // namespace tarno2
