#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <utility>

namespace vorlane {

/// A file descriptor that closes itself.
class FileDescriptor {
public:
    FileDescriptor() = default;
    explicit FileDescriptor(int number) : number_(number) {}
    ~FileDescriptor() { close(); }
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;
    FileDescriptor(FileDescriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept {
        std::swap(number_, other.number_);
        return *this;
    }

    /// Opens an existing item and closes it in child processes. If that fails, `isOpen()` is false and `errno` is set.
    static FileDescriptor open(const std::string& path, int flags) {
        int number = -1;
        do {
            number = ::open(path.c_str(), flags | O_CLOEXEC);
        } while (number < 0 && errno == EINTR);
        return FileDescriptor(number);
    }

    bool isOpen() const { return number_ >= 0; }
    int number() const { return number_; }
    bool close() { return number_ < 0 || ::close(std::exchange(number_, -1)) == 0; }

private:
    int number_ = -1;
};

}  // namespace vorlane
