#include "ui/about_box.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include "config/logs/program_version.h"
#include "ui/program_icon.h"
#include "ui/text.h"

namespace tarno2 {

AboutBox::AboutBox(const Facts& facts, QWidget* parent) : QDialog(parent) {
    setObjectName(QStringLiteral("AboutBox"));
    setWindowTitle(plainText(TextId::MenuAbout));
    auto* column = new QVBoxLayout(this);
    auto* head = new QHBoxLayout;
    auto* picture = new QLabel(this);
    picture->setPixmap(programIcon().pixmap(64, 64));
    head->addWidget(picture);
    auto* name = new QLabel(uiText(TextId::ProgramName), this);
    QFont font = name->font();
    font.setPointSizeF(font.pointSizeF() * 2);
    font.setBold(true);
    name->setFont(font);
    head->addWidget(name, 1);
    column->addLayout(head);

    QStringList lines = {uiText(TextId::AboutPurpose),
                         uiText(TextId::AboutVersion, {QString::fromStdString(versionText())}),
                         uiText(TextId::AboutLicense), uiText(TextId::AboutQt, {QLatin1String(qVersion())})};
    if (!facts.driver.empty()) {
        lines.append(uiText(TextId::AboutDriver, {fromFileName(facts.driver), QString::number(facts.driverInterface)}));
    }
    lines.append(uiText(TextId::ProgramFolder, {fromFileName(facts.programDirectory)}));
    auto* text = new QLabel(lines.join(QLatin1Char('\n')), this);
    text->setObjectName(QStringLiteral("AboutText"));
    text->setTextFormat(Qt::PlainText);
    text->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    text->setWordWrap(true);
    text->setMinimumWidth(fontMetrics().averageCharWidth() * 50);
    column->addWidget(text);

    auto* buttons = new QDialogButtonBox(this);
    QPushButton* manual = buttons->addButton(uiText(TextId::MenuManual), QDialogButtonBox::HelpRole);
    QPushButton* close = buttons->addButton(uiText(TextId::ButtonClose), QDialogButtonBox::RejectRole);
    close->setDefault(true);
    connect(manual, &QPushButton::clicked, this, &AboutBox::manualAsked);
    connect(close, &QPushButton::clicked, this, &QDialog::reject);
    column->addWidget(buttons);
}

}  // namespace tarno2
