#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "Platform/NSURL.h"

namespace vorlane {

class VLSettings;
class VLURLs;

/// Makes the full URL of every request out of a base URL, the settings of that moment and the caller's arguments. Any
/// thread.
///
/// No operation fails: a settings value that is absent stands in the URL as "(null)". Paths and query values are
/// percent-encoded; a "/" inside of a value stays a separator.
class VLURLBuilder {
public:
    /// `initWithURLs:settings:`
    VLURLBuilder(std::shared_ptr<VLURLs> urls, std::shared_ptr<VLSettings> settings);

    NSURL sessionStartURL() const;
    NSURL sessionEndURL() const;
    NSURL changeTrackingIdURL() const;

    /// Built by the process's first call and kept from then on, also when the application key or the base URL changes.
    NSURL registerEventURL() const;

    /// `tagURLWithTagName:`
    NSURL tagURLWithTagName(const std::string& tagName) const;
    NSURL updateTagURL() const;
    NSURL deleteAllTagsURL() const;

    /// `inboxStateURLWithTrackingId:stateHash:`. The time zone stands in the query encoded twice ("%252B600"), as the
    /// server expects it.
    NSURL inboxStateURLWithTrackingId(const std::string& trackingId, const std::string& stateHash) const;
    /// `inboxMessageURLWithNotificationId:trackingId:`
    NSURL inboxMessageURLWithNotificationId(std::uint64_t notificationId, const std::string& trackingId) const;

    /// Its path is absolute: a path of the base URL does not count.
    NSURL configURL() const;
    NSURL deviceRegistrationURL() const;
    NSURL MDNURL() const;
    NSURL cancelPhashURL() const;
    /// `interstitialURLWithPlacement:`
    NSURL interstitialURLWithPlacement(const std::string& placement) const;

    /// `geoRegionsURLWithLocation:maxGeoRegions:`, the location in degrees.
    NSURL geoRegionsURLWithLocation(double latitude, double longitude, std::int64_t maxGeoRegions) const;
    NSURL geoContentURL() const;

    NSURL beaconSessionURL() const;
    NSURL beaconEntryURL() const;
    NSURL beaconExitURL() const;
    NSURL beaconContentURL() const;

private:
    std::string appKey() const;
    /// "{application key}/{tracking id}" and then `rest`.
    std::string userPath(const char* rest) const;
    std::string tagsPath() const;

    // Fixed at construction.
    const std::shared_ptr<VLURLs> urls_;
    const std::shared_ptr<VLSettings> settings_;
};

}  // namespace vorlane
