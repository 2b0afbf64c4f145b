#include "drivers/serial/serial_plan.h"

#include <charconv>
#include <string_view>

namespace tarno2::drivers {

namespace {

using Choices = std::vector<std::string>;

const Choices kParities = {"none", "odd", "even", "mark", "space"};
const Choices kFlows = {"none", "hardware", "software"};
const Choices kFramings = {"binary", "text", "frames"};
const Choices kDelimiters = {"comma", "semicolon", "space", "tab"};
const Choices kValues = {"volts", "codes"};
const Choices kChecks = {"none", "sum8", "xor8", "crc8", "crc16-modbus", "crc16-ccitt", "crc32"};
const Choices kChecked = {"data", "frame"};
const Choices kDamages = {"skip", "stop"};
constexpr size_t kMostStartBytes = 16;

size_t placeOf(const Choices& choices, const std::string& value) {
    size_t place = 0;
    while (place + 1 < choices.size() && choices[place] != value) {
        ++place;
    }
    return place;
}

bool parseHexByte(std::string_view digits, unsigned& value) {
    const auto [stop, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value, 16);
    return digits.size() == 2 && error == std::errc() && stop == digits.data() + 2;
}

bool parseStartBytes(const std::string& text, std::vector<std::byte>& bytes) {
    bytes.clear();
    std::string digits;
    for (const char c : text) {
        if (c != ' ') {
            digits += c;
        }
    }
    for (size_t i = 0; i < digits.size(); i += 2) {
        unsigned value = 0;
        if (!parseHexByte(std::string_view(digits).substr(i, 2), value)) {
            return false;
        }
        bytes.push_back(static_cast<std::byte>(value));
    }
    return !bytes.empty() && bytes.size() <= kMostStartBytes;
}

sdk::Setting choice(const char* key, const Choices& choices, const char* caption, const char* captionRu) {
    return sdk::Setting::choice(key, choices.front(), choices, caption, captionRu);
}

}  // namespace

bool unescape(const std::string& text, std::string& bytes) {
    bytes.clear();
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '\\') {
            bytes += text[i];
            continue;
        }
        const char kind = ++i < text.size() ? text[i] : '\0';
        unsigned value = 0;
        if (kind == 'x' && parseHexByte(std::string_view(text).substr(i + 1, 2), value)) {
            bytes += static_cast<char>(value);
            i += 2;
        } else if (kind == 'r' || kind == 'n' || kind == 't' || kind == '\\') {
            bytes += kind == 'r' ? '\r' : kind == 'n' ? '\n' : kind == 't' ? '\t' : '\\';
        } else {
            return false;
        }
    }
    return true;
}

void addSerialSettings(sdk::Settings& list) {
    sdk::Setting port = sdk::Setting::choice("Port", "", {}, "Port", "Порт");
    port.flags = kADCSettingFree;
    list.add(port);
    list.add(sdk::Setting::integer("Baud", 115200, 50, 20e6, "Baud rate", "Скорость, бод"));
    addStreamSettings(list, 1000);
    list.add(choice("Framing", kFramings, "Samples come as", "Отсчёты приходят как"));
    list.add(sdk::Setting::integer("DataBits", 8, 5, 8, "Data bits", "Бит данных"));
    list.add(choice("Parity", kParities, "Parity", "Чётность"));
    list.add(sdk::Setting::integer("StopBits", 1, 1, 2, "Stop bits", "Стоповых бит"));
    list.add(choice("Flow", kFlows, "Flow control", "Управление потоком"));
    list.add(choice("Delimiter", kDelimiters, "Text: between numbers", "Текст: между числами"));
    list.add(choice("Values", kValues, "Text: numbers are", "Текст: числа — это"));
    list.add(sdk::Setting::text("StartBytes", "AA55", "Frames: start bytes, hex", "Кадры: начальные байты (hex)"));
    list.add(sdk::Setting::integer("Counter", 0, 0, 1, "Frames: with a counter", "Кадры: со счётчиком"));
    list.add(choice("Checksum", kChecks, "Frames: checksum", "Кадры: контрольная сумма"));
    list.add(choice("ChecksumOf", kChecked, "Frames: the checksum is of", "Кадры: сумма считается по"));
    list.add(choice("OnDamage", kDamages, "Damaged frames", "Повреждённые кадры"));
    list.add(sdk::Setting::text("StartCommand", "", "Command at the start", "Команда при запуске"));
    list.add(sdk::Setting::text("StopCommand", "", "Command at the end", "Команда при остановке"));
}

bool SerialPlan::read(const sdk::Settings& list, std::string& why) {
    std::string parity, flow, form, delimiter, values, check, checked, damage;
    if (!readStreamSettings(list, samples, why) || !readChoice(list, "Parity", kParities, parity, why) ||
        !readChoice(list, "Flow", kFlows, flow, why) || !readChoice(list, "Framing", kFramings, form, why) ||
        !readChoice(list, "Delimiter", kDelimiters, delimiter, why) ||
        !readChoice(list, "Values", kValues, values, why) || !readChoice(list, "Checksum", kChecks, check, why) ||
        !readChoice(list, "ChecksumOf", kChecked, checked, why) ||
        !readChoice(list, "OnDamage", kDamages, damage, why)) {
        return false;
    }
    if (!parseStartBytes(list.text("StartBytes"), frames.start)) {
        why = "StartBytes: \"" + list.text("StartBytes") + "\" is not 1 to 16 bytes of two hexadecimal digits each.";
        return false;
    }
    if (!unescape(list.text("StartCommand"), startCommand) || !unescape(list.text("StopCommand"), stopCommand)) {
        why = "StartCommand, StopCommand: a backslash begins \\r, \\n, \\t, \\\\ or \\xHH.";
        return false;
    }
    port = list.text("Port");
    line.baud = static_cast<uint32_t>(list.integer("Baud"));
    line.dataBits = static_cast<uint32_t>(list.integer("DataBits"));
    line.parity = static_cast<Parity>(placeOf(kParities, parity));
    line.stopBits = static_cast<uint32_t>(list.integer("StopBits"));
    line.flow = static_cast<FlowControl>(placeOf(kFlows, flow));
    framing = static_cast<Framing>(placeOf(kFramings, form));
    text.delimiter = ",; \t"[placeOf(kDelimiters, delimiter)];
    text.volts = values == "volts";
    if (framing == Framing::Text && text.volts) {
        samples.format = *findWireFormat("f64le");  // whose words the numbers become
    }
    frames.hasCounter = list.flag("Counter");
    frames.check = checksumOf(check);
    frames.checksStart = checked == "frame";
    endsWithDamage = damage == "stop";
    return true;
}

std::unique_ptr<FrameParser> SerialPlan::parser() const {
    const SampleDecoder decoder = samples.decoder();
    switch (framing) {
        case Framing::Text:
            return std::make_unique<TextFrames>(text, decoder, samples.channels);
        case Framing::Frames:
            return std::make_unique<MarkedFrames>(frames, decoder, samples.channels);
        case Framing::Binary:
            break;
    }
    return std::make_unique<PlainFrames>(decoder, samples.channels);
}

}  // namespace tarno2::drivers
