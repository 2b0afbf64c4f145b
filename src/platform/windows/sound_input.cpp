#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>
#include <utility>

#define INITGUID  // the identifiers that the headers below name are defined here
#include <audioclient.h>
#include <functiondiscoverykeys_devpkey.h>
#include <ksmedia.h>
#include <mmdeviceapi.h>
#include <objbase.h>
#include <windows.h>

#include "platform/clock.h"
#include "platform/event.h"
#include "platform/os_error.h"
#include "platform/sound_input.h"
#include "platform/utf.h"

namespace tarno2 {

namespace {

constexpr uint32_t kMostChannels = 32;
constexpr REFERENCE_TIME kBuffer = 5'000'000;  // half a second, in units of 100 ns

struct ReleaseInterface {
    void operator()(IUnknown* object) const { object->Release(); }
};
template <typename Interface>
using Com = std::unique_ptr<Interface, ReleaseInterface>;

struct FreeTaskMemory {
    void operator()(void* memory) const { CoTaskMemFree(memory); }
};
using WaveFormat = std::unique_ptr<WAVEFORMATEX, FreeTaskMemory>;

/// Objects may be used from every thread of the process, as long as it lives, whatever that thread did about them.
void enterApartment() {
    static const bool entered = [] {
        CO_MTA_USAGE_COOKIE cookie{};
        return SUCCEEDED(CoIncrementMTAUsage(&cookie));
    }();
    (void)entered;
}

std::string systemText(const wchar_t* text) {
    return utf16ToSystem(std::u16string(text, text + std::wcslen(text)));
}

std::string explain(HRESULT result) {
    switch (result) {
        case AUDCLNT_E_DEVICE_IN_USE:
            return "another program uses it alone";
        case AUDCLNT_E_DEVICE_INVALIDATED:
            return "it was pulled out";
        case AUDCLNT_E_SERVICE_NOT_RUNNING:
            return "the sound service of Windows does not run";
        case E_ACCESSDENIED:
            return "the privacy settings of Windows do not let programs use the microphone";
        default:
            return OsError(static_cast<int>(result)).text();
    }
}

/// How samples lie in a packet.
struct SampleShape {
    bool floating = false;
    uint32_t container = 16;  ///< bits
    uint32_t valid = 16;      ///< of them, the highest
};

bool readShape(const WAVEFORMATEX& format, SampleShape& shape) {
    shape.container = shape.valid = format.wBitsPerSample;
    if (format.wFormatTag == WAVE_FORMAT_EXTENSIBLE && format.cbSize >= 22) {
        WAVEFORMATEXTENSIBLE extensible{};
        std::memcpy(&extensible, &format, sizeof extensible);
        shape.floating = IsEqualGUID(extensible.SubFormat, KSDATAFORMAT_SUBTYPE_IEEE_FLOAT) != 0;
        shape.valid = extensible.Samples.wValidBitsPerSample;
        if (!shape.floating && IsEqualGUID(extensible.SubFormat, KSDATAFORMAT_SUBTYPE_PCM) == 0) {
            return false;
        }
    } else {
        shape.floating = format.wFormatTag == WAVE_FORMAT_IEEE_FLOAT;
        if (!shape.floating && format.wFormatTag != WAVE_FORMAT_PCM) {
            return false;
        }
    }
    return shape.floating ? shape.container == 32
                          : shape.container == 16 || shape.container == 24 || shape.container == 32;
}

/// A sample as a number of 32 bits whose highest bits are the sample's.
int32_t readSample(const BYTE* at, const SampleShape& shape) {
    if (shape.floating) {
        float value = 0.0F;
        std::memcpy(&value, at, sizeof value);
        constexpr double kLimit = std::numeric_limits<int32_t>::max();
        const double scaled = static_cast<double>(value) * 0x1p31;
        return scaled >= -0x1p31 ? static_cast<int32_t>(std::llround(std::min(scaled, kLimit)))
                                 : std::numeric_limits<int32_t>::min();
    }
    uint32_t word = 0;
    const uint32_t bytes = shape.container / 8;
    std::memcpy(reinterpret_cast<BYTE*>(&word) + (4 - bytes), at, bytes);
    return static_cast<int32_t>(word);
}

/// Its nearest code of so many bits.
int32_t codeOf(int32_t sample, uint32_t width) {
    if (width == 32) {
        return sample;
    }
    const uint32_t shift = 32 - width;
    const int64_t rounded = (int64_t{sample} + (int64_t{1} << (shift - 1))) >> shift;
    return static_cast<int32_t>(std::min<int64_t>(rounded, (int64_t{1} << (width - 1)) - 1));
}

Com<IMMDeviceEnumerator> makeEnumerator(HRESULT& result) {
    enterApartment();
    void* made = nullptr;
    result = CoCreateInstance(__uuidof(MMDeviceEnumerator), nullptr, CLSCTX_ALL, __uuidof(IMMDeviceEnumerator), &made);
    return Com<IMMDeviceEnumerator>(SUCCEEDED(result) ? static_cast<IMMDeviceEnumerator*>(made) : nullptr);
}

/// All inputs that are plugged in and switched on.
std::vector<Com<IMMDevice>> endpoints(HRESULT& result) {
    std::vector<Com<IMMDevice>> found;
    const Com<IMMDeviceEnumerator> enumerator = makeEnumerator(result);
    IMMDeviceCollection* listed = nullptr;
    if (FAILED(result) || FAILED(result = enumerator->EnumAudioEndpoints(eCapture, DEVICE_STATE_ACTIVE, &listed))) {
        return found;
    }
    const Com<IMMDeviceCollection> collection(listed);
    UINT count = 0;
    collection->GetCount(&count);
    for (UINT i = 0; i < count; ++i) {
        IMMDevice* device = nullptr;
        if (SUCCEEDED(collection->Item(i, &device))) {
            found.emplace_back(device);
        }
    }
    return found;
}

std::string idOf(IMMDevice& device) {
    LPWSTR text = nullptr;
    if (FAILED(device.GetId(&text))) {
        return {};
    }
    const std::unique_ptr<wchar_t, FreeTaskMemory> owner(text);
    return systemText(text);
}

/// Its name, and how many bits the device itself has, 0 when the system doesn't tell.
std::pair<std::string, uint32_t> propertiesOf(IMMDevice& device) {
    std::pair<std::string, uint32_t> told;
    IPropertyStore* opened = nullptr;
    if (FAILED(device.OpenPropertyStore(STGM_READ, &opened))) {
        return told;
    }
    const Com<IPropertyStore> properties(opened);
    PROPVARIANT value;
    PropVariantInit(&value);
    if (SUCCEEDED(properties->GetValue(PKEY_Device_FriendlyName, &value)) && value.vt == VT_LPWSTR) {
        told.first = systemText(value.pwszVal);
    }
    PropVariantClear(&value);
    PropVariantInit(&value);
    if (SUCCEEDED(properties->GetValue(PKEY_AudioEngine_DeviceFormat, &value)) && value.vt == VT_BLOB &&
        value.blob.cbSize >= sizeof(WAVEFORMATEX)) {
        WAVEFORMATEXTENSIBLE format{};
        std::memcpy(&format, value.blob.pBlobData, std::min<size_t>(value.blob.cbSize, sizeof format));
        SampleShape shape;
        if (readShape(format.Format, shape) && !shape.floating) {
            told.second = shape.valid;
        }
    }
    PropVariantClear(&value);
    return told;
}

/// The device without the effects (noise suppression, automatic gain) that Windows puts before a microphone, where the
/// driver lets them be left out, and the format that it mixes in.
Com<IAudioClient> activate(IMMDevice& device, WaveFormat& mix, HRESULT& result) {
    void* made = nullptr;
    result = device.Activate(__uuidof(IAudioClient), CLSCTX_ALL, nullptr, &made);
    if (FAILED(result)) {
        return nullptr;
    }
    Com<IAudioClient> client(static_cast<IAudioClient*>(made));
    if (SUCCEEDED(client->QueryInterface(__uuidof(IAudioClient2), &made))) {
        const Com<IAudioClient2> second(static_cast<IAudioClient2*>(made));
        const AudioClientProperties raw{sizeof raw, FALSE, AudioCategory_Other, AUDCLNT_STREAMOPTIONS_RAW};
        second->SetClientProperties(&raw);
    }
    WAVEFORMATEX* format = nullptr;
    result = client->GetMixFormat(&format);
    mix.reset(format);
    return client;
}

void ask(IMMDevice& endpoint, SoundDevice& device) {
    const auto [name, bits] = propertiesOf(endpoint);
    device.name = name.empty() ? device.id : name;
    HRESULT result = S_OK;
    WaveFormat mix;
    const Com<IAudioClient> client = activate(endpoint, mix, result);
    SampleShape shape;
    if (FAILED(result) || !readShape(*mix, shape)) {
        device.problem = FAILED(result) ? explain(result) : "its samples are neither whole numbers nor fractions";
        return;
    }
    device.minimumChannels = device.maximumChannels = std::min<uint32_t>(mix->nChannels, kMostChannels);
    device.rates = {static_cast<uint32_t>(mix->nSamplesPerSec)};
    device.widths = {16, 24, 32};
    // Fractions carry 24 bits.
    const uint32_t known = bits != 0 ? bits : shape.floating ? 24 : shape.valid;
    device.nativeWidth = known <= 16 ? 16 : known <= 24 ? 24 : 32;
}

/// By its id, or by its name.
Com<IMMDevice> findEndpoint(const std::string& id, HRESULT& result) {
    for (Com<IMMDevice>& endpoint : endpoints(result)) {
        if (idOf(*endpoint) == id || propertiesOf(*endpoint).first == id) {
            return std::move(endpoint);
        }
    }
    result = FAILED(result) ? result : AUDCLNT_E_DEVICE_INVALIDATED;
    return nullptr;
}

/// Whole numbers of 16 bits, at rate and channels of the mix.
WAVEFORMATEX plainFormat(const WAVEFORMATEX& mix) {
    WAVEFORMATEX plain{};
    plain.wFormatTag = WAVE_FORMAT_PCM;
    plain.nChannels = mix.nChannels;
    plain.nSamplesPerSec = mix.nSamplesPerSec;
    plain.wBitsPerSample = 16;
    plain.nBlockAlign = static_cast<WORD>(mix.nChannels * 2);
    plain.nAvgBytesPerSec = plain.nSamplesPerSec * plain.nBlockAlign;
    return plain;
}

bool takes(IAudioClient& client, const WAVEFORMATEX& format) {
    WAVEFORMATEX* closest = nullptr;
    const HRESULT result = client.IsFormatSupported(AUDCLNT_SHAREMODE_SHARED, &format, &closest);
    const WaveFormat owner(closest);
    return result == S_OK;
}

class WasapiInput final : public SoundInput {
public:
    explicit WasapiInput(Com<IAudioClient> client) : SoundInput({}), client_(std::move(client)) {}
    ~WasapiInput() override {
        release();
        client_->Stop();
    }

    HRESULT initialize(const WAVEFORMATEX& mix, uint32_t width) {
        const WAVEFORMATEX plain = plainFormat(mix);
        const WAVEFORMATEX& chosen = width == 16 && takes(*client_, plain) ? plain : mix;
        format_ = {chosen.nChannels, static_cast<uint32_t>(chosen.nSamplesPerSec), width};
        if (!ready_.valid() || !cancelled_.valid()) {
            return E_OUTOFMEMORY;
        }
        if (!readShape(chosen, shape_)) {
            return AUDCLNT_E_UNSUPPORTED_FORMAT;
        }
        const DWORD flags = AUDCLNT_STREAMFLAGS_EVENTCALLBACK | AUDCLNT_STREAMFLAGS_NOPERSIST;
        HRESULT result = client_->Initialize(AUDCLNT_SHAREMODE_SHARED, flags, kBuffer, 0, &chosen, nullptr);
        if (SUCCEEDED(result)) {
            result = client_->SetEventHandle(reinterpret_cast<HANDLE>(static_cast<uintptr_t>(ready_.number())));
        }
        void* made = nullptr;
        if (SUCCEEDED(result)) {
            result = client_->GetService(__uuidof(IAudioCaptureClient), &made);
        }
        capture_.reset(static_cast<IAudioCaptureClient*>(made));
        return result;
    }

    SoundRead read(std::byte* destination, size_t frames, uint32_t milliseconds) override {
        const uint64_t deadline = tickCount() + milliseconds;
        if (!started_) {
            started_ = true;
            fail(client_->Start());
        }
        while (end_ == SoundRead::Kind::Nothing && frames > 0) {
            if (taken_ < packet_) {
                return take(destination, frames);
            }
            ready_.reset();  // before the look: what comes after it is told again
            const HRESULT result = nextPacket();
            if (result == AUDCLNT_S_BUFFER_EMPTY) {
                const uint64_t now = tickCount();
                const auto left = static_cast<uint32_t>(now < deadline ? deadline - now : 0);
                const Event::Either come = Event::waitEither(ready_, cancelled_, left);
                if (come.result != WaitResult::Signalled || come.second) {
                    return {};
                }
            } else {
                fail(result);
            }
        }
        return {end_, 0, endText_};
    }

    void cancel() noexcept override { cancelled_.set(); }

private:
    HRESULT nextPacket() {
        DWORD flags = 0;
        UINT32 frames = 0;
        BYTE* data = nullptr;
        const HRESULT result = capture_->GetBuffer(&data, &frames, &flags, nullptr, nullptr);
        if (result != S_OK) {
            return result;
        }
        data_ = (flags & AUDCLNT_BUFFERFLAGS_SILENT) != 0 ? nullptr : data;
        packet_ = frames;
        taken_ = 0;
        // The first packet always says that nothing lies before it.
        if ((flags & AUDCLNT_BUFFERFLAGS_DATA_DISCONTINUITY) != 0 && !first_) {
            end(SoundRead::Kind::Overrun, "The sound card was not read fast enough and lost samples.");
        }
        first_ = false;
        return S_OK;
    }

    /// What is left of the packet, as far as there is room.
    SoundRead take(std::byte* destination, size_t frames) {
        const size_t got = std::min<size_t>(frames, packet_ - taken_);
        const size_t samples = got * format_.channels;
        const size_t wordBytes = format_.wordBytes();
        if (data_ == nullptr) {
            std::memset(destination, 0, samples * wordBytes);
        } else {
            const size_t step = shape_.container / 8;
            const BYTE* from = data_ + taken_ * format_.channels * step;
            for (size_t i = 0; i < samples; ++i, from += step, destination += wordBytes) {
                const int32_t code = codeOf(readSample(from, shape_), format_.width);
                std::memcpy(destination, &code, wordBytes);
            }
        }
        taken_ += static_cast<UINT32>(got);
        if (taken_ == packet_) {
            release();
        }
        return {SoundRead::Kind::Frames, got, {}};
    }

    void release() {
        if (packet_ > 0) {
            capture_->ReleaseBuffer(packet_);
        }
        packet_ = taken_ = 0;
    }

    void fail(HRESULT result) {
        if (result == AUDCLNT_E_DEVICE_INVALIDATED || result == AUDCLNT_E_RESOURCES_INVALIDATED) {
            end(SoundRead::Kind::Gone, "The sound card was pulled out.");
        } else if (FAILED(result)) {
            end(SoundRead::Kind::Failed, "The sound card failed: " + explain(result));
        }
    }
    void end(SoundRead::Kind kind, std::string text) {
        end_ = kind;
        endText_ = std::move(text);
    }

    Com<IAudioClient> client_;
    Com<IAudioCaptureClient> capture_;
    SampleShape shape_;
    Event ready_;
    Event cancelled_;
    bool started_ = false;
    bool first_ = true;
    const BYTE* data_ = nullptr;  // of the packet that was got; null: it is silence
    UINT32 packet_ = 0;           // frames; 0: none was got
    UINT32 taken_ = 0;            // of them
    SoundRead::Kind end_ = SoundRead::Kind::Nothing;
    std::string endText_;
};

}  // namespace

std::vector<SoundDevice> soundInputs() {
    HRESULT result = S_OK;
    std::vector<SoundDevice> devices;
    for (const Com<IMMDevice>& endpoint : endpoints(result)) {
        SoundDevice device;
        device.id = idOf(*endpoint);
        ask(*endpoint, device);
        devices.push_back(std::move(device));
    }
    return devices;
}

SoundDevice soundInput(const std::string& id) {
    SoundDevice device;
    device.id = device.name = id;
    HRESULT result = S_OK;
    const Com<IMMDevice> endpoint = findEndpoint(id, result);
    if (endpoint == nullptr) {
        device.problem = result == AUDCLNT_E_DEVICE_INVALIDATED ? "there is no such input" : explain(result);
    } else {
        device.id = idOf(*endpoint);
        ask(*endpoint, device);
    }
    return device;
}

std::unique_ptr<SoundInput> SoundInput::open(const std::string& id, const SoundFormat& wished, std::string& reason) {
    HRESULT result = S_OK;
    const Com<IMMDevice> endpoint = findEndpoint(id, result);
    WaveFormat mix;
    Com<IAudioClient> client;
    if (endpoint != nullptr) {
        client = activate(*endpoint, mix, result);
    }
    if (FAILED(result)) {
        reason = explain(result);
        return nullptr;
    }
    if (wished.channels > mix->nChannels) {
        reason = "it has " + std::to_string(mix->nChannels) + " channels";
        return nullptr;
    }
    auto input = std::make_unique<WasapiInput>(std::move(client));
    result = input->initialize(*mix, wished.width);
    if (FAILED(result)) {
        reason = explain(result);
        return nullptr;
    }
    return input;
}

}  // namespace tarno2
