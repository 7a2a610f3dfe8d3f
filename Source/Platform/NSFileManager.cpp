#include "Platform/NSFileManager.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <string_view>
#include <system_error>

#include "Platform/Internal/DocumentLimits.h"
#include "Platform/Internal/FileDescriptor.h"

namespace vorlane {

namespace {

constexpr mode_t kFolderMode = 0700;
// Between a file's name and the random letters of its temporary one. An application keeps files of its own in the same
// folder, under names like "Name.plist.backup".
constexpr std::string_view kTemporaryMark = ".vorlane-";
constexpr std::string_view kRandomLetters = "XXXXXX";

bool hasNUL(const std::string& path) { return path.find('\0') != std::string::npos; }

bool writeAll(int descriptor, const Data& bytes) {
    std::size_t done = 0;
    while (done < bytes.size()) {
        const auto count = ::write(descriptor, bytes.data() + done, bytes.size() - done);
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return false;
        done += static_cast<std::size_t>(count);
    }
    return true;
}

int openTemporaryFile(std::string& temporary, const std::string& path) {
    temporary = path;
    temporary += kTemporaryMark;
    temporary += kRandomLetters;
    return mkostemp(temporary.data(), O_CLOEXEC);
}

/// Opens a new file beside the path, with mode 0600 and a unique name. Makes the folder if it is missing.
int makeTemporaryFile(std::string& temporary, const std::string& path) {
    const int file = openTemporaryFile(temporary, path);
    if (file >= 0 || errno != ENOENT) return file;
    if (!NSFileManager::createDirectoryAtPath(std::filesystem::path(path).parent_path())) return -1;
    return openTemporaryFile(temporary, path);
}

double seconds(const statx_timestamp& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

/// Whether `makeTemporaryFile` gives such a name to a property list's temporary file: "Name.plist.vorlane-a1B2c3".
bool isTemporaryName(std::string_view name) {
    if (name.size() < kRandomLetters.size()) return false;
    const auto letters = name.substr(name.size() - kRandomLetters.size());
    name.remove_suffix(letters.size());
    if (!name.ends_with(kTemporaryMark)) return false;
    name.remove_suffix(kTemporaryMark.size());
    const auto isAlphanumeric = [](char letter) {
        return (letter >= '0' && letter <= '9') || (letter >= 'a' && letter <= 'z') || (letter >= 'A' && letter <= 'Z');
    };
    return name.ends_with(".plist") && std::ranges::all_of(letters, isAlphanumeric);
}

/// Returns when a regular file was last written; `nullopt` for any other item.
std::optional<double> modificationDateOfFile(const std::string& path) {
    struct statx information {};
    if (statx(AT_FDCWD, path.c_str(), AT_SYMLINK_NOFOLLOW, STATX_TYPE | STATX_MTIME, &information) != 0 ||
        !S_ISREG(information.stx_mode)) {
        return std::nullopt;
    }
    return seconds(information.stx_mtime);
}

}  // namespace

std::optional<Data> NSFileManager::contentsAtPath(const std::string& path) {
    Data bytes;
    if (readFile(path, bytes) != 0) return std::nullopt;
    return bytes;
}

int NSFileManager::readFile(const std::string& path, Data& bytes) {
    if (hasNUL(path)) return ENOENT;
    // Not blocking: a named pipe in the file's place must not hold the caller up.
    const auto file = FileDescriptor::open(path, O_RDONLY | O_NONBLOCK);
    struct stat information {};
    if (!file.isOpen() || fstat(file.number(), &information) != 0) return errno;
    if (!S_ISREG(information.st_mode)) return EINVAL;
    if (information.st_size < 0 || static_cast<std::size_t>(information.st_size) > DocumentLimits::kLongestPropertyList)
        return EFBIG;
    bytes.resize(static_cast<std::size_t>(information.st_size));
    std::size_t done = 0;
    while (done < bytes.size()) {
        const auto count = ::read(file.number(), bytes.data() + done, bytes.size() - done);
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return errno;
        if (count == 0) break;
        done += static_cast<std::size_t>(count);
    }
    bytes.resize(done);
    return 0;
}

bool NSFileManager::writeToFile(const Data& bytes, const std::string& path) { return replaceFile(bytes, path) == 0; }

int NSFileManager::replaceFile(const Data& bytes, const std::string& path) {
    if (path.empty() || hasNUL(path)) return EINVAL;
    std::string temporary;
    FileDescriptor file(makeTemporaryFile(temporary, path));
    if (!file.isOpen()) return errno;
    const bool isReplaced =
        writeAll(file.number(), bytes) && file.close() && ::rename(temporary.c_str(), path.c_str()) == 0;
    if (isReplaced) return 0;
    const int error = errno;
    ::unlink(temporary.c_str());
    return error;
}

void NSFileManager::removeAbandonedTemporaryFilesInFolder(const std::string& folder, double time) {
    std::error_code error;
    for (auto entry = std::filesystem::directory_iterator(folder, error);
         !error && entry != std::filesystem::directory_iterator(); entry.increment(error)) {
        if (!isTemporaryName(entry->path().filename().string())) continue;
        const auto date = modificationDateOfFile(entry->path());
        if (date && *date < time) ::unlink(entry->path().c_str());
    }
}

bool NSFileManager::createDirectoryAtPath(const std::string& path) {
    if (path.empty() || hasNUL(path)) {
        errno = EINVAL;
        return false;
    }
    int error = 0;
    for (std::size_t end = path.find('/', 1);; end = path.find('/', end + 1)) {
        if (::mkdir(path.substr(0, end).c_str(), kFolderMode) != 0 && errno != EEXIST && error == 0) error = errno;
        if (end == std::string::npos) break;
    }
    struct stat information {};
    if (::stat(path.c_str(), &information) == 0 && S_ISDIR(information.st_mode)) return true;
    errno = error == 0 ? ENOTDIR : error;
    return false;
}

bool NSFileManager::moveItemAtPath(const std::string& path, const std::string& destination) {
    if (hasNUL(path) || hasNUL(destination)) return false;
    return ::rename(path.c_str(), destination.c_str()) == 0;
}

bool NSFileManager::fileExistsAtPath(const std::string& path) {
    std::error_code error;
    return !hasNUL(path) && std::filesystem::exists(path, error);
}

std::optional<double> NSFileManager::creationDateOfItemAtPath(const std::string& path) {
    struct statx information {};
    if (hasNUL(path) || ::statx(AT_FDCWD, path.c_str(), 0, STATX_BTIME | STATX_BASIC_STATS, &information) != 0) {
        return std::nullopt;
    }
    if ((information.stx_mask & STATX_BTIME) != 0) return seconds(information.stx_btime);
    return std::min({seconds(information.stx_atime), seconds(information.stx_mtime), seconds(information.stx_ctime)});
}

}  // namespace vorlane
