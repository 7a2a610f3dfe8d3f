#pragma once

#include <stdlib.h>

#include <filesystem>
#include <stdexcept>
#include <string>
#include <system_error>
#include <vector>

namespace vorlane {

/// An empty folder below $TMPDIR or /tmp. Removed with the object.
class TemporaryFolder {
public:
    TemporaryFolder() : path_((std::filesystem::temp_directory_path() / "vorlane-test-XXXXXX").string()) {
        if (!mkdtemp(path_.data())) throw std::runtime_error("cannot make a folder like " + path_);
    }
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::string& path() const { return path_; }
    std::string path(const std::string& name) const { return path_ + "/" + name; }

    /// Returns the names of the entries, unsorted.
    std::vector<std::string> names() const {
        std::vector<std::string> found;
        for (const auto& entry : std::filesystem::directory_iterator(path_)) found.push_back(entry.path().filename());
        return found;
    }

private:
    std::string path_;
};

}  // namespace vorlane
