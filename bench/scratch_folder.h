#pragma once

#include <string>
#include <string_view>

namespace tarno2::bench {

/// A fresh folder for the files of a measurement, removed with all it holds at the end. It lies in
/// $TARNO2_BENCH_FOLDER, or else in the memory file system where there is one, or else in the current folder.
class ScratchFolder {
public:
    /// Throws std::runtime_error when it can't be made.
    ScratchFolder();
    ~ScratchFolder();
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    [[nodiscard]] const std::string& path() const { return path_; }
    /// Full name of a file in the folder.
    [[nodiscard]] std::string file(std::string_view name) const;
    /// Removes all files.
    void clear() const;

private:
    std::string path_;
};

}  // namespace tarno2::bench
