#pragma once

#include <QSplitter>
#include <string>
#include <vector>

#include "ui/compared_recording.h"

namespace tarno2 {

/// The signal view, and below it recordings that are compared with the one that was opened there: zoom, place, time of
/// day and cursors of all of them are the same. They go when the first view shows another signal, and are hidden while
/// it shows records over each other. Window thread.
class RecordingStack : public QSplitter {
    Q_OBJECT

public:
    /// So many recordings one above the other.
    static constexpr int kMost = 4;

    /// `settings` and `scoper`, the first view's, outlive it.
    RecordingStack(ProgramSettings& settings, ISCOPERA* scoper, QWidget* parent);
    ~RecordingStack() override;

    [[nodiscard]] T_ShowForm& first() { return *first_; }
    /// Adds a recording by its first data file. False, after a message, when it can't be compared.
    bool add(const std::string& dataFile);
    /// Sets all texts again.
    void retranslate();
    /// The font of the axes, or the colour of a channel was changed elsewhere.
    void settingsChanged();

signals:
    /// Of those below the first one: see T_ShowForm.
    void message(const QString& text);
    void savePartWanted(const std::string& dataFile, const FrameWish& wish);

private:
    void clear();
    void remove(ComparedRecording& row);
    void setReaches();
    void share(const T_ShowForm& from);
    /// Of all that is shown, the first one at the top.
    [[nodiscard]] std::vector<ViewPicture> pictures() const;

    ProgramSettings& settings_;
    T_ShowForm* first_;
    std::vector<ComparedRecording*> rows_;
    bool sharing_ = false;
};

}  // namespace tarno2
