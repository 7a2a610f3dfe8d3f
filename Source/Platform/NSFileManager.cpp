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
#include <utility>

namespace vorlane {

namespace {

constexpr std::size_t kLongestFile = std::size_t{64} << 20U;
constexpr mode_t kFolderMode = 0700;
// Between a file's name and the random letters of its temporary one. An application keeps files of its own in the same
// folder, under names like "Name.plist.backup".
constexpr std::string_view kTemporaryMark = ".vorlane-";
constexpr std::string_view kRandomLetters = "XXXXXX";

/// A file descriptor that closes itself.
class Descriptor {
public:
    explicit Descriptor(int number) : number_(number) {}
    ~Descriptor() { close(); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    bool isOpen() const { return number_ >= 0; }
    int number() const { return number_; }
    bool close() { return number_ < 0 || ::close(std::exchange(number_, -1)) == 0; }

private:
    int number_;
};

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

/// A new file beside the path, with mode 0600 and a name that no other one has; its folder is made when it is missing.
int makeTemporaryFile(std::string& temporary, const std::string& path) {
    const int file = openTemporaryFile(temporary, path);
    if (file >= 0 || errno != ENOENT) return file;
    if (!NSFileManager::createDirectoryAtPath(std::filesystem::path(path).parent_path())) return -1;
    return openTemporaryFile(temporary, path);
}

double seconds(const statx_timestamp& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

/// Whether `makeTemporaryFile` names a property list's temporary file so: "Name.plist.vorlane-a1B2c3".
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

/// When a regular file was last written; nothing for anything else.
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
    if (hasNUL(path)) return std::nullopt;
    // Not blocking, so that a named pipe in the file's place cannot hold the caller up.
    const Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    struct stat information {};
    if (!file.isOpen() || fstat(file.number(), &information) != 0 || !S_ISREG(information.st_mode)) return std::nullopt;
    if (information.st_size < 0 || static_cast<std::size_t>(information.st_size) > kLongestFile) return std::nullopt;
    Data bytes(static_cast<std::size_t>(information.st_size));
    std::size_t done = 0;
    while (done < bytes.size()) {
        const auto count = ::read(file.number(), bytes.data() + done, bytes.size() - done);
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return std::nullopt;
        if (count == 0) break;
        done += static_cast<std::size_t>(count);
    }
    bytes.resize(done);
    return bytes;
}

bool NSFileManager::writeToFile(const Data& bytes, const std::string& path) {
    if (path.empty() || hasNUL(path)) return false;
    std::string temporary;
    Descriptor file(makeTemporaryFile(temporary, path));
    if (!file.isOpen()) return false;
    const bool isReplaced = writeAll(file.number(), bytes) && fdatasync(file.number()) == 0 && file.close() &&
                            ::rename(temporary.c_str(), path.c_str()) == 0;
    if (!isReplaced) ::unlink(temporary.c_str());
    return isReplaced;
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
    if (path.empty() || hasNUL(path)) return false;
    for (std::size_t end = path.find('/', 1);; end = path.find('/', end + 1)) {
        const auto folder = path.substr(0, end);
        if (::mkdir(folder.c_str(), kFolderMode) != 0 && errno != EEXIST) {
            std::error_code error;
            if (!std::filesystem::is_directory(folder, error)) return false;
        }
        if (end == std::string::npos) break;
    }
    std::error_code error;
    return std::filesystem::is_directory(path, error);
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
