#include "drivers/comedi/boards.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <limits>

#include "drivers/comedi/command.h"
#include "platform/file.h"

namespace tarno2::drivers::comedi {

namespace {

constexpr unsigned kMostChannels = 160;
constexpr float kUsualFrequency = 10'000.0F;
constexpr uint32_t kLargestRing = 1U << 26U;

bool sameRanges(comedi_t* device, const Input& input, unsigned channel) {
    if (comedi_get_n_ranges(device, input.subdevice, channel) != static_cast<int>(input.ranges)) {
        return false;
    }
    for (unsigned i = 0; i < input.ranges; ++i) {
        const comedi_range* first = comedi_get_range(device, input.subdevice, 0, i);
        const comedi_range* other = comedi_get_range(device, input.subdevice, channel, i);
        if (first == nullptr || other == nullptr || first->min != other->min || first->max != other->max) {
            return false;
        }
    }
    return true;
}

ADCSampleFormat formatOf(const Input& input) {
    ADCSampleFormat format{};
    format.m_nBytes = input.bytesPerSample();
    format.m_nCodeBits = static_cast<uint32_t>(std::bit_width(input.highestCode));
    format.m_nCodeMask = static_cast<uint32_t>((uint64_t{1} << format.m_nCodeBits) - 1);
    return format;
}

std::vector<sdk::InputLimits> limitsOf(comedi_t* device, const Input& input) {
    std::vector<sdk::InputLimits> limits;
    for (unsigned i = 0; i < input.ranges; ++i) {
        const comedi_range* range = comedi_get_range(device, input.subdevice, 0, i);
        if (range == nullptr || !(range->min < range->max)) {
            break;
        }
        limits.push_back({range->min, range->max});
    }
    return limits;
}

/// What the numbers of all so many ranges are, where not volts.
std::string unitOf(comedi_t* device, const Input& input, size_t ranges) {
    for (unsigned i = 0; i < ranges; ++i) {
        const comedi_range* range = comedi_get_range(device, input.subdevice, 0, i);
        if (range == nullptr || range->unit != UNIT_mA) {
            return {};
        }
    }
    return ranges > 0 ? "mA" : "";
}

std::string nameOf(comedi_t* device, const Place& place) {
    std::string name = comedi_get_board_name(device);
    const std::string driver = comedi_get_driver_name(device);
    if (name != driver) {
        name += " (" + driver + ")";
    }
    name += ", " + place.device;
    // Few boards have more than one.
    if (comedi_find_subdevice_by_type(device, COMEDI_SUBD_AI, place.subdevice + 1) >= 0 ||
        comedi_find_subdevice_by_type(device, COMEDI_SUBD_AI, 0) != static_cast<int>(place.subdevice)) {
        name += ", input " + std::to_string(place.subdevice);
    }
    return name;
}

}  // namespace

Place Place::of(const std::string& id) {
    const size_t colon = id.rfind(':');
    Place place{id.substr(0, colon), 0};
    if (colon != std::string::npos) {
        std::from_chars(id.data() + colon + 1, id.data() + id.size(), place.subdevice);
    }
    return place;
}

std::vector<std::string> deviceFiles() {
    constexpr std::string_view kPrefix = "comedi";
    std::vector<std::pair<unsigned, std::string>> found;
    for (const std::string& name : listDirectory("/dev")) {
        unsigned number = 0;
        const char* end = name.data() + name.size();
        // Beside comedi0 there is comedi0_subd1, the same board once more.
        if (name.starts_with(kPrefix) && name.size() > kPrefix.size() &&
            std::from_chars(name.data() + kPrefix.size(), end, number).ptr == end) {
            found.emplace_back(number, "/dev/" + name);
        }
    }
    std::sort(found.begin(), found.end());
    std::vector<std::string> files;
    files.reserve(found.size());
    for (auto& [number, path] : found) {
        files.push_back(std::move(path));
    }
    return files;
}

std::optional<Input> readInput(comedi_t* device, unsigned subdevice) {
    const int flags = comedi_get_subdevice_flags(device, subdevice);
    const int channels = comedi_get_n_channels(device, subdevice);
    const int ranges = comedi_get_n_ranges(device, subdevice, 0);
    if (comedi_get_subdevice_type(device, subdevice) != COMEDI_SUBD_AI || flags < 0 || channels < 1 || ranges < 1) {
        return std::nullopt;
    }
    Input input{subdevice, 1, static_cast<unsigned>(ranges), comedi_get_maxdata(device, subdevice, 0),
                static_cast<unsigned>(flags)};
    const lsampl_t largestCode =
        input.bytesPerSample() == sizeof(sampl_t) ? std::numeric_limits<sampl_t>::max() : lsampl_t{INT32_MAX};
    if ((input.flags & SDF_CMD_READ) == 0 || input.highestCode < 1 || input.highestCode > largestCode) {
        return std::nullopt;
    }
    const unsigned most = std::min(static_cast<unsigned>(channels), kMostChannels);
    while (input.channels < most && comedi_get_maxdata(device, subdevice, input.channels) == input.highestCode &&
           sameRanges(device, input, input.channels)) {
        ++input.channels;
    }
    return input;
}

std::vector<sdk::Board> boardsOf(comedi_t* device, const std::string& path) {
    std::vector<sdk::Board> boards;
    const int subdevices = comedi_get_n_subdevices(device);
    for (int i = 0; i < subdevices; ++i) {
        const std::optional<Input> input = readInput(device, static_cast<unsigned>(i));
        const FrameRates rates = input ? frameRates(device, *input, 1) : FrameRates{};
        if (rates.slowest <= 0.0 || rates.fastest < rates.slowest) {
            continue;
        }
        sdk::Board board;
        const Place place{path, static_cast<unsigned>(i)};
        board.id = place.id();
        board.name = nameOf(device, place);
        board.format = formatOf(*input);
        board.codes = {0, static_cast<int32_t>(input->highestCode)};
        board.channels = input->channels;
        board.limits = limitsOf(device, *input);
        if (board.limits.empty()) {
            continue;
        }
        if (const std::string unit = unitOf(device, *input, board.limits.size()); !unit.empty()) {
            board.channelUnits.assign(board.channels, unit);
        }
        for (size_t gain = 1; gain <= board.limits.size(); ++gain) {
            board.gains.push_back(static_cast<int32_t>(gain));
        }
        board.range = std::max(std::abs(board.limits[0].lower), std::abs(board.limits[0].upper));
        board.minimumFrequency = static_cast<float>(rates.slowest);
        board.maximumFrequency = static_cast<float>(rates.fastest);
        board.usualFrequency = std::clamp(kUsualFrequency, board.minimumFrequency, board.maximumFrequency);
        board.modes = (input->flags & SDF_DIFF) != 0 ? kADCModeDifferential : 0;
        board.maximumRing = kLargestRing;
        boards.push_back(std::move(board));
    }
    return boards;
}

}  // namespace tarno2::drivers::comedi
