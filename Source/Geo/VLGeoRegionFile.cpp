#include "Geo/VLGeoRegionFile.h"

#include <filesystem>
#include <system_error>
#include <utility>

#include "Platform/NSFileManager.h"
#include "Platform/NSPropertyListSerialization.h"
#include "Platform/Platform.h"

namespace vorlane {

const std::optional<VLGeoRegionFile::Records>& VLGeoRegionFile::getRegionsFromFile() {
    if (!std::exchange(isRead_, true)) readFile();
    return records_;
}

void VLGeoRegionFile::readFile() {
    const auto bytes = NSFileManager::contentsAtPath(path());
    auto root = bytes ? NSPropertyListSerialization::propertyListWithData(*bytes) : std::nullopt;
    auto* list = root ? root->get_ptr<Array*>() : nullptr;
    if (!list) return;
    records_.emplace();
    for (auto& element : *list) {
        if (auto* record = element.get_ptr<Dictionary*>()) records_->push_back(std::move(*record));
    }
}

void VLGeoRegionFile::saveRegionsToFile(Records records) {
    isRead_ = true;
    records_ = std::move(records);
    const auto bytes = NSPropertyListSerialization::dataWithPropertyList(Array(records_->begin(), records_->end()));
    if (!bytes.empty()) NSFileManager::writeToFile(bytes, path());
}

void VLGeoRegionFile::deleteGeoRegionsFile() {
    isRead_ = true;
    records_.reset();
    std::error_code ignored;
    std::filesystem::remove(path(), ignored);
}

std::string VLGeoRegionFile::path() { return Platform::current().documentsFolder() + "/VLGeoRegions.plist"; }

}  // namespace vorlane
