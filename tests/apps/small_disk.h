#pragma once

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <string>

namespace tarno2::test {

/// A file system in memory of its own, as small as wished.
class SmallDisk {
public:
    SmallDisk(const std::string& folder, uint64_t bytes) : folder_(folder) {
        std::filesystem::create_directory(folder);
        const std::string command =
            "mount -t tmpfs -o size=" + std::to_string(bytes) + " tmpfs \"" + folder + "\" 2>&1";
        mounted_ = std::system(command.c_str()) == 0;
    }
    ~SmallDisk() {
        if (mounted_) {
            EXPECT_EQ(std::system(("umount \"" + folder_ + '"').c_str()), 0);
        }
    }
    SmallDisk(const SmallDisk&) = delete;
    SmallDisk& operator=(const SmallDisk&) = delete;
    /// False where none can be made: that takes Linux, and root.
    [[nodiscard]] bool mounted() const { return mounted_; }
    /// Takes what is left.
    void fill() const {
        std::ofstream filler(folder_ + "/other", std::ios::binary);
        const std::string block(4096, 'x');
        while (filler.write(block.data(), 4096).flush()) {
        }
    }

private:
    std::string folder_;
    bool mounted_ = false;
};

}  // namespace tarno2::test
