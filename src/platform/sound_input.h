#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace tarno2 {

/// A device that records sound, and what it can do.
struct SoundDevice {
    std::string id;    ///< by which it is opened; stays the same while the device is plugged in
    std::string name;  ///< for people: the card's name and the input's
    /// Between the card and the program stands a sound server, which may mix channels and convert rates without a word.
    bool throughServer = false;
    uint32_t minimumChannels = 1;
    uint32_t maximumChannels = 1;
    std::vector<uint32_t> widths;  ///< of 16, 24 and 32 bits, those that it has, ascending
    std::vector<uint32_t> rates;   ///< Hz, those that it has, ascending
    uint32_t nativeWidth = 16;     ///< the one of `widths` that loses nothing
    std::string problem;  ///< why it can't be asked what it can do (somebody else uses it); then no rates either
};

/// How samples come in.
struct SoundFormat {
    uint32_t channels = 1;
    uint32_t rate = 48000;  ///< frames a second
    uint32_t width = 16;    ///< bits: 16 are 2-byte words; 24 and 32 are 4-byte words, 24 with their sign extended

    [[nodiscard]] size_t wordBytes() const { return width == 16 ? 2 : 4; }
    [[nodiscard]] size_t frameBytes() const { return channels * wordBytes(); }
    friend bool operator==(const SoundFormat&, const SoundFormat&) = default;
};

/// The devices that there are now: those whose samples come as the card makes them first, sound servers' last. Opens
/// each of them for a moment. Any thread.
[[nodiscard]] std::vector<SoundDevice> soundInputs();

/// The device of that id, also one that is not listed, such as a name of the system's sound configuration. `problem`
/// is set when there is none, or when it can't be asked. Any thread.
[[nodiscard]] SoundDevice soundInput(const std::string& id);

/// What became of a read.
struct SoundRead {
    enum class Kind {
        Frames,   ///< `frames` of them, directly behind those of the read before
        Nothing,  ///< none came in time, or the read was cancelled
        Overrun,  ///< here frames are missing, nobody knows how many; all that were read before are exact
        Gone,     ///< the device was pulled out; likewise
        Failed    ///< it stopped for another reason; likewise
    };
    Kind kind = Kind::Nothing;
    size_t frames = 0;
    std::string text;  ///< for people, of an end
};

/// An open device. It belongs to one thread at a time; `cancel` may come from another.
class SoundInput {
public:
    virtual ~SoundInput() = default;
    SoundInput(const SoundInput&) = delete;
    SoundInput& operator=(const SoundInput&) = delete;

    /// Opens a device with the smallest number of channels that is not below the one wished for, the nearest rate that
    /// it has, and exactly the width. Null with a text in `reason`.
    [[nodiscard]] static std::unique_ptr<SoundInput> open(const std::string& id, const SoundFormat& wished,
                                                          std::string& reason);

    /// What was really given.
    [[nodiscard]] const SoundFormat& format() const { return format_; }

    /// Waits until frames are there, at most so many milliseconds, and copies at most `frames` of them. The first call
    /// starts the device. After an end each further call tells of it again.
    [[nodiscard]] virtual SoundRead read(std::byte* destination, size_t frames, uint32_t milliseconds) = 0;

    /// A read that waits returns `Nothing` at once, and no later one waits.
    virtual void cancel() noexcept = 0;

protected:
    explicit SoundInput(const SoundFormat& format) : format_(format) {}

    SoundFormat format_;
};

}  // namespace tarno2
