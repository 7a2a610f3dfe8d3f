#include "Public/VLURLsProduction.h"

#include <gtest/gtest.h>

#include <map>
#include <set>
#include <string>
#include <vector>

namespace vorlane {
namespace {

using Getter = NSURL (VLURLs::*)() const;
using Setter = void (VLURLs::*)(NSURL);

struct Endpoint {
    const char* role;
    Getter get;
    Setter set;
    const char* host;
    const char* path;
};

// The host without the domain.
const std::vector<Endpoint>& endpoints() {
    static const std::vector<Endpoint> all = {
        {"deviceRegistration", &VLURLs::deviceRegistrationUrl, &VLURLs::setDeviceRegistrationUrl, "device-registration",
         "/v1/device"},
        {"mdn", &VLURLs::mdnUrl, &VLURLs::setMdnUrl, "message-analytics", "/message/analytics"},
        {"getTag", &VLURLs::getTagUrl, &VLURLs::setGetTagUrl, "tag-read", ""},
        {"setTag", &VLURLs::setTagUrl, &VLURLs::setSetTagUrl, "tag-write", ""},
        {"deleteTag", &VLURLs::deleteTagUrl, &VLURLs::setDeleteTagUrl, "tag-delete", ""},
        {"geoRegions", &VLURLs::geoRegionsUrl, &VLURLs::setGeoRegionsUrl, "geo-configuration", ""},
        {"geoContent", &VLURLs::geoContentUrl, &VLURLs::setGeoContentUrl, "geo-content", ""},
        {"beaconContent", &VLURLs::beaconContentUrl, &VLURLs::setBeaconContentUrl, "beacon-content", ""},
        {"interstitial", &VLURLs::interstitialUrl, &VLURLs::setInterstitialUrl, "interstitial", ""},
        {"content", &VLURLs::contentUrl, &VLURLs::setContentUrl, "content", ""},
        {"inbox", &VLURLs::inboxUrl, &VLURLs::setInboxUrl, "rich-inbox", ""},
        {"config", &VLURLs::configUrl, &VLURLs::setConfigUrl, "configuration", ""},
        {"events", &VLURLs::eventsUrl, &VLURLs::setEventsUrl, "events", ""},
        {"sessionStart", &VLURLs::sessionStartUrl, &VLURLs::setSessionStartUrl, "api", "/0.8/session"},
        {"sessionEnd", &VLURLs::sessionEndUrl, &VLURLs::setSessionEndUrl, "api", "/0.8/session/end"},
        {"changeTrackingId", &VLURLs::changeTrackingIdUrl, &VLURLs::setChangeTrackingIdUrl, "api",
         "/0.8/session/tracking_id"},
    };
    return all;
}

std::map<std::string, std::string> textsByRole(const VLURLs& urls) {
    std::map<std::string, std::string> texts;
    for (const Endpoint& endpoint : endpoints()) texts[endpoint.role] = (urls.*endpoint.get)().absoluteString();
    return texts;
}

std::map<std::string, std::string> textsOnOrigin(const std::string& origin) {
    std::map<std::string, std::string> texts;
    for (const Endpoint& endpoint : endpoints()) texts[endpoint.role] = origin + endpoint.path;
    return texts;
}

/// The domain that the library was built for.
std::string domain() { return VLURLsProduction().eventsUrl().host().value().substr(std::string("events").size()); }

TEST(VLURLsProductionTest, EveryRoleHasItsHttpsURL) {
    std::map<std::string, std::string> expected;
    for (const Endpoint& endpoint : endpoints())
        expected[endpoint.role] = std::string("https://") + endpoint.host + domain() + endpoint.path;
    EXPECT_EQ(textsByRole(VLURLsProduction()), expected);
    EXPECT_EQ(domain().front(), '.');
}

TEST(VLURLsProductionTest, OnlyTheSessionURLsShareAHost) {
    std::map<std::string, int> rolesByHost;
    const VLURLsProduction urls;
    for (const Endpoint& endpoint : endpoints()) ++rolesByHost[(urls.*endpoint.get)().host().value()];
    EXPECT_EQ(rolesByHost.size(), 14u);
    EXPECT_EQ(rolesByHost["api" + domain()], 3);
}

TEST(VLURLsProductionTest, EachURLCanBeReplacedAlone) {
    for (const Endpoint& endpoint : endpoints()) {
        SCOPED_TRACE(endpoint.role);
        VLURLsProduction urls;
        auto expected = textsByRole(urls);
        expected[endpoint.role] = "http://replaced.test/base";
        (urls.*endpoint.set)(NSURL::URLWithString("http://replaced.test/base").value());
        EXPECT_EQ(textsByRole(urls), expected);
    }
}

TEST(VLURLsProductionTest, AllEndpointsKeepTheirPathsOnOneOrigin) {
    const auto origin = NSURL::URLWithString("http://127.0.0.1:8080").value();
    EXPECT_EQ(textsByRole(*VLURLsProduction::URLsWithOrigin(origin)), textsOnOrigin("http://127.0.0.1:8080"));
}

TEST(VLURLsProductionTest, OnlySchemeAndAuthorityOfAnOriginCount) {
    for (const char* text : {"http://localhost:1/", "http://localhost:1/some/path", "http://localhost:1/p?q=1",
                             "http://localhost:1?q=1"}) {
        SCOPED_TRACE(text);
        const auto origin = NSURL::URLWithString(text).value();
        EXPECT_EQ(textsByRole(*VLURLsProduction::URLsWithOrigin(origin)), textsOnOrigin("http://localhost:1"));
    }
}

TEST(VLURLsProductionTest, AnOriginMayBeAnIPv6Address) {
    const auto origin = NSURL::URLWithString("http://[::1]:8080").value();
    EXPECT_EQ(textsByRole(*VLURLsProduction::URLsWithOrigin(origin)), textsOnOrigin("http://[::1]:8080"));
}

}  // namespace
}  // namespace vorlane
