#include "ui/label_field.h"

#include <QRegularExpressionValidator>

namespace tarno2 {

QValidator* makeLabelValidator(QObject* parent) {
    static const QRegularExpression kUsable(QStringLiteral("[^;\\x{00}-\\x{1F}\\x{7F}]*"));
    return new QRegularExpressionValidator(kUsable, parent);
}

}  // namespace tarno2
