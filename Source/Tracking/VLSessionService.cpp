#include "Tracking/VLSessionService.h"

#include <fmt/format.h>

#include <limits>
#include <utility>

#include "Categories/NSDate+VLTimestamp.h"
#include "Categories/NSDictionary+VLLookup.h"
#include "Core/Base/VLSettings.h"
#include "Network/VLPayloadBuilder.h"
#include "Network/VLPayloadOptions.h"
#include "Network/VLURLBuilder.h"
#include "Network/VLURLSession.h"
#include "Notifications/VLRemoteNotificationService.h"
#include "Platform/NSBundle.h"
#include "Public/VLLog.h"

namespace vorlane {

namespace {

/// Truncated towards zero and clamped to the range of 64 bits.
std::int64_t wholeSeconds(TimeInterval length) { return integerValue(Value(length)).value_or(0); }

/// The sum modulo 2^64, as the platform's integers have it.
std::int64_t wrappingSum(std::int64_t a, std::int64_t b) {
    return static_cast<std::int64_t>(static_cast<std::uint64_t>(a) + static_cast<std::uint64_t>(b));
}

/// 0 for a count of 0.
std::int64_t quotient(std::int64_t total, std::int64_t count) {
    if (count == 0) return 0;
    // The only quotient out of range wraps around to the total.
    const bool overflows = total == std::numeric_limits<std::int64_t>::min() && count == -1;
    return overflows ? total : total / count;
}

}  // namespace

VLSessionService::VLSessionService(std::weak_ptr<VLSettings> settings,
                                   std::weak_ptr<VLRemoteNotificationService> remoteNotificationService,
                                   std::shared_ptr<VLURLSession> urlSession, std::weak_ptr<VLURLBuilder> urlBuilder,
                                   std::shared_ptr<VLPayloadBuilder> payloadBuilder,
                                   std::shared_ptr<NSBundle> mainBundle)
    : settings_(std::move(settings)),
      remoteNotificationService_(std::move(remoteNotificationService)),
      urlSession_(std::move(urlSession)),
      urlBuilder_(std::move(urlBuilder)),
      payloadBuilder_(std::move(payloadBuilder)),
      mainBundle_(std::move(mainBundle)) {}

void VLSessionService::startSessionIfNotActive() {
    if (!hasActiveSession_) sessionStart();
}

void VLSessionService::sessionStart() {
    startDate_ = vl_now();
    hasActiveSession_ = true;
    sessionLength_ = 0;
    averageSessionLength_ = 0;
    if (const auto urlBuilder = urlBuilder_.lock()) postSessionToUrl(urlBuilder->sessionStartURL());
}

void VLSessionService::sessionEnd() {
    if (!hasActiveSession_) {
        logMessage(VLLogLevel::Warn,
                   "sessionEnd() was called, but there is not an active session. This will be ignored.");
        return;
    }
    const auto settings = settings_.lock();
    const auto urlBuilder = urlBuilder_.lock();
    if (!settings || !urlBuilder) return;
    sessionLength_ = vl_now() - startDate_;
    addSessionToTotals(*settings, sessionLength_);
    hasActiveSession_ = false;
    // The body is built before the session's values are cleared.
    postSessionToUrl(urlBuilder->sessionEndURL());
    settings->setPhash(std::nullopt);
    settings->setPrevTrackingId(std::nullopt);
    settings->setSessionId(std::nullopt);
}

void VLSessionService::addSessionToTotals(VLSettings& settings, TimeInterval length) {
    const auto count = settings.sessionCount();
    const auto total = settings.totalSessionLength();
    const bool isFirstEver = count == 0 && total == 0;
    const auto newCount = wrappingSum(count, 1);
    const auto newTotal = wrappingSum(total, wholeSeconds(length));
    settings.setSessionCount(newCount);
    settings.setTotalSessionLength(newTotal);
    averageSessionLength_ = isFirstEver ? length : static_cast<double>(quotient(newTotal, newCount));
}

void VLSessionService::setTrackingID(const std::optional<std::string>& trackingId) {
    const auto settings = settings_.lock();
    const auto urlBuilder = urlBuilder_.lock();
    if (!settings || !urlBuilder || !trackingId || trackingId->empty()) return;
    const auto current = settings->trackingId();
    if (*trackingId == current) {
        settings->setTrackingId(trackingId);
        return;
    }
    settings->setPrevTrackingId(current);
    settings->setTrackingId(trackingId);
    const auto url = urlBuilder->changeTrackingIdURL();
    // Intended: the line contains the URL, not the id.
    logMessage(VLLogLevel::Debug, fmt::format("Changing tracking id: {}", url.absoluteString()));
    postSessionToUrl(url);
    registerDeviceTokenAgain(*settings);
}

void VLSessionService::registerDeviceTokenAgain(const VLSettings& settings) const {
    const auto token = settings.deviceToken();
    const auto remoteNotificationService = remoteNotificationService_.lock();
    if (!token || token->empty() || !remoteNotificationService) return;
    remoteNotificationService->registerDeviceTokenData(*token, nullptr);
}

void VLSessionService::postSessionToUrl(const NSURL& url) {
    const auto settings = settings_.lock();
    if (!settings) return;
    auto payload = payloadBuilder_->payloadWithOptions([&](VLPayloadOptions& options) {
        options.body = sessionBody(*settings);
        options.includeBasicData = true;
        options.basicDataSeparator = 1;
        options.includeDeviceData = true;
        options.deviceDataKey = VLPayloadOptions::kDeviceKey;
    });
    // The platform stands beside the device fields, not among them.
    if (const auto device = payload.find("device"); device != payload.end()) device->second.erase("platform");
    urlSession_->POST(url, std::move(payload), true, nullptr);
}

Dictionary VLSessionService::sessionBody(VLSettings& settings) const {
    Dictionary body{{"session_length", wholeSeconds(sessionLength_)},
                    {"average_session_length", wholeSeconds(averageSessionLength_)},
                    {"lit", settings.libInstallTime()},
                    {"platform", "iOS"}};
    const auto addFromBundle = [this, &body](const char* key, const char* infoKey) {
        if (const auto text = stringForKey(mainBundle_->infoDictionary(), infoKey)) body[key] = *text;
    };
    addFromBundle("app_name", "CFBundleName");
    addFromBundle("app_version", "CFBundleShortVersionString");
    addFromBundle("app_build", "CFBundleVersion");
    return body;
}

}  // namespace vorlane
