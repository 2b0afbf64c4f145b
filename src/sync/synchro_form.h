#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "sync/synchro_settings.h"

namespace tarno2 {

// The form in which a user edits the synchronisation settings: texts as they are typed, choices by number. Here is what
// becomes of them, without a window.

/// A mode that asks for nothing, of every condition and edge.
inline constexpr int32_t kConditionNotUsed = 2;
/// Bits of the digital port go from 0 to this.
inline constexpr int32_t kLastPortBit = 15;

/// A condition on the level of a channel.
struct AnalogConditionForm {
    int32_t mode = kConditionNotUsed;
    std::string channel = "0";
    std::string value = "0";
    int32_t unitTag = 2;  ///< 0 microvolts, 1 millivolts, 2 volts: counts the other way round than the settings' unit
};

/// A condition on a bit of the port.
struct PortConditionForm {
    int32_t mode = kConditionNotUsed;
    std::string bit = "0";
};

/// What the controls hold. Conditions stand in the order start, write, stop.
struct SynchroForm {
    int32_t mode = 0;  ///< 0 off, 1 analysis, 2 synchronisation
    bool analysisOnPort = false;
    std::array<AnalogConditionForm, 3> analog;
    std::array<PortConditionForm, 3> port;
    bool synchroOnPort = false;
    AnalogConditionForm synchroAnalog;
    PortConditionForm synchroPort;
    std::string buffer = "1000";   ///< frames
    std::string prehistory = "0";  ///< frames
    bool stopAfterTrigged = false;
};

/// A field that is typed.
enum class SynchroField {
    None,
    StartChannel,
    StartValue,
    WriteChannel,
    WriteValue,
    StopChannel,
    StopValue,
    PortStartBit,
    PortWriteBit,
    PortStopBit,
    BufferSize,
    PrehistorySize,
    SynchroChannel,
    SynchroValue,
    SynchroPortBit
};

/// How the reading of a form ended.
struct SynchroReading {
    SynchroField mistake = SynchroField::None;  ///< the field whose text is no number; what comes after was not read
    bool nothingAsked = false;                  ///< all conditions of the chosen source are "not used"
};

/// Takes the form over. Fields are stored one by one, so those before a mistake are; the working mode is set last. Only
/// the chosen mode and source are looked at.
[[nodiscard]] SynchroReading readSynchroForm(const SynchroForm& form, SynchroSettings& settings, SynchroSizes& sizes);

/// Lets every frame through.
void switchSynchronisationOff(SynchroSettings& settings);

/// Writes the settings into a form. A source that the settings leave open stays as the form has it.
void fillSynchroForm(const SynchroSettings& settings, const SynchroSizes& sizes, SynchroForm& form);

/// The whole text as a number, blanks around it aside. A real may have a point or a comma and is finite.
[[nodiscard]] std::optional<int32_t> typedInteger(std::string_view text);
[[nodiscard]] std::optional<double> typedReal(std::string_view text);

// The bars of a record's sizes. Sizes are frames; the prehistory's bar is a percentage of the buffer.

struct BarRange {
    int32_t minimum = 0;
    int32_t maximum = 0;

    [[nodiscard]] int32_t clamped(int64_t position) const;
};

/// Range of the buffer's bar for so many active channels.
[[nodiscard]] BarRange bufferBarRange(size_t channels);

/// What becomes of a bar and of its edit when Enter is pressed in the edit.
struct TypedSize {
    int32_t bar = 0;
    std::optional<int32_t> edit;  ///< the number that replaces what was typed; nothing: it stays
};

[[nodiscard]] TypedSize bufferTyped(std::string_view text, BarRange bar);
/// `percentage`: where the bar is; it stays there when the text is no number.
[[nodiscard]] TypedSize prehistoryTyped(std::string_view text, int32_t buffer, int32_t percentage);
[[nodiscard]] int32_t prehistoryFrames(int32_t buffer, int32_t percentage);

}  // namespace tarno2
