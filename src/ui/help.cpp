#include "ui/help.h"

#include <QDesktopServices>
#include <QFileInfo>
#include <QUrl>

#include "language/language_table.h"
#include "platform/paths.h"
#include "ui/text.h"

namespace tarno2 {

QString manualFile() {
    const QString name = languageTable().selected() == kLanguageRussian ? QStringLiteral("manual_ru.html")
                                                                        : QStringLiteral("manual_en.html");
    const QString program = fromFileName(executableFolder());
    for (const QString& folder :
         {program + QStringLiteral("/doc"), program + QStringLiteral("/../share/doc/tarno2"), program}) {
        const QFileInfo file(folder + QLatin1Char('/') + name);
        if (file.isFile()) {
            return file.canonicalFilePath();
        }
    }
    return {};
}

bool openManual() {
    const QString file = manualFile();
    return !file.isEmpty() && QDesktopServices::openUrl(QUrl::fromLocalFile(file));
}

}  // namespace tarno2
