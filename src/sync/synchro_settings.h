#pragma once

#include <cstdint>

namespace tarno2 {

/// Values of `SynchroAnalyzeMode`; any other is off.
inline constexpr int32_t kModeAnalysis = 1;
inline constexpr int32_t kModeSynchronisation = 2;

/// What chooses the frames that reach the file. A condition's mode 2 means "not used", and its enabled flag says the
/// same. Channels are positions in the frame, from 0. Thresholds are kept as typed, in their unit (0 volts,
/// 1 millivolts, 2 microvolts); their codes are computed when a recording starts. One block serves the program: it is
/// changed on the window's thread between recordings and read on the acquisition thread during one.
struct SynchroSettings {
    int32_t SynchroAnalyzeMode = 0;  ///< 0 off, 1 analysis, 2 synchronisation

    // Analysis by an analog channel: modes 0 above, 1 below, 2 not used.
    bool startAnalogEnabled = false;
    int32_t AnalyzeAnalogStartMode = 2;
    int32_t AnalyzeAnalogStartChannel = 0;
    double AnalyzeAnalogStartValue = 0.0;
    int32_t AnalyzeAnalogStartUnit = 0;
    int32_t startCode = 0;
    bool writeAnalogEnabled = false;
    int32_t AnalyzeAnalogWriteMode = 2;
    int32_t AnalyzeAnalogWriteChannel = 0;
    double AnalyzeAnalogWriteValue = 0.0;
    int32_t AnalyzeAnalogWriteUnit = 0;
    int32_t writeCode = 0;
    bool stopAnalogEnabled = false;
    int32_t AnalyzeAnalogStopMode = 2;
    int32_t AnalyzeAnalogStopChannel = 0;
    double AnalyzeAnalogStopValue = 0.0;
    int32_t AnalyzeAnalogStopUnit = 0;
    int32_t stopCode = 0;
    bool analysisOnAnalog = true;

    // Analysis by bits of the digital port, 0 to 15: modes 0 when 1, 1 when 0, 2 not used.
    bool portStartEnabled = false;
    int32_t AnalyzePortStartMode = 2;
    int32_t AnalyzePortStartBit = 0;
    bool portWriteEnabled = false;
    int32_t AnalyzePortWriteMode = 2;
    int32_t AnalyzePortWriteBit = 0;
    bool portStopEnabled = false;
    int32_t AnalyzePortStopMode = 2;
    int32_t AnalyzePortStopBit = 0;
    bool analysisOnPort = false;

    // Synchronisation by an edge: modes 0 leading (0 to 1), 1 falling (1 to 0), 2 not used.
    bool synchroOnAnalog = true;
    int32_t SynchroAnalogMode = 0;
    int32_t SynchroAnalogChannelNumber = 0;
    double SynchroAnalogValue = 0.0;
    int32_t SynchroAnalogUnit = 0;
    int32_t synchroCode = 0;
    bool synchroOnPort = false;
    int32_t SynchroPortMode = 0;
    int32_t SynchroPortBit = 0;

    bool StopAfterTrigged = false;  ///< stop the recording after the first complete record

    // State of a recording, owned by its acquisition thread.
    bool started = false;  ///< the start condition has been met
    bool stopped = false;  ///< the stop condition has been met
};

/// Sizes of a record of synchronisation, frames. The buffer size that a user sets is the sum of both.
struct SynchroSizes {
    int32_t prehistory = 0;
    int32_t history = 1000;
};

}  // namespace tarno2
