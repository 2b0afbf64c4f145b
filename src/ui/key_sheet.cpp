#include "ui/key_sheet.h"

#include <QAction>
#include <QDialogButtonBox>
#include <QHeaderView>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace tarno2 {

namespace {

QString keysOf(const QAction& action) {
    QStringList keys;
    for (const QKeySequence& key : action.shortcuts()) {
        keys.append(key.toString(QKeySequence::NativeText));
    }
    return keys.join(QStringLiteral(", "));
}

QString plain(QString text) {
    return text.remove(QLatin1Char('&'));
}

}  // namespace

void KeySheet::Group::add(const QList<QAction*>& actions) {
    for (const QAction* action : actions) {
        if (!action->shortcuts().isEmpty() && !action->text().isEmpty()) {
            rows.emplace_back(keysOf(*action), plain(action->text()));
        }
    }
}

KeySheet::KeySheet(const QString& title, const std::vector<Group>& groups, QWidget* parent) : QDialog(parent) {
    setWindowTitle(title);
    auto* sheet = new QTreeWidget(this);
    sheet->setObjectName(QStringLiteral("KeySheet"));
    sheet->setColumnCount(2);
    sheet->setHeaderHidden(true);
    sheet->setRootIsDecorated(false);
    sheet->setItemsExpandable(false);
    sheet->setIndentation(fontMetrics().averageCharWidth() * 2);
    sheet->setSelectionMode(QAbstractItemView::NoSelection);
    for (const Group& group : groups) {
        auto* head = new QTreeWidgetItem(sheet, {group.title});
        head->setFirstColumnSpanned(true);
        QFont bold = font();
        bold.setBold(true);
        head->setFont(0, bold);
        for (const auto& [keys, text] : group.rows) {
            new QTreeWidgetItem(head, {keys, text});
        }
    }
    sheet->expandAll();
    sheet->header()->setSectionResizeMode(QHeaderView::ResizeToContents);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(sheet);
    layout->addWidget(buttons);
    resize(fontMetrics().averageCharWidth() * 80, fontMetrics().lineSpacing() * 34);
}

}  // namespace tarno2
