#include "Beacons/VLBeaconData.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

#include "Beacons/VLBeaconRegionSessionData.h"
#include "Categories/CLBeacon+VLProximity.h"
#include "Categories/NSDate+VLTimestamp.h"
#include "Categories/NSDictionary+VLLookup.h"
#include "Categories/NSUUID+VLString.h"
#include "Network/VLPayloadBuilder.h"
#include "Network/VLPayloadOptions.h"
#include "Network/VLURLBuilder.h"
#include "Network/VLURLSession.h"
#include "Platform/CLBeaconRegion.h"
#include "Public/VLLog.h"

namespace vorlane {

namespace {

constexpr const char* kProximity = "proximity";

std::string timestamp() { return vl_unixTimestampInMilliseconds(vl_now()); }

std::string stringOrAny(std::optional<std::uint16_t> number) { return number ? fmt::format("{}", *number) : "*"; }

}  // namespace

VLBeaconData::VLBeaconData(std::shared_ptr<VLSettings> settings,
                           std::shared_ptr<VLBeaconRegionSessionData> regionSessionData,
                           std::shared_ptr<VLURLBuilder> urlBuilder, std::shared_ptr<VLURLSession> urlSession,
                           std::shared_ptr<VLPayloadBuilder> payloadBuilder)
    : settings_(std::move(settings)),
      regionSessionData_(std::move(regionSessionData)),
      urlBuilder_(std::move(urlBuilder)),
      urlSession_(std::move(urlSession)),
      payloadBuilder_(std::move(payloadBuilder)) {}

void VLBeaconData::didEnterRegion() {
    const auto sessionId = vl_newUUIDString();
    regionSessionData_->setId(sessionId);
    logMessage(VLLogLevel::Debug, "Beacon Data Session Start request");
    sendRegionJson(urlBuilder_->beaconEntryURL(), sessionId);
}

void VLBeaconData::rangingBeacons(const std::vector<CLBeacon>& beacons) {
    rangedBeacons_.push_back(beaconsArrayToDictionary(beacons));
    if (++currentInterval_ < sendInterval()) return;
    sendBeaconsToServer(summary());
    currentInterval_ = 0;
    rangedBeacons_.clear();
}

void VLBeaconData::didExitRegion() {
    const auto sessionId = regionSessionData_->id();
    if (!sessionId) {
        const auto region = regionSessionData_->region();
        return logMessage(VLLogLevel::Debug, fmt::format("No previous beacon region session data found for region:{}",
                                                         region ? region->description() : "(null)"));
    }
    logMessage(VLLogLevel::Debug, "Beacon Data Session End request");
    sendRegionJson(urlBuilder_->beaconExitURL(), *sessionId);
    regionSessionData_->clear();
}

Dictionary VLBeaconData::beaconToDictionary(const CLBeacon& beacon) {
    return {{"uuid", beacon.proximityUUID},
            {"major", beacon.major},
            {"minor", beacon.minor},
            {kProximity, vl_getRangeStringForBeacon(beacon)}};
}

Dictionary VLBeaconData::beaconsArrayToDictionary(const std::vector<CLBeacon>& beacons) {
    Dictionary entries;
    for (const auto& beacon : beacons) entries[vl_majorMinorAsString(beacon)] = beaconToDictionary(beacon);
    return entries;
}

/// The first entry of each beacon, with the proximity computed from all its results.
Array VLBeaconData::summary() const {
    Dictionary entries;
    std::map<std::string, Counts> proximities;
    for (const auto& result : rangedBeacons_) {
        for (const auto& [key, entry] : result) {
            entries.emplace(key, entry);
            ++proximities[key][stringForKey(entry.get_ref<const Dictionary&>(), kProximity).value_or("")];
        }
    }
    Array list;
    for (auto& [key, entry] : entries) {
        entry[kProximity] = getMedianProximity(proximities[key]);
        list.push_back(std::move(entry));
    }
    return list;
}

/// Intended: despite the name, the least frequent word. Of equal counts, the alphabetically first.
std::string VLBeaconData::getMedianProximity(const Counts& counts) {
    const auto least = std::ranges::min_element(counts, {}, &Counts::value_type::second);
    return least == counts.end() ? "" : least->first;
}

void VLBeaconData::sendBeaconsToServer(Array beacons) {
    Dictionary body{{"beacons", Value(std::move(beacons))}, {"timestamp", timestamp()}};
    if (auto sessionId = regionSessionData_->id()) body["sessionId"] = std::move(*sessionId);
    send(urlBuilder_->beaconSessionURL(), std::move(body));
}

void VLBeaconData::sendRegionJson(const NSURL& url, const std::string& sessionId) {
    const auto region = regionSessionData_->region();
    if (!region) return;
    send(url, {{"timestamp", timestamp()},
               {"sessionId", sessionId},
               {"uuid", region->proximityUUID()},
               {"major", stringOrAny(region->major())},
               {"minor", stringOrAny(region->minor())}});
}

void VLBeaconData::send(const NSURL& url, Dictionary body) {
    const auto payload = payloadBuilder_->payloadWithOptions([&body](VLPayloadOptions& options) {
        options.body = std::move(body);
        options.includeDeviceData = true;
        options.deviceDataKey = VLPayloadOptions::kDeviceDataKey;
    });
    urlSession_->POST(url, payload, false, nullptr);
}

}  // namespace vorlane
