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

/// Collects data in one beacon region: reports when the device's visit begins and ends, and a summary of every 30
/// ranging results. Results that do not make up a summary wait for the next visit. No request is repeated. Main queue
/// only.
class VLBeaconData {
public:
    VLBeaconData(std::shared_ptr<VLSettings> settings, std::shared_ptr<VLBeaconRegionSessionData> regionSessionData,
                 std::shared_ptr<VLURLBuilder> urlBuilder, std::shared_ptr<VLURLSession> urlSession,
                 std::shared_ptr<VLPayloadBuilder> payloadBuilder);

    /// Opens a session under a new identifier, also when one is open.
    void didEnterRegion();
    /// `rangingBeacons:` counts the result, and sends the summary when it is the last one needed.
    void rangingBeacons(const std::vector<CLBeacon>& beacons);
    /// Closes the open session; without one it says so in the log and does nothing.
    void didExitRegion();

    /// How many ranging results make a summary.
    std::int64_t sendInterval() const { return 30; }
    /// How many there are since the last one.
    std::int64_t currentInterval() const { return currentInterval_; }

    /// `beaconToDictionary:` is the beacon's entry in a summary, with its present proximity.
    static Dictionary beaconToDictionary(const CLBeacon& beacon);
    /// `beaconsArrayToDictionary:` gives the entries of a ranging result by major and minor; of equal ones the last.
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
