#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace tarno2::test {

/// A pair of terminals that stands in for a serial line: what is written here comes in at the port `name`. POSIX alone.
class Pty {
public:
    Pty();
    ~Pty();
    Pty(const Pty&) = delete;
    Pty& operator=(const Pty&) = delete;

    [[nodiscard]] const std::string& name() const { return name_; }
    /// Waits until the port has taken all; false when it is not there any more, or takes nothing for a minute.
    bool write(std::string_view bytes);
    /// Waits until so many bytes have come from the port, at most a minute.
    std::string read(size_t bytes);
    /// The line is there no more, as when an adapter is pulled out.
    void unplug();

private:
    bool waitFor(short events) const;
    int line_ = -1;
    std::string name_;
};

}  // namespace tarno2::test
