#include "records/record_description.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <new>
#include <string_view>

#include "platform/c_locale.h"
#include "platform/codepage1251.h"

namespace tarno2 {

namespace {

constexpr std::string_view kTitle = "Для некоторых параметров -1 означает неопределенность";
constexpr uint32_t kClassVersion = 1;
constexpr uint32_t kDataFormatValues = 8;
constexpr uint32_t kValuesPerRange = 2;
constexpr uint32_t kSynchroValuesPerLine = 8;

// A field that was never set holds 255 and is written as -1, "undefined".
int8_t signedByte(uint8_t value) {
    return static_cast<int8_t>(value);
}

/// Readers expect the packet frequency in the eight bits of a small integer: its fraction and higher bits are cut off.
int8_t packetFrequencyByte(double frequency) {
    if (!std::isfinite(frequency)) {
        return 0;
    }
    const int lowBits = static_cast<int>(std::fmod(std::trunc(frequency), 256.0));
    return static_cast<int8_t>(static_cast<uint8_t>(lowBits));
}

std::string createTimeText(const LocalTime& time) {
    return formatText("Время %02d:%02d:%02d Дата %02d.%02d.%04d", time.hour, time.minute, time.second, time.day,
                      time.month, time.year);
}

}  // namespace

bool RecordDescription::finish(Status status) {
    status_ = status;
    return status == Ok;
}

void RecordDescription::reset() {
    const double packetFrequency = packetFrequency_;
    *this = RecordDescription();
    packetFrequency_ = packetFrequency;
}

bool RecordDescription::setDriverName(const std::string& name) {
    if (name.empty()) {
        return finish(BadArgument);
    }
    try {
        driverName_ = name;
        return finish(Ok);
    } catch (const std::bad_alloc&) {
        return finish(NoMemory);
    }
}

void RecordDescription::clearDriverName() {
    driverName_.clear();
    finish(Ok);
}

bool RecordDescription::setFrequency(double totalHz) {
    if (totalHz < 0.0) {
        return finish(BadArgument);
    }
    frequency_ = totalHz;
    return finish(Ok);
}

bool RecordDescription::setSynchronousChannels(uint8_t value) {
    synchronousChannels_ = value;
    return finish(Ok);
}

bool RecordDescription::setDataCountPerChannel(uint64_t frames) {
    dataCountPerChannel_ = frames;
    return finish(Ok);
}

bool RecordDescription::setPacketMode(uint8_t packetMode, double packetFrequencyHz, uint8_t externalFrequencyMode) {
    packetMode_ = packetMode;
    packetFrequency_ = packetFrequencyHz;
    externalFrequencyMode_ = externalFrequencyMode;
    return finish(Ok);
}

bool RecordDescription::setBackwardOrder(uint8_t value) {
    backwardOrder_ = value;
    return finish(Ok);
}

bool RecordDescription::setDataFormat(const SampleLayout& layout) {
    layout_ = layout;
    return finish(Ok);
}

void RecordDescription::setCreateTime(const LocalTime& time) {
    createTime_ = time;
    finish(Ok);
}

bool RecordDescription::addChannelRange(double upper, double lower) {
    try {
        ranges_.push_back({upper, lower});
        return finish(Ok);
    } catch (const std::bad_alloc&) {
        return finish(NoMemory);
    }
}

bool RecordDescription::addSynchroEvent(const SynchroEvent& event) {
    try {
        events_.push_back(event);
        return finish(Ok);
    } catch (const std::bad_alloc&) {
        return finish(NoMemory);
    }
}

void RecordDescription::setSynchroEvents(const SynchroEvent& first, uint64_t count) {
    events_.clear();
    ruleFirst_ = first;
    ruleCount_ = count;
}

SynchroEvent RecordDescription::eventAt(uint64_t index) const {
    if (ruleCount_ == 0) {
        return events_[static_cast<size_t>(index)];
    }
    SynchroEvent event = ruleFirst_;
    event.point += index * event.prehistory;
    return event;
}

void RecordDescription::keepSynchroEvents(uint64_t count) {
    ruleCount_ = std::min(ruleCount_, count);
    if (count < events_.size()) {
        events_.resize(static_cast<size_t>(count));
    }
}

void RecordDescription::dropSynchroEvents(uint64_t count) {
    events_.erase(events_.begin(),
                  events_.begin() + static_cast<std::ptrdiff_t>(std::min<uint64_t>(count, events_.size())));
}

std::string RecordDescription::fileNameFor(const std::string& dataFileName) {
    const size_t dot = dataFileName.rfind('.');
    const bool hasBase = dot != std::string::npos && dot > 0;
    return (hasBase ? dataFileName.substr(0, dot) : std::string()) + ".txt";
}

bool RecordDescription::writeForDataFile(const std::string& dataFileName) {
    if (dataFileName.empty()) {
        return finish(BadArgument);
    }
    try {
        KeyValueFile file;
        if (!file.createForWriting(fileNameFor(dataFileName),
                                   std::string(";").append(utf8ToCp1251(kTitle).value_or(std::string())))) {
            writeError_ = file.writeError();
            return finish(CannotCreate);
        }
        writeKeys(file);
        finish(Ok);
        const bool whole = file.close();
        writeError_ = file.writeError();
        return whole;
    } catch (const std::bad_alloc&) {
        return finish(NoMemory);
    }
}

void RecordDescription::writeKeys(KeyValueFile& file) const {
    file.writeComment(kTitle);
    file.writeEmptyLine();
    file.writeUInt32("ClassVersion", kClassVersion, "Версия класса для работы с этим фалом");
    file.writeString("CreateTime", utf8ToCp1251(createTimeText(createTime_)).value_or(std::string()),
                     "Время начала сбора");
    file.writeString("DriverName", systemTextToCp1251(driverName_), "Имя драйвера");
    writeDataFormat(file);

    static_assert(std::numeric_limits<double>::is_iec559, "without channels the division gives an infinity");
    const auto channels = static_cast<double>(ranges_.size());
    file.writeDouble("Frequency", frequency_ / channels, "Частота дискретизации");
    file.writeInt8("PacketMode", signedByte(packetMode_), "Пакетный режим");
    file.writeInt8("PacketFreq", packetFrequencyByte(packetFrequency_), "Частота пакетного режима");
    file.writeInt8("ExternalFreqMode", signedByte(externalFrequencyMode_), "Режим внешней частоты дискретизации");
    file.writeInt8("SynchronousChannels", signedByte(synchronousChannels_), "Каналы синхронны");
    file.writeUInt64("DataCountPerChannel", dataCountPerChannel_, "Количество данных(в отсчетах) на канал");
    file.writeUInt64("ChannelNumber", ranges_.size(), "Количество каналов");
    if (!ranges_.empty()) {
        writeChannelRanges(file);
    }
    file.writeInt8("SynchroEnable", eventCount() == 0 ? 0 : 1, "Был активирован режим синхронизации");
    if (eventCount() != 0) {
        writeSynchroList(file);
    }
}

void RecordDescription::writeDataFormat(KeyValueFile& file) const {
    for (const char* line :
         {"Формат данных: 8 цифр в следующей последовательности", "1: Количество байт на одно измерение",
          "2: Количество сдвигов вправо, необходимое чтобы младший бит аналогового сигнала стал на 0-ой бит данных",
          "3: Маска для аналогового сигнала(сдвиг не используется)", "4: Количество бит аналогового сигнала",
          "5: Количество сдвигов вправо, необходимое чтобы младший бит цифрового сигнала стал на 0-ой бит данных",
          "6: Маска для цифрового сигнала(сдвиг не используется)", "7: Количество бит цифрового сигнала",
          "8: 1 - Аналоговые данные знаковые 0 - беззнаковые"}) {
        file.writeComment(line);
    }
    const std::array<int32_t, kDataFormatValues> values = {
        layout_.bytesPerSample, layout_.analogShift, layout_.analogMask,  layout_.analogBits,
        layout_.digitalShift,   layout_.digitalMask, layout_.digitalBits, signedByte(layout_.analogSigned)};
    file.setValuesPerLine(kDataFormatValues);
    file.writeInt32Array("DataFormat", values);
}

void RecordDescription::writeChannelRanges(KeyValueFile& file) const {
    std::vector<double> limits;
    limits.reserve(ranges_.size() * kValuesPerRange);
    for (const ChannelRange& range : ranges_) {
        limits.push_back(range.upper);
        limits.push_back(range.lower);
    }
    file.setValuesPerLine(kValuesPerRange);
    file.writeDoubleArray("ChannelsRange", limits, "Входные диаппазоны каналов");
}

void RecordDescription::writeSynchroList(KeyValueFile& file) const {
    file.setValuesPerLine(kSynchroValuesPerLine);
    file.writeUInt64("SynchroListCount", eventCount(), "Количество синхронизаций в файле");
    const auto write = [&](std::string_view key, std::string_view comment, auto textOf) {
        file.writeArray(key, eventCount(), comment, [&](uint64_t i) { return textOf(eventAt(i)); });
    };
    using Event = const SynchroEvent&;
    write("SynchroListPoint", "Точки срабатывания синхронизации",
          [](Event event) { return std::to_string(event.point); });
    write("SynchroListPrehistory", "Уровни предысторий", [](Event event) { return std::to_string(event.prehistory); });
    write("SynchroListHistory", "Уровни историй", [](Event event) { return std::to_string(event.history); });
    write("SynchroListMode", "Режим синхронизации 0-аналоговый канал 1-цифровой порт",
          [](Event event) { return std::to_string(event.mode); });
    write("SynchroListConditions", "Условие синхронизации 0-По фронту(переход из 0 в 1) 1-По срезу(переход из 1 в 0)",
          [](Event event) { return std::to_string(event.condition); });
    write("SynchroListChannel", "Номер канала(номер бита) для синхронизации",
          [](Event event) { return std::to_string(event.channel); });
    write("SynchroListValue", "Значение для срабатывания по аналоговым данным",
          [](Event event) { return formatText("%f", event.value); });
}

}  // namespace tarno2
