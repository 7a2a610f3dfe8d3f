#include "Beacons/VLBeaconRegionSessionsData.h"

#include "Categories/NSDictionary+VLLookup.h"
#include "Platform/NSPropertyListSerialization.h"
#include "Platform/Platform.h"

namespace vorlane {

namespace {

constexpr const char* kSessionsFileName = "VLBeaconRegionSessions.plist";
constexpr const char* kSessionId = "REGION_SESSION_ID";

}  // namespace

VLBeaconRegionSessionsData::VLBeaconRegionSessionsData()
    : filePath_(getFilePath()),
      regionSessions_(NSPropertyListSerialization::dictionaryWithContentsOfFile(filePath_).value_or(Dictionary())) {}

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

void VLBeaconRegionSessionsData::write() const { NSPropertyListSerialization::writeToFile(regionSessions_, filePath_); }

}  // namespace vorlane
