#pragma once

#include <optional>
#include <string>
#include <vector>

#include "Public/Vorlane.h"
#include "Tests/Support/SimulatedPhoneTest.h"

namespace vorlane {

/// A fixture that uses the phone as a host's test does: it starts the library and checks what the user sees.
class LaunchedPhoneTest : public SimulatedPhoneTest {
protected:
    LaunchedPhoneTest()
        : SimulatedPhoneTest({.infoDictionary = {{"NSLocationAlwaysUsageDescription", "To find what is near"},
                                                 {"UIBackgroundModes", Array{"location"}}}}) {}

    void launch(const std::optional<Dictionary>& launchOptions = std::nullopt) {
        auto options = VLSDKOptions::developmentOptions();
        options.setAppKey("0123456789abcdef0123456789abcdef");
        Vorlane::initialiseSDKWithApplication(phone().application(), launchOptions, options);
        phone().settle();
    }

    /// The texts of the notifications shown so far.
    std::vector<std::string> shown() {
        std::vector<std::string> texts;
        for (const auto& [handle, notification] : phone().simulatedApplication().deliveredByHandle())
            texts.push_back(notification.alertBody.value_or("(none)"));
        return texts;
    }
};

}  // namespace vorlane
