#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace vorlane {

/// A file that grows by appending up to a size, and is then renamed to "PATH.1", the older "PATH.1" to "PATH.2", and so
/// on. Mode 0600. One thread at a time.
class RotatingFile {
public:
    /// Opens no file yet. `keptFiles` is the number of renamed files to keep; 0 deletes a full file.
    RotatingFile(std::string path, std::size_t longestSize, std::size_t keptFiles);
    ~RotatingFile();
    RotatingFile(const RotatingFile&) = delete;
    RotatingFile& operator=(const RotatingFile&) = delete;

    /// Appends the bytes, to a new file if they would exceed the size. Returns 0, or the error number of the system
    /// call that failed. After a failure the next call opens the file again.
    int append(std::string_view bytes);

    const std::string& path() const { return path_; }

private:
    int open();
    int rotate();
    int write(std::string_view bytes);
    void close();
    std::string keptPath(std::size_t number) const;

    // Fixed at construction.
    const std::string path_;
    const std::size_t longestSize_;
    const std::size_t keptFiles_;

    int descriptor_ = -1;
    std::size_t size_ = 0;
};

}  // namespace vorlane
