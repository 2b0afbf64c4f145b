#include "ui/panels/board_need.h"

#include <QBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <algorithm>

#include "core/devices/board_selection.h"
#include "language/language_table.h"
#include "ui/panels/panel_layout.h"
#include "ui/text.h"

namespace tarno2 {

namespace {

BoardNeed pathNeed(const DriverSetting& setting, const QString& driver) {
    const bool file = setting.type == DriverSetting::Type::File;
    const TextId words = !setting.value.empty() ? TextId::NeedsOtherPath
                         : file                 ? TextId::NeedsFile
                                                : TextId::NeedsFolder;
    return {BoardNeed::Way::Path, uiText(words, {driver}), uiText(file ? TextId::ChooseFile : TextId::ChooseFolder)};
}

}  // namespace

BoardNeed boardNeed(BoardSelection& selection) {
    if (!selection.driver().loaded() || selection.driver().startAllowed() || selection.searching()) {
        return {};
    }
    const QString driver = fromFileName(selection.driverName());
    const auto& settings = selection.settings();
    const auto first = std::ranges::find_if(settings, [](const DriverSetting& setting) { return !setting.fixed; });
    if (first != settings.end() && selection.boards().empty()) {
        if (first->type == DriverSetting::Type::File || first->type == DriverSetting::Type::Folder) {
            return pathNeed(*first, driver);
        }
        if (first->value.empty()) {
            const bool russian = languageTable().selected() == kLanguageRussian;
            const QString caption = QString::fromStdString(russian ? first->captionRussian : first->caption);
            return {BoardNeed::Way::Setting, uiText(TextId::NeedsSetting, {driver, caption}),
                    uiText(TextId::EnterSetting)};
        }
    }
    return {BoardNeed::Way::Search, uiText(TextId::NeedsBoard, {driver}), uiText(TextId::SearchAgain)};
}

NeedLine::NeedLine(const QString& name, bool narrow, QWidget* parent)
    : QWidget(parent), label_(makeText(this, name + QStringLiteral("Label"))), button_(new QPushButton(this)) {
    button_->setObjectName(name + QStringLiteral("Button"));
    auto* row = new QBoxLayout(narrow ? QBoxLayout::TopToBottom : QBoxLayout::LeftToRight, this);
    row->setContentsMargins(0, 0, 0, 0);
    row->addWidget(label_, 1);
    row->addWidget(button_);
    connect(button_, &QPushButton::clicked, this, &NeedLine::asked);
    hide();
}

void NeedLine::setNeed(const BoardNeed& need) {
    showText(label_, need.text, true);
    button_->setText(need.button);
    setVisible(need.way != BoardNeed::Way::None);
}

}  // namespace tarno2
