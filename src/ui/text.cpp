#include "ui/text.h"

#include <QFile>

#include "language/language_table.h"
#include "platform/codepage1251.h"
#include "platform/utf.h"

namespace tarno2 {

QString uiText(TextId id) {
    return QString::fromStdString(languageTable().loadUtf8(static_cast<int32_t>(id)));
}

QString plainText(TextId id) {
    return uiText(id).remove(QLatin1Char('&'));
}

QString titleText(TextId id) {
    QString text = plainText(id);
    while (text.endsWith(QLatin1Char('.')) || text.endsWith(QChar(0x2026))) {
        text.chop(1);
    }
    return text;
}

QString uiText(TextId id, const QStringList& values) {
    const QString text = uiText(id);
    QString filled;
    auto value = values.begin();
    for (qsizetype at = 0; at < text.size(); ++at) {
        if (text[at] != QLatin1Char('%') || at + 1 == text.size()) {
            filled += text[at];
        } else if (text[++at] == QLatin1Char('%')) {
            filled += QLatin1Char('%');
        } else if (value != values.end()) {
            filled += *value++;
        }
    }
    return filled;
}

QString fromCodePage(const std::string& text) {
    return QString::fromStdU16String(cp1251ToUtf16(text));
}

std::string toCodePage(const QString& text) {
    if (const auto whole = utf16ToCp1251(text.toStdU16String())) {
        return *whole;
    }
    std::string result;
    for (const QChar& character : text) {
        result += utf16ToCp1251(std::u16string(1, character.unicode())).value_or("?");
    }
    return result;
}

QString fromMessage(const std::string& text) {
    const auto utf16 = utf8ToUtf16(text);
    return utf16 ? QString::fromStdU16String(*utf16) : fromCodePage(text);
}

QString fromFileName(const std::string& name) {
    return QFile::decodeName(QByteArray::fromStdString(name));
}

std::string toFileName(const QString& name) {
    return utf16ToSystem(name.toStdU16String());
}

}  // namespace tarno2
