#pragma once

#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <tuple>
#include <vector>

#include <tarno2/ISCOPERA.h>

#include "config/settings/program_settings.h"
#include "display/axis_x.h"
#include "display/axis_y.h"
#include "display/convert_for_display.h"
#include "display/screen.h"
#include "ui/shown_signal.h"

namespace tarno2 {

/// What is in the picture from left to right, frames.
struct ShownFrames {
    uint64_t first = 0;   ///< drawn from here
    uint64_t end = 0;     ///< up to, but not including, here
    double low = 0.0;     ///< what stands at the left edge
    double high = 0.0;    ///< at the right edge
    double origin = 0.0;  ///< the frame that the axis counts from
};

/// Draws a shown signal through the plotting library: converts the frames on screen, names and colours the columns, and
/// scales both axes as the settings say. Window thread.
class SignalDrawing {
public:
    /// A curve as it was handed to the picture last, in the order of a display frame.
    struct Column {
        std::string name;
        uint32_t color = 0;
        bool visible = true;
        LinearScale scale;
        int32_t key = 0;  ///< number of the channel, or below 0 of the digital line
        bool operator==(const Column& other) const;
    };

    /// Both outlive it.
    SignalDrawing(ISCOPERA& scoper, const ProgramSettings& settings) : scoper_(scoper), settings_(settings) {}
    ~SignalDrawing();
    SignalDrawing(const SignalDrawing&) = delete;
    SignalDrawing& operator=(const SignalDrawing&) = delete;

    /// Another signal is shown: automatic scales begin anew.
    void reset();
    /// Scales Y anew: volts turn into codes, or the other way round.
    void resetScaleY() { scale_.reset(); }
    /// Draws, or empties the picture when there is nothing. `nowMs`: a clock that never goes back.
    void draw(ShownSignal& signal, const ShownFrames& shown, uint64_t nowMs);
    /// Forgets the frames, which may go now.
    void clear();
    /// Switched off nothing is converted.
    void setEnabled(bool enabled) { converter_.enabled = enabled; }
    /// Takes texts and font anew.
    void retranslate();

    /// The unit that X is shown in: samples when the rate of the signal is not known.
    [[nodiscard]] AxisXUnit unitX(const SignalFormat& format) const;
    [[nodiscard]] const std::vector<Column>& columns() const { return columns_; }
    /// The unit that Y is shown in.
    [[nodiscard]] AxisYUnit unitY() const { return unitY_; }
    /// Its text: of the units of the channels, those that are shown.
    [[nodiscard]] const std::string& unitTextY() const { return unitTextY_; }
    /// Units of Y in a volt where the user gives the scale: what `axisYValue` is in. 1 for codes.
    [[nodiscard]] double userUnitsPerVolt(const SignalFormat& format) const;
    /// The automatic scale has not settled yet: draw again soon.
    [[nodiscard]] bool moving() const;
    /// The user switched a column of the picture on or off.
    void switchColumn(uint32_t column, bool visible);

private:
    [[nodiscard]] bool convert(ShownSignal& signal, SCOPERAFrames& frames);
    [[nodiscard]] std::vector<Column> columnsOf(const ShownSignal& signal) const;
    void setColumns(std::vector<Column> columns);
    [[nodiscard]] AxisYUnit chooseUnitY(const SignalFormat& format) const;
    [[nodiscard]] AxisYUnit userUnitY(const SignalFormat& format) const;
    [[nodiscard]] AxisRange automaticRange(uint64_t nowMs);
    void scaleY(const ShownSignal& signal, uint64_t nowMs);
    [[nodiscard]] AxisRange userRange(const SignalFormat& format) const;
    [[nodiscard]] AxisRange digitalRange(const SignalFormat& format) const;
    [[nodiscard]] std::string channelName(const ShownSignal& signal, size_t column) const;
    [[nodiscard]] std::vector<size_t> shownChannels(const ShownSignal& signal) const;
    void setTexts(const ShownSignal& signal, AxisXUnit unitX);

    ISCOPERA& scoper_;
    const ProgramSettings& settings_;
    Screen screen_;
    DisplayConverter converter_;
    size_t columnCount_ = 0;
    std::vector<int32_t> columnColors_;
    std::vector<Column> columns_;
    std::set<int32_t> hidden_;  ///< keys of the columns that are switched off
    AxisYUnit unitY_ = AxisYUnit::Volts;
    std::string unitTextY_;
    AutomaticScaleY scale_;  ///< volts, or codes, or units
    std::optional<std::tuple<AxisXUnit, AxisYUnit, std::string>> labels_;
};

}  // namespace tarno2
