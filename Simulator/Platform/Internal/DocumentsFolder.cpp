#include "Simulator/Platform/Internal/DocumentsFolder.h"

#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <system_error>

#include "Platform/NSFileManager.h"

namespace vorlane {

namespace {

std::string makeTemporaryFolder() {
    auto path = (std::filesystem::temp_directory_path() / "vorlane-phone-XXXXXX").string();
    if (!mkdtemp(path.data())) throw std::runtime_error("cannot create a folder like " + path);
    return path;
}

}  // namespace

DocumentsFolder::DocumentsFolder(const std::string& path)
    : isTemporary_(path.empty()), path_(isTemporary_ ? makeTemporaryFolder() : path) {
    NSFileManager::createDirectoryAtPath(path_);
}

DocumentsFolder::~DocumentsFolder() {
    if (!isTemporary_) return;
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

}  // namespace vorlane
