#include "platform/event.h"

#include <utility>

namespace tarno2 {

namespace {

/// No event of any system has this number.
constexpr intptr_t kNoHandle = -1;

}  // namespace

// Windows handles are 32 bits wide in 64-bit programs too, extended with their sign.
Event::Event(Borrowed /*tag*/, uint32_t number) : handle_(static_cast<int32_t>(number)), owned_(false) {}

Event Event::wrap(uint32_t number) {
    return {Borrowed{}, number};
}

Event::~Event() {
    close();
}

Event::Event(Event&& other) noexcept
    : handle_(std::exchange(other.handle_, kNoHandle)), owned_(std::exchange(other.owned_, false)) {}

Event& Event::operator=(Event&& other) noexcept {
    if (this != &other) {
        close();
        handle_ = std::exchange(other.handle_, kNoHandle);
        owned_ = std::exchange(other.owned_, false);
    }
    return *this;
}

uint32_t Event::number() const {
    return static_cast<uint32_t>(handle_);
}

}  // namespace tarno2
