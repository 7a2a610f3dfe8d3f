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

/// The production endpoints: one https host for each role, in the domain that the library was built for (the CMake
/// option `VORLANE_SERVICE_DOMAIN`). Any thread.
class VORLANE_EXPORT VLURLsProduction : public VLURLs {
public:
    VLURLsProduction();
    ~VLURLsProduction() override;

    /// Returns the same endpoints on one origin, for a local service or a proxy of the host's own. Only scheme and
    /// authority of `origin` count; each endpoint keeps its own path.
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

    // Set before the object is shared. `nullopt` stands for the host of each role.
    std::optional<NSURL> origin_;

    mutable std::mutex mutex_;
    // Guarded by mutex_. Each URL is made on first use.
    mutable std::array<std::optional<NSURL>, kRoles> urls_;
};

}  // namespace vorlane
