#include "Network/VLURLBuilder.h"

#include <fmt/format.h>

#include <mutex>
#include <optional>
#include <utility>
#include <vector>

#include "Categories/NSCharacterSet+VLURLEncoding.h"
#include "Categories/NSDictionary+VLLookup.h"
#include "Core/Base/VLSettings.h"
#include "Platform/Internal/ProcessWide.h"
#include "Platform/NSURLComponents.h"
#include "Public/VLURLs.h"
#include "Public/VLValue.h"

namespace vorlane {
namespace {

/// The one event URL of the process.
struct EventURLCache {
    std::mutex mutex;
    // Guarded by mutex.
    std::optional<NSURL> url;
};

constinit ProcessWide<EventURLCache> eventURLCache;

NSURL resolve(const NSURL& base, const std::string& path, const std::vector<NSURLQueryItem>& queryItems = {}) {
    NSURLComponents components;
    components.setPath(path);
    components.setQueryItems(queryItems);
    return components.URLRelativeToURL(base);
}

/// The shortest decimal string that reads back as the same number: "52", "51.5074".
std::string decimalString(double number) { return stringValue(Value(number)).value_or("nan"); }

}  // namespace

VLURLBuilder::VLURLBuilder(std::shared_ptr<VLURLs> urls, std::shared_ptr<VLSettings> settings)
    : urls_(std::move(urls)), settings_(std::move(settings)) {}

NSURL VLURLBuilder::sessionStartURL() const { return urls_->sessionStartUrl(); }

NSURL VLURLBuilder::sessionEndURL() const { return urls_->sessionEndUrl(); }

NSURL VLURLBuilder::changeTrackingIdURL() const { return urls_->changeTrackingIdUrl(); }

NSURL VLURLBuilder::registerEventURL() const {
    EventURLCache& cache = eventURLCache.get();
    {
        const std::lock_guard lock(cache.mutex);
        if (cache.url) return *cache.url;
    }
    // Built without the lock, since the endpoints may be an object of the host's. Of two threads here at once, the last
    // one wins.
    const NSURL url = resolve(urls_->eventsUrl(), "0.8/register_app_event", {{"app_key", appKey()}});
    const std::lock_guard lock(cache.mutex);
    cache.url = url;
    return url;
}

NSURL VLURLBuilder::tagURLWithTagName(const std::string& tagName) const {
    return resolve(urls_->getTagUrl(), tagsPath() + "/tag/" + tagName);
}

NSURL VLURLBuilder::updateTagURL() const { return resolve(urls_->setTagUrl(), tagsPath()); }

NSURL VLURLBuilder::deleteAllTagsURL() const { return resolve(urls_->deleteTagUrl(), tagsPath() + "/tag/*"); }

NSURL VLURLBuilder::inboxStateURLWithTrackingId(const std::string& trackingId, const std::string& stateHash) const {
    // Encoded here and once more as a query value: the service decodes it twice.
    const std::string timezone =
        stringByAddingPercentEncoding(settings_->timezoneOffSetFromGMT(), alphanumericCharacterSet());
    return resolve(
        urls_->inboxUrl(), fmt::format("{}/{}/rich/mailbox", appKey(), trackingId),
        {{"stateHash", stateHash}, {"timezone", timezone}, {"sid", settings_->sessionId()}, {"platform", "iOS"}});
}

NSURL VLURLBuilder::inboxMessageURLWithNotificationId(std::uint64_t notificationId,
                                                      const std::string& trackingId) const {
    return resolve(urls_->inboxUrl(),
                   fmt::format("{}/{}/rich/mailbox/messages/{}", appKey(), trackingId, notificationId));
}

NSURL VLURLBuilder::configURL() const {
    return resolve(urls_->configUrl(), "/config/application/ios/" + appKey(),
                   {{"sdkVersion", settings_->libraryVersion()},
                    {"trackingId", settings_->trackingId()},
                    {"deviceId", settings_->deviceId()}});
}

NSURL VLURLBuilder::deviceRegistrationURL() const { return urls_->deviceRegistrationUrl(); }

NSURL VLURLBuilder::MDNURL() const { return urls_->mdnUrl(); }

NSURL VLURLBuilder::cancelPhashURL() const { return resolve(urls_->contentUrl(), userPath("/phash/cancel")); }

NSURL VLURLBuilder::interstitialURLWithPlacement(const std::string& placement) const {
    return resolve(urls_->interstitialUrl(), userPath("/interstitial/") + placement);
}

NSURL VLURLBuilder::geoRegionsURLWithLocation(double latitude, double longitude, std::int64_t maxGeoRegions) const {
    return resolve(urls_->geoRegionsUrl(), userPath("/geo/regions"),
                   {{"latitude", decimalString(latitude)},
                    {"longitude", decimalString(longitude)},
                    {"max", std::to_string(maxGeoRegions)}});
}

NSURL VLURLBuilder::geoContentURL() const { return resolve(urls_->geoContentUrl(), userPath("/geo")); }

NSURL VLURLBuilder::beaconSessionURL() const { return resolve(urls_->beaconContentUrl(), userPath("/session/beacon")); }

NSURL VLURLBuilder::beaconEntryURL() const {
    return resolve(urls_->beaconContentUrl(), userPath("/session/beacon/region/entry"));
}

NSURL VLURLBuilder::beaconExitURL() const {
    return resolve(urls_->beaconContentUrl(), userPath("/session/beacon/region/exit"));
}

NSURL VLURLBuilder::beaconContentURL() const { return resolve(urls_->beaconContentUrl(), userPath("/ibeacon")); }

std::string VLURLBuilder::appKey() const { return settings_->appKey().value_or("(null)"); }

std::string VLURLBuilder::userPath(const char* rest) const {
    return fmt::format("{}/{}{}", appKey(), settings_->trackingId(), rest);
}

std::string VLURLBuilder::tagsPath() const {
    return fmt::format("api/apps/{}/tracking/{}", appKey(), settings_->trackingId());
}

}  // namespace vorlane
