#pragma once

#include <regex>
#include <string>
#include <vector>

#include "Tests/EndToEnd/EndToEndTest.h"

namespace vorlane {

/// A fixture for placements, interstitials and prompts.
class InterstitialEndToEndTest : public EndToEndTest {
protected:
    static constexpr const char* kViewportTag = R"(<meta name="viewport" content="initial-scale=1.0" />)";

    /// The admin path of a placement, percent-encoded.
    static std::string interstitial(const std::string& placement) {
        return "interstitials/" + appKey() + "/" + placement;
    }

    /// Sets the configuration of the permission service.
    void configurePermissions(const Dictionary& permission) {
        service.put("config/" + appKey(), Dictionary{{"configs", Dictionary{{"permission", permission}}}});
    }

    void launchWithAppOpenInterstitial(const std::string& viewController) {
        phone->perform({{"do", "launch"},
                        {"preset", "development"},
                        {"options", Dictionary{{"appKey", appKey()}, {"appOpenInterstitial", viewController}}}});
    }

    /// Calls the operation and settles.
    Value call(const std::string& operation, Array arguments) {
        auto value = phone->call(operation, std::move(arguments));
        phone->settle();
        return value;
    }

    Value present(std::int64_t placement, const std::string& viewController = "interstitial") {
        call("presentInterstitialWithPlacement:viewController:animated:completionHandler:",
             {placement, viewController, true});
        return lastResult();
    }

    void askForNotifications() { call("askForPermission:interstitialViewController:", {0, "interstitial"}); }

    void dismiss() {
        phone->perform({{"do", "dismissInterstitial"}});
        phone->settle();
    }

    void advance(double seconds) {
        phone->perform({{"do", "advance"}, {"seconds", seconds}});
        phone->settle();
    }

    Value query(const std::string& what) { return phone->perform({{"do", "query"}, {"what", what}}); }

    std::size_t countEvents(const std::string& kind) const { return phone->events(kind).size(); }

    /// The last interstitial that was presented.
    Dictionary lastInterstitial() const {
        const auto interstitials = phone->events("interstitial");
        return interstitials.empty() ? Dictionary() : interstitials.back();
    }

    /// The links of its buttons, in order.
    std::vector<std::string> lastLinks() const {
        const auto interstitial = lastInterstitial();
        const auto found = interstitial.find("htmlContent");
        const auto html = found == interstitial.end() ? std::string() : found->second.get<std::string>();
        const std::regex expression(R"re(href="([^"]*)")re");
        std::vector<std::string> links;
        for (std::sregex_iterator match(html.begin(), html.end(), expression), end; match != end; ++match)
            links.push_back((*match)[1]);
        return links;
    }

    std::vector<std::string> requestedPlacements() const {
        std::vector<std::string> placements;
        for (const auto& request : service.requests("interstitial")) {
            const auto path = request["path"].get<std::string>();
            placements.push_back(path.substr(path.rfind('/') + 1));
        }
        return placements;
    }
};

}  // namespace vorlane
