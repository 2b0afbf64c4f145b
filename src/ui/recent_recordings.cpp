#include "ui/recent_recordings.h"

#include <QAction>
#include <QDir>
#include <QDropEvent>
#include <QMenu>
#include <QMimeData>
#include <QUrl>
#include <QWidget>
#include <algorithm>
#include <utility>
#include <vector>

#include "display/recorded.h"
#include "ui/text.h"

namespace tarno2 {

namespace {

constexpr size_t kMostRecent = 10;
constexpr char kDivider = '|';

std::vector<std::string> parted(const std::string& list) {
    std::vector<std::string> names;
    for (size_t at = 0; at < list.size();) {
        const size_t end = std::min(list.find(kDivider, at), list.size());
        if (end > at) {
            names.push_back(list.substr(at, end - at));
        }
        at = end + 1;
    }
    return names;
}

/// The one file of this computer that is dragged; empty when it is anything else.
QString draggedFile(const QMimeData& data) {
    const QList<QUrl> urls = data.urls();
    return urls.size() == 1 && urls.front().isLocalFile() ? urls.front().toLocalFile() : QString();
}

}  // namespace

std::string withRecent(const std::string& list, const std::string& dataFile) {
    const bool usable = dataFile.find(kDivider) == std::string::npos && !dataFile.empty();
    std::string result = usable ? dataFile : std::string();
    size_t count = usable ? 1 : 0;
    for (const std::string& name : parted(list)) {
        if (name != dataFile && count < kMostRecent) {
            result += (result.empty() ? "" : std::string(1, kDivider)) + name;
            ++count;
        }
    }
    return result;
}

void fillRecent(QMenu& menu, const std::string& list, const std::function<void(const std::string& dataFile)>& open) {
    menu.clear();
    // Whether they are there nobody asks before one is opened: a share that is gone would hold the window up.
    for (const std::string& name : parted(list)) {
        // An & in a file's name is no mnemonic.
        QAction* action = menu.addAction(fromFileName(name).replace(QLatin1Char('&'), QStringLiteral("&&")));
        QObject::connect(action, &QAction::triggered, &menu, [open, name] { open(name); });
    }
}

RecordingDrop::RecordingDrop(QWidget& window, Open open) : QObject(&window), open_(std::move(open)) {
    window.setAcceptDrops(true);
    window.installEventFilter(this);
}

bool RecordingDrop::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() != QEvent::DragEnter && event->type() != QEvent::Drop) {
        return QObject::eventFilter(watched, event);
    }
    auto* drop = static_cast<QDropEvent*>(event);
    const QString file = draggedFile(*drop->mimeData());
    if (file.isEmpty()) {
        return false;
    }
    drop->acceptProposedAction();
    if (event->type() == QEvent::Drop) {
        open_(dataFileOf(toFileName(QDir::toNativeSeparators(file))), drop->modifiers().testFlag(Qt::ControlModifier));
    }
    return true;
}

}  // namespace tarno2
