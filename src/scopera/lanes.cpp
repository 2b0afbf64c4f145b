#include "scopera/lanes.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "scopera/axis_ticker.h"

namespace tarno2 {

namespace {

constexpr int kMargin = 3;         // above and below the rows, so that curves of two lanes don't touch
constexpr int kBorderReach = 3;    // pixels from a border within which the mouse takes it
constexpr double kLeastLines = 3;  // of text, in a lane whose height nobody chose
constexpr int kHighest = 4000;
constexpr double kLinesATick = 2.0;  // heights of text between the ticks of a scale, at least

}  // namespace

void Lanes::setLanes(const SCOPERALane* lanes, uint32_t count) {
    lanes_.clear();
    for (uint32_t i = 0; i < count; ++i) {
        lanes_.push_back({QCPRange(lanes[i].m_fLower, lanes[i].m_fUpper),
                          static_cast<int>(std::min<uint32_t>(lanes[i].m_nHeight, kHighest)), lanes[i].m_nLow != 0, 0,
                          0});
    }
    layOut();
}

void Lanes::arrange(const QRect& area, int textHeight) {
    if (area != area_ || textHeight != textHeight_) {
        area_ = area;
        textHeight_ = textHeight;
        layOut();
    }
}

// What lanes of a chosen height leave over is shared by the others, of which a low one counts half.
void Lanes::layOut() {
    int free = area_.height();
    double shares = 0.0;
    for (const Lane& lane : lanes_) {
        free -= lane.wanted;
        shares += lane.wanted > 0 ? 0.0 : lane.low ? 0.5 : 1.0;
    }
    const double least = kLeastLines * textHeight_;
    const double share = shares > 0.0 ? std::max(free / shares, least) : least;
    double top = 0.0;
    for (Lane& lane : lanes_) {
        lane.top = static_cast<int>(std::lround(top));
        top += lane.wanted > 0 ? std::max(lane.wanted, textHeight_) : lane.low ? share / 2.0 : share;
        lane.height = static_cast<int>(std::lround(top)) - lane.top;
    }
    contentHeight_ = static_cast<int>(std::lround(top));
    setScroll(scroll_);
}

void Lanes::setScroll(int pixels) {
    scroll_ = std::clamp(pixels, 0, std::max(contentHeight_ - area_.height(), 0));
}

QCPRange Lanes::range(size_t lane) const {
    return shown() ? lanes_[lane].range : yAxis_->range();
}

double Lanes::tickStep(size_t lane) const {
    return niceStep(range(lane).size() / std::max(rows(lane).height() / (kLinesATick * textHeight_), 1.0));
}

void Lanes::setRange(size_t lane, const QCPRange& range) {
    if (shown()) {
        lanes_[lane].range = range;
    } else {
        yAxis_->setRange(range);
    }
}

QRect Lanes::rect(size_t lane) const {
    if (!shown()) {
        return area_;
    }
    return {area_.left(), area_.top() + lanes_[lane].top - scroll_, area_.width(), lanes_[lane].height};
}

QRect Lanes::rows(size_t lane) const {
    return shown() ? rect(lane).adjusted(0, kMargin, 0, -kMargin) : area_;
}

double Lanes::pixelOf(size_t lane, double y) const {
    if (!shown()) {
        return yAxis_->coordToPixel(y);
    }
    const QRect place = rows(lane);
    const QCPRange& range = lanes_[lane].range;
    return place.top() + (range.upper - y) / range.size() * (place.height() - 1);
}

double Lanes::valueAt(size_t lane, double pixel) const {
    if (!shown()) {
        return yAxis_->pixelToCoord(pixel);
    }
    const QRect place = rows(lane);
    const QCPRange& range = lanes_[lane].range;
    return range.upper - (pixel - place.top()) / std::max(place.height() - 1, 1) * range.size();
}

size_t Lanes::laneAt(double pixel) const {
    const double place = pixel - area_.top() + scroll_;
    size_t lane = 0;
    while (lane + 1 < lanes_.size() && lanes_[lane + 1].top <= place) {
        ++lane;
    }
    return lane;
}

std::optional<size_t> Lanes::borderAt(double pixel) const {
    const auto row = static_cast<int>(pixel);
    for (size_t lane = 0; lane < lanes_.size(); ++lane) {
        if (std::abs(rect(lane).bottom() - row) <= kBorderReach && row <= area_.bottom()) {
            return lane;
        }
    }
    return std::nullopt;
}

void Lanes::resize(size_t lane, int height) {
    lanes_[lane].wanted = std::clamp(height, textHeight_ + 2 * kMargin, kHighest);
    layOut();
}

}  // namespace tarno2
