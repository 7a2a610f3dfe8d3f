#pragma once

#include <functional>
#include <string>

namespace vorlane {

/// Calls a function after this thread has replaced a file, as long as the object exists: the files are then in a state
/// that a kill of the process would leave behind.
class FileReplacements {
public:
    using Observer = std::function<void(const std::string& path)>;

    explicit FileReplacements(Observer observer);
    ~FileReplacements();
    FileReplacements(const FileReplacements&) = delete;
    FileReplacements& operator=(const FileReplacements&) = delete;
};

}  // namespace vorlane
