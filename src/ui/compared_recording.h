#pragma once

#include <QWidget>
#include <cstdint>
#include <optional>
#include <string>

#include "core/devices/scoper_library.h"
#include "ui/frame_line.h"
#include "ui/show_form.h"

class QComboBox;
class QHBoxLayout;
class QLabel;
class QToolButton;

namespace tarno2 {

/// A recording below another one for comparison: its picture, and a line above it with its name, how it is aligned, and
/// a button that takes it away. Window thread.
class ComparedRecording : public QWidget {
    Q_OBJECT

public:
    /// `settings` and `first` outlive it.
    ComparedRecording(ProgramSettings& settings, T_ShowForm& first, QWidget* parent);
    ~ComparedRecording() override;

    /// Null while nothing is opened.
    [[nodiscard]] T_ShowForm* view() { return view_; }
    /// Opens the data file. False, after a message, when it can't be opened.
    bool open(const std::string& dataFile);
    /// Its frames at those of the first recording.
    [[nodiscard]] const FrameLine& line() const { return line_; }
    void retranslate();

signals:
    /// It is aligned another way.
    void aligned();
    /// The user does without it.
    void removed();
    /// A text for the user's list of messages.
    void message(const QString& text);

private:
    void align(Alignment alignment);

    ProgramSettings& settings_;
    T_ShowForm& first_;
    ScoperLibrary scoper_;  ///< goes after the view that it draws
    QHBoxLayout* head_;
    QLabel* title_;
    QComboBox* alignment_;
    QToolButton* remove_;
    T_ShowForm* view_ = nullptr;
    std::optional<int64_t> later_;  ///< than the first one it began, microseconds; nothing: nobody knows
    FrameLine line_;
};

}  // namespace tarno2
