#include "Platform/Linux/Device/LinuxEnvironment.h"

#include <fmt/format.h>
#include <pwd.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <filesystem>
#include <string_view>
#include <system_error>
#include <vector>

namespace vorlane {

std::optional<std::string> environmentVariable(const char* name) {
    const char* value = std::getenv(name);
    if (value == nullptr || *value == '\0') return std::nullopt;
    return value;
}

std::string executablePath() {
    std::error_code error;
    std::string path = std::filesystem::read_symlink("/proc/self/exe", error).string();
    // The kernel's mark on a program that was replaced or removed while it runs.
    constexpr std::string_view kDeleted = " (deleted)";
    if (path.ends_with(kDeleted)) path.resize(path.size() - kDeleted.size());
    return path;
}

std::string executableFolder() {
    const std::string path = executablePath();
    return path.empty() ? path : std::filesystem::path(path).parent_path().string();
}

std::string executableName() {
    const std::string name = std::filesystem::path(executablePath()).filename().string();
    return name.empty() ? "vorlane" : name;
}

std::string homeFolder(const EnvironmentLookup& lookup) {
    if (const auto home = lookup("HOME")) return *home;
    passwd entry{};
    passwd* found = nullptr;
    std::array<char, 4096> buffer{};
    if (getpwuid_r(getuid(), &entry, buffer.data(), buffer.size(), &found) != 0 || found == nullptr) return {};
    return found->pw_dir == nullptr ? std::string() : std::string(found->pw_dir);
}

std::string applicationDataFolder(const EnvironmentLookup& lookup, const std::string& home, const std::string& name) {
    if (const auto data = lookup("XDG_DATA_HOME"); data && data->starts_with('/')) {
        return (std::filesystem::path(*data) / name).string();
    }
    if (!home.empty()) return (std::filesystem::path(home) / ".local/share" / name).string();
    return fmt::format("/tmp/{}-{}", name, getuid());
}

bool isFolderName(const std::string& name) {
    return !name.empty() && name != "." && name != ".." && name.find('/') == std::string::npos &&
           name.find('\0') == std::string::npos;
}

}  // namespace vorlane
