#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "Platform/NSURL.h"

namespace vorlane {

class VLSettings;
class VLURLs;

/// Makes the URL of every request from a base URL, the current settings and the caller's arguments. Any thread.
///
/// No operation fails: an absent settings value is written as "(null)". Paths and query values are percent-encoded. A
/// "/" in an id or a tag name separates path segments, and "../" removes the segment before it.
class VLURLBuilder {
public:
    /// `initWithURLs:settings:`
    VLURLBuilder(std::shared_ptr<VLURLs> urls, std::shared_ptr<VLSettings> settings);

    NSURL sessionStartURL() const;
    NSURL sessionEndURL() const;
    NSURL changeTrackingIdURL() const;

    /// Intended: built by the first call of the process and never again, even if the app key or the base URL changes.
    NSURL registerEventURL() const;

    /// `tagURLWithTagName:`
    NSURL tagURLWithTagName(const std::string& tagName) const;
    NSURL updateTagURL() const;
    NSURL deleteAllTagsURL() const;

    /// `inboxStateURLWithTrackingId:stateHash:`. Intended: the time zone is encoded twice ("%252B600"), as the service
    /// expects it.
    NSURL inboxStateURLWithTrackingId(const std::string& trackingId, const std::string& stateHash) const;
    /// `inboxMessageURLWithNotificationId:trackingId:`
    NSURL inboxMessageURLWithNotificationId(std::uint64_t notificationId, const std::string& trackingId) const;

    /// The path is absolute: it replaces the path of the base URL.
    NSURL configURL() const;
    NSURL deviceRegistrationURL() const;
    NSURL MDNURL() const;
    NSURL cancelPhashURL() const;
    /// `interstitialURLWithPlacement:`
    NSURL interstitialURLWithPlacement(const std::string& placement) const;

    /// `geoRegionsURLWithLocation:maxGeoRegions:`. Latitude and longitude in degrees.
    NSURL geoRegionsURLWithLocation(double latitude, double longitude, std::int64_t maxGeoRegions) const;
    NSURL geoContentURL() const;

    NSURL beaconSessionURL() const;
    NSURL beaconEntryURL() const;
    NSURL beaconExitURL() const;
    NSURL beaconContentURL() const;

private:
    std::string appKey() const;
    /// Returns "{app key}/{tracking id}" followed by `rest`.
    std::string userPath(const char* rest) const;
    std::string tagsPath() const;

    // Fixed at construction.
    const std::shared_ptr<VLURLs> urls_;
    const std::shared_ptr<VLSettings> settings_;
};

}  // namespace vorlane
