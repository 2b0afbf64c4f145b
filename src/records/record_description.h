#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/clock.h"
#include "records/key_value_file.h"

namespace tarno2 {

/// The layout of a sample word, as the description tells it (see docs/formats.md, `DataFormat`).
struct SampleLayout {
    int32_t bytesPerSample = -1;
    int32_t analogShift = -1;
    int32_t analogMask = -1;
    int32_t analogBits = -1;
    int32_t digitalShift = -1;
    int32_t digitalMask = -1;
    int32_t digitalBits = -1;
    uint8_t analogSigned = 255;  ///< 1 signed, 0 unsigned
};

/// One synchronisation event of a recording.
struct SynchroEvent {
    uint64_t point = 0;       ///< trigger point, frames
    uint32_t prehistory = 0;  ///< frames
    uint32_t history = 0;     ///< frames
    int32_t mode = 0;         ///< 0 analog channel, 1 digital port
    int32_t condition = 0;    ///< 0 leading edge, 1 falling edge
    int32_t channel = 0;      ///< position of the channel in the frame, or the port's bit
    double value = 0.0;       ///< threshold as typed
    /// The frame that triggered, in the stream that the board gave. A description does not tell it.
    uint64_t streamFrame = 0;
};

/// Collects what a later reader has to know of one data file and writes the description beside it.
/// 8-bit fields and numbers that were not set are written as -1. An object is used by one thread at a time.
class RecordDescription {
public:
    enum Status : int32_t {
        Ok = 0,
        ItemMissing = -1,
        NoMemory = -2,
        BadArgument = -3,
        CannotCreate = -5,
        NoFileName = -6
    };

    /// Forgets everything but the packet frequency.
    void reset();
    /// Result of the last operation.
    [[nodiscard]] Status status() const { return status_; }

    bool setDriverName(const std::string& name);  ///< an empty name fails
    void clearDriverName();
    bool setFrequency(double totalHz);  ///< total over all channels; negative fails
    bool setSynchronousChannels(uint8_t value);
    bool setDataCountPerChannel(uint64_t frames);
    bool setPacketMode(uint8_t packetMode, double packetFrequencyHz, uint8_t externalFrequencyMode);
    bool setBackwardOrder(uint8_t value);
    bool setDataFormat(const SampleLayout& layout);
    void setCreateTime(const LocalTime& time);
    /// Upper and lower limit of the next channel, volts.
    bool addChannelRange(double upper, double lower);
    bool addSynchroEvent(const SynchroEvent& event);
    /// `count` events in place of those that were added: the first one, and each further one a prehistory later. They
    /// are kept as this rule, so their number costs no memory.
    void setSynchroEvents(const SynchroEvent& first, uint64_t count);
    /// Forgets all synchronisation events but the first `count`.
    void keepSynchroEvents(uint64_t count);
    /// Forgets the first `count` of the events that were added.
    void dropSynchroEvents(uint64_t count);

    /// Writes the description of that data file beside it, replacing an older one, or a part of one, but no other file
    /// of its name; it is on the disk then. False when it can't be made (`status` tells why), and also, with status
    /// `Ok`, when not every line reached the disk: then there is none. `writeError` has the system's words.
    bool writeForDataFile(const std::string& dataFileName);
    [[nodiscard]] const OsError& writeError() const { return writeError_; }

    /// Name of a data file's description: the part after the last "." replaced by "txt".
    [[nodiscard]] static std::string fileNameFor(const std::string& dataFileName);

private:
    bool finish(Status status);
    void writeKeys(KeyValueFile& file) const;
    void writeDataFormat(KeyValueFile& file) const;
    void writeChannelRanges(KeyValueFile& file) const;
    void writeSynchroList(KeyValueFile& file) const;
    [[nodiscard]] uint64_t eventCount() const { return ruleCount_ != 0 ? ruleCount_ : events_.size(); }
    [[nodiscard]] SynchroEvent eventAt(uint64_t index) const;

    struct ChannelRange {
        double upper;
        double lower;
    };

    Status status_ = Ok;
    std::vector<ChannelRange> ranges_;
    std::vector<SynchroEvent> events_;
    SynchroEvent ruleFirst_;
    uint64_t ruleCount_ = 0;  ///< events by the rule; 0: those of the list
    OsError writeError_;
    std::string driverName_;
    double frequency_ = -1.0;
    uint64_t dataCountPerChannel_ = 0;
    uint8_t synchronousChannels_ = 255;
    uint8_t packetMode_ = 255;
    double packetFrequency_ = 0.0;
    uint8_t externalFrequencyMode_ = 255;
    LocalTime createTime_;
    SampleLayout layout_;
    uint8_t backwardOrder_ = 255;
};

}  // namespace tarno2
