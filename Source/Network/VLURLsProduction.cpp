#include "Public/VLURLsProduction.h"

#include <utility>

#include "Platform/NSURLComponents.h"

namespace vorlane {
namespace {

static_assert(sizeof(VORLANE_SERVICE_DOMAIN) > 1, "VORLANE_SERVICE_DOMAIN must not be empty");

enum Role : std::size_t {
    deviceRegistration,
    mdn,
    getTag,
    setTag,
    deleteTag,
    geoRegions,
    geoContent,
    beaconContent,
    interstitial,
    content,
    inbox,
    config,
    events,
    sessionStart,
    sessionEnd,
    changeTrackingId,
    roleCount
};

struct Endpoint {
    const char* host;
    const char* path;
};

// In the order of Role. Sessions share one host.
constexpr std::array<Endpoint, roleCount> kEndpoints = {{{"device-registration", "/v1/device"},
                                                         {"message-analytics", "/message/analytics"},
                                                         {"tag-read", ""},
                                                         {"tag-write", ""},
                                                         {"tag-delete", ""},
                                                         {"geo-configuration", ""},
                                                         {"geo-content", ""},
                                                         {"beacon-content", ""},
                                                         {"interstitial", ""},
                                                         {"content", ""},
                                                         {"rich-inbox", ""},
                                                         {"configuration", ""},
                                                         {"events", ""},
                                                         {"api", "/0.8/session"},
                                                         {"api", "/0.8/session/end"},
                                                         {"api", "/0.8/session/tracking_id"}}};

NSURL productionURL(const Endpoint& endpoint) {
    // Always a URL: the parts are constants.
    return NSURL::URLWithString(std::string("https://") + endpoint.host + "." VORLANE_SERVICE_DOMAIN + endpoint.path)
        .value();
}

/// The scheme and authority of a URL, without a "/" at the end.
std::string originOf(const NSURL& url) {
    NSURLComponents root;
    root.setPath("/");
    std::string text = root.URLRelativeToURL(url).absoluteString();
    if (text.ends_with('/')) text.pop_back();
    return text;
}

}  // namespace

VLURLsProduction::VLURLsProduction() { static_assert(kRoles == roleCount); }

VLURLsProduction::~VLURLsProduction() = default;

std::shared_ptr<VLURLsProduction> VLURLsProduction::URLsWithOrigin(const NSURL& origin) {
    auto urls = std::make_shared<VLURLsProduction>();
    urls->origin_ = origin;
    return urls;
}

NSURL VLURLsProduction::deviceRegistrationUrl() const { return url(deviceRegistration); }
void VLURLsProduction::setDeviceRegistrationUrl(NSURL url) { setURL(deviceRegistration, std::move(url)); }
NSURL VLURLsProduction::mdnUrl() const { return url(mdn); }
void VLURLsProduction::setMdnUrl(NSURL url) { setURL(mdn, std::move(url)); }
NSURL VLURLsProduction::getTagUrl() const { return url(getTag); }
void VLURLsProduction::setGetTagUrl(NSURL url) { setURL(getTag, std::move(url)); }
NSURL VLURLsProduction::setTagUrl() const { return url(setTag); }
void VLURLsProduction::setSetTagUrl(NSURL url) { setURL(setTag, std::move(url)); }
NSURL VLURLsProduction::deleteTagUrl() const { return url(deleteTag); }
void VLURLsProduction::setDeleteTagUrl(NSURL url) { setURL(deleteTag, std::move(url)); }
NSURL VLURLsProduction::geoRegionsUrl() const { return url(geoRegions); }
void VLURLsProduction::setGeoRegionsUrl(NSURL url) { setURL(geoRegions, std::move(url)); }
NSURL VLURLsProduction::geoContentUrl() const { return url(geoContent); }
void VLURLsProduction::setGeoContentUrl(NSURL url) { setURL(geoContent, std::move(url)); }
NSURL VLURLsProduction::beaconContentUrl() const { return url(beaconContent); }
void VLURLsProduction::setBeaconContentUrl(NSURL url) { setURL(beaconContent, std::move(url)); }
NSURL VLURLsProduction::interstitialUrl() const { return url(interstitial); }
void VLURLsProduction::setInterstitialUrl(NSURL url) { setURL(interstitial, std::move(url)); }
NSURL VLURLsProduction::contentUrl() const { return url(content); }
void VLURLsProduction::setContentUrl(NSURL url) { setURL(content, std::move(url)); }
NSURL VLURLsProduction::inboxUrl() const { return url(inbox); }
void VLURLsProduction::setInboxUrl(NSURL url) { setURL(inbox, std::move(url)); }
NSURL VLURLsProduction::configUrl() const { return url(config); }
void VLURLsProduction::setConfigUrl(NSURL url) { setURL(config, std::move(url)); }
NSURL VLURLsProduction::eventsUrl() const { return url(events); }
void VLURLsProduction::setEventsUrl(NSURL url) { setURL(events, std::move(url)); }
NSURL VLURLsProduction::sessionStartUrl() const { return url(sessionStart); }
void VLURLsProduction::setSessionStartUrl(NSURL url) { setURL(sessionStart, std::move(url)); }
NSURL VLURLsProduction::sessionEndUrl() const { return url(sessionEnd); }
void VLURLsProduction::setSessionEndUrl(NSURL url) { setURL(sessionEnd, std::move(url)); }
NSURL VLURLsProduction::changeTrackingIdUrl() const { return url(changeTrackingId); }
void VLURLsProduction::setChangeTrackingIdUrl(NSURL url) { setURL(changeTrackingId, std::move(url)); }

NSURL VLURLsProduction::url(std::size_t role) const {
    const std::lock_guard lock(mutex_);
    auto& url = urls_[role];
    if (!url) url = defaultURL(role);
    return *url;
}

NSURL VLURLsProduction::defaultURL(std::size_t role) const {
    const auto& endpoint = kEndpoints[role];
    if (!origin_) return productionURL(endpoint);
    return NSURL::URLWithString(originOf(*origin_) + endpoint.path).value_or(*origin_);
}

void VLURLsProduction::setURL(std::size_t role, NSURL url) {
    const std::lock_guard lock(mutex_);
    urls_[role] = std::move(url);
}

}  // namespace vorlane
