#include "ui/help.h"

#include <QAction>
#include <QApplication>
#include <QDesktopServices>
#include <QFileInfo>
#include <QKeyEvent>
#include <QUrl>
#include <QWidget>

#include "language/language_table.h"
#include "platform/paths.h"
#include "ui/text.h"

namespace tarno2 {

namespace {

/// A part of a window by its object name, and where the manual tells of it.
struct HelpPlace {
    const char* part;
    const char* place;
};

constexpr HelpPlace kHelpPlaces[] = {
    {"T_AdditionalModeWindow", "trigger#window"},
    {"T_SaveAsTextForm", "export#window"},
    {"MarkListWindow", "measuring#marks"},
    {"MarkEdit", "measuring#marks"},
    {"MarkButton", "measuring#marks"},
    {"SetupsWindow", "measuring#setups"},
    {"ScaleDialog", "channels#scale"},
    {"T_DigitalSignalSettings", "channels#lines"},
    {"MeasurementPanel", "view#cursors"},
    {"SpectrumPane", "view#spectrum"},
    {"GoToPlace", "view#places"},
    {"KeySheet", "view#keys"},
    {"T_ShowForm", "view#view"},
    {"FirstPage", "first#in-window"},
    {"ChannelTable", "channels#table"},
    {"MessageList", "messages#messages"},
    {"DriverSettingsForm", "boards#settings"},
    {"BoardPanel", "boards#panel"},
    {"PanelHeader1", "boards#panel"},
    {"MeasuringPanel", "measuring#rate"},
    {"PanelHeader2", "measuring#rate"},
    {"FilePanel", "measuring#file"},
    {"PanelHeader3", "measuring#file"},
    {"ChannelsPanel", "channels#panel"},
    {"PanelHeader4", "channels#panel"},
    {"ProgramPanel", "window#program"},
    {"PanelHeader5", "window#program"},
    {"StateStrip", "window#strip"},
    {"T_MainForm", "window#window"},
};

/// Brings F1 to windows that have no menu.
class HelpKey : public QObject {
public:
    explicit HelpKey(QAction& manual) : QObject(&manual), manual_(manual) { qApp->installEventFilter(this); }

    bool eventFilter(QObject* /*watched*/, QEvent* event) override {
        // Where the menu's own shortcut counts, the key has been taken already and does not come here.
        if (event->type() != QEvent::KeyPress || static_cast<QKeyEvent*>(event)->key() != Qt::Key_F1 ||
            static_cast<QKeyEvent*>(event)->modifiers() != Qt::NoModifier) {
            return false;
        }
        manual_.trigger();
        return true;
    }

private:
    QAction& manual_;
};

}  // namespace

QString manualFile(const QString& page) {
    const bool russian = languageTable().selected() == kLanguageRussian;
    const QString name = QStringLiteral("/manual/%1/%2.html").arg(QLatin1String(russian ? "ru" : "en"), page);
    const QString program = fromFileName(executableFolder());
    for (const char* folder : {"/doc", "/" TARNO2_DOC_FROM_PROGRAM, ""}) {
        const QFileInfo file(program + QLatin1String(folder) + name);
        if (file.isFile()) {
            return file.canonicalFilePath();
        }
    }
    return {};
}

QString manualPlace(const QWidget* focus) {
    for (const QWidget* part = focus; part != nullptr; part = part->parentWidget()) {
        for (const HelpPlace& known : kHelpPlaces) {
            if (part->objectName() == QLatin1String(known.part)) {
                return QLatin1String(known.place);
            }
        }
    }
    return QStringLiteral("index");
}

QStringList manualPlaces() {
    QStringList places;
    for (const HelpPlace& known : kHelpPlaces) {
        places.append(QLatin1String(known.place));
    }
    places.removeDuplicates();
    return places;
}

bool openManual() {
    const QStringList place = manualPlace(QApplication::focusWidget()).split(QLatin1Char('#'));
    const QString file = manualFile(place.first());
    if (file.isEmpty()) {
        return false;
    }
    QUrl url = QUrl::fromLocalFile(file);
    if (place.size() > 1) {
        url.setFragment(place.last());
    }
    return QDesktopServices::openUrl(url);
}

void installHelpKey(QAction& manual) {
    new HelpKey(manual);
}

}  // namespace tarno2
