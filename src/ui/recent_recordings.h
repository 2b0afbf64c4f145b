#pragma once

#include <QObject>
#include <functional>
#include <string>

class QMenu;
class QWidget;

namespace tarno2 {

/// The list with that data file in front, ten at most, parted by "|". A name that has this letter itself is left out.
[[nodiscard]] std::string withRecent(const std::string& list, const std::string& dataFile);

/// Puts the recordings of the list into a menu, without a look at the disk. Window thread.
void fillRecent(QMenu& menu, const std::string& list, const std::function<void(const std::string& dataFile)>& open);

/// Opens a recording whose data file or description is dropped on a window, which owns this; dropped with Ctrl it is to
/// be compared with the one that is opened.
class RecordingDrop : public QObject {
public:
    using Open = std::function<void(const std::string& dataFile, bool compare)>;
    RecordingDrop(QWidget& window, Open open);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    Open open_;
};

}  // namespace tarno2
