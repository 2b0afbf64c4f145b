#pragma once

#include <cstdint>
#include <string>

#include "platform/socket.h"

namespace tarno2::drivers {

/// Where samples come from over a network.
struct Address {
    enum class Kind { Tcp, TcpListen, Udp, RtlTcp };
    Kind kind = Kind::Tcp;
    Endpoint endpoint;
};

/// Reads `tcp://host:port`, `tcp-listen://:port`, `udp://:port`, `rtl_tcp://host:port`; an IPv6 address stands in
/// brackets. False with the reason.
bool parseAddress(const std::string& text, Address& address, std::string& why);

}  // namespace tarno2::drivers
