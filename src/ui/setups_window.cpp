#include "ui/setups_window.h"

#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMessageBox>
#include <QPushButton>
#include <utility>

#include "config/settings/setup_file.h"
#include "platform/file.h"
#include "platform/paths.h"
#include "ui/mnemonics.h"
#include "ui/text.h"

namespace tarno2 {

namespace {

constexpr uint64_t kLargestSetup = uint64_t{16} << 20U;

QPushButton* makeButton(const char* name, const QString& text, QWidget* parent) {
    auto* button = new QPushButton(text, parent);
    button->setObjectName(QLatin1String(name));
    button->setAutoDefault(false);
    return button;
}

}  // namespace

SetupsWindow::SetupsWindow(std::string programDirectory, QWidget* parent)
    : QDialog(parent),
      programDirectory_(std::move(programDirectory)),
      list_(new QListWidget(this)),
      name_(new QLineEdit(this)),
      save_(makeButton("SaveSetupButton", uiText(TextId::SetupSave), this)),
      load_(makeButton("LoadSetupButton", uiText(TextId::SetupLoad), this)),
      remove_(makeButton("RemoveSetupButton", uiText(TextId::SetupRemove), this)),
      import_(makeButton("ImportSetupButton", uiText(TextId::SetupImport), this)),
      export_(makeButton("ExportSetupButton", uiText(TextId::SetupExport), this)),
      close_(makeButton("CloseSetupsButton", uiText(TextId::ButtonClose), this)) {
    setObjectName(QStringLiteral("SetupsWindow"));
    setWindowTitle(uiText(TextId::SetupsWindow));
    list_->setObjectName(QStringLiteral("SetupList"));
    list_->setAccessibleName(uiText(TextId::SetupsWindow));
    name_->setObjectName(QStringLiteral("SetupNameEdit"));
    auto* label = new QLabel(uiText(TextId::SetupName), this);
    label->setBuddy(name_);
    name_->setAccessibleName(uiText(TextId::SetupName));
    auto* hint = new QLabel(uiText(TextId::SetupsHint), this);
    hint->setWordWrap(true);
    auto* grid = new QGridLayout(this);
    grid->addWidget(hint, 0, 0, 1, 3);
    grid->addWidget(list_, 1, 0, 5, 2);
    int row = 1;
    for (QPushButton* button : {load_, remove_, import_, export_}) {
        grid->addWidget(button, row++, 2);
    }
    grid->setRowStretch(row, 1);
    grid->addWidget(label, 6, 0);
    grid->addWidget(name_, 6, 1);
    grid->addWidget(save_, 6, 2);
    grid->addWidget(close_, 7, 2);
    grid->setColumnStretch(1, 1);
    giveMnemonics({close_, load_, remove_, import_, export_, save_});
    resize(fontMetrics().averageCharWidth() * 70, fontMetrics().height() * 22);
    connectButtons();
    list();
    if (list_->count() == 0) {
        name_->setFocus();
    }
}

void SetupsWindow::connectButtons() {
    connect(save_, &QPushButton::clicked, this, &SetupsWindow::save);
    connect(name_, &QLineEdit::returnPressed, this, &SetupsWindow::save);
    connect(load_, &QPushButton::clicked, this, [this] { emit loadAsked(marked()); });
    connect(list_, &QListWidget::itemActivated, this, [this] { emit loadAsked(marked()); });
    connect(remove_, &QPushButton::clicked, this, &SetupsWindow::remove);
    connect(import_, &QPushButton::clicked, this, &SetupsWindow::importFile);
    connect(export_, &QPushButton::clicked, this, &SetupsWindow::exportFile);
    connect(close_, &QPushButton::clicked, this, &QDialog::reject);
    connect(list_, &QListWidget::currentRowChanged, this, [this] {
        name_->setText(marked());
        showButtons();
    });
}

void SetupsWindow::list(const QString& marked) {
    list_->clear();
    for (const std::string& name : setupNames(programDirectory_)) {
        list_->addItem(fromFileName(name));
    }
    const auto found = list_->findItems(marked, Qt::MatchExactly);
    list_->setCurrentItem(found.isEmpty() ? list_->item(0) : found.first());
    showButtons();
}

QString SetupsWindow::marked() const {
    return list_->currentItem() != nullptr ? list_->currentItem()->text() : QString();
}

void SetupsWindow::showButtons() {
    for (QPushButton* button : {load_, remove_, export_}) {
        button->setEnabled(list_->currentItem() != nullptr);
    }
}

void SetupsWindow::save() {
    const QString name = name_->text().trimmed();
    if (!isSetupName(toFileName(name))) {
        tell(uiText(TextId::SetupBadName));
    } else if (mayReplace(name)) {
        emit saveAsked(name);
        list(name);
    }
}

bool SetupsWindow::ask(const QString& question, TextId go) {
    QMessageBox box(QMessageBox::Question, windowTitle(), question, QMessageBox::NoButton, this);
    const QPushButton* yes = box.addButton(uiText(go), QMessageBox::AcceptRole);
    box.setDefaultButton(box.addButton(uiText(TextId::GoBack), QMessageBox::RejectRole));
    box.exec();
    return box.clickedButton() == yes;
}

bool SetupsWindow::mayReplace(const QString& name) {
    return !fileExists(setupPath(programDirectory_, toFileName(name))) ||
           ask(uiText(TextId::SetupReplaceQuestion, {name}), TextId::SetupReplace);
}

void SetupsWindow::remove() {
    if (!ask(uiText(TextId::SetupRemoveQuestion, {marked()}), TextId::SetupRemove)) {
        return;
    }
    const std::string path = setupPath(programDirectory_, toFileName(marked()));
    if (!removeFile(path).ok()) {
        tell(uiText(TextId::SetupNotWritten, {fromFileName(path)}));
    }
    list();
}

// What is no setup is told now, not when it is to be loaded.
void SetupsWindow::importFile() {
    const QString chosen =
        QFileDialog::getOpenFileName(this, titleText(TextId::SetupImport), {}, uiText(TextId::SetupFilter));
    if (chosen.isEmpty()) {
        return;
    }
    const QString name = QFileInfo(chosen).completeBaseName();
    if (!isSetupName(toFileName(name))) {
        tell(uiText(TextId::SetupBadName));
        return;
    }
    const std::string from = toFileName(QDir::toNativeSeparators(chosen));
    ProgramSettings tried;
    OsError why;
    std::string text;
    const SetupRead read = readSetup(from, tried, why);
    if (read == SetupRead::Done) {
        why = readWholeFile(from, kLargestSetup, FileShare::Read, text);
    }
    if (read != SetupRead::Done || !why.ok()) {
        tell(uiText(TextId::SetupNotRead,
                    {chosen, read == SetupRead::NoSetup ? uiText(TextId::SetupNoSettings) : fromMessage(why.text())}));
        return;
    }
    const std::string to = setupPath(programDirectory_, toFileName(name));
    if (!mayReplace(name)) {
        return;
    }
    if (!createFolders(parentFolder(to)).ok() || !replaceWholeFile(to, text).ok()) {
        tell(uiText(TextId::SetupNotWritten, {fromFileName(to)}));
    }
    list(name);
}

void SetupsWindow::exportFile() {
    QFileDialog dialog(this, titleText(TextId::SetupExport), marked() + QString::fromUtf8(kSetupEnding.data()));
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setNameFilter(uiText(TextId::SetupFilter));
    dialog.setDefaultSuffix(QStringLiteral("setup"));
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) {
        return;
    }
    const QString chosen = dialog.selectedFiles().first();
    std::string text;
    if (!readWholeFile(setupPath(programDirectory_, toFileName(marked())), kLargestSetup, FileShare::Read, text).ok() ||
        !replaceWholeFile(toFileName(QDir::toNativeSeparators(chosen)), text).ok()) {
        tell(uiText(TextId::SetupNotWritten, {chosen}));
    }
}

void SetupsWindow::tell(const QString& message) {
    QMessageBox box(QMessageBox::Warning, windowTitle(), message, QMessageBox::NoButton, this);
    box.addButton(uiText(TextId::ButtonOk), QMessageBox::AcceptRole);
    box.exec();
}

}  // namespace tarno2
