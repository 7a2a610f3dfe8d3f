#include "Beacons/VLBeaconRegionSessionsData.h"

#include <utility>

#include "Categories/NSDictionary+VLLookup.h"
#include "Platform/Platform.h"

namespace vorlane {

namespace {

constexpr const char* kSessionsFileName = "VLBeaconRegionSessions.plist";
constexpr const char* kSessionId = "REGION_SESSION_ID";

}  // namespace

VLBeaconRegionSessionsData::VLBeaconRegionSessionsData() : file_(getFilePath()) {
    auto reading = file_.read();
    if (reading.status == PropertyListFile::Status::Contents) {
        regionSessions_ = std::move(reading.contents.get_ref<Dictionary&>());
    }
}

std::optional<std::string> VLBeaconRegionSessionsData::idWithRegionId(const std::string& regionId) const {
    const std::lock_guard lock(mutex_);
    const auto* session = dictionaryForKey(regionSessions_, regionId);
    return session ? stringForKey(*session, kSessionId) : std::nullopt;
}

void VLBeaconRegionSessionsData::setId(const std::string& sessionId, const std::string& regionId) {
    const std::lock_guard lock(mutex_);
    regionSessions_[regionId] = Dictionary{{kSessionId, sessionId}};
    write();
}

void VLBeaconRegionSessionsData::removeRegion(const std::string& regionId) {
    const std::lock_guard lock(mutex_);
    regionSessions_.erase(regionId);
    write();
}

std::string VLBeaconRegionSessionsData::getFilePath() {
    return Platform::current().documentsFolder() + "/" + kSessionsFileName;
}

void VLBeaconRegionSessionsData::write() {
    if (PropertyListFile::Step::postpone(file_, [this] { write(); })) return;
    const std::lock_guard lock(mutex_);
    if (auto stored = file_.readAgain()) regionSessions_.merge(stored->get_ref<Dictionary&>());
    file_.write(regionSessions_);
}

}  // namespace vorlane
