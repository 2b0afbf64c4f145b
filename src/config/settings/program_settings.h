#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "config/settings/recording_wish.h"
#include "records/channel_label.h"

namespace tarno2 {

/// Language of the texts that a user sees; the numbers are those of the settings file.
enum class InterfaceLanguage : int32_t { Russian = 0, English = 1 };

/// Place of a window on the screen, pixels.
struct WindowPlace {
    int32_t left = 100;
    int32_t top = 100;
    int32_t width = 900;
    int32_t height = 600;

    friend bool operator==(const WindowPlace&, const WindowPlace&) = default;
};

/// One row of the channel table.
struct ChannelSettings {
    int32_t color = 0;  ///< 0xBBGGRR
    bool active = false;
    int32_t gain = 1;
    ChannelLabel label;  ///< what the operator calls it
    bool shown = true;   ///< in the signal view
};

/// How the signal view draws one line of the digital port.
struct DigitalLineSettings {
    int32_t zeroLevel = 0;    ///< -1000 (bottom) to 1000 (top of the code range)
    int32_t amplitude = 100;  ///< 0 to 1000, thousandths of the full code range
    int32_t color = 0;        ///< 0xBBGGRR
    friend bool operator==(const DigitalLineSettings&, const DigitalLineSettings&) = default;
};

/// What the conversion of a recording to text was last set to.
struct TextExportSettings {
    int32_t firstColumnMode = 0;    ///< 0 absent, 1 samples, 2 seconds, 3 "HH:MM:SS:ms"
    int32_t dataColumnMode = 0;     ///< 0 ADC codes, 1 volts, 2 the channels' units
    int32_t timePrecision = 6;      ///< decimals; the dialog takes what is above 9 for 9
    int32_t voltagePrecision = 6;   ///< likewise
    int32_t fractionalDivider = 0;  ///< 0 point, 1 comma
    int32_t columnDividerMode = 0;  ///< 0 tab, 1 symbol
    uint8_t columnDivider = ';';
    uint8_t columnDividerCount = 1;  ///< the dialog takes what is above 99 for 99
    int32_t maxLineCount = 0;        ///< lines in a file; 0: all in one
    int32_t marks = 0;               ///< 1: a last column of marks
    int32_t header = 0;              ///< 1: a first line of headings
};

/// Colours that channels have by default, 0xBBGGRR: told apart also by the colour-blind, on light and on dark.
[[nodiscard]] std::span<const int32_t> channelPalette();

/// The whole interactive state that is kept between runs, with its start values.
struct ProgramSettings {
    ProgramSettings();
    /// Channels that have the default colour of an earlier version get that of this one, once.
    void renewColors();

    /// What is asked of the next recording. Its channels come from the rows below, and its end from the stop value.
    RecordingWish wish;
    double stopValue = 10.0;
    int32_t stopPower = 0;  ///< unit of the stop value: 0 s or bytes, 1 min or KiB, 2 h or MiB

    // The board.
    std::vector<double> frequencyList;  ///< frequencies that the user has kept, Hz; in single precision once read
    int32_t drqNumber = 0;
    std::string driverSettings;  ///< what each driver is told; see config/settings/driver_values.h

    // The start.
    bool autoStartOnRun = false;
    bool checkDiskSpeed = true;

    /// Channels of the board: the lists of the channel table are written and read for as many. While no board is known
    /// all are kept.
    int32_t channelCount = kMaximumChannelCount;
    std::array<ChannelSettings, kMaximumChannelCount> channels;

    // The signal view.
    std::string axisFontName = "Arial";
    double axisXValue = 1.0;
    double axisYValue = 1.0;
    int32_t axisFontSize = 8;
    int32_t followToData = 1;    ///< 0 does not follow, 1 recorder, 2 recorder with zeroing
    int32_t axisXUnit = 3;       ///< 0 samples, 1 us, 2 ms, 3 s, 4 min, 5 h
    int32_t axisYMode = -1;      ///< -1 automatic, 0 V, 1 mV, 2 uV, 3 ADC codes, 4 the channels' units
    int32_t showSignalMode = 0;  ///< 0 analog, 1 analog and digital, 2 digital
    static constexpr size_t kDigitalLineCount = kMaximumLineCount;
    std::array<DigitalLineSettings, kDigitalLineCount> digitalLines;
    /// Where the user has zoomed the Y axis to, microvolts, codes or units; taken while the scale is not automatic.
    /// Equal: nowhere.
    double axisYLower = 0.0;
    double axisYUpper = 0.0;
    bool axisYAutoMode = true;
    bool pixelsMode = false;  ///< points instead of lines
    bool viewLegend = false;
    bool viewCursors = false;
    bool cursorsOnSignal = false;   ///< the cursors move with a signal that is followed; else they stay on the screen
    bool hideMeasurements = false;  ///< the table below the signal while the cursors are shown
    bool viewSpectrum = false;
    int32_t spectrumWindow = 0;        ///< 0 Hann, 1 flat top, 2 Blackman-Harris, 3 rectangular
    int32_t spectrumScale = 0;         ///< 0 dBV, 1 dBFS, 2 V, 3 V2/Hz
    int32_t spectrumLength = 0;        ///< samples of a transform: 0 automatic, 1 is 1024, each step four times as long
    bool spectrumSingle = false;       ///< the last block alone instead of the mean of all
    bool spectrumLogarithmic = false;  ///< the frequency axis
    bool spectrumWhole = false;        ///< over the whole picture also while there are cursors
    int32_t spectrumHeight = 0;        ///< of its pane, pixels; 0: as it comes
    int32_t viewLanes = -1;            ///< 0 curves one upon the other, 1 in lanes, -1 in lanes when they are many
    int32_t viewRecords = 0;           ///< so many triggered records over each other; 0: the signal in its course
    std::string recentRecordings;      ///< data files, the newest first, parted by "|"
    int32_t palette = 0;           ///< generation of the default colours that the channels' colours were chosen from
    bool viewClock = false;        ///< the X axis tells the time of day
    bool viewCommonScale = false;  ///< lanes of one unit share their scale

    // The windows.
    bool stayOnTop = false;
    int32_t colorScheme = 0;  ///< 0 as the system, 1 light, 2 dark
    bool extendedChannelMode = false;
    bool showFormVisible = true;
    int32_t showSettingMember = 0;  ///< the open settings panel, 0 to 4; -1: none
    int32_t formVisible = 1;        ///< main window: 0 minimised, 1 normal, 2 maximised
    WindowPlace mainFormPos;
    WindowPlace showFormPos;
    bool hidePanels = false;       ///< the settings are folded to their icons
    int32_t panelsOpen = 0;        ///< those that are open together, a bit each; 0: `showSettingMember` alone
    bool foldOnStart = false;      ///< the settings fold while a recording runs
    bool showMessages = false;     ///< all of them instead of the newest
    bool hideTable = false;        ///< the channel table
    bool showMoreFigures = false;  ///< of the strip
    // Widths and heights as the user has dragged them, pixels; 0: as they come.
    int32_t panelsWidth = 0;
    int32_t messagesHeight = 0;
    int32_t tableWidth = 0;
    InterfaceLanguage language = InterfaceLanguage::English;

    TextExportSettings textExport;
};

}  // namespace tarno2
