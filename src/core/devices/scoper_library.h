#pragma once

#include <memory>
#include <string>

#include <tarno2/ISCOPERA.h>

#include "platform/library.h"

namespace tarno2 {

/// Drops a plotting object by its own `Release`.
struct ScoperRelease {
    void operator()(ISCOPERA* scoper) const { scoper->Release(); }
};

/// The library that draws signals, with its plotting object: the one that the registry lists, or else the one beside
/// the program. Window thread.
class ScoperLibrary {
public:
    /// Loads the library and writes to the debug log how that went. Without it `object` stays null and `why` says what
    /// is wrong; everything but drawing works.
    bool load(std::string& why);

    /// Null when nothing is loaded. Belongs to this object.
    [[nodiscard]] ISCOPERA* object() const { return object_.get(); }

private:
    [[nodiscard]] bool loadFrom(const std::string& path, std::string& why);

    Library library_;
    std::unique_ptr<ISCOPERA, ScoperRelease> object_;  ///< goes before its library
};

}  // namespace tarno2
