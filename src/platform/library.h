#pragma once

#include <string>

namespace tarno2 {

/// What the file names of dynamic libraries end with, the point included.
extern const char* const kLibrarySuffix;

/// A loaded dynamic library; unloaded on destruction.
class Library {
public:
    Library() = default;
    ~Library();
    Library(Library&& other) noexcept;
    Library& operator=(Library&& other) noexcept;
    Library(const Library&) = delete;
    Library& operator=(const Library&) = delete;

    /// Loads the library at `path` after unloading an earlier one. On failure `error` gets the system's words.
    [[nodiscard]] bool load(const std::string& path, std::string& error);
    void unload();
    [[nodiscard]] bool loaded() const { return handle_ != nullptr; }
    /// The address of an exported entry, null when there is none.
    [[nodiscard]] void* symbol(const char* name) const;

private:
    void* handle_ = nullptr;
};

/// Keeps the library that holds this address in memory until the program ends, however often it is unloaded.
void keepLibraryOf(void (*function)());

}  // namespace tarno2
