#include "drivers/common/sample_stream.h"

#include <algorithm>

namespace tarno2::drivers {

namespace {

const std::vector<std::string> kPolarities = {"bipolar", "unipolar"};

}  // namespace

sdk::Board SampleStream::board() const {
    sdk::Board board;
    board.format = sampleFormat(format);
    board.codes = codeRange(format);
    board.channels = channels;
    board.range = upper;
    if (lower != -upper) {
        board.limits = {{lower, upper}};
    }
    board.perChannelFrequency = true;
    if (rate > 0.0) {
        const auto frequency = static_cast<float>(rate);
        board.frequencies = {frequency};
        board.minimumFrequency = board.maximumFrequency = board.usualFrequency = frequency;
    }
    return board;
}

void addStreamSettings(sdk::Settings& settings, double usualRate) {
    settings.add(sdk::Setting::integer("Channels", 1, 1, 160, "Channels", "Каналов"));
    settings.add(
        sdk::Setting::choice("Format", "s16le", wireFormatNames(), "Format of the samples", "Формат отсчётов"));
    settings.add(sdk::Setting::integer("Bits", 0, 0, 32, "Bits of a code (0: all)", "Разрядов кода (0: все)"));
    settings.add(sdk::Setting::real("Rate", usualRate, 0, 1e9, "Rate of a channel, Hz (0: not known)",
                                    "Частота канала, Гц (0: неизвестна)"));
    settings.add(sdk::Setting::real("Range", 1, 1e-9, 1e9, "Range, V", "Диапазон, В"));
    sdk::Setting polarity = sdk::Setting::choice("Polarity", kPolarities.front(), kPolarities, "The lowest code is",
                                                 "Наименьший код соответствует");
    polarity.choiceTexts = {"-Range", "0 V"};
    settings.add(polarity);
}

bool readChoice(const sdk::Settings& settings, const std::string& key, const std::vector<std::string>& choices,
                std::string& value, std::string& why) {
    value = settings.text(key);
    if (std::find(choices.begin(), choices.end(), value) != choices.end()) {
        return true;
    }
    why = key + ": \"" + value + "\" is none of ";
    for (const std::string& choice : choices) {
        why += choice + (&choice != &choices.back() ? ", " : ".");
    }
    return false;
}

bool readStreamSettings(const sdk::Settings& settings, SampleStream& stream, std::string& why) {
    std::string format;
    std::string polarity;
    if (!readChoice(settings, "Format", wireFormatNames(), format, why) ||
        !readChoice(settings, "Polarity", kPolarities, polarity, why)) {
        return false;
    }
    const auto bits = static_cast<uint32_t>(settings.integer("Bits"));
    if (bits == 1) {
        why = "Bits: a code has at least 2.";
        return false;
    }
    stream.format = findWireFormat(format)->withBits(bits);
    stream.channels = static_cast<uint32_t>(settings.integer("Channels"));
    stream.rate = settings.real("Rate");
    stream.upper = settings.real("Range");
    stream.lower = polarity == "unipolar" ? 0.0 : -stream.upper;
    return true;
}

}  // namespace tarno2::drivers
