#include "ui/text.h"

#include <QFile>

#include "language/language_table.h"
#include "platform/codepage1251.h"

namespace tarno2 {

QString uiText(TextId id) {
    return QString::fromStdString(languageTable().loadUtf8(static_cast<int32_t>(id)));
}

QString plainText(TextId id) {
    return uiText(id).remove(QLatin1Char('&'));
}

QString uiText(TextId id, const QStringList& values) {
    QString text = uiText(id);
    qsizetype at = 0;
    for (const QString& value : values) {
        while (at < text.size() && !(text[at] == QLatin1Char('%') && at + 1 < text.size() && text[at + 1].isLetter())) {
            ++at;
        }
        text.replace(at, 2, value);
        at += value.size();
    }
    return text;
}

QString fromCodePage(const std::string& text) {
    return QString::fromStdU16String(cp1251ToUtf16(text));
}

std::string toCodePage(const QString& text) {
    if (const auto whole = utf16ToCp1251(text.toStdU16String()))
        return *whole;
    std::string result;
    for (const QChar& character : text)
        result += utf16ToCp1251(std::u16string(1, character.unicode())).value_or("?");
    return result;
}

QString fromFileName(const std::string& name) {
    return QFile::decodeName(QByteArray::fromStdString(name));
}

std::string toFileName(const QString& name) {
    return QFile::encodeName(name).toStdString();
}

}  // namespace tarno2
