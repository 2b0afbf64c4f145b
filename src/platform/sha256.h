#pragma once

#include <cstddef>
#include <memory>
#include <span>
#include <string>

namespace tarno2 {

/// The SHA-256 of bytes that come one piece after the other. An object belongs to one thread at a time.
class Sha256 {
public:
    Sha256();
    ~Sha256();
    Sha256(Sha256&& other) noexcept;
    Sha256& operator=(Sha256&& other) noexcept;

    /// False when there was no memory for it: then nothing is computed.
    [[nodiscard]] bool valid() const { return state_ != nullptr; }
    void add(std::span<const std::byte> bytes);
    /// The checksum of everything so far, as 64 hexadecimal digits in lower case; empty when it is not valid. What is
    /// added next begins anew.
    [[nodiscard]] std::string take();

private:
    struct State;
    std::unique_ptr<State> state_;
};

}  // namespace tarno2
