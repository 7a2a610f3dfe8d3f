#pragma once

#include <string>

namespace vorlane {

/// The documents folder of a simulated phone: the caller's, or a fresh temporary one that is removed with this object.
class DocumentsFolder {
public:
    /// Creates the folder if it is missing. An empty path stands for a temporary folder. Throws std::runtime_error if
    /// no temporary folder can be created.
    explicit DocumentsFolder(const std::string& path);
    ~DocumentsFolder();

    DocumentsFolder(const DocumentsFolder&) = delete;
    DocumentsFolder& operator=(const DocumentsFolder&) = delete;

    const std::string& path() const { return path_; }
    bool isTemporary() const { return isTemporary_; }

private:
    // Fixed at construction.
    const bool isTemporary_;
    const std::string path_;
};

}  // namespace vorlane
