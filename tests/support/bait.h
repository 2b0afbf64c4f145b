#pragma once

#include <cstdint>
#include <map>
#include <string>

namespace tarno2::test {

/// A file, folder or link as it is found, without following it.
struct Found {
    uint64_t number = 0;   ///< that the file system gives it; 0 on Windows
    uint32_t mode = 0;     ///< kind and rights; 0 on Windows
    int64_t modified = 0;  ///< in the file system's own units
    int64_t changed = 0;   ///< the same; 0 on Windows
    std::string contents;  ///< the target of a link
    friend bool operator==(const Found&, const Found&) = default;
};

/// What lies in a folder, by name.
using Contents = std::map<std::string, Found>;
[[nodiscard]] Contents lookInto(const std::string& folder);

/// Files of others, which whoever records or recovers beside them must not touch.
class Bait {
public:
    /// Notes what is in the folder now.
    explicit Bait(std::string folder) : folder_(std::move(folder)), contents_(lookInto(folder_)) {}
    [[nodiscard]] const std::string& folder() const { return folder_; }
    [[nodiscard]] bool has(const std::string& name) const { return contents_.contains(name); }
    /// The first that is not what it was: other contents, times or place on the disk. Empty: none.
    [[nodiscard]] std::string touched() const;

private:
    std::string folder_;
    Contents contents_;
};

}  // namespace tarno2::test
