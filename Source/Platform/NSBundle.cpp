#include "Platform/NSBundle.h"

#include <filesystem>
#include <utility>

namespace vorlane {

NSBundle::NSBundle(Dictionary infoDictionary, std::string resourceFolder)
    : infoDictionary_(std::move(infoDictionary)), resourceFolder_(std::move(resourceFolder)) {}

std::optional<Value> NSBundle::objectForInfoDictionaryKey(const std::string& key) const {
    const auto found = infoDictionary_.find(key);
    if (found == infoDictionary_.end()) return std::nullopt;
    return found->second;
}

std::optional<std::string> NSBundle::bundleIdentifier() const {
    const auto identifier = objectForInfoDictionaryKey("CFBundleIdentifier");
    if (!identifier || !identifier->is_string()) return std::nullopt;
    return identifier->get<std::string>();
}

std::optional<std::string> NSBundle::pathForResource(const std::string& name, const std::string& type) const {
    namespace fs = std::filesystem;
    if (resourceFolder_.empty() || name.empty()) return std::nullopt;
    if (name.find('\0') != std::string::npos || type.find('\0') != std::string::npos) return std::nullopt;
    const fs::path relative = fs::path(type.empty() ? name : name + "." + type).lexically_normal();
    if (relative.is_absolute() || *relative.begin() == "..") return std::nullopt;
    const fs::path path = fs::path(resourceFolder_) / relative;
    std::error_code error;
    if (!fs::is_regular_file(path, error)) return std::nullopt;
    return path.string();
}

}  // namespace vorlane
