#include "core/recording/stop_code.h"

#include "language/language_table.h"
#include "platform/c_locale.h"

namespace tarno2 {

std::string GetDataReport::text() const {
    return formatText(tarno2::text(TextId::GetDataReport).c_str(), mode, static_cast<int>(size),
                      static_cast<int>(offset), buffer, bufferStart, static_cast<int>(bufferSize), partNumber);
}

const char* stopText(const RecordingResult& result) {
    switch (result.code) {
        case StopCode::Error:
            switch (result.detail) {
                case ErrorDetail::Overflow:
                    return "";
                case ErrorDetail::Init:
                    return "Stop - By init error";
                case ErrorDetail::Start:
                    return "Stop - By start error";
                case ErrorDetail::Memory:
                    return "Stop - By memory error";
                case ErrorDetail::Unknown:
                    return "Stop - By unknown error";
            }
            return "";
        case StopCode::User:
            return "Stop - By user";
        case StopCode::StopMeasuring:
            return "Stop - By stop measuring";
        case StopCode::WriteError:
            return "Stop - By error";
        case StopCode::Unplug:
            return "Stop - By device unplug";
        case StopCode::NoData:
            return "Stop - By non data";
        case StopCode::AnalyzeError:
            return "Stop - By analyze error";
        case StopCode::TransferError:
            return "Stop - By get error";
        case StopCode::Running:
        case StopCode::Incompatible:
            return "";
    }
    return "";
}

std::string stopMessage(const RecordingResult& result) {
    switch (result.code) {
        case StopCode::Error:
            switch (result.detail) {
                case ErrorDetail::Overflow:
                    return text(TextId::FifoOverflow);
                case ErrorDetail::Init:
                    return text(TextId::InitError);
                case ErrorDetail::Start:
                    return text(TextId::StartError);
                case ErrorDetail::Memory:
                    return text(TextId::NotEnoughMemory);
                case ErrorDetail::Unknown:
                    return text(TextId::UnknownError);
            }
            return {};
        case StopCode::NoData:
            return text(TextId::NoData);
        case StopCode::AnalyzeError:
            return text(TextId::AnalyzeError);
        case StopCode::TransferError:
            return text(TextId::GetDataError);
        case StopCode::Incompatible:
            return text(TextId::IncompatibleDriver);
        case StopCode::StopMeasuring:
            return result.diskNearlyFull ? text(TextId::DiskMarginReached) : std::string();
        case StopCode::WriteError:
            return text(TextId::DataWriteError);
        case StopCode::Unplug:
            return text(TextId::BoardUnplugged);
        case StopCode::Running:
        case StopCode::User:
            return {};
    }
    return {};
}

}  // namespace tarno2
