#include "ui/channel_table.h"

#include <QComboBox>
#include <QContextMenuEvent>
#include <QDateTime>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMenu>
#include <QPainter>
#include <QStyledItemDelegate>
#include <algorithm>
#include <iterator>
#include <set>
#include <vector>

#include "ui/channel_model.h"
#include "ui/color.h"
#include "ui/label_field.h"
#include "ui/scale_dialog.h"
#include "ui/text.h"

namespace tarno2 {

namespace {

// Digits of one number come within this time, milliseconds.
constexpr qint64 kDigitPause = 1000;

// To choose from beside those of the palette, 0xRRGGBB.
constexpr QRgb kColors[] = {0x1F77B4, 0xD62728, 0x2CA02C, 0x9467BD, 0xFF7F0E, 0x8C564B, 0xE377C2, 0x7F7F7F, 0xBCBD22,
                            0x17BECF, 0x000080, 0x8B0000, 0x006400, 0xC000C0, 0xB8860B, 0x000000, 0x5DADEC, 0xFF6F61};

/// The gain of one channel: a list of the board's gains where the cell was.
class GainDelegate : public QStyledItemDelegate {
public:
    GainDelegate(const ChannelModel& model, QObject* parent) : QStyledItemDelegate(parent), model_(model) {}

    QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem& /*option*/,
                          const QModelIndex& /*index*/) const override {
        auto* list = new QComboBox(parent);
        for (const int32_t gain : model_.gains()) {
            list->addItem(QString::number(gain), gain);
        }
        return list;
    }
    void setEditorData(QWidget* editor, const QModelIndex& index) const override {
        auto* list = static_cast<QComboBox*>(editor);
        list->setCurrentIndex(list->findData(index.data(Qt::EditRole)));
    }
    void setModelData(QWidget* editor, QAbstractItemModel* model, const QModelIndex& index) const override {
        model->setData(index, static_cast<QComboBox*>(editor)->currentData(), Qt::EditRole);
    }

private:
    const ChannelModel& model_;
};

/// A name or a unit: what a list of them can't hold is not taken.
class LabelDelegate : public QStyledItemDelegate {
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem& /*option*/,
                          const QModelIndex& /*index*/) const override {
        auto* edit = new QLineEdit(parent);
        edit->setMaxLength(kLongestLabel);
        edit->setValidator(makeLabelValidator(edit));
        return edit;
    }
};

QIcon colorIcon(const QColor& color, int size) {
    QPixmap pixmap(size, size);
    pixmap.fill(color);
    return pixmap;
}

}  // namespace

ChannelTable::ChannelTable(QWidget* parent) : QTableView(parent), model_(new ChannelModel(this)) {
    setObjectName(QStringLiteral("ChannelTable"));
    setModel(model_);
    setItemDelegateForColumn(ChannelModel::Gain, new GainDelegate(*model_, this));
    setSelectionBehavior(QAbstractItemView::SelectRows);
    setSelectionMode(QAbstractItemView::ExtendedSelection);
    setEditTriggers(QAbstractItemView::DoubleClicked | QAbstractItemView::EditKeyPressed);
    // Tab leaves the table; the arrows move in it.
    setTabKeyNavigation(false);
    setAlternatingRowColors(true);
    setShowGrid(false);
    setWordWrap(false);
    verticalHeader()->hide();
    verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    horizontalHeader()->setHighlightSections(false);
    horizontalHeader()->setMinimumSectionSize(16);
    // A name is read first; the other columns of labels stand behind the values.
    horizontalHeader()->moveSection(ChannelModel::Name, ChannelModel::Number + 1);
    auto* const labels = new LabelDelegate(this);
    setItemDelegateForColumn(ChannelModel::Name, labels);
    setItemDelegateForColumn(ChannelModel::Unit, labels);
    setExtendedView(false);
    connect(model_, &ChannelModel::edited, this, [this] {
        fitColumns();
        emit changed();
    });
    connect(model_, &ChannelModel::shownChanged, this, &ChannelTable::shownChanged);
    connect(selectionModel(), &QItemSelectionModel::currentRowChanged, this, [this](const QModelIndex& current) {
        // The first row is current before anybody has chosen one.
        if (!settingBoard_ && current.isValid()) {
            emit channelMarked(current.row());
        }
    });
    connect(this, &QAbstractItemView::doubleClicked, this, [this](const QModelIndex& index) {
        if (index.column() == ChannelModel::Color) {
            chooseColor(index.row());
        } else if (index.column() == ChannelModel::Scale) {
            askScale(index.row());
        }
    });
    retranslate();
}

void ChannelTable::load(const ProgramSettings& settings) {
    model_->load(settings);
    fitColumns();
}

void ChannelTable::store(ProgramSettings& settings) const {
    model_->store(settings);
}

void ChannelTable::setBoard(uint32_t channelCount, const std::vector<int32_t>& gains, const RangeOf& rangeOf,
                            const LabelOf& labelOf) {
    settingBoard_ = true;
    model_->setBoard(channelCount, gains, rangeOf, labelOf);
    fitColumns();
    if (model_->rowCount() > 0) {
        setCurrentIndex(model_->index(0, ChannelModel::Number));
    }
    settingBoard_ = false;
}

void ChannelTable::setShown(int channel, bool on) {
    model_->setShown(channel, on);
}

void ChannelTable::markChannel(int channel) {
    if (channel >= 0 && channel < model_->rowCount()) {
        setCurrentIndex(model_->index(channel, ChannelModel::Number));
    }
}

void ChannelTable::retranslate() {
    model_->retranslate();
    setAccessibleName(uiText(TextId::PanelChannels));
    setToolTip(locked_ ? uiText(TextId::PanelLockedHint) : uiText(TextId::ChannelTableHint));
    fitColumns();
}

void ChannelTable::setExtendedView(bool on) {
    for (const int column : {ChannelModel::Value, ChannelModel::Minimum, ChannelModel::Maximum, ChannelModel::Name,
                             ChannelModel::Unit, ChannelModel::Scale, ChannelModel::Shown}) {
        setColumnHidden(column, !on);
    }
    fitColumns();
}

void ChannelTable::setLocked(bool locked) {
    locked_ = locked;
    model_->setLocked(locked);
    retranslate();
}

void ChannelTable::setLive(std::span<const ChannelReading> readings) {
    model_->setLive(readings);
}

void ChannelTable::resetExtremes() {
    model_->resetExtremes();
}

std::vector<int> ChannelTable::markedRows() const {
    std::set<int> rows;
    for (const QItemSelectionRange& range : selectionModel()->selection()) {
        for (int row = range.top(); row <= range.bottom(); ++row) {
            rows.insert(row);
        }
    }
    return {rows.begin(), rows.end()};
}

std::vector<int> ChannelTable::allRows() const {
    std::vector<int> rows(static_cast<size_t>(model_->rowCount()));
    for (size_t i = 0; i < rows.size(); ++i) {
        rows[i] = static_cast<int>(i);
    }
    return rows;
}

void ChannelTable::selectAllChannels() {
    if (!locked_) {
        model_->setActive(allRows(), true);
    }
}

void ChannelTable::invertSelection() {
    if (!locked_) {
        model_->invertActive();
    }
}

void ChannelTable::setGain(int32_t gain) {
    if (locked_) {
        return;
    }
    const std::vector<int> rows = markedRows();
    model_->setGain(rows.empty() ? allRows() : rows, gain);
}

/// All marked rows become the same: on, unless all of them are on already.
void ChannelTable::toggleMarked() {
    const std::vector<int> rows = markedRows();
    const bool allOn = std::all_of(rows.begin(), rows.end(), [this](int row) { return model_->channel(row).active; });
    model_->setActive(rows, !allOn);
}

/// Digits typed one after the other are a gain; false when no gain of the board begins so.
bool ChannelTable::digitTyped(const QString& digit) {
    const qint64 now = QDateTime::currentMSecsSinceEpoch();
    const QString joined = now - typedAt_ < kDigitPause ? typedGain_ + digit : digit;
    typedAt_ = now;
    for (const QString& text : {joined, digit}) {
        const auto& known = gains();
        auto found =
            std::find_if(known.begin(), known.end(), [&text](int32_t gain) { return QString::number(gain) == text; });
        if (found == known.end()) {
            found = std::find_if(known.begin(), known.end(),
                                 [&text](int32_t gain) { return QString::number(gain).startsWith(text); });
        }
        if (found != known.end()) {
            typedGain_ = text;
            setGain(*found);
            return true;
        }
    }
    typedGain_.clear();
    return false;
}

void ChannelTable::keyPressEvent(QKeyEvent* event) {
    if (event->matches(QKeySequence::SelectAll)) {
        selectAll();
    } else if (locked_ || !changedByKey(*event)) {
        QTableView::keyPressEvent(event);
    }
}

/// False when the key is none of those that change channels.
bool ChannelTable::changedByKey(const QKeyEvent& event) {
    if (event.key() == Qt::Key_I && event.modifiers() == Qt::ControlModifier) {
        invertSelection();
        return true;
    }
    if ((event.modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier)) != 0) {
        return false;
    }
    const QString typed = event.text();
    if (event.key() == Qt::Key_Space) {
        toggleMarked();
    } else if (typed == QLatin1String("+") || typed == QLatin1String("-")) {
        model_->stepGain(markedRows(), typed == QLatin1String("+") ? 1 : -1);
    } else if (typed.size() == 1 && typed[0].isDigit()) {
        digitTyped(typed);
    } else if (event.key() == Qt::Key_Return || event.key() == Qt::Key_Enter || event.key() == Qt::Key_F2) {
        return openedByKey();
    } else {
        return false;
    }
    return true;
}

/// False for cells that are edited in their place.
bool ChannelTable::openedByKey() {
    const QModelIndex cell = currentIndex();
    if (cell.column() == ChannelModel::Color) {
        chooseColor(cell.row());
    } else if (cell.column() == ChannelModel::Scale) {
        askScale(cell.row());
    } else {
        return false;
    }
    return true;
}

void ChannelTable::contextMenuEvent(QContextMenuEvent* event) {
    QMenu menu(this);
    menu.setObjectName(QStringLiteral("ChannelMenu"));
    QAction* all = menu.addAction(uiText(TextId::SelectAll), this, &ChannelTable::selectAllChannels);
    QAction* invert = menu.addAction(uiText(TextId::InvertSelection), this, &ChannelTable::invertSelection);
    invert->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_I));
    all->setEnabled(!locked_);
    invert->setEnabled(!locked_);
    QMenu* gainMenu = menu.addMenu(uiText(TextId::SameGain));
    gainMenu->setEnabled(!locked_);
    for (const int32_t gain : gains()) {
        gainMenu->addAction(QString::number(gain), this, [this, gain] { setGain(gain); });
    }
    menu.exec(event->globalPos());
}

void ChannelTable::chooseColor(int row) {
    if (locked_) {
        return;
    }
    QMenu menu(this);
    menu.setObjectName(QStringLiteral("ColorMenu"));
    const int size = fontMetrics().height();
    std::vector<QColor> colors;
    std::ranges::transform(channelPalette(), std::back_inserter(colors), fromBgr);
    colors.insert(colors.end(), std::begin(kColors), std::end(kColors));
    for (const QColor& color : colors) {
        QAction* action = menu.addAction(colorIcon(color, size), color.name().toUpper());
        if (toBgr(color) == model_->channel(row).color) {
            menu.setActiveAction(action);
        }
        connect(action, &QAction::triggered, this, [this, row, color] { model_->setColor(row, toBgr(color)); });
    }
    const QRect cell = visualRect(model_->index(row, ChannelModel::Color));
    menu.exec(viewport()->mapToGlobal(cell.bottomLeft()));
}

/// Of all marked rows, when this is one of them.
void ChannelTable::askScale(int row) {
    if (locked_) {
        return;
    }
    std::vector<int> rows = markedRows();
    if (std::find(rows.begin(), rows.end(), row) == rows.end()) {
        rows = {row};
    }
    auto* const dialog = new ScaleDialog(row, model_->channel(row).label, this);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    connect(dialog, &ScaleDialog::chosen, model_,
            [this, rows](double factor, double offset) { model_->setScale(rows, factor, offset); });
    dialog->open();
}

/// The widths come from captions and from the widest figures, so that nothing moves while the readings change.
int ChannelTable::fittingWidth(int column) const {
    const int margin = 2 * style()->pixelMetric(QStyle::PM_FocusFrameHMargin, nullptr, this) + 6;
    const int caption = horizontalHeader()->fontMetrics().horizontalAdvance(
        model_->headerData(column, Qt::Horizontal, Qt::DisplayRole).toString());
    return std::max(caption, fontMetrics().horizontalAdvance(model_->widestText(column))) + margin;
}

void ChannelTable::fitColumns() {
    for (int column = 0; column < model_->columnCount(); ++column) {
        setColumnWidth(column, fittingWidth(column));
    }
    verticalHeader()->setDefaultSectionSize(fontMetrics().height() + 6);
    useWidth();
    updateGeometry();
}

/// What the columns leave of the table's width goes to the names, or to the ranges while there are none.
void ChannelTable::useWidth() {
    const int wide = isColumnHidden(ChannelModel::Name) ? ChannelModel::Range : ChannelModel::Name;
    const int others = horizontalHeader()->length() - columnWidth(wide);
    setColumnWidth(wide, std::max(fittingWidth(wide), viewport()->width() - others));
}

void ChannelTable::resizeEvent(QResizeEvent* event) {
    QTableView::resizeEvent(event);
    useWidth();
}

QSize ChannelTable::sizeHint() const {
    int width = 2 * frameWidth() + style()->pixelMetric(QStyle::PM_ScrollBarExtent, nullptr, this);
    for (int column = 0; column < model_->columnCount(); ++column) {
        width += isColumnHidden(column) ? 0 : fittingWidth(column);
    }
    return {width, QTableView::sizeHint().height()};
}

int ChannelTable::activeCount() const {
    return model_->activeCount();
}

int ChannelTable::channelCount() const {
    return model_->rowCount();
}

const std::vector<int32_t>& ChannelTable::gains() const {
    return model_->gains();
}

}  // namespace tarno2
