#pragma once

#include <QDialog>
#include <QKeySequence>
#include <QString>
#include <utility>
#include <vector>

class QAction;

namespace tarno2 {

/// A sheet of keys and of what they do. Window thread.
class KeySheet : public QDialog {
public:
    struct Group {
        QString title;
        std::vector<std::pair<QString, QString>> rows;  ///< keys, and what they do

        /// A row for each action that has keys and a text.
        void add(const QList<QAction*>& actions);
    };

    KeySheet(const QString& title, const std::vector<Group>& groups, QWidget* parent);
};

}  // namespace tarno2
