#include "platform/sha256.h"

#include <gcrypt.h>
#include <new>

namespace tarno2 {

namespace {

/// The library has to be asked for its version once before it is used; it keeps no secrets here.
bool libraryReady() {
    static const bool ready = [] {
        if (gcry_control(GCRYCTL_INITIALIZATION_FINISHED_P) == 0) {
            if (gcry_check_version(GCRYPT_VERSION) == nullptr) {
                return false;
            }
            static_cast<void>(gcry_control(GCRYCTL_DISABLE_SECMEM, 0));
            static_cast<void>(gcry_control(GCRYCTL_INITIALIZATION_FINISHED, 0));
        }
        return true;
    }();
    return ready;
}

}  // namespace

struct Sha256::State {
    gcry_md_hd_t handle = nullptr;

    State() = default;
    ~State() { gcry_md_close(handle); }
    State(const State&) = delete;
    State& operator=(const State&) = delete;
};

Sha256::Sha256() : state_(new (std::nothrow) State) {
    if (state_ && (!libraryReady() || gcry_md_open(&state_->handle, GCRY_MD_SHA256, 0) != 0)) {
        state_.reset();
    }
}

Sha256::~Sha256() = default;
Sha256::Sha256(Sha256&& other) noexcept = default;
Sha256& Sha256::operator=(Sha256&& other) noexcept = default;

void Sha256::add(std::span<const std::byte> bytes) {
    if (state_) {
        gcry_md_write(state_->handle, bytes.data(), bytes.size());
    }
}

std::string Sha256::take() {
    std::string digits;
    if (state_) {
        constexpr const char* kDigits = "0123456789abcdef";
        const unsigned char* digest = gcry_md_read(state_->handle, GCRY_MD_SHA256);
        const unsigned length = gcry_md_get_algo_dlen(GCRY_MD_SHA256);
        for (unsigned i = 0; i < length; ++i) {
            digits += kDigits[digest[i] >> 4U];
            digits += kDigits[digest[i] & 0xFU];
        }
        gcry_md_reset(state_->handle);
    }
    return digits;
}

}  // namespace tarno2
