#include "core/storage/loss.h"

#include "config/files/figure_text.h"
#include "config/files/recording_name.h"
#include "config/logs/debug_log.h"
#include "language/language_table.h"
#include "platform/c_locale.h"
#include "platform/file.h"

namespace tarno2 {

namespace {

TextId causeText(LossCause cause) {
    switch (cause) {
        case LossCause::Overwritten:
            return TextId::RingOverwritten;
        case LossCause::Transfer:
            return TextId::GetDataError;
        case LossCause::Board:
            return TextId::BoardLostSamples;
        case LossCause::Disk:
            break;
    }
    return TextId::DataWriteError;
}

}  // namespace

const char* lossCauseName(LossCause cause) {
    switch (cause) {
        case LossCause::Overwritten:
            return "overwritten";
        case LossCause::Transfer:
            return "transfer";
        case LossCause::Board:
            return "board";
        case LossCause::Disk:
            break;
    }
    return "disk";
}

std::string lossText(const Loss& loss) {
    return formatText(text(TextId::LossAtSample).c_str(), formatCount(loss.sample).c_str(),
                      text(causeText(loss.cause)).c_str());
}

bool writeLossLedger(const std::string& dataName, std::span<const Loss> losses) {
    std::string contents;
    for (const Loss& loss : losses) {
        const std::string line =
            formatText("sample = %llu, count = %llu, cause = %s", static_cast<unsigned long long>(loss.sample),
                       static_cast<unsigned long long>(loss.count), lossCauseName(loss.cause));
        DEBUG_LOG("!!!!! Data lost: %s", line.c_str());
        contents += line + "\r\n";
    }
    const std::string name = RecordingName(dataName).losses();
    File file;
    size_t done = 0;
    if (!file.openPlain(name, FileMode::CreateNew, FileAccess::ReadWriteRemove, FileShare::ReadWrite).ok()) {
        return false;
    }
    const bool written = file.write(contents.data(), contents.size(), done).ok() && file.flush().ok();
    if (done == 0) {
        static_cast<void>(file.removeNamed(name));  // an empty list would say that nothing was lost
    }
    return file.close().ok() && written;
}

}  // namespace tarno2
