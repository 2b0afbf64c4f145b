#include "platform/posix/serial/port_list.h"

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <memory>

#include "platform/file.h"
#include "platform/paths.h"

namespace tarno2 {

namespace {

constexpr uint64_t kLongestAttribute = 4096;

/// The first line of a file of the kernel's; empty when there is none.
std::string attribute(const std::string& path) {
    std::string text;
    if (!readWholeFile(path, kLongestAttribute, FileShare::ReadWrite, text).ok()) {
        return {};
    }
    return text.substr(0, text.find('\n'));
}

std::string realPath(const std::string& path) {
    const std::unique_ptr<char, decltype(&std::free)> real(realpath(path.c_str(), nullptr), &std::free);
    return real != nullptr ? real.get() : std::string();
}

/// Maker and product, which stand in one of the folders above the port's own when it hangs at a bus that has them.
std::string description(const std::string& device) {
    std::string folder = realPath(device);
    for (int level = 0; level < 5 && folder.size() > 1; ++level) {
        const std::string product = attribute(joinPath(folder, "product"));
        if (!product.empty()) {
            const std::string maker = attribute(joinPath(folder, "manufacturer"));
            return maker.empty() || product.starts_with(maker) ? product : maker + " " + product;
        }
        folder.erase(folder.find_last_of('/'));
    }
    return {};
}

/// Order of the names in which ttyS10 follows ttyS9.
bool comesBefore(const SerialPortName& a, const SerialPortName& b) {
    return a.name.size() != b.name.size() ? a.name.size() < b.name.size() : a.name < b.name;
}

}  // namespace

std::vector<SerialPortName> serialPortsIn(const std::string& terminals, const std::string& devices) {
    std::vector<SerialPortName> ports;
    for (const std::string& name : listDirectory(terminals)) {
        const std::string facts = joinPath(terminals, name);
        const std::string device = joinPath(facts, "device");
        // Consoles have no device; places for ports that were never fitted are of type 0.
        if (!fileExists(device) || attribute(joinPath(facts, "type")) == "0" || name.starts_with("hvc") ||
            !fileExists(joinPath(devices, name))) {
            continue;
        }
        ports.push_back({joinPath(devices, name), description(device)});
    }
    std::sort(ports.begin(), ports.end(), comesBefore);
    return ports;
}

std::vector<SerialPortName> serialPorts() {
    return serialPortsIn("/sys/class/tty", "/dev");
}

}  // namespace tarno2
