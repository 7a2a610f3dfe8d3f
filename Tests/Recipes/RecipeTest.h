#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "Platform/Linux/AlwaysAllowedUserNotificationCenter.h"
#include "Platform/Linux/LinuxPlatform.h"
#include "Public/Vorlane.h"
#include "Simulator/Service/EngagementService.h"
#include "Simulator/Service/Http/ServiceServer.h"
#include "Simulator/Service/Store/StoreFilter.h"
#include "Tests/Support/TemporaryFolder.h"

namespace vorlane {

/// A scene with a host on the Linux platform and a local service, as Documentation/production.md describes them.
class RecipeTest : public ::testing::Test {
protected:
    static constexpr const char* kAppKey = "0123456789abcdef0123456789abcdef";

    ~RecipeTest() override { Platform::install(nullptr); }

    LinuxPlatform::Options optionsWithFolder() const {
        return {.infoDictionary = {{"CFBundleIdentifier", "example.recipes"}},
                .documentsFolder = folder.path("documents"),
                .userNotificationCenter = std::make_shared<AlwaysAllowedUserNotificationCenter>()};
    }

    void install(LinuxPlatform::Options options) {
        platform = std::make_shared<LinuxPlatform>(std::move(options));
        Platform::install(platform);
    }

    void start(LinuxPlatform::Options options) {
        install(std::move(options));
        Vorlane::setURLs(VLURLsProduction::URLsWithOrigin(*NSURL::URLWithString(server.origin())));
        auto sdkOptions = VLSDKOptions::defaultOptions();
        sdkOptions.setAppKey(kAppKey);
        Vorlane::initialiseSDKWithApplication(platform->application(), std::nullopt, sdkOptions);
        platform->application()->didBecomeActive();
        ASSERT_TRUE(platform->runUntilIdle(10));
    }
    void start() { start(optionsWithFolder()); }

    service::ServiceStore& store() { return server.service().store(); }

    TemporaryFolder folder;
    service::ServiceServer server;
    std::shared_ptr<LinuxPlatform> platform;
};

}  // namespace vorlane
