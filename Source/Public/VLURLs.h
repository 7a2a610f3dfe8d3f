#pragma once

#include "Platform/NSURL.h"
#include "Public/VLExport.h"

namespace vorlane {

/// The base URL of every role of the service. A host that uses other servers passes its own set to
/// `Vorlane::setURLs()`.
class VORLANE_EXPORT VLURLs {
public:
    virtual ~VLURLs();

    virtual NSURL deviceRegistrationUrl() const = 0;
    virtual void setDeviceRegistrationUrl(NSURL url) = 0;
    virtual NSURL mdnUrl() const = 0;
    virtual void setMdnUrl(NSURL url) = 0;
    virtual NSURL getTagUrl() const = 0;
    virtual void setGetTagUrl(NSURL url) = 0;
    virtual NSURL setTagUrl() const = 0;
    virtual void setSetTagUrl(NSURL url) = 0;
    virtual NSURL deleteTagUrl() const = 0;
    virtual void setDeleteTagUrl(NSURL url) = 0;
    virtual NSURL geoRegionsUrl() const = 0;
    virtual void setGeoRegionsUrl(NSURL url) = 0;
    virtual NSURL geoContentUrl() const = 0;
    virtual void setGeoContentUrl(NSURL url) = 0;
    virtual NSURL beaconContentUrl() const = 0;
    virtual void setBeaconContentUrl(NSURL url) = 0;
    virtual NSURL interstitialUrl() const = 0;
    virtual void setInterstitialUrl(NSURL url) = 0;
    virtual NSURL contentUrl() const = 0;
    virtual void setContentUrl(NSURL url) = 0;
    virtual NSURL inboxUrl() const = 0;
    virtual void setInboxUrl(NSURL url) = 0;
    virtual NSURL configUrl() const = 0;
    virtual void setConfigUrl(NSURL url) = 0;
    virtual NSURL eventsUrl() const = 0;
    virtual void setEventsUrl(NSURL url) = 0;
    virtual NSURL sessionStartUrl() const = 0;
    virtual void setSessionStartUrl(NSURL url) = 0;
    virtual NSURL sessionEndUrl() const = 0;
    virtual void setSessionEndUrl(NSURL url) = 0;
    virtual NSURL changeTrackingIdUrl() const = 0;
    virtual void setChangeTrackingIdUrl(NSURL url) = 0;
};

}  // namespace vorlane
