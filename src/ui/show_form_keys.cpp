// The commands of the signal view in menus, and their keys.

#include <QAction>
#include <QKeySequence>
#include <QMenu>
#include <QToolBar>

#include "ui/cursor_tools.h"
#include "ui/key_sheet.h"
#include "ui/show_form.h"
#include "ui/text.h"

namespace tarno2 {

void T_ShowForm::CursorClick() {
    if (cursorTools_) {
        cursorTools_->nextCursor();
    }
}

void T_ShowForm::SnapClick() {
    if (cursorTools_) {
        cursorTools_->snap();
    }
}

// Those of the bar first, as they stand there; then what else has a key, and the rest of the picture's own menu.
void T_ShowForm::fillMenu(QMenu& menu) {
    for (const QList<QAction*>& actions : {bar_->actions(), this->actions(), menu_->actions()}) {
        bool first = true;
        for (QAction* action : actions) {
            // The list of marks is in the menu already.
            if (menu.actions().contains(action) || action == marksAction_ || action->isSeparator()) {
                continue;
            }
            if (first) {
                // Of the view, as the actions are, so that it goes with them.
                auto* line = new QAction(this);
                line->setSeparator(true);
                menu.addAction(line);
                first = false;
            }
            menu.addAction(action);
        }
    }
}

// From the actions themselves; arrows and pages mean something else in fields and lists, and are no actions.
void T_ShowForm::KeysClick() {
    guarded("KeysClick", [this] {
        const auto keys = [](const QKeySequence& first, const QKeySequence& second) {
            return first.toString(QKeySequence::NativeText) + QStringLiteral(", ") +
                   second.toString(QKeySequence::NativeText);
        };
        KeySheet::Group view{uiText(TextId::SheetOfSignal), {}};
        view.add(actions());
        view.rows.emplace_back(keys(Qt::Key_Left, Qt::Key_Right), uiText(TextId::MoveByKeys));
        view.rows.emplace_back(keys(Qt::Key_PageUp, Qt::Key_PageDown), uiText(TextId::PageByKeys));
        KeySheet::Group program{uiText(TextId::SheetOfProgram), {}};
        for (const QWidget* above = parentWidget(); above != nullptr; above = above->parentWidget()) {
            program.add(above->actions());
        }
        auto* sheet = new KeySheet(titleText(TextId::ViewKeys), {view, program}, this);
        sheet->setAttribute(Qt::WA_DeleteOnClose);
        sheet->show();
    });
}

}  // namespace tarno2
