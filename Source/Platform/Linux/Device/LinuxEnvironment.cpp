#include "Platform/Linux/Device/LinuxEnvironment.h"

#include <fmt/format.h>
#include <pwd.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <filesystem>
#include <string_view>
#include <system_error>
#include <vector>

#include "Platform/Internal/StorageFaults.h"

namespace vorlane {

namespace {

/// No folder can be made in a device, whoever the user is.
constexpr const char* kNoFolder = "/dev/null";

}  // namespace

std::optional<std::string> environmentVariable(const char* name) {
    const char* value = std::getenv(name);
    if (value == nullptr || *value == '\0') return std::nullopt;
    return value;
}

std::string executablePath() {
    std::error_code error;
    std::string path = std::filesystem::read_symlink("/proc/self/exe", error).string();
    // The kernel's mark on a program that was replaced or removed while it was running.
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
    constexpr std::size_t kLongestEntry = std::size_t{1} << 20U;
    passwd entry{};
    passwd* found = nullptr;
    int error = ERANGE;
    std::vector<char> buffer;
    for (std::size_t size = 4096; error == ERANGE && size <= kLongestEntry; size *= 4) {
        buffer.resize(size);
        error = getpwuid_r(getuid(), &entry, buffer.data(), buffer.size(), &found);
    }
    return error != 0 || found == nullptr || found->pw_dir == nullptr ? std::string() : std::string(found->pw_dir);
}

std::string applicationDataFolder(const EnvironmentLookup& lookup, const std::string& home, const std::string& name) {
    const auto within = [&name](const std::string& folder) { return (std::filesystem::path(folder) / name).string(); };
    if (const auto state = lookup("STATE_DIRECTORY")) {
        const auto first = state->substr(0, state->find(':'));
        if (first.starts_with('/')) return within(first);
    }
    if (const auto data = lookup("XDG_DATA_HOME"); data && data->starts_with('/')) return within(*data);
    std::error_code error;
    if (home.starts_with('/') && std::filesystem::is_directory(home, error)) return within(home + "/.local/share");
    const auto missing =
        home.empty() ? "the user has no home folder" : fmt::format("the home folder {} is missing", home);
    if (const auto runtime = lookup("XDG_RUNTIME_DIR"); runtime && runtime->starts_with('/')) {
        const auto folder = within(*runtime);
        StorageFaults::shared().folderIsShortLived(folder, missing);
        return folder;
    }
    const auto folder = within(kNoFolder);
    StorageFaults::shared().folderIsMissing(
        folder,
        fmt::format("{}, and neither $STATE_DIRECTORY nor $XDG_DATA_HOME names a folder for {}", missing, name));
    return folder;
}

bool isFolderName(const std::string& name) {
    return !name.empty() && name != "." && name != ".." && name.find('/') == std::string::npos &&
           name.find('\0') == std::string::npos;
}

}  // namespace vorlane
