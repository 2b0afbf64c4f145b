#include "ui/recording_stack.h"

#include <QScopedValueRollback>
#include <algorithm>
#include <memory>
#include <utility>

#include "ui/text.h"

namespace tarno2 {

namespace {

SharedPart shifted(const SharedPart& part, const FrameLine& line) {
    SharedPart result{line.of(part.edges), line.of(part.origin), part.clock, {}};
    std::ranges::transform(part.cursors, result.cursors.begin(), [&](double frame) { return line.of(frame); });
    return result;
}

}  // namespace

RecordingStack::RecordingStack(ProgramSettings& settings, ISCOPERA* scoper, QWidget* parent)
    : QSplitter(Qt::Vertical, parent), settings_(settings), first_(new T_ShowForm(settings, scoper, this)) {
    setChildrenCollapsible(false);
    addWidget(first_);
    connect(first_, &T_ShowForm::changed, this, [this] { share(*first_); });
    first_->setPictures([this] { return pictures(); });
    connect(first_, &T_ShowForm::signalLeft, this, &RecordingStack::clear);
}

// Those below know the first one.
RecordingStack::~RecordingStack() {
    clear();
    delete first_;
}

bool RecordingStack::add(const std::string& dataFile) {
    if (first_->shownRecording() == nullptr) {
        emit message(uiText(TextId::CompareNotRecords));
        return false;
    }
    if (static_cast<int>(rows_.size()) + 1 >= kMost) {
        emit message(uiText(TextId::CompareFull, {QString::number(kMost)}));
        return false;
    }
    auto row = std::make_unique<ComparedRecording>(settings_, *first_, nullptr);
    connect(row.get(), &ComparedRecording::message, this, &RecordingStack::message);
    if (!row->open(dataFile)) {
        return false;
    }
    ComparedRecording* added = row.release();
    addWidget(added);
    rows_.push_back(added);
    connect(added, &ComparedRecording::removed, this, [this, added] { remove(*added); });
    connect(added, &ComparedRecording::aligned, this, [this] {
        setReaches();
        first_->fitTime();
    });
    connect(added->view(), &T_ShowForm::changed, this, [this, added] { share(*added->view()); });
    connect(added->view(), &T_ShowForm::savePartWanted, this, &RecordingStack::savePartWanted);
    const bool whole = first_->showsWhole();
    setReaches();
    if (whole) {
        first_->fitTime();
    }
    share(*first_);
    return true;
}

void RecordingStack::retranslate() {
    first_->retranslate();
    std::ranges::for_each(rows_, &ComparedRecording::retranslate);
}

void RecordingStack::settingsChanged() {
    const QScopedValueRollback sharing(sharing_, true);
    first_->settingsChanged();
    for (ComparedRecording* row : rows_) {
        row->view()->settingsChanged();
    }
}

void RecordingStack::clear() {
    for (const ComparedRecording* row : std::exchange(rows_, {})) {
        delete row;
    }
    first_->setReach(std::nullopt);
}

std::vector<ViewPicture> RecordingStack::pictures() const {
    std::vector<ViewPicture> all{first_->picture()};
    for (ComparedRecording* row : rows_) {
        if (!row->isHidden()) {
            all.push_back(row->view()->picture());
        }
    }
    return all;
}

// It is the row's own button that asks for it.
void RecordingStack::remove(ComparedRecording& row) {
    std::erase(rows_, &row);
    row.hide();
    row.deleteLater();
    setReaches();
    first_->FormResize();
    share(*first_);
}

// From the first frame of any of them to the last.
void RecordingStack::setReaches() {
    PictureEdges all{0.0, static_cast<double>(first_->frameCount())};
    for (ComparedRecording* row : rows_) {
        const PictureEdges own =
            row->line().inverse().of(PictureEdges{0.0, static_cast<double>(row->view()->frameCount())});
        all = {std::min(all.low, own.low), std::max(all.high, own.high)};
    }
    first_->setReach(rows_.empty() ? std::nullopt : std::optional(all));
    for (ComparedRecording* row : rows_) {
        row->view()->setReach(row->line().of(all));
    }
}

void RecordingStack::share(const T_ShowForm& from) {
    if (sharing_ || rows_.empty()) {
        return;
    }
    const QScopedValueRollback sharing(sharing_, true);
    const bool shown = first_->shownRecording() != nullptr;
    for (ComparedRecording* row : rows_) {
        row->setVisible(shown);
    }
    if (!shown) {
        return;
    }
    const auto row = std::ranges::find(rows_, &from, &ComparedRecording::view);
    SharedPart part = from.sharedPart();
    if (row != rows_.end()) {
        part = shifted(part, (*row)->line().inverse());
        part.origin = 0.0;
        first_->setSharedPart(part);
    }
    for (ComparedRecording* other : rows_) {
        if (other->view() != &from) {
            other->view()->setSharedPart(shifted(part, other->line()));
        }
    }
}

}  // namespace tarno2
