#include "ui/critical_error.h"

#include <QMessageBox>

#include "config/console_log.h"
#include "config/debug_log.h"
#include "core/board_selection.h"
#include "language/language_table.h"
#include "platform/c_locale.h"
#include "ui/text.h"

namespace tarno2 {

void exitWithCriticalError(int32_t code) {
    DEBUG_LOG("Exit witch critical error");
    std::string message;
    switch (static_cast<BoardStatus>(code)) {
        case BoardStatus::DriverError:
            message = text(TextId::StatusDriver);
            break;
        case BoardStatus::Unplugged:
            message = text(TextId::StatusUnplug);
            break;
        case BoardStatus::Error:
            message = text(TextId::StatusError);
            break;
        default:
            message = formatText(text(TextId::UnrecognizedError).c_str(), code);
            break;
    }
    if (consoleLog().isOpen())
        consoleLog().log("%s", message.c_str());
    else
        QMessageBox::critical(nullptr, uiText(TextId::ProgramName), fromCodePage(message));
}

}  // namespace tarno2
