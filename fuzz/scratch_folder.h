#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <random>
#include <string>
#include <string_view>

/// Where a reader finds the files of an input: a folder in memory where there is one, gone with the program.
class ScratchFolder {
public:
    ScratchFolder() {
        const std::filesystem::path memory = "/dev/shm";
        std::error_code error;
        const auto root =
            std::filesystem::is_directory(memory, error) ? memory : std::filesystem::temp_directory_path();
        path_ = (root / ("tarno2_fuzz_" + std::to_string(std::random_device{}()))).string();
        std::filesystem::create_directory(path_);
    }
    ~ScratchFolder() {
        std::error_code error;
        std::filesystem::remove_all(path_, error);
    }
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    [[nodiscard]] const std::string& path() const { return path_; }
    [[nodiscard]] std::string file(const std::string& name) const { return path_ + '/' + name; }
    std::string write(const std::string& name, std::string_view contents) const {
        std::ofstream out(file(name), std::ios::binary);
        out.write(contents.data(), static_cast<std::streamsize>(contents.size()));
        return file(name);
    }
    [[nodiscard]] std::string read(const std::string& name) const {
        std::ifstream in(file(name), std::ios::binary);
        return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
    }
    /// Removes what lies in the folder, folders in it too.
    void empty() const {
        for (const auto& entry : std::filesystem::directory_iterator(path_)) {
            std::filesystem::remove_all(entry.path());
        }
    }
    /// The files and links below it, with contents or target, by relative name.
    [[nodiscard]] std::map<std::string, std::string> contents() const {
        std::map<std::string, std::string> all;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(path_)) {
            const std::string name = entry.path().string().substr(path_.size() + 1);
            if (entry.is_symlink()) {
                all[name] = "-> " + std::filesystem::read_symlink(entry.path()).string();
            } else if (entry.is_regular_file()) {
                all[name] = read(name);
            }
        }
        return all;
    }

private:
    std::string path_;
};

/// An input in parts: what stands before, between and after the lines "====".
class InputParts {
public:
    InputParts(const uint8_t* data, size_t size) : rest_(reinterpret_cast<const char*>(data), size) {}
    /// The next part; empty once there is none.
    std::string_view next() {
        constexpr std::string_view kBorder = "\n====\n";
        const size_t end = rest_.find(kBorder);
        const std::string_view part = rest_.substr(0, end);
        rest_.remove_prefix(end == std::string_view::npos ? rest_.size() : end + kBorder.size());
        return part;
    }
    /// The next part as letters that choose something.
    class Choice {
    public:
        explicit Choice(std::string_view letters) : letters_(letters) {}
        [[nodiscard]] bool has(char letter) const { return letters_.find(letter) != std::string_view::npos; }

    private:
        std::string_view letters_;
    };
    Choice choice() { return Choice(next()); }

private:
    std::string_view rest_;
};

/// Stops the program, which the fuzzer takes for a finding.
inline void require(bool condition) {
    if (!condition) {
        std::abort();
    }
}
