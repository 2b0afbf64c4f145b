#include "ui/panels/mark_line_row.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <algorithm>
#include <array>

#include "ui/panels/panel_layout.h"
#include "ui/text.h"

namespace tarno2 {

namespace {

constexpr std::array kEdges = {TextId::MarkRising, TextId::MarkFalling, TextId::MarkBothEdges};

}  // namespace

MarkLineRow::MarkLineRow(QWidget* parent)
    : QWidget(parent),
      lineBox_(makeList(this, QStringLiteral("MarkLineBox"))),
      edgeBox_(makeList(this, QStringLiteral("MarkEdgeBox"))) {
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->addWidget(lineBox_, 1);
    row->addWidget(edgeBox_, 1);
    lineBox_->addItem(QString());
    for (size_t i = 0; i < kEdges.size(); ++i) {
        edgeBox_->addItem(QString());
    }
    connect(lineBox_, &QComboBox::activated, this, [this](int index) {
        line_ = index - 1;
        showLine();
        emit changed();
    });
    connect(edgeBox_, &QComboBox::activated, this, &MarkLineRow::changed);
    retranslate();
    showLine();
}

void MarkLineRow::setWish(int32_t line, int32_t edge) {
    line_ = line;
    edgeBox_->setCurrentIndex(std::clamp(edge, 0, static_cast<int32_t>(kEdges.size()) - 1));
    showLine();
}

int32_t MarkLineRow::edge() const {
    return edgeBox_->currentIndex();
}

void MarkLineRow::setLines(uint32_t count) {
    while (lineBox_->count() > static_cast<int>(count) + 1) {
        lineBox_->removeItem(lineBox_->count() - 1);
    }
    while (lineBox_->count() < static_cast<int>(count) + 1) {
        lineBox_->addItem(uiText(TextId::MarkLineNumber, {QString::number(lineBox_->count() - 1)}));
    }
    showLine();
}

void MarkLineRow::showLine() {
    const bool there = line_ >= 0 && line_ + 1 < lineBox_->count();
    lineBox_->setCurrentIndex(there ? line_ + 1 : 0);
    lineBox_->setEnabled(lineBox_->count() > 1);
    edgeBox_->setEnabled(there);
}

void MarkLineRow::retranslate() {
    for (QComboBox* box : {lineBox_, edgeBox_}) {
        box->setAccessibleName(uiText(TextId::MarkLineLabel));
    }
    lineBox_->setItemText(0, uiText(TextId::MarkNoLine));
    for (int i = 1; i < lineBox_->count(); ++i) {
        lineBox_->setItemText(i, uiText(TextId::MarkLineNumber, {QString::number(i - 1)}));
    }
    for (size_t i = 0; i < kEdges.size(); ++i) {
        edgeBox_->setItemText(static_cast<int>(i), uiText(kEdges[i]));
    }
    lineBox_->setToolTip(uiText(TextId::MarkLineHint));
}

}  // namespace tarno2
