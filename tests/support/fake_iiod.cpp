#include "tests/support/fake_iiod.h"

#include <algorithm>
#include <arpa/inet.h>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <netinet/tcp.h>
#include <poll.h>
#include <sstream>
#include <sys/socket.h>
#include <unistd.h>

namespace tarno2::test {

struct FakeScanField {
    bool bigEndian = false;
    bool isSigned = false;
    unsigned bits = 0;
    unsigned length = 0;
    unsigned shift = 0;
};

namespace {

using Clock = std::chrono::steady_clock;

constexpr const char* kDevice = "iio:device0";
constexpr const char* kTrigger = "fakeadc-dev0";
constexpr int kPollMilliseconds = 20;

FakeScanField fieldOf(const std::string& format) {
    FakeScanField field;
    char order = 'l';
    char sign = 's';
    if (std::sscanf(format.c_str(), "%ce:%c%u/%u>>%u", &order, &sign, &field.bits, &field.length, &field.shift) != 5) {
        std::fprintf(stderr, "Not a format of a scan element: %s\n", format.c_str());
    }
    field.bigEndian = order == 'b';
    field.isSigned = sign == 's';
    return field;
}

uint64_t mask(unsigned bits) {
    return bits >= 64 ? ~uint64_t{0} : (uint64_t{1} << bits) - 1;
}

void append(std::string& bytes, const FakeScanField& field, uint64_t code) {
    // What lies beside the code in the field has no meaning: it is never 0 here.
    const uint64_t value = (code & mask(field.bits)) << field.shift | mask(field.shift);
    const size_t size = field.length / 8;
    for (size_t i = 0; i < size; ++i) {
        bytes.push_back(static_cast<char>(value >> 8 * (field.bigEndian ? size - 1 - i : i) & 0xFF));
    }
}

std::string escaped(std::string text) {
    for (size_t at = 0; (at = text.find('>', at)) != std::string::npos; at += 4) {
        text.replace(at, 1, "&gt;");
    }
    return text;
}

constexpr const char* kDocumentType =
    "<?xml version=\"1.0\" encoding=\"utf-8\"?><!DOCTYPE context [<!ELEMENT context (device | context-attribute)*>"
    "<!ELEMENT context-attribute EMPTY><!ELEMENT device (channel | attribute | debug-attribute | buffer-attribute)*>"
    "<!ELEMENT channel (scan-element?, attribute*)><!ELEMENT attribute EMPTY><!ELEMENT scan-element EMPTY>"
    "<!ELEMENT debug-attribute EMPTY><!ELEMENT buffer-attribute EMPTY><!ATTLIST context name CDATA #REQUIRED "
    "description CDATA #IMPLIED><!ATTLIST context-attribute name CDATA #REQUIRED value CDATA #REQUIRED>"
    "<!ATTLIST device id CDATA #REQUIRED name CDATA #IMPLIED><!ATTLIST channel id CDATA #REQUIRED type (input|output) "
    "#REQUIRED name CDATA #IMPLIED><!ATTLIST scan-element index CDATA #REQUIRED format CDATA #REQUIRED scale CDATA "
    "#IMPLIED><!ATTLIST attribute name CDATA #REQUIRED filename CDATA #IMPLIED><!ATTLIST debug-attribute name CDATA "
    "#REQUIRED><!ATTLIST buffer-attribute name CDATA #REQUIRED>]>";

}  // namespace

int64_t fakeCode(const std::string& format, size_t element, uint64_t frame) {
    const FakeScanField field = fieldOf(format);
    const uint64_t code = (frame + 1000 * element) & mask(field.bits);
    const bool negative = field.isSigned && (code >> (field.bits - 1) & 1) != 0;
    return static_cast<int64_t>(negative ? code | ~mask(field.bits) : code);
}

/// One client, served by a thread of its own.
class FakeIiod::Connection {
public:
    Connection(FakeIiod& server, int socket) : server_(server), socket_(socket), thread_([this] { serve(); }) {}
    ~Connection() {
        ::shutdown(socket_, SHUT_RDWR);
        thread_.join();
        ::close(socket_);
    }
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

private:
    void serve() {
        for (std::string line; readLine(line);) {
            std::istringstream stream(line);
            std::vector<std::string> words;
            for (std::string word; stream >> word;) {
                words.push_back(word);
            }
            if (!words.empty() && !answer(words)) {
                break;
            }
        }
        ::shutdown(socket_, SHUT_RDWR);
    }

    bool answer(const std::vector<std::string>& words) {
        const std::string& verb = words[0];
        if (verb == "VERSION") {
            return say("0.24.v0.24  \n");
        }
        if (verb == "PRINT") {
            const std::string text = server_.contextText();
            return number(static_cast<int64_t>(text.size())) && say(text + "\n");
        }
        if (verb == "READ") {
            const std::string value = server_.attribute(words);
            return value.empty() ? number(-ENOENT)
                                 : number(static_cast<int64_t>(value.size() + 1)) && say(value + '\0' + "\n");
        }
        if (verb == "WRITE") {
            std::string value;
            const size_t size = std::stoul(words.back());
            return take(value, size) &&
                   number(server_.setAttribute(words, value) ? static_cast<int64_t>(size) : -EINVAL);
        }
        if (verb == "SET") {
            server_.kernelBuffers_ = static_cast<uint32_t>(std::stoul(words.back()));
            return number(0);
        }
        if (verb == "GETTRIG") {
            return getTrigger();
        }
        if (verb == "SETTRIG") {
            const std::lock_guard lock(server_.mutex_);
            server_.trigger_ = words.size() > 2 ? kTrigger : "";
            return number(0);
        }
        if (verb == "OPEN") {
            return open(words);
        }
        if (verb == "READBUF") {
            return readBuffer(std::stoul(words.at(2)));
        }
        if (verb == "CLOSE") {
            ++server_.closed_;
            return number(0);
        }
        return verb != "EXIT" && number(verb == "TIMEOUT" ? 0 : -EINVAL);
    }

    bool getTrigger() {
        if (!server_.board_.needsTrigger) {
            return number(-ENODEV);
        }
        const std::string trigger = server_.trigger();
        return number(static_cast<int64_t>(trigger.size())) && (trigger.empty() || say(trigger + "\n"));
    }

    bool open(const std::vector<std::string>& words) {
        if (server_.board_.needsTrigger && server_.trigger().empty()) {
            return number(-EINVAL);
        }
        mask_ = static_cast<uint32_t>(std::stoul(words.at(3), nullptr, 16));
        fields_.clear();
        const std::vector<FakeScanElement>& elements = server_.board_.elements;
        for (size_t i = 0; i < elements.size(); ++i) {
            if ((mask_ >> i & 1) != 0) {
                fields_.emplace_back(i, fieldOf(elements[i].format));
            }
        }
        if ((mask_ >> elements.size() & 1) != 0) {
            fields_.emplace_back(elements.size(), FakeScanField{.isSigned = true, .bits = 64, .length = 64});
        }
        position_ = 0;
        start_ = Clock::now();
        ++server_.opened_;
        return number(0);
    }

    bool readBuffer(size_t bytes) {
        const size_t frames = bytes / frameBytes();
        const FakeIioBoard& board = server_.board_;
        const uint64_t end = std::min({position_ + frames, board.cutAfter, board.goneAfter, board.silentAfter});
        std::string data;
        for (; position_ < end; ++position_) {
            appendFrame(data);
        }
        if (!waitUntil(end)) {
            return false;
        }
        if (end == board.silentAfter && data.empty()) {
            while (!server_.stopping_ && !hungUp(kPollMilliseconds)) {
            }
            return false;
        }
        if (data.empty()) {
            return end != board.cutAfter && number(-ENODEV);
        }
        char mask[16];
        std::snprintf(mask, sizeof mask, "%08x\n", mask_);
        return number(static_cast<int64_t>(data.size())) && say(mask + data) && (data.size() == bytes || number(0));
    }

    [[nodiscard]] size_t frameBytes() const {
        size_t bytes = 0;
        for (const auto& [index, field] : fields_) {
            const size_t size = field.length / 8;
            bytes = (bytes + size - 1) / size * size + size;
        }
        return bytes;
    }

    void appendFrame(std::string& data) {
        const FakeIioBoard& board = server_.board_;
        const uint64_t frame = position_ < board.loseAt ? position_ : position_ + board.loseFrames;
        const size_t first = data.size();
        for (const auto& [index, field] : fields_) {
            const size_t size = field.length / 8;
            data.resize(first + (data.size() - first + size - 1) / size * size, '\x55');
            append(data, field, index < board.elements.size() ? frame + 1000 * index : timeOf(frame));
        }
    }

    [[nodiscard]] uint64_t timeOf(uint64_t frame) const {
        return static_cast<uint64_t>(static_cast<double>(frame) * 1e9 / server_.rate());
    }

    /// Until so many frames are due; false when the client or the server goes first.
    bool waitUntil(uint64_t frames) {
        const auto due = start_ + std::chrono::nanoseconds(server_.board_.paced ? timeOf(frames) : 0);
        for (Clock::time_point now; (now = Clock::now()) < due;) {
            const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(due - now).count() + 1;
            if (server_.stopping_ || hungUp(static_cast<int>(std::min<int64_t>(left, kPollMilliseconds)))) {
                return false;
            }
        }
        return true;
    }

    [[nodiscard]] bool hungUp(int milliseconds) const {
        pollfd watched{.fd = socket_, .events = POLLRDHUP, .revents = 0};
        return ::poll(&watched, 1, milliseconds) > 0;
    }

    bool number(int64_t value) { return say(std::to_string(value) + "\n"); }

    bool say(const std::string& bytes) {
        for (size_t sent = 0; sent < bytes.size();) {
            const ssize_t now = ::send(socket_, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL);
            if (now <= 0) {
                return false;
            }
            sent += static_cast<size_t>(now);
        }
        return true;
    }

    bool take(std::string& bytes, size_t size) {
        while (received_.size() < size) {
            char buffer[4096];
            const ssize_t now = ::recv(socket_, buffer, sizeof buffer, 0);
            if (now <= 0) {
                return false;
            }
            received_.append(buffer, static_cast<size_t>(now));
        }
        bytes = received_.substr(0, size);
        received_.erase(0, size);
        return true;
    }

    bool readLine(std::string& line) {
        line.clear();
        for (std::string byte; take(byte, 1);) {
            if (byte == "\n") {
                return true;
            }
            line += byte;
        }
        return false;
    }

    FakeIiod& server_;
    const int socket_;
    std::string received_;
    std::vector<std::pair<size_t, FakeScanField>> fields_;
    uint32_t mask_ = 0;
    uint64_t position_ = 0;
    Clock::time_point start_;
    std::thread thread_;
};

FakeIiod::FakeIiod(FakeIioBoard board, uint16_t port) : board_(std::move(board)) {
    listener_ = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const int yes = 1;
    ::setsockopt(listener_, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(port);
    socklen_t size = sizeof address;
    auto* const plain = reinterpret_cast<sockaddr*>(&address);
    if (::bind(listener_, plain, size) == 0 && ::listen(listener_, 8) == 0 &&
        ::getsockname(listener_, plain, &size) == 0) {
        port_ = ntohs(address.sin_port);
        thread_ = std::thread([this] { listen(); });
    }
}

FakeIiod::~FakeIiod() {
    stopping_ = true;
    if (thread_.joinable()) {
        thread_.join();
    }
    connections_.clear();
    ::close(listener_);
}

void FakeIiod::listen() {
    pollfd watched{.fd = listener_, .events = POLLIN, .revents = 0};
    while (!stopping_) {
        if (::poll(&watched, 1, kPollMilliseconds) <= 0) {
            continue;
        }
        const int socket = ::accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
        const int yes = 1;
        if (socket >= 0) {
            ::setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &yes, sizeof yes);
            connections_.push_back(std::make_unique<Connection>(*this, socket));
        }
    }
}

std::string FakeIiod::uri() const {
    return port_ == 0 ? "" : "ip:127.0.0.1:" + std::to_string(port_);
}

std::string FakeIiod::trigger() const {
    const std::lock_guard lock(mutex_);
    return trigger_;
}

std::string FakeIiod::contextText() const {
    std::string text = kDocumentType;
    text += std::string("<context name=\"fake\" description=\"boards that count\"><device id=\"") + kDevice +
            "\" name=\"fakeadc\">";
    size_t index = 0;
    for (const FakeScanElement& element : board_.elements) {
        text += "<channel id=\"" + element.id + "\" type=\"input\"><scan-element index=\"" + std::to_string(index++) +
                "\" format=\"" + escaped(element.format) + "\" />";
        for (const auto& [name, value] : {std::pair("scale", element.scale), std::pair("offset", element.offset)}) {
            if (!value.empty()) {
                text +=
                    std::string("<attribute name=\"") + name + "\" filename=\"in_" + element.id + "_" + name + "\" />";
            }
        }
        text += "</channel>";
    }
    if (board_.timestamp) {
        text += "<channel id=\"timestamp\" type=\"input\"><scan-element index=\"" + std::to_string(index) +
                "\" format=\"le:s64/64&gt;&gt;0\" /></channel>";
    }
    if (!board_.rates.empty()) {
        text += "<attribute name=\"sampling_frequency\" /><attribute name=\"sampling_frequency_available\" />";
    }
    text += "<buffer-attribute name=\"length\" /></device>";
    if (board_.needsTrigger) {
        text += std::string("<device id=\"trigger0\" name=\"") + kTrigger + "\" />";
    }
    return text + "</context>";
}

std::string FakeIiod::attribute(const std::vector<std::string>& words) const {
    const std::string& name = words.back();
    if (name == "sampling_frequency") {
        char text[32];
        std::snprintf(text, sizeof text, "%.9g", rate());
        return text;
    }
    if (name == "sampling_frequency_available") {
        return board_.rates;
    }
    const auto element = std::find_if(board_.elements.begin(), board_.elements.end(), [&](const FakeScanElement& each) {
        return words.size() == 5 && each.id == words[3];
    });
    if (element == board_.elements.end()) {
        return "";
    }
    return name == "scale" ? element->scale : name == "offset" ? element->offset : "";
}

bool FakeIiod::setAttribute(const std::vector<std::string>& words, const std::string& value) {
    if (words.at(words.size() - 2) != "sampling_frequency") {
        return true;
    }
    // Like boards do: a rate that is not in the list is refused; between limits it is corrected to what they can do.
    const double wished = std::stod(value);
    if (board_.rates.front() == '[') {
        double least = 0.0;
        double step = 0.0;
        double most = 0.0;
        std::sscanf(board_.rates.c_str(), "[%lf %lf %lf]", &least, &step, &most);
        rate_ = std::clamp(wished, least, most);
        return true;
    }
    std::istringstream list(board_.rates);
    for (double rate = 0.0; list >> rate;) {
        if (rate == wished) {
            rate_ = rate;
            return true;
        }
    }
    return false;
}

}  // namespace tarno2::test
