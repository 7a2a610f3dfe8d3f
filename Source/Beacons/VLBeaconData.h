#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "Platform/CLBeacon.h"
#include "Public/VLValue.h"

namespace vorlane {

class NSURL;
class VLBeaconRegionSessionData;
class VLPayloadBuilder;
class VLSettings;
class VLURLBuilder;
class VLURLSession;

/// Collects data in one beacon region: reports the start and end of a visit, and a summary of every 30 ranging results.
/// Remaining results count towards the next visit. No request is repeated. Main queue only.
class VLBeaconData {
public:
    VLBeaconData(std::shared_ptr<VLSettings> settings, std::shared_ptr<VLBeaconRegionSessionData> regionSessionData,
                 std::shared_ptr<VLURLBuilder> urlBuilder, std::shared_ptr<VLURLSession> urlSession,
                 std::shared_ptr<VLPayloadBuilder> payloadBuilder);

    /// Opens a session with a new identifier, which replaces an open one.
    void didEnterRegion();
    /// `rangingBeacons:` adds the result, and sends the summary after every `sendInterval()` results.
    void rangingBeacons(const std::vector<CLBeacon>& beacons);
    /// Closes the open session. Only logs a line if there is none.
    void didExitRegion();

    /// The number of ranging results in a summary.
    std::int64_t sendInterval() const { return 30; }
    /// The number of ranging results since the last summary.
    std::int64_t currentInterval() const { return currentInterval_; }

    /// `beaconToDictionary:` returns the beacon's entry in a summary, with its current proximity.
    static Dictionary beaconToDictionary(const CLBeacon& beacon);
    /// `beaconsArrayToDictionary:` returns the entries of a ranging result by major and minor. Of equal beacons, the
    /// last one counts.
    static Dictionary beaconsArrayToDictionary(const std::vector<CLBeacon>& beacons);

private:
    using Counts = std::map<std::string, std::int64_t>;

    Array summary() const;
    static std::string getMedianProximity(const Counts& counts);
    void sendBeaconsToServer(Array beacons);
    void sendRegionJson(const NSURL& url, const std::string& sessionId);
    void send(const NSURL& url, Dictionary body);

    // Fixed at construction.
    const std::shared_ptr<VLSettings> settings_;
    const std::shared_ptr<VLBeaconRegionSessionData> regionSessionData_;
    const std::shared_ptr<VLURLBuilder> urlBuilder_;
    const std::shared_ptr<VLURLSession> urlSession_;
    const std::shared_ptr<VLPayloadBuilder> payloadBuilder_;
    // Main queue only.
    std::vector<Dictionary> rangedBeacons_;
    std::int64_t currentInterval_ = 0;
};

}  // namespace vorlane
