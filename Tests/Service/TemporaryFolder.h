#pragma once

#include <cstdlib>
#include <filesystem>
#include <string>

namespace vorlane::service {

/// A folder of one's own, removed in the end.
class TemporaryFolder {
public:
    TemporaryFolder() {
        std::string pattern = std::filesystem::temp_directory_path() / "vorlane-service-XXXXXX";
        path_ = mkdtemp(pattern.data());
    }
    ~TemporaryFolder() { std::filesystem::remove_all(path_); }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    std::string path(const std::string& name) const { return path_ / name; }

private:
    std::filesystem::path path_;
};

}  // namespace vorlane::service
