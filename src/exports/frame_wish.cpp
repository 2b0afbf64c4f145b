#include "exports/frame_wish.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

namespace tarno2 {

namespace {

std::optional<uint64_t> parsePlainNumber(std::string_view text) {
    uint64_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    return error == std::errc() && end == text.data() + text.size() ? std::optional(value) : std::nullopt;
}

class Columns {
public:
    Columns(const RecordedLabels& labels, uint32_t count) : labels_(labels), count_(count) {}

    bool addNamed(std::string_view name) {
        for (uint32_t column = 0; column < count_; ++column) {
            if (labels_.channelName(column) == name) {
                found.push_back(column);
                return true;
            }
        }
        return false;
    }

    bool addNumber(uint64_t number) {
        for (uint32_t column = 0; column < count_; ++column) {
            const bool known = column < labels_.channels.size();
            if (number == (known ? static_cast<uint64_t>(labels_.channels[column].number) : column)) {
                found.push_back(column);
                return true;
            }
        }
        return false;
    }

    bool add(std::string_view item) {
        if (addNamed(item)) {
            return true;
        }
        if (const auto number = parsePlainNumber(item)) {
            return addNumber(*number);
        }
        const size_t dash = item.find('-');
        const auto first = parsePlainNumber(item.substr(0, dash));
        const auto last = dash == std::string_view::npos ? std::nullopt : parsePlainNumber(item.substr(dash + 1));
        if (!first || !last || *last < *first || *last - *first >= count_) {
            return false;
        }
        bool all = true;
        for (uint64_t number = *first; all && number <= *last; ++number) {
            all = addNumber(number);
        }
        return all;
    }

    std::vector<uint32_t> found;

private:
    const RecordedLabels& labels_;
    uint32_t count_;
};

/// Without names that have commas: the parts of the list.
bool addParts(const std::string& list, Columns& columns, std::string& unknown) {
    for (size_t at = 0; at <= list.size();) {
        const size_t end = std::min(list.find(',', at), list.size());
        unknown = list.substr(at, end - at);
        if (!columns.add(unknown)) {
            return false;
        }
        at = end + 1;
    }
    return true;
}

/// "48000" or "1.5s"; a comma for the point, and the Russian letter, will do.
std::optional<uint64_t> frameNumber(std::string text, double frequency) {
    if (const auto frame = parsePlainNumber(text)) {
        return frame;
    }
    for (const std::string_view unit : {"s", "\xD1\x81"}) {
        if (text.size() <= unit.size() || !text.ends_with(unit)) {
            continue;
        }
        text.resize(text.find_last_not_of(' ', text.size() - unit.size() - 1) + 1);
        std::ranges::replace(text, ',', '.');
        double seconds = 0.0;
        const auto [end, error] =
            std::from_chars(text.data(), text.data() + text.size(), seconds, std::chars_format::fixed);
        const double frame = seconds * frequency;
        constexpr double kMostFrames = 9e15;
        if (error == std::errc() && end == text.data() + text.size() && seconds >= 0.0 && frequency > 0.0 &&
            frame < kMostFrames) {
            return static_cast<uint64_t>(std::llround(frame));
        }
    }
    return std::nullopt;
}

}  // namespace

WishProblem chooseFrames(const FrameWish& wish, const ConversionInputs& inputs, FrameChoice& choice,
                         std::string& subject) {
    choice = {};
    const auto place = [&](const std::string& text, uint64_t& frame) {
        const auto typed = text.empty() ? std::optional(frame) : frameNumber(text, inputs.frequency);
        frame = typed.value_or(frame);
        subject = text;
        return typed.has_value();
    };
    if (!place(wish.from, choice.from)) {
        return WishProblem::From;
    }
    if (!place(wish.to, choice.to)) {
        return WishProblem::To;
    }
    if (choice.from >= choice.to) {
        return WishProblem::Span;
    }
    if (wish.every == 0) {
        return WishProblem::Every;
    }
    choice.every = wish.every;
    if (!wish.channels.empty()) {
        Columns columns(inputs.labels, inputs.channelCount);
        if (!columns.addNamed(wish.channels) && !addParts(wish.channels, columns, subject)) {
            return WishProblem::Channels;
        }
        if (columns.found.size() > ConversionInputs::kMostChannels) {
            subject = wish.channels;
            return WishProblem::Channels;
        }
        choice.columns = std::move(columns.found);
    }
    return WishProblem::None;
}

std::string describe(WishProblem problem, const std::string& subject) {
    switch (problem) {
        case WishProblem::None:
            break;
        case WishProblem::From:
        case WishProblem::To:
            return subject + " is no frame (48000) and no time (1.5s) of a known rate";
        case WishProblem::Every:
            return "one frame of each 0 can not be taken";
        case WishProblem::Channels:
            return "the recording has no channel " + subject;
        case WishProblem::Span:
            return "nothing lies before frame or time " + subject;
    }
    return {};
}

}  // namespace tarno2
