#include "ui/measurement_panel.h"

#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QFileDialog>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QPointer>
#include <QSaveFile>
#include <QScrollBar>
#include <QTableView>
#include <QToolButton>
#include <algorithm>

#include "ui/measurement_model.h"
#include "ui/shortened_label.h"
#include "ui/text.h"
#include "ui/typed_keys.h"

namespace tarno2 {

namespace {

constexpr int kMostRows = 5;  // seen without scrolling

QToolButton* toolButton(const char* name, QWidget* parent) {
    auto* button = new QToolButton(parent);
    button->setObjectName(QString::fromLatin1(name));
    button->setFocusPolicy(Qt::StrongFocus);
    button->setToolButtonStyle(Qt::ToolButtonTextOnly);
    return button;
}

}  // namespace

MeasurementPanel::MeasurementPanel(QWidget* parent)
    : QWidget(parent),
      model_(new MeasurementModel(this)),
      table_(new QTableView(this)),
      fold_(toolButton("FoldMeasurements", this)),
      time_(new ShortenedLabel(this)),
      state_(new ShortenedLabel(this)),
      onScreen_(new QCheckBox(this)),
      snap_(toolButton("SnapToEdge", this)),
      copy_(toolButton("CopyMeasurements", this)),
      save_(toolButton("SaveMeasurements", this)) {
    setObjectName(QStringLiteral("MeasurementPanel"));
    table_->setObjectName(QStringLiteral("MeasurementTable"));
    time_->setObjectName(QStringLiteral("MeasuredTime"));
    state_->setObjectName(QStringLiteral("MeasuredState"));
    onScreen_->setObjectName(QStringLiteral("CursorsOnScreen"));
    table_->setModel(model_);
    table_->setSelectionBehavior(QAbstractItemView::SelectRows);
    table_->setSelectionMode(QAbstractItemView::SingleSelection);
    table_->setWordWrap(false);
    table_->verticalHeader()->hide();
    table_->verticalHeader()->setDefaultSectionSize(fontMetrics().height() + 4);
    table_->horizontalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
    table_->horizontalHeader()->setMinimumSectionSize(fontMetrics().averageCharWidth() * 7);
    fold_->setAutoRaise(true);
    fold_->setToolButtonStyle(Qt::ToolButtonIconOnly);
    // Texts give way to the controls.
    time_->setTextInteractionFlags(Qt::TextSelectableByMouse);
    auto* head = new QHBoxLayout;
    head->setContentsMargins(4, 1, 4, 1);
    head->addWidget(fold_);
    head->addWidget(time_);
    head->addSpacing(fontMetrics().averageCharWidth() * 2);
    head->addWidget(state_, 1);
    for (QWidget* widget : {static_cast<QWidget*>(onScreen_), static_cast<QWidget*>(snap_),
                            static_cast<QWidget*>(copy_), static_cast<QWidget*>(save_)}) {
        head->addWidget(widget);
    }
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addLayout(head);
    layout->addWidget(table_);
    new TypedKeys(this);
    connect(fold_, &QToolButton::clicked, this, [this] { emit folded(table_->isVisibleTo(this)); });
    connect(onScreen_, &QCheckBox::clicked, this, &MeasurementPanel::onScreenChanged);
    connect(snap_, &QToolButton::clicked, this, &MeasurementPanel::snapWanted);
    connect(copy_, &QToolButton::clicked, this, &MeasurementPanel::copy);
    connect(save_, &QToolButton::clicked, this, &MeasurementPanel::save);
    connect(model_, &QAbstractItemModel::modelReset, this, &MeasurementPanel::fitRows);
    retranslate();
}

void MeasurementPanel::load(bool onScreen, bool folded) {
    onScreen_->setChecked(onScreen);
    showFold(folded);
}

void MeasurementPanel::showFold(bool folded) {
    table_->setVisible(!folded);
    fold_->setArrowType(folded ? Qt::RightArrow : Qt::DownArrow);
}

void MeasurementPanel::setTexts(const QString& time, const QString& state) {
    time_->setWhole(time);
    state_->setWhole(state);
}

void MeasurementPanel::setActive(size_t cursor) {
    if (cursor != active_) {
        active_ = cursor;
        retranslate();
    }
}

int MeasurementPanel::chosenRow() const {
    const QModelIndex current = table_->currentIndex();
    return current.isValid() ? current.row() : std::min(model_->rowCount(), 1) - 1;
}

void MeasurementPanel::fitRows() {
    const int row = table_->verticalHeader()->defaultSectionSize();
    const int around = 2 * table_->frameWidth() + table_->horizontalHeader()->sizeHint().height() +
                       table_->horizontalScrollBar()->sizeHint().height();
    table_->setMinimumHeight(around + row);
    table_->setMaximumHeight(around + row * std::clamp(model_->rowCount(), 1, kMostRows));
}

void MeasurementPanel::copy() {
    const QString& time = time_->whole();
    QApplication::clipboard()->setText(time.isEmpty() ? model_->asText() : time + QLatin1Char('\n') + model_->asText());
}

void MeasurementPanel::save() {
    // A recording that begins meanwhile may take the panel away.
    const QPointer<MeasurementPanel> here(this);
    const QString name =
        QFileDialog::getSaveFileName(window(), titleText(TextId::SaveMeasurements), {}, QStringLiteral("CSV (*.csv)"));
    if (!here || name.isEmpty()) {
        return;
    }
    QSaveFile file(QFileInfo(name).suffix().isEmpty() ? name + QStringLiteral(".csv") : name);
    // By the mark in front spreadsheets know that it is UTF-8.
    const QByteArray text = "\xEF\xBB\xBF" + model_->asCsv().toUtf8();
    if (!file.open(QIODevice::WriteOnly) || file.write(text) != text.size() || !file.commit()) {
        emit message(uiText(TextId::FileNotWritten, {file.fileName(), file.errorString()}));
    }
}

void MeasurementPanel::retranslate() {
    fold_->setToolTip(uiText(TextId::MeasurementsShown));
    fold_->setAccessibleName(uiText(TextId::MeasurementsShown));
    onScreen_->setText(uiText(TextId::CursorsOnScreen));
    onScreen_->setToolTip(uiText(TextId::CursorsOnScreenHint));
    snap_->setText(uiText(TextId::SnapToEdge));
    snap_->setToolTip(uiText(TextId::SnapToEdgeHint, {QString::number(active_ + 1)}));
    copy_->setText(uiText(TextId::CopyMeasurements));
    save_->setText(uiText(TextId::SaveMeasurements));
    model_->retranslate();
    fitRows();
}

}  // namespace tarno2
