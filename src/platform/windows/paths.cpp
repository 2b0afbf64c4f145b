#include "platform/paths.h"

#include <algorithm>
#include <windows.h>

#include "platform/c_locale.h"
#include "platform/file.h"

namespace tarno2 {

namespace {

constexpr size_t kLongestPath = 32768;

std::string nameOfLength(std::string buffer, DWORD length) {
    buffer.resize(std::min<size_t>(length, buffer.size()));
    return buffer;
}

}  // namespace

const char kPathSeparator = '\\';

bool isPossiblePath(std::string_view path) {
    constexpr std::string_view kVerbatim = "\\\\?\\";
    if (path.starts_with(kVerbatim)) {
        path.remove_prefix(kVerbatim.size());
    }
    const size_t drive = path.size() >= 2 && path[1] == ':' ? 2 : 0;
    const auto forbidden = [](char c) {
        return static_cast<unsigned char>(c) < ' ' || std::string_view("\"<>|?*:").find(c) != std::string_view::npos;
    };
    return std::none_of(path.begin() + static_cast<std::ptrdiff_t>(drive), path.end(), forbidden);
}

bool isPathSeparator(char c) {
    return c == '\\' || c == '/';
}

std::optional<std::string> environmentVariable(const char* name) {
    std::string value(kLongestPath, '\0');
    SetLastError(ERROR_SUCCESS);
    const DWORD length = GetEnvironmentVariableA(name, value.data(), kLongestPath);
    if (length == 0 && GetLastError() != ERROR_SUCCESS) {
        return std::nullopt;
    }
    return nameOfLength(std::move(value), length);
}

std::string executableFolder() {
    std::string path(kLongestPath, '\0');
    const DWORD length = GetModuleFileNameA(nullptr, path.data(), kLongestPath);
    return length == 0 ? currentFolder() : parentFolder(nameOfLength(std::move(path), length));
}

std::string currentFolder() {
    std::string path(kLongestPath, '\0');
    const DWORD length = GetCurrentDirectoryA(kLongestPath, path.data());
    return nameOfLength(std::move(path), length);
}

bool isWritableFolder(const std::string& folder) {
    // Access rights, attributes and virtualisation all have a say: only trying tells.
    const std::string probe = joinPath(folder, formatText("tarno2-%lx.tmp", GetCurrentProcessId()));
    const HANDLE file =
        CreateFileA(probe.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                    CREATE_ALWAYS, FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        return false;
    }
    CloseHandle(file);
    return true;
}

std::string userSettingsFolder() {
    const auto data = environmentVariable("APPDATA");
    return data && !data->empty() ? joinPath(*data, "Tarno2") : std::string();
}

}  // namespace tarno2
