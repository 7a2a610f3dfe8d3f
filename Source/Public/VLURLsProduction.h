#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "Platform/NSURL.h"
#include "Public/VLExport.h"
#include "Public/VLURLs.h"

namespace vorlane {

/// The service's own endpoints: one host a role, always https, below the domain that the library was built for. Any
/// thread.
class VORLANE_EXPORT VLURLsProduction : public VLURLs {
public:
    VLURLsProduction();
    ~VLURLsProduction() override;

    /// The same endpoints on one origin, for a local service. Of `origin` the scheme, the authority and nothing else
    /// counts; each endpoint keeps the path that it stores.
    static std::shared_ptr<VLURLsProduction> URLsWithOrigin(const NSURL& origin);

    NSURL deviceRegistrationUrl() const override;
    void setDeviceRegistrationUrl(NSURL url) override;
    NSURL mdnUrl() const override;
    void setMdnUrl(NSURL url) override;
    NSURL getTagUrl() const override;
    void setGetTagUrl(NSURL url) override;
    NSURL setTagUrl() const override;
    void setSetTagUrl(NSURL url) override;
    NSURL deleteTagUrl() const override;
    void setDeleteTagUrl(NSURL url) override;
    NSURL geoRegionsUrl() const override;
    void setGeoRegionsUrl(NSURL url) override;
    NSURL geoContentUrl() const override;
    void setGeoContentUrl(NSURL url) override;
    NSURL beaconContentUrl() const override;
    void setBeaconContentUrl(NSURL url) override;
    NSURL interstitialUrl() const override;
    void setInterstitialUrl(NSURL url) override;
    NSURL contentUrl() const override;
    void setContentUrl(NSURL url) override;
    NSURL inboxUrl() const override;
    void setInboxUrl(NSURL url) override;
    NSURL configUrl() const override;
    void setConfigUrl(NSURL url) override;
    NSURL eventsUrl() const override;
    void setEventsUrl(NSURL url) override;
    NSURL sessionStartUrl() const override;
    void setSessionStartUrl(NSURL url) override;
    NSURL sessionEndUrl() const override;
    void setSessionEndUrl(NSURL url) override;
    NSURL changeTrackingIdUrl() const override;
    void setChangeTrackingIdUrl(NSURL url) override;

private:
    static constexpr std::size_t kRoles = 16;

    NSURL url(std::size_t role) const;
    void setURL(std::size_t role, NSURL url);

    NSURL defaultURL(std::size_t role) const;

    // Set before anyone else knows of the object; nothing: each role's own host.
    std::optional<NSURL> origin_;

    mutable std::mutex mutex_;
    // Guarded by mutex_; made when first asked for.
    mutable std::array<std::optional<NSURL>, kRoles> urls_;
};

}  // namespace vorlane
