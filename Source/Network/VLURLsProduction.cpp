#include "Public/VLURLsProduction.h"

#include <utility>

#include "Platform/NSURLComponents.h"

namespace vorlane {
namespace {

static_assert(sizeof(VORLANE_SERVICE_DOMAIN) > 1, "VORLANE_SERVICE_DOMAIN must not be empty");

enum Role : std::size_t {
    DeviceRegistration,
    Mdn,
    GetTag,
    SetTag,
    DeleteTag,
    GeoRegions,
    GeoContent,
    BeaconContent,
    Interstitial,
    Content,
    Inbox,
    Config,
    Events,
    SessionStart,
    SessionEnd,
    ChangeTrackingId,
    RoleCount
};

struct Endpoint {
    const char* host;
    const char* path;
};

// In the order of Role. Sessions share one host.
constexpr std::array<Endpoint, RoleCount> kEndpoints = {{{"device-registration", "/v1/device"},
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

VLURLsProduction::VLURLsProduction() { static_assert(kRoles == RoleCount); }

VLURLsProduction::~VLURLsProduction() = default;

std::shared_ptr<VLURLsProduction> VLURLsProduction::URLsWithOrigin(const NSURL& origin) {
    auto urls = std::make_shared<VLURLsProduction>();
    urls->origin_ = origin;
    return urls;
}

NSURL VLURLsProduction::deviceRegistrationUrl() const { return url(DeviceRegistration); }
void VLURLsProduction::setDeviceRegistrationUrl(NSURL url) { setURL(DeviceRegistration, std::move(url)); }
NSURL VLURLsProduction::mdnUrl() const { return url(Mdn); }
void VLURLsProduction::setMdnUrl(NSURL url) { setURL(Mdn, std::move(url)); }
NSURL VLURLsProduction::getTagUrl() const { return url(GetTag); }
void VLURLsProduction::setGetTagUrl(NSURL url) { setURL(GetTag, std::move(url)); }
NSURL VLURLsProduction::setTagUrl() const { return url(SetTag); }
void VLURLsProduction::setSetTagUrl(NSURL url) { setURL(SetTag, std::move(url)); }
NSURL VLURLsProduction::deleteTagUrl() const { return url(DeleteTag); }
void VLURLsProduction::setDeleteTagUrl(NSURL url) { setURL(DeleteTag, std::move(url)); }
NSURL VLURLsProduction::geoRegionsUrl() const { return url(GeoRegions); }
void VLURLsProduction::setGeoRegionsUrl(NSURL url) { setURL(GeoRegions, std::move(url)); }
NSURL VLURLsProduction::geoContentUrl() const { return url(GeoContent); }
void VLURLsProduction::setGeoContentUrl(NSURL url) { setURL(GeoContent, std::move(url)); }
NSURL VLURLsProduction::beaconContentUrl() const { return url(BeaconContent); }
void VLURLsProduction::setBeaconContentUrl(NSURL url) { setURL(BeaconContent, std::move(url)); }
NSURL VLURLsProduction::interstitialUrl() const { return url(Interstitial); }
void VLURLsProduction::setInterstitialUrl(NSURL url) { setURL(Interstitial, std::move(url)); }
NSURL VLURLsProduction::contentUrl() const { return url(Content); }
void VLURLsProduction::setContentUrl(NSURL url) { setURL(Content, std::move(url)); }
NSURL VLURLsProduction::inboxUrl() const { return url(Inbox); }
void VLURLsProduction::setInboxUrl(NSURL url) { setURL(Inbox, std::move(url)); }
NSURL VLURLsProduction::configUrl() const { return url(Config); }
void VLURLsProduction::setConfigUrl(NSURL url) { setURL(Config, std::move(url)); }
NSURL VLURLsProduction::eventsUrl() const { return url(Events); }
void VLURLsProduction::setEventsUrl(NSURL url) { setURL(Events, std::move(url)); }
NSURL VLURLsProduction::sessionStartUrl() const { return url(SessionStart); }
void VLURLsProduction::setSessionStartUrl(NSURL url) { setURL(SessionStart, std::move(url)); }
NSURL VLURLsProduction::sessionEndUrl() const { return url(SessionEnd); }
void VLURLsProduction::setSessionEndUrl(NSURL url) { setURL(SessionEnd, std::move(url)); }
NSURL VLURLsProduction::changeTrackingIdUrl() const { return url(ChangeTrackingId); }
void VLURLsProduction::setChangeTrackingIdUrl(NSURL url) { setURL(ChangeTrackingId, std::move(url)); }

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
