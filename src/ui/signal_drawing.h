#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include <tarno2/ISCOPERA.h>

#include "config/settings/program_settings.h"
#include "display/axis_x.h"
#include "display/axis_y.h"
#include "display/convert_for_display.h"
#include "display/live_history.h"
#include "display/screen.h"
#include "display/wall_clock.h"
#include "ui/lane_layout.h"
#include "ui/shown_signal.h"

namespace tarno2 {

/// What is in the picture from left to right, frames.
struct ShownFrames {
    uint64_t first = 0;              ///< drawn from here
    uint64_t end = 0;                ///< up to, but not including, here
    double low = 0.0;                ///< what stands at the left edge
    double high = 0.0;               ///< at the right edge
    double origin = 0.0;             ///< the frame that the axis counts from
    std::optional<WallClock> clock;  ///< the axis tells the time of day by it
};

/// Draws a shown signal through the plotting library: converts the frames on screen, names and colours the columns,
/// puts them one upon the other or into lanes, and scales the axes as the settings say. Window thread.
class SignalDrawing {
public:
    /// A curve as it was handed to the picture last, in the order of a display frame.
    struct Column {
        std::string name;
        std::string legend;  ///< the name, with the unit where those on one axis differ
        uint32_t color = 0;
        bool visible = true;
        LinearScale scale;
        int32_t key = 0;  ///< number of the channel, or below 0 of the digital line
        AxisYUnit unit = AxisYUnit::Volts;
        std::string unitText;
        uint32_t lane = 0;
        bool marked = false;
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
    void resetScaleY();
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
    /// Where the settings leave it to the number of channels, curves lie in lanes when they do so there. It outlives
    /// this one.
    void setLanesLike(const SignalDrawing& other) { lanesLike_ = &other; }
    /// Units of Y in a volt where the user gives the scale: what `axisYValue` is in. 1 for codes.
    [[nodiscard]] double userUnitsPerVolt(const SignalFormat& format) const;
    /// The automatic scale has not settled yet: draw again soon.
    [[nodiscard]] bool moving() const;

    /// What is not drawn: numbers of channels, and of digital lines -1 - number.
    void setHidden(std::set<int32_t> hidden) { hidden_ = std::move(hidden); }
    [[nodiscard]] const std::set<int32_t>& hidden() const { return hidden_; }
    /// What a column of the picture shows, likewise; nothing when there is none such.
    [[nodiscard]] std::optional<int32_t> keyOf(uint32_t column) const;
    /// The place of the channel among the columns that stands for all: the marked one, or the first that is shown.
    [[nodiscard]] std::optional<size_t> mainChannel(const SignalFormat& format) const;
    /// That channel is drawn in front; -1: none.
    void setMarked(int32_t channel) { marked_ = channel; }

    /// The automatic scale of curves one upon the other begins anew.
    void resetScale() { scale_.reset(); }

    // Lanes (signal_drawing_lanes.cpp).
    [[nodiscard]] const LaneLayout& laneLayout() const { return layout_; }
    /// The zoom of each lane is that of an earlier layout again.
    void takeLaneRanges(const LaneLayout& earlier) { layout_.takeRanges(earlier); }
    [[nodiscard]] bool inLanes() const { return !lanes_.empty(); }
    /// The unit's text of values in that lane.
    [[nodiscard]] std::string unitTextOf(uint32_t lane) const;
    [[nodiscard]] AxisRange rangeOf(uint32_t lane) const;
    /// The user has zoomed or moved a lane, made it higher, or put a column into it.
    void setLaneRange(uint32_t lane, AxisRange range);
    void setLaneHeight(uint32_t lane, uint32_t pixels);
    void dropColumn(uint32_t column, uint32_t lane);
    /// Newest values and extremes of late for the heads of the lanes, one a channel of the frame.
    void showValues(const SignalFormat& format, const std::vector<ChannelValues>& values);

private:
    [[nodiscard]] bool convert(const ShownSignal& signal, const Screen& screen, SCOPERAFrames& frames);
    /// The frames of a screen where they belong on the axis; none when there are none. Good until the next call.
    [[nodiscard]] SCOPERAFrames framesOf(const ShownSignal& signal, const Screen& screen, const ShownFrames& shown);
    void drawEarlier(ShownSignal& signal, const ShownFrames& shown, size_t buckets);
    [[nodiscard]] std::vector<Column> columnsOf(const ShownSignal& signal) const;
    void setColumns(std::vector<Column> columns);
    void handReadings();
    struct DrawnLane {
        LanePlan plan;
        AxisRange range;  ///< volts, codes or units
        AxisYUnit unit = AxisYUnit::Volts;
    };
    [[nodiscard]] bool lanesWanted(const SignalFormat& format) const;
    void scaleLanes(const ShownSignal& signal, uint64_t nowMs);
    void scaleLane(const SignalFormat& format, DrawnLane& lane, uint64_t nowMs);
    void shareScales(const SignalFormat& format);
    [[nodiscard]] AxisRange lineRange(const SignalFormat& format, const DrawnLane& lane) const;
    [[nodiscard]] size_t analogColumns(const SignalFormat& format) const;
    [[nodiscard]] AxisYUnit chooseUnitY(const SignalFormat& format) const;
    [[nodiscard]] AxisYUnit userUnitY(const SignalFormat& format) const;
    [[nodiscard]] AxisRange automaticRange(uint64_t nowMs);
    void scaleY(const ShownSignal& signal, uint64_t nowMs);
    [[nodiscard]] AxisRange userRange(const SignalFormat& format) const;
    [[nodiscard]] AxisRange digitalRange(const SignalFormat& format) const;
    [[nodiscard]] bool unitsDiffer(const SignalFormat& format) const;
    [[nodiscard]] std::vector<size_t> shownChannels(const ShownSignal& signal) const;
    void tellClock(const ShownSignal& signal, const ShownFrames& shown, AxisXUnit unitX);
    void setTexts(const ShownSignal& signal, AxisXUnit unitX, const ShownFrames& shown);

    ISCOPERA& scoper_;
    const ProgramSettings& settings_;
    Screen screen_;
    DisplayConverter converter_;
    /// What is drawn behind the signal, and how it looked when it was handed over.
    struct EarlierLook {
        double firstX = 0.0;
        double stepX = 0.0;
        int32_t showMode = 0;
        std::array<DigitalLineSettings, ProgramSettings::kDigitalLineCount> lines{};
        friend bool operator==(const EarlierLook&, const EarlierLook&) = default;
    };
    std::vector<std::vector<std::byte>> earlier_;  ///< display samples
    std::optional<EarlierLook> earlierLook_;
    size_t columnCount_ = 0;
    std::vector<int32_t> columnColors_;
    std::vector<Column> columns_;
    std::set<int32_t> hidden_;  ///< keys of the columns that are switched off
    AxisYUnit unitY_ = AxisYUnit::Volts;
    std::string unitTextY_;
    AutomaticScaleY scale_;  ///< volts, or codes, or units
    LaneLayout layout_;
    const SignalDrawing* lanesLike_ = nullptr;
    std::vector<DrawnLane> lanes_;  ///< none: one upon the other
    int32_t marked_ = -1;
    std::vector<ChannelValues> values_;  ///< newest ones, for the heads
    AxisRange codes_;                    ///< that can come
    std::optional<std::tuple<AxisXUnit, AxisYUnit, std::string, std::string>> labels_;
};

}  // namespace tarno2
