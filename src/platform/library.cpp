#include "platform/library.h"

#include <utility>

namespace tarno2 {

Library::~Library() {
    unload();
}

Library::Library(Library&& other) noexcept : handle_(std::exchange(other.handle_, nullptr)) {}

Library& Library::operator=(Library&& other) noexcept {
    if (this != &other) {
        unload();
        handle_ = std::exchange(other.handle_, nullptr);
    }
    return *this;
}

}  // namespace tarno2
