#pragma once

#include <memory>
#include <string>

#include "Core/Base/VLSettings.h"
#include "Network/VLPayloadBuilder.h"
#include "Network/VLURLBuilder.h"
#include "Network/VLURLSession.h"
#include "Public/VLURLsProduction.h"
#include "Tests/Support/SimulatedPhoneTest.h"

namespace vorlane {

/// A fixture with the collaborators that every service is constructed with, and fixed identities.
class ServicesTest : public SimulatedPhoneTest {
protected:
    explicit ServicesTest(SimulatedPhone::Options options = {}) : SimulatedPhoneTest(std::move(options)) {
        phone().setDocumentsCreationDate(1'600'000'000.0);
        settings->setAppKey("K");
        settings->setTrackingId("T");
    }

    /// Returns the basic fields, with "app_key" and "tracking_id" or "appkey" and "trackingid".
    Dictionary basicFields(bool hasSeparator) const {
        return {{"lv", "2.0.1"},
                {"acit", "1600000000000"},
                {"device_id", settings->deviceId()},
                {"sid", settings->sessionId()},
                {hasSeparator ? "app_key" : "appkey", "K"},
                {hasSeparator ? "tracking_id" : "trackingid", settings->trackingId()},
                {"phash", settings->phash().value_or("")}};
    }

    /// Returns the union of both; a field of `own` replaces that of `basic`.
    static Value merged(Dictionary own, Dictionary basic) {
        own.merge(basic);
        return own;
    }

    std::shared_ptr<VLSettings> settings = std::make_shared<VLSettings>(phone().device());
    std::shared_ptr<VLURLBuilder> urlBuilder =
        std::make_shared<VLURLBuilder>(std::make_shared<VLURLsProduction>(), settings);
    std::shared_ptr<VLPayloadBuilder> payloadBuilder = std::make_shared<VLPayloadBuilder>(phone().device(), settings);
    std::shared_ptr<VLURLSession> urlSession =
        std::make_shared<VLURLSession>(phone().makeURLSession({}), phone().application());
};

}  // namespace vorlane
