#include "tests/support/temporary_folder.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <random>

#include "platform/paths.h"

namespace tarno2::test {

namespace {

void setVariable(const std::string& name, const char* value) {
#if defined(__MINGW32__)
    _putenv_s(name.c_str(), value == nullptr ? "" : value);
#else
    if (value == nullptr) {
        unsetenv(name.c_str());
    } else {
        setenv(name.c_str(), value, 1);
    }
#endif
}

}  // namespace

TemporaryFolder::TemporaryFolder() {
    std::random_device random;
    const auto root = std::filesystem::temp_directory_path();
    std::filesystem::path folder;
    do {
        folder = root / ("tarno2_test_" + std::to_string(random()));
    } while (!std::filesystem::create_directory(folder));
    path_ = folder.string();
}

TemporaryFolder::~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

std::string TemporaryFolder::file(std::string_view name) const {
    // The library's paths take narrow names for UTF-8, which those of Windows are not.
    std::string relative(name);
    std::replace(relative.begin(), relative.end(), '/', kPathSeparator);
    return joinPath(path_, relative);
}

std::string TemporaryFolder::write(std::string_view name, std::string_view contents) const {
    std::ofstream out(file(name), std::ios::binary);
    out.write(contents.data(), static_cast<std::streamsize>(contents.size()));
    EXPECT_TRUE(out.good()) << file(name);
    return file(name);
}

std::string readFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    EXPECT_TRUE(in.is_open()) << path;
    std::string contents;
    std::array<char, 65536> block{};
    while (in.read(block.data(), block.size()) || in.gcount() > 0) {
        contents.append(block.data(), static_cast<size_t>(in.gcount()));
    }
    return contents;
}

std::string quoted(const std::string& text) {
    std::string result = "\"";
    for (const char c : text) {
        if (c == '\\' || c == '"') {
            result += '\\';
        }
        result += c;
    }
    return result + '"';
}

ScopedEnvironment::ScopedEnvironment(const char* name, const std::string& value) : name_(name) {
    if (const char* old = std::getenv(name)) {
        had_ = true;
        old_ = old;
    }
    setVariable(name_, value.c_str());
}

ScopedEnvironment::~ScopedEnvironment() {
    setVariable(name_, had_ ? old_.c_str() : nullptr);
}

}  // namespace tarno2::test
