#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "records/mark_list.h"
#include "records/stream_places.h"

namespace tarno2 {

/// A mark, and where it is in what is shown.
struct ShownMark {
    RecordingMark mark;
    std::optional<uint64_t> frame;  ///< nothing: not in the files
};

/// A flag over the picture: the first of the marks that fall into one column of it.
struct MarkFlag {
    uint64_t frame = 0;
    uint64_t number = 0;
    std::string label;  ///< UTF-8
};

/// The marks of the recording that is shown. One thread.
class ShownMarks {
public:
    ShownMarks() = default;
    /// `firstFrame`: of the data files, the one that what is shown begins with.
    explicit ShownMarks(StreamPlaces places, uint64_t firstFrame = 0)
        : places_(std::move(places)), firstFrame_(firstFrame) {}

    /// New ones, and such as have got their text.
    void add(std::span<const RecordingMark> marks);
    /// By number.
    [[nodiscard]] const std::vector<ShownMark>& all() const { return marks_; }
    /// Those from frame `low` to `high`, at most one a column of so many.
    [[nodiscard]] std::vector<MarkFlag> flags(double low, double high, uint32_t columns) const;

private:
    [[nodiscard]] std::optional<uint64_t> placeOf(uint64_t streamFrame) const;

    StreamPlaces places_;
    uint64_t firstFrame_ = 0;
    std::vector<ShownMark> marks_;
    std::multimap<uint64_t, size_t> byFrame_;  ///< places in `marks_`
};

}  // namespace tarno2
