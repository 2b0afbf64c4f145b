#include "ui/critical_error.h"

#include <QMessageBox>

#include "config/logs/console_log.h"
#include "config/logs/debug_log.h"
#include "core/devices/board_selection.h"
#include "language/language_table.h"
#include "platform/c_locale.h"
#include "ui/text.h"

namespace tarno2 {

void exitWithCriticalError(int32_t code) {
    DEBUG_LOG("Exit witch critical error");
    const TextId word = boardStatusWord(static_cast<BoardStatus>(code));
    const std::string message =
        word == TextId::StatusReady ? formatText(text(TextId::UnrecognizedError).c_str(), code) : text(word);
    if (consoleLog().isOpen()) {
        consoleLog().log("%s", message.c_str());
    } else {
        QMessageBox::critical(nullptr, uiText(TextId::ProgramName), fromCodePage(message));
    }
}

}  // namespace tarno2
