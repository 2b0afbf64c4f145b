#include "ui/mark_list_window.h"

#include <QHeaderView>
#include <QLabel>
#include <QTableView>
#include <QVBoxLayout>
#include <algorithm>
#include <array>
#include <cmath>

#include "ui/text.h"

namespace tarno2 {

namespace {

constexpr std::array kHeads = {TextId::MarkNumber, TextId::MarkTime, TextId::MarkSourceName, TextId::MarkTextName};
constexpr std::array kSources = {TextId::MarkByOperator, TextId::MarkByLine, TextId::MarkByDriver};
constexpr int kTextColumn = 3;

}  // namespace

void MarkListModel::setMarks(const std::vector<ShownMark>& marks, double framesPerSecond) {
    beginResetModel();
    marks_ = marks;
    framesPerSecond_ = framesPerSecond;
    endResetModel();
}

int MarkListModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(marks_.size());
}

int MarkListModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(kHeads.size());
}

// Since the stream began, with as many decimals as tell milliseconds apart; without a rate the frame.
QString MarkListModel::timeOf(const RecordingMark& mark) const {
    if (!(framesPerSecond_ > 0.0)) {
        return QString::number(mark.frame);
    }
    const auto thousandths = std::llround(static_cast<double>(mark.frame) * 1000.0 / framesPerSecond_);
    const auto whole = thousandths / 1000;
    return QStringLiteral("%1:%2:%3.%4")
        .arg(whole / 3600)
        .arg(whole / 60 % 60, 2, 10, QLatin1Char('0'))
        .arg(whole % 60, 2, 10, QLatin1Char('0'))
        .arg(thousandths % 1000, 3, 10, QLatin1Char('0'));
}

QVariant MarkListModel::data(const QModelIndex& index, int role) const {
    const ShownMark& shown = marks_[static_cast<size_t>(index.row())];
    if (role == Qt::ToolTipRole) {
        return shown.frame ? QVariant() : uiText(TextId::MarkNotInFiles);
    }
    if (role == Qt::TextAlignmentRole && index.column() < 2) {
        return static_cast<int>(Qt::AlignRight | Qt::AlignVCenter);
    }
    if (role != Qt::DisplayRole) {
        return {};
    }
    switch (index.column()) {
        case 0:
            return QString::number(shown.mark.number);
        case 1:
            return timeOf(shown.mark);
        case 2:
            return uiText(kSources[static_cast<size_t>(shown.mark.source)]);
        default:
            return QString::fromStdString(shown.mark.text);
    }
}

QVariant MarkListModel::headerData(int section, Qt::Orientation orientation, int role) const {
    const bool head = orientation == Qt::Horizontal && role == Qt::DisplayRole;
    return head ? uiText(kHeads[static_cast<size_t>(section)]) : QVariant();
}

MarkListWindow::MarkListWindow(QWidget* parent)
    : QDialog(parent, Qt::Tool),
      model_(new MarkListModel(this)),
      table_(new QTableView(this)),
      hint_(new QLabel(this)) {
    setObjectName(QStringLiteral("MarkListWindow"));
    table_->setObjectName(QStringLiteral("MarkTable"));
    table_->setModel(model_);
    table_->setSelectionBehavior(QAbstractItemView::SelectRows);
    table_->setSelectionMode(QAbstractItemView::SingleSelection);
    table_->setWordWrap(false);
    table_->verticalHeader()->hide();
    table_->verticalHeader()->setDefaultSectionSize(fontMetrics().height() + 6);
    table_->horizontalHeader()->setStretchLastSection(true);
    const int letter = fontMetrics().averageCharWidth();
    for (const auto& [column, letters] : {std::pair(0, 8), std::pair(1, 16), std::pair(2, 20)}) {
        table_->setColumnWidth(column, letter * letters);
    }
    hint_->setWordWrap(true);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(table_, 1);
    layout->addWidget(hint_);
    resize(letter * 80, fontMetrics().height() * 20);
    connect(table_, &QTableView::activated, this, &MarkListWindow::activated);
    retranslate();
}

void MarkListWindow::activated(const QModelIndex& index) {
    if (const ShownMark& shown = model_->marks()[static_cast<size_t>(index.row())]; shown.frame) {
        emit jump(*shown.frame);
    }
}

void MarkListWindow::setMarks(const std::vector<ShownMark>& marks, double framesPerSecond) {
    const QModelIndex current = table_->currentIndex();
    const uint64_t chosen = current.isValid() ? model_->marks()[static_cast<size_t>(current.row())].mark.number : 0;
    const bool follows = chosen == 0;
    model_->setMarks(marks, framesPerSecond);
    if (follows) {
        table_->scrollToBottom();
    } else {
        choose(chosen);
    }
}

void MarkListWindow::choose(uint64_t number) {
    const auto& marks = model_->marks();
    const auto found =
        std::ranges::lower_bound(marks, number, {}, [](const ShownMark& shown) { return shown.mark.number; });
    if (found != marks.end() && found->mark.number == number) {
        const QModelIndex index = model_->index(static_cast<int>(found - marks.begin()), kTextColumn);
        table_->setCurrentIndex(index);
        table_->scrollTo(index);
    }
}

void MarkListWindow::retranslate() {
    setWindowTitle(titleText(TextId::MenuMarks));
    hint_->setText(uiText(TextId::MarkListHint));
    table_->setAccessibleName(windowTitle());
    emit model_->headerDataChanged(Qt::Horizontal, 0, kTextColumn);
    table_->viewport()->update();
}

}  // namespace tarno2
