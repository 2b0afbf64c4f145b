// What is told after a recording, and what can be done with it there.

#include <QApplication>
#include <QDesktopServices>
#include <QDockWidget>
#include <QUrl>

#include "config/files/figure_text.h"
#include "core/recording/recording_need.h"
#include "language/language_table.h"
#include "platform/paths.h"
#include "ui/desktop_notice.h"
#include "ui/main_form.h"
#include "ui/message_bar.h"
#include "ui/save_as_text_form.h"
#include "ui/show_form.h"
#include "ui/state_strip.h"
#include "ui/text.h"

namespace tarno2 {

void T_MainForm::connectEnd() {
    connect(messages_, &MessageBar::openAsked, this, [this] {
        const std::string file = recorded_;
        showRecording(file);
    });
    connect(messages_, &MessageBar::folderAsked, this, [this] {
        guarded("ShowInFolder", [this] {
            const QString folder = fromFileName(parentFolder(recorded_));
            QDesktopServices::openUrl(QUrl::fromLocalFile(folder));
        });
    });
    connect(messages_, &MessageBar::textAsked, this,
            [this] { guarded("SaveRecordedAsText", [this] { saveAsText(recorded_, {}); }); });
}

void T_MainForm::showEnd(const RecordingResult& result, const RunEnd& end) {
    using Kind = MessageList::Kind;
    if (end.message && end.kind == MessageKind::Information) {
        messages_->add(Kind::Information, uiText(*end.message));
    }
    // In a cycle the next one runs already.
    if (!control().running() || result.fileName == host_.watch().facts().file) {
        strip_->setLosses(result.losses.size());
    }
    if (result.monitored) {
        messages_->add(Kind::Information, uiText(TextId::MonitoringEnded));
        return;
    }
    const QString frames = fromCodePage(formatCount(host_.watch().frames(result.bytes)));
    const QString summary = end.summary == TextId::RecordingEnded
                                ? uiText(end.summary, {frames, QString::number(result.files)})
                                : uiText(end.summary);
    messages_->add(Kind::Information, summary);
    if (result.bytes > 0 && !result.fileName.empty() && !displayGone_) {
        recorded_ = result.fileName;
        messages_->showEnd(endFacts(result));
    }
    notice(end.state == RunState::Error && end.message ? fromMessage(text(*end.message)) : summary);
}

// "engine.dat: 62 000 000 frames, 12.5 s, 1.25 GB, losses: 0"; seconds of the signal, not of the clock.
QString T_MainForm::endFacts(const RecordingResult& result) {
    const RecordingNeed need = recordingNeed(host_.settings(), selection().driver().facts(), findings_.disk);
    const double seconds = need.known() ? static_cast<double>(result.bytes) / need.bytesPerSecond
                                        : static_cast<double>(host_.watch().figures().elapsedSeconds);
    QString facts =
        uiText(TextId::EndFacts, {fromFileName(fileNameOf(result.fileName)),
                                  fromCodePage(formatCount(host_.watch().frames(result.bytes))),
                                  QString::number(seconds, 'f', 3), fromCodePage(formatSize(result.bytes))});
    if (host_.watch().facts().conditions) {
        facts += uiText(TextId::EndEvents, {fromCodePage(formatCount(result.events))});
    }
    return facts + uiText(TextId::EndLosses, {QString::number(result.losses.size())});
}

// Who looks at the window sees it there.
void T_MainForm::notice(const QString& message) {
    if (!host_.consoleMode() && !displayGone_ && !host_.ending() && QApplication::activeWindow() == nullptr) {
        tellDesktop(uiText(TextId::ProgramName), message);
    }
}

}  // namespace tarno2
