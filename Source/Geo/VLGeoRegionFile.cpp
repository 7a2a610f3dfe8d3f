#include "Geo/VLGeoRegionFile.h"

#include <filesystem>
#include <system_error>
#include <utility>

#include "Platform/NSFileManager.h"
#include "Platform/NSPropertyListSerialization.h"
#include "Platform/Platform.h"

namespace vorlane {

std::optional<VLGeoRegionFile::Records> VLGeoRegionFile::getRegionsFromFile() {
    const auto bytes = NSFileManager::contentsAtPath(path());
    auto root = bytes ? NSPropertyListSerialization::propertyListWithData(*bytes) : std::nullopt;
    auto* list = root ? root->get_ptr<Array*>() : nullptr;
    if (!list) return std::nullopt;
    Records records;
    for (auto& element : *list) {
        if (auto* record = element.get_ptr<Dictionary*>()) records.push_back(std::move(*record));
    }
    return records;
}

bool VLGeoRegionFile::saveRegionsToFile(const Records& records) {
    const auto bytes = NSPropertyListSerialization::dataWithPropertyList(Array(records.begin(), records.end()));
    return !bytes.empty() && NSFileManager::writeToFile(bytes, path());
}

void VLGeoRegionFile::deleteGeoRegionsFile() {
    std::error_code ignored;
    std::filesystem::remove(path(), ignored);
}

std::string VLGeoRegionFile::path() { return Platform::current().documentsFolder() + "/VLGeoRegions.plist"; }

}  // namespace vorlane
