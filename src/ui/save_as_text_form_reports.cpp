#include "records/record_description.h"
#include "ui/save_as_text_form.h"
#include "ui/text.h"

namespace tarno2 {

namespace {

QString noteText(const ExportNote& note) {
    const QString detail = QString::fromStdString(note.detail);
    switch (note.kind) {
        case ExportNote::FullScale:
            return uiText(TextId::ExportNoteScale, {detail});
        case ExportNote::LinesLeftOut:
            return uiText(TextId::ExportNoteLines);
        case ExportNote::LowBitsLeftOut:
            return uiText(TextId::ExportNoteLowBits, {detail});
        case ExportNote::RateRounded:
            return uiText(TextId::ExportNoteRate, {detail});
        case ExportNote::LastRecordPadded:
            return uiText(TextId::ExportNotePadded, {detail});
        case ExportNote::NamesReplaced:
            return uiText(TextId::ExportNoteNames);
        case ExportNote::LimitsRounded:
            return uiText(TextId::ExportNoteLimits);
        case ExportNote::LongHeader:
            return uiText(TextId::ExportNoteHeader, {detail});
        case ExportNote::PassportLeftOut:
            return uiText(TextId::ExportNotePassport);
    }
    return {};
}

}  // namespace

QString T_SaveAsTextForm::wishText(const ExportSurroundings& around) {
    const QString subject = QString::fromStdString(around.wishSubject);
    switch (around.wishProblem) {
        case WishProblem::Channels:
            return uiText(TextId::ExportNoChannel, {subject});
        case WishProblem::From:
        case WishProblem::To:
            return uiText(TextId::ExportPlaceWrong, {subject});
        default:
            return uiText(TextId::ExportNothingChosen);
    }
}

QString T_SaveAsTextForm::finishedText(const ExportOutcome& outcome) const {
    const ConversionResult& result = outcome.result;
    QStringList lines{uiText(TextId::ExportFinished)};
    if (result.leftoverBytes != 0) {
        lines << uiText(TextId::LastFrameIncomplete, {fromFileName(source_.dataFile)});
    }
    if (!outcome.around.unitsProblem.empty()) {
        lines << uiText(TextId::ExportUnitsUnknown);
    }
    for (const ExportNote& note : outcome.notes) {
        lines << noteText(note);
    }
    if (outcome.around.packetRateUnknown) {
        lines << uiText(TextId::PacketFrequencyUnknown);
    }
    if (outcome.around.timeRunsOn) {
        lines << uiText(TextId::TriggeredTimeRunsOn);
    }
    return lines.join(QStringLiteral("\n\n"));
}

QString T_SaveAsTextForm::failureText(const ExportOutcome& outcome) const {
    const ConversionResult& result = outcome.result;
    const QString file = fromFileName(result.subject);
    const QString why = QString::fromLocal8Bit(result.error.text());
    switch (result.status) {
        case ConversionResult::BadInput:
            if (described_.readable) {
                return uiText(TextId::DescriptionKeyWrong, {fromFileName(source_.dataFile), file});
            }
            return described_.error.notFound() ? uiText(TextId::DescriptionMissing, {fromFileName(source_.dataFile)})
                                               : uiText(TextId::RecordingNotRead,
                                                        {fromFileName(RecordDescription::fileNameFor(source_.dataFile)),
                                                         QString::fromLocal8Bit(described_.error.text())});
        case ConversionResult::CannotRead:
            return uiText(TextId::RecordingNotRead, {file, why});
        case ConversionResult::CannotCreate:
        case ConversionResult::CannotWrite:
            return uiText(TextId::FileNotWritten, {file, why});
        case ConversionResult::OutputIsInput:
            return uiText(TextId::ExportOntoItself);
        case ConversionResult::NothingChosen:
            return uiText(TextId::ExportNothingChosen);
        case ConversionResult::CodesTooWide:
            return uiText(TextId::ExportCodesTooWide, {file});
        case ConversionResult::TooManyChannels:
            return uiText(TextId::ExportTooManyChannels, {file});
        case ConversionResult::RateImpossible:
            return uiText(TextId::ExportRateImpossible);
        case ConversionResult::NoRecordingName:
            return uiText(TextId::ExportNoRecordingName);
        case ConversionResult::NameTaken:
            return uiText(TextId::ExportNameTaken, {file});
        case ConversionResult::RecordsTorn:
            return uiText(TextId::ExportRecordsTorn);
        case ConversionResult::BadName:
            return uiText(TextId::FileNameError);
        default:
            return uiText(TextId::Attention, {QString::fromStdString(describe(result))});
    }
}

}  // namespace tarno2
