#pragma once

#include <memory>

#include "Notifications/VLAuthorisationHelper_iOS12Plus.h"
#include "Notifications/VLBackgroundRefreshHelper.h"
#include "Notifications/VLUserNotificationCentre_iOS10Plus.h"
#include "Public/Vorlane.h"
#include "Tests/Support/ServicesTest.h"

namespace vorlane {

/// Provides a phone whose user has allowed notifications, and the collaborators of the notification services.
class NotificationsTest : public ServicesTest {
protected:
    explicit NotificationsTest(SimulatedPhone::Options options = {}) : ServicesTest(std::move(options)) {
        center().setNotificationSettings({2, 2, 2, 2, 2, 2, 2, 1});
    }

    SimulatedUserNotificationCenter& center() { return phone().simulatedUserNotificationCenter(); }
    SimulatedApplication& application() { return phone().simulatedApplication(); }
    static bool isNotificationOpen() { return Vorlane::sharedInstance().isNotificationOpen(); }

    /// The settings that the phone reports.
    static VLUserNotificationSettings allowed() {
        return VLUserNotificationSettings::settingsWithAuthorisation(2, 2, 2, 2, 2, 2, 2, 2, 1);
    }

    std::shared_ptr<VLBackgroundRefreshHelper> refreshHelper =
        std::make_shared<VLBackgroundRefreshHelper>(phone().application());
    std::shared_ptr<VLUserNotificationCentre> centre = std::make_shared<VLUserNotificationCentre_iOS10Plus>(
        phone().userNotificationCenter(), phone().application(), std::make_shared<VLAuthorisationHelper_iOS12Plus>(),
        refreshHelper, settings);
};

}  // namespace vorlane
