#pragma once

#include <QDialog>
#include <string>

#include "language/text_ids.h"

class QLineEdit;
class QListWidget;
class QPushButton;

namespace tarno2 {

/// The setups that are kept: saves what is set under a name, loads, removes, and exchanges them as files. Window
/// thread.
class SetupsWindow : public QDialog {
    Q_OBJECT

public:
    SetupsWindow(std::string programDirectory, QWidget* parent);

    /// Lists the setups as they are on the disk and marks one.
    void list(const QString& marked = {});

signals:
    void saveAsked(const QString& name);
    void loadAsked(const QString& name);

private:
    void connectButtons();
    void save();
    void remove();
    void importFile();
    void exportFile();
    [[nodiscard]] bool ask(const QString& question, TextId go);
    [[nodiscard]] bool mayReplace(const QString& name);
    void tell(const QString& message);
    void showButtons();
    [[nodiscard]] QString marked() const;

    std::string programDirectory_;
    QListWidget* list_;
    QLineEdit* name_;
    QPushButton* save_;
    QPushButton* load_;
    QPushButton* remove_;
    QPushButton* import_;
    QPushButton* export_;
    QPushButton* close_;
};

}  // namespace tarno2
