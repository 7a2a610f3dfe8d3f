#include "Inbox/VLInboxDatabaseFile.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <filesystem>
#include <system_error>
#include <utility>

#include "Public/VLLog.h"

namespace vorlane {

namespace {

constexpr mode_t kFileMode = 0600;
constexpr mode_t kPermissionBits = 07777;
/// What SQLite appends to the database's path.
constexpr std::array kCompanions{"-journal", "-wal", "-shm"};
constexpr std::array kSuffixes{"", "-journal", "-wal", "-shm"};

using Status = struct stat;

/// The status of the directory entry itself; `nullopt` if there is none.
std::optional<Status> statusOfEntry(const std::string& path) {
    Status status{};
    return ::lstat(path.c_str(), &status) == 0 ? std::optional(status) : std::nullopt;
}

/// A directory cannot block: opening it as a database fails.
bool isUsableAsDatabase(const std::string& path) {
    Status status{};
    if (!statusOfEntry(path)) return true;
    return ::stat(path.c_str(), &status) == 0 && (S_ISREG(status.st_mode) || S_ISDIR(status.st_mode));
}

/// SQLite does not follow symbolic links here.
bool isUsableAsCompanion(const std::string& path) {
    const auto status = statusOfEntry(path);
    return !status || S_ISREG(status->st_mode);
}

/// Frees the name of the newest copy, and keeps the two copies before it.
std::string nameOfCopy(const std::string& path) {
    auto newest = path + ".corrupt";
    for (const char* suffix : kSuffixes) {
        std::rename((newest + ".1" + suffix).c_str(), (newest + ".2" + suffix).c_str());
        std::rename((newest + suffix).c_str(), (newest + ".1" + suffix).c_str());
    }
    return newest;
}

void moveAside(const std::string& path) {
    const bool isMoved = std::rename(path.c_str(), nameOfCopy(path).c_str()) == 0;
    logMessage(VLLogLevel::Error, fmt::format("Inbox: {} {}, which is no regular file",
                                              isMoved ? "moved aside" : "unable to move aside", path));
}

/// SQLite appends the suffixes to the path of the file itself, and not to that of a symbolic link.
std::string resolved(const std::string& path) {
    const auto status = statusOfEntry(path);
    if (!status || !S_ISLNK(status->st_mode)) return path;
    std::error_code error;
    const auto target = std::filesystem::canonical(path, error);
    return error ? path : target.string();
}

}  // namespace

VLInboxDatabaseFile::VLInboxDatabaseFile(std::string path) : path_(std::move(path)) {}

bool VLInboxDatabaseFile::exists() const { return statusOfEntry(path_).has_value(); }

void VLInboxDatabaseFile::prepare() const {
    if (!isUsableAsDatabase(path_)) moveAside(path_);
    makePrivate();
    const auto database = resolved(path_);
    for (const char* companion : kCompanions) {
        if (!isUsableAsCompanion(database + companion)) moveAside(database + companion);
    }
}

void VLInboxDatabaseFile::makePrivate() const {
    const int created = ::open(path_.c_str(), O_CREAT | O_EXCL | O_RDONLY | O_NOFOLLOW | O_CLOEXEC, kFileMode);
    if (created >= 0) {
        ::close(created);
        return;
    }
    // O_PATH: closing any other descriptor of the file would drop the locks that this process holds on it.
    const int file = ::open(path_.c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC);
    if (file < 0) return;
    Status status{};
    const bool isOpenToOthers =
        ::fstat(file, &status) == 0 && S_ISREG(status.st_mode) && (status.st_mode & kPermissionBits) != kFileMode;
    // fchmod() refuses such a descriptor. Its name under /proc leads to the same file even if the path has changed.
    if (isOpenToOthers) ::chmod(fmt::format("/proc/self/fd/{}", file).c_str(), kFileMode);
    ::close(file);
}

std::string VLInboxDatabaseFile::remove() const {
    std::error_code error;
    std::filesystem::remove(path_, error);
    return error ? error.message() : std::string();
}

std::optional<std::string> VLInboxDatabaseFile::replaceWith(const std::string& replacement) const {
    auto copy = nameOfCopy(path_);
    std::error_code ignored;
    // With a hard link, the path leads to a database at any instant. Some file systems have no hard links.
    const bool isKept = ::link(path_.c_str(), copy.c_str()) == 0 || std::rename(path_.c_str(), copy.c_str()) == 0;
    if (!isKept) return std::nullopt;
    for (const char* companion : kCompanions) {
        // A journal left beside the new file would be rolled back into it.
        const auto source = path_ + companion;
        if (std::rename(source.c_str(), (copy + companion).c_str()) != 0) std::filesystem::remove(source, ignored);
    }
    if (std::rename(replacement.c_str(), path_.c_str()) != 0) return std::nullopt;
    return copy;
}

}  // namespace vorlane
