// Samples that somebody sends over a network. docs/boards.md lists the settings.

#include <array>
#include <cmath>
#include <cstring>
#include <memory>
#include <string>

#include "drivers/common/pump_driver.h"
#include "drivers/common/sample_stream.h"
#include "drivers/network/address.h"
#include "drivers/network/network_sources.h"
#include "platform/clock.h"

namespace tarno2::drivers {

namespace {

const std::vector<std::string> kSequences = {"none", "u32le", "u32be", "u64le", "u64be"};

SequenceLayout sequenceLayout(const std::string& name) {
    if (name == "none") {
        return {};
    }
    return {name.starts_with("u32") ? 4U : 8U, name.ends_with("be")};
}

/// What the settings come to.
struct Plan {
    Address address;
    SampleStream samples;
    SequenceLayout sequence;
    uint32_t patience = 5000;  ///< milliseconds
    double centreFrequency = 0.0;
    bool automaticGain = true;
    double gain = 0.0;  ///< dB

    /// False with the reason when a value can't be used.
    bool read(const sdk::Settings& settings, std::string& why);
};

bool Plan::read(const sdk::Settings& settings, std::string& why) {
    std::string name;
    if (!parseAddress(settings.text("Address"), address, why) || !readStreamSettings(settings, samples, why) ||
        !readChoice(settings, "Sequence", kSequences, name, why)) {
        return false;
    }
    sequence = sequenceLayout(name);
    patience = static_cast<uint32_t>(settings.real("ConnectWait") * 1000);
    centreFrequency = settings.real("CentreFrequency");
    const std::string wished = settings.text("Gain");
    automaticGain = wished == "auto";
    if (!automaticGain && !sdk::readNumber(wished, gain)) {
        why = "Gain: \"" + wished + "\" is neither a number of dB nor auto.";
        return false;
    }
    if (address.kind == Address::Kind::RtlTcp) {
        samples.format = *findWireFormat("u8");
        samples.channels = 2;
    }
    return true;
}

class NetworkDevice final : public PumpDriver {
public:
    NetworkDevice();

protected:
    std::vector<sdk::Board> search(const sdk::Settings& settings) override;
    bool settingsChanged() override;
    bool open(sdk::Board& board) override;
    void close() override { listener_.close(); }
    bool configure(const sdk::Board& board, sdk::Measurement& measurement) override;
    std::unique_ptr<PacedSource> connect(const sdk::Board& board, const sdk::Measurement& measurement) override;

private:
    std::unique_ptr<TcpStream> connected();
    std::unique_ptr<TcpStream> accepted();
    bool startTuner(TcpStream& stream);

    Plan plan_;  ///< of the chosen board
    TcpListener listener_;
};

NetworkDevice::NetworkDevice() : PumpDriver("Network") {
    sdk::Settings& list = settings();
    list.add(sdk::Setting::text("Address", "", "Address", "Адрес"));
    addStreamSettings(list, 1000);
    list.add(sdk::Setting::choice("Sequence", kSequences.front(), kSequences, "Number at the head of a UDP packet",
                                  "Номер в начале пакета UDP"));
    list.add(sdk::Setting::real("ConnectWait", 5, 0.1, 60, "Wait for the connection, s", "Ждать соединения, с"));
    list.add(sdk::Setting::real("CentreFrequency", 100e6, 0, 4294967295.0, "rtl_tcp: centre frequency, Hz",
                                "rtl_tcp: центральная частота, Гц"));
    list.add(sdk::Setting::text("Gain", "auto", "rtl_tcp: gain, dB, or auto", "rtl_tcp: усиление, дБ, или auto"));
}

bool NetworkDevice::settingsChanged() {
    Plan plan;
    std::string why;
    return settings().text("Address").empty() || plan.read(settings(), why) || fail("%s", why.c_str());
}

std::vector<sdk::Board> NetworkDevice::search(const sdk::Settings& list) {
    Plan plan;
    std::string why;
    if (!plan.read(list, why)) {
        fail("%s", why.c_str());
        return {};
    }
    const bool rateKnown = plan.samples.rate > 0.0;
    if (!rateKnown && plan.address.kind == Address::Kind::RtlTcp) {
        fail("Rate: an rtl_tcp receiver has to be told its rate.");
        return {};
    }
    sdk::Board board = plan.samples.board();
    board.id = list.text("Address");
    board.name =
        board.id + " (" + std::to_string(plan.samples.channels) + " x " + std::string(plan.samples.format.name) + ")";
    board.modes = rateKnown ? 0 : kADCModeExternalClock;
    return {board};
}

bool NetworkDevice::open(sdk::Board&) {
    std::string why;
    if (!plan_.read(settings(), why)) {
        return fail("%s", why.c_str());
    }
    if (plan_.address.kind != Address::Kind::TcpListen) {
        return true;
    }
    // From here on, so that a sender need not wait for the start of a recording.
    const OsError error = listener_.open(plan_.address.endpoint);
    return error.ok() || fail("Nobody can connect to port %u: %s", plan_.address.endpoint.port, error.text().c_str());
}

bool NetworkDevice::configure(const sdk::Board&, sdk::Measurement& measurement) {
    return measurement.externalClock || plan_.samples.rate > 0.0 ||
           fail("The rate of the sender is not known: set Rate, or choose the external clock.");
}

std::unique_ptr<PacedSource> NetworkDevice::connect(const sdk::Board&, const sdk::Measurement& measurement) {
    FrameDecoder decoder(plan_.samples.decoder(), plan_.samples.channels, measurement.channels);
    if (plan_.address.kind == Address::Kind::Udp) {
        auto receiver = std::make_unique<UdpReceiver>();
        if (const OsError error = receiver->open(plan_.address.endpoint); !error.ok()) {
            fail("Port %u can't receive: %s", plan_.address.endpoint.port, error.text().c_str());
            return nullptr;
        }
        return std::make_unique<UdpSource>(std::move(receiver), plan_.sequence, std::move(decoder),
                                           static_cast<uint32_t>(measurement.channels.size()));
    }
    std::unique_ptr<TcpStream> stream = plan_.address.kind == Address::Kind::TcpListen ? accepted() : connected();
    return stream != nullptr ? std::make_unique<TcpSource>(std::move(stream), std::move(decoder)) : nullptr;
}

std::unique_ptr<TcpStream> NetworkDevice::connected() {
    auto stream = std::make_unique<TcpStream>();
    const Endpoint& to = plan_.address.endpoint;
    if (const OsError error = stream->connect(to, plan_.patience); !error.ok()) {
        fail("There is no connection to %s, port %u: %s", to.host.c_str(), to.port, error.text().c_str());
        return nullptr;
    }
    if (plan_.address.kind == Address::Kind::RtlTcp && !startTuner(*stream)) {
        return nullptr;
    }
    return stream;
}

std::unique_ptr<TcpStream> NetworkDevice::accepted() {
    auto stream = std::make_unique<TcpStream>();
    const TimedRead got = listener_.accept(*stream, plan_.patience);
    if (got.end == ReadEnd::Data) {
        return stream;
    }
    if (got.end == ReadEnd::TimedOut) {
        fail("Nobody has connected to port %u within %g s.", listener_.localPort(), plan_.patience / 1000.0);
    } else {
        fail("Port %u: %s", listener_.localPort(), got.error.text().c_str());
    }
    return nullptr;
}

/// Waits for the receiver's greeting, then tunes it.
bool NetworkDevice::startTuner(TcpStream& stream) {
    std::array<char, 12> greeting{};
    size_t got = 0;
    for (const uint64_t deadline = tickCount() + plan_.patience; got < greeting.size();) {
        const uint64_t now = tickCount();
        const TimedRead part = stream.read(greeting.data() + got, greeting.size() - got,
                                           now < deadline ? static_cast<uint32_t>(deadline - now) : 0);
        if (part.end != ReadEnd::Data) {
            return fail("The receiver at %s does not greet as rtl_tcp does.", plan_.address.endpoint.host.c_str());
        }
        got += part.bytes;
    }
    if (std::memcmp(greeting.data(), "RTL0", 4) != 0) {
        return fail("The receiver at %s does not greet as rtl_tcp does.", plan_.address.endpoint.host.c_str());
    }
    struct Command {
        uint8_t code;
        double value;
    };
    std::vector<Command> commands = {
        {1, plan_.centreFrequency}, {2, plan_.samples.rate}, {3, plan_.automaticGain ? 0.0 : 1.0}};
    if (!plan_.automaticGain) {
        commands.push_back({4, plan_.gain * 10.0});  // tenths of a dB
    }
    for (const Command& command : commands) {
        const auto value = static_cast<uint32_t>(std::llround(command.value));
        const std::array<uint8_t, 5> bytes = {command.code, static_cast<uint8_t>(value >> 24U),
                                              static_cast<uint8_t>(value >> 16U), static_cast<uint8_t>(value >> 8U),
                                              static_cast<uint8_t>(value)};
        if (const OsError error = stream.write(bytes.data(), bytes.size(), plan_.patience); !error.ok()) {
            return fail("The receiver takes no commands: %s", error.text().c_str());
        }
    }
    return true;
}

}  // namespace

}  // namespace tarno2::drivers

TARNO2_DRIVER(tarno2::drivers::NetworkDevice)
