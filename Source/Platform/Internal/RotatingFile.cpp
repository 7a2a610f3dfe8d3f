#include "Platform/Internal/RotatingFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <utility>

namespace vorlane {

RotatingFile::RotatingFile(std::string path, std::size_t longestSize, std::size_t keptFiles)
    : path_(std::move(path)), longestSize_(longestSize), keptFiles_(keptFiles) {}

RotatingFile::~RotatingFile() { close(); }

int RotatingFile::append(std::string_view bytes) {
    int error = descriptor_ < 0 ? open() : 0;
    // A line longer than the whole size gets a file of its own.
    if (error == 0 && size_ > 0 && size_ + bytes.size() > longestSize_) error = rotate();
    if (error == 0) error = write(bytes);
    if (error != 0) close();
    return error;
}

int RotatingFile::open() {
    // Not blocking: a FIFO in the file's place would wait for a reader.
    constexpr int kFlags = O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK;
    descriptor_ = ::open(path_.c_str(), kFlags, S_IRUSR | S_IWUSR);
    struct stat status {};
    if (descriptor_ < 0 || fstat(descriptor_, &status) != 0) return errno;
    if (!S_ISREG(status.st_mode)) return EINVAL;
    if (fchmod(descriptor_, S_IRUSR | S_IWUSR) != 0) return errno;
    size_ = static_cast<std::size_t>(status.st_size);
    return 0;
}

int RotatingFile::rotate() {
    close();
    for (std::size_t number = keptFiles_; number > 0; --number) {
        const std::string source = number == 1 ? path_ : keptPath(number - 1);
        if (std::rename(source.c_str(), keptPath(number).c_str()) != 0 && errno != ENOENT) return errno;
    }
    if (keptFiles_ == 0 && unlink(path_.c_str()) != 0 && errno != ENOENT) return errno;
    return open();
}

int RotatingFile::write(std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t count = ::write(descriptor_, bytes.data(), bytes.size());
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return errno;
        bytes.remove_prefix(static_cast<std::size_t>(count));
        size_ += static_cast<std::size_t>(count);
    }
    return 0;
}

void RotatingFile::close() {
    if (descriptor_ >= 0) ::close(descriptor_);
    descriptor_ = -1;
}

std::string RotatingFile::keptPath(std::size_t number) const { return path_ + "." + std::to_string(number); }

}  // namespace vorlane
