#include "drivers/network/address.h"

#include <charconv>
#include <string_view>

namespace tarno2::drivers {

namespace {

struct Scheme {
    std::string_view prefix;
    Address::Kind kind;
    bool needsHost;
};

constexpr Scheme kSchemes[] = {{"tcp://", Address::Kind::Tcp, true},
                               {"tcp-listen://", Address::Kind::TcpListen, false},
                               {"udp://", Address::Kind::Udp, false},
                               {"rtl_tcp://", Address::Kind::RtlTcp, true}};

bool parsePort(std::string_view text, uint16_t& port) {
    const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), port);
    return error == std::errc() && stop == text.data() + text.size() && port != 0;
}

/// `host:port` or `[address]:port`.
bool parseEndpoint(std::string_view text, Endpoint& endpoint) {
    const size_t colon = text.rfind(':');
    if (colon == std::string_view::npos || !parsePort(text.substr(colon + 1), endpoint.port)) {
        return false;
    }
    std::string_view host = text.substr(0, colon);
    if (host.starts_with('[') && host.ends_with(']')) {
        host = host.substr(1, host.size() - 2);
    } else if (host.find_first_of(":[]/") != std::string_view::npos) {
        return false;
    }
    endpoint.host = host;
    return true;
}

}  // namespace

bool parseAddress(const std::string& text, Address& address, std::string& why) {
    for (const Scheme& scheme : kSchemes) {
        if (!text.starts_with(scheme.prefix)) {
            continue;
        }
        address.kind = scheme.kind;
        if (!parseEndpoint(std::string_view(text).substr(scheme.prefix.size()), address.endpoint)) {
            why = "Address: \"" + text + "\" does not end with host:port (an IPv6 address stands in brackets).";
            return false;
        }
        if (scheme.needsHost && address.endpoint.host.empty()) {
            why = "Address: \"" + text + "\" names no host.";
            return false;
        }
        return true;
    }
    why = text.empty() ? "Address: choose where the samples come from, for example tcp://192.168.1.10:5000."
                       : "Address: \"" + text + "\" begins with none of tcp://, tcp-listen://, udp://, rtl_tcp://.";
    return false;
}

}  // namespace tarno2::drivers
