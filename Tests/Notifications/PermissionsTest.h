#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Notifications/VLPermissionService.h"
#include "Notifications/VLRemoteNotificationService.h"
#include "Tests/Notifications/InterstitialsTest.h"
#include "Tests/Support/FakeLocationManager.h"
#include "Tracking/VLConfigService.h"

namespace vorlane {

/// Provides a permission service with a closed queue, and a user who has not decided anything.
class PermissionsTest : public InterstitialsTest {
protected:
    explicit PermissionsTest(SimulatedPhone::Options options = {}) : InterstitialsTest(std::move(options)) {
        reportStatus(0);
        application().setEventObserver([this](const std::string& event, const Dictionary& fields) {
            if (event == "prompt") prompts.push_back({fields.at("kind").get<std::string>(), fields.at("options")});
        });
    }

    /// Sets the authorisation status that the platform reports.
    void reportStatus(std::int64_t status) { center().setNotificationSettings({status, 2, 2, 2, 2, 2, 2, 1}); }

    std::shared_ptr<VLPermissionService> makeService(
        std::shared_ptr<VLUserNotificationCentre> notificationCentre = nullptr) {
        return std::make_shared<VLPermissionService>(
            notificationCentre ? std::move(notificationCentre) : centre, locationManager, settings, service,
            VLRemoteNotificationService::serviceWith({.settings = settings,
                                                      .notificationCenter = phone().notificationCenter(),
                                                      .application = phone().application(),
                                                      .urlSession = urlSession,
                                                      .urlBuilder = urlBuilder,
                                                      .payloadBuilder = payloadBuilder,
                                                      .vlUserNotificationCentre = centre,
                                                      .backgroundRefreshHelper = refreshHelper}));
    }

    /// Loads a configuration of the permission service.
    void load(const std::string& permissionConfig) {
        config->loadConfigWithCompletion(nullptr);
        session().answer("/config/", 200, R"({"configs":{"permission":)" + permissionConfig + "}}");
        phone().settle();
    }
    void start(const std::string& permissionConfig = "{}", bool providesAppNotificationSettings = false) {
        load(permissionConfig);
        permissions->startWithConfig(*config, providesAppNotificationSettings);
        phone().settle();
    }

    /// Asks for a soft opt-in and returns the requested placements.
    std::vector<std::string> softOptIn(VLPermissions permission = VLPermissions::Notifications) {
        const auto before = session().requests("/interstitial/").size();
        permissions->queueSoftOptInForPermission(permission, makeInterstitial());
        phone().settle();
        return placementsAfter(before);
    }
    std::vector<std::string> placementsAfter(std::size_t count) {
        const auto requests = session().requests("/interstitial/");
        std::vector<std::string> placements;
        for (auto request = requests.begin() + static_cast<std::ptrdiff_t>(count); request != requests.end();
             ++request) {
            const auto path = request->request.URL.path();
            placements.push_back(
                stringByRemovingPercentEncoding(path.substr(path.rfind('/') + 1)).value_or("undecodable"));
        }
        return placements;
    }

    /// The system prompts that have appeared, with their options.
    struct Prompt {
        std::string kind;
        Value options;
        bool operator==(const Prompt&) const = default;
    };
    std::vector<Prompt> prompts;

    using Placements = std::vector<std::string>;

    std::shared_ptr<FakeLocationManager> locationManager = std::make_shared<FakeLocationManager>();
    std::shared_ptr<VLConfigService> config = std::make_shared<VLConfigService>(settings, urlBuilder, urlSession);
    std::shared_ptr<VLPermissionService> permissions = makeService();
};

}  // namespace vorlane
