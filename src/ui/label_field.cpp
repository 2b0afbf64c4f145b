#include "ui/label_field.h"

#include <QRegularExpressionValidator>

#include "ui/text.h"

namespace tarno2 {

QString unitOf(const ChannelLabel& label) {
    return label.unit.empty() ? uiText(TextId::UnitVolts) : QString::fromStdString(label.unit);
}

QValidator* makeLabelValidator(QObject* parent) {
    static const QRegularExpression kUsable(QStringLiteral("[^;\\x{00}-\\x{1F}\\x{7F}]*"));
    return new QRegularExpressionValidator(kUsable, parent);
}

}  // namespace tarno2
