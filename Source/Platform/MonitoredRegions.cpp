#include "Platform/MonitoredRegions.h"

#include <utility>

#include "Platform/NSFileManager.h"
#include "Platform/NSPropertyListSerialization.h"

namespace vorlane {

namespace {

constexpr const char* kRegionsKey = "regions";

}  // namespace

MonitoredRegions::MonitoredRegions(std::string path) : path_(std::move(path)) {
    if (path_.empty()) return;
    const auto root = NSPropertyListSerialization::dictionaryWithContentsOfFile(path_);
    if (!root && NSFileManager::fileExistsAtPath(path_)) NSFileManager::moveItemAtPath(path_, path_ + ".corrupt");
    if (!root) return;
    const auto found = root->find(kRegionsKey);
    if (found == root->end() || !found->second.is_array()) return;
    for (const auto& entry : found->second) {
        const auto* fields = entry.get_ptr<const Dictionary*>();
        if (auto region = fields ? CLRegion::fromDictionary(*fields) : nullptr) {
            regions_[region->identifier()] = std::move(region);
        }
    }
}

void MonitoredRegions::add(std::shared_ptr<CLRegion> region) {
    regions_[region->identifier()] = std::move(region);
    write();
}

bool MonitoredRegions::remove(const std::string& identifier) {
    if (regions_.erase(identifier) == 0) return false;
    write();
    return true;
}

std::shared_ptr<CLRegion> MonitoredRegions::find(const std::string& identifier) const {
    const auto found = regions_.find(identifier);
    return found == regions_.end() ? nullptr : found->second;
}

std::vector<std::shared_ptr<CLRegion>> MonitoredRegions::all() const {
    std::vector<std::shared_ptr<CLRegion>> list;
    for (const auto& [identifier, region] : regions_) list.push_back(region);
    return list;
}

void MonitoredRegions::write() const {
    if (path_.empty()) return;
    Array list;
    for (const auto& [identifier, region] : regions_) list.emplace_back(region->toDictionary());
    NSPropertyListSerialization::writeToFile({{kRegionsKey, std::move(list)}}, path_);
}

}  // namespace vorlane
