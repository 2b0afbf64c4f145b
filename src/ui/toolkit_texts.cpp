#include "ui/toolkit_texts.h"

#include <QCoreApplication>
#include <QLibraryInfo>
#include <QTranslator>

#include "language/language_table.h"

namespace tarno2 {

void translateToolkit() {
    static auto* const translator = new QTranslator(QCoreApplication::instance());
    QCoreApplication::removeTranslator(translator);
    if (languageTable().selected() != kLanguageRussian) {
        return;
    }
    const QString name = QStringLiteral("qtbase_ru");
    if (translator->load(name, QCoreApplication::applicationDirPath() + QStringLiteral("/translations")) ||
        translator->load(name, QLibraryInfo::path(QLibraryInfo::TranslationsPath))) {
        QCoreApplication::installTranslator(translator);
    }
}

}  // namespace tarno2
