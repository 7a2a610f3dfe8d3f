#include "Inbox/VLInboxServer.h"

#include <fmt/format.h>

#include <utility>

#include "Categories/NSDictionary+VLLookup.h"
#include "Network/VLURLBuilder.h"
#include "Network/VLURLSession.h"
#include "Public/VLLog.h"

namespace vorlane {

namespace {

/// The count starts at 0, so at most 22 requests are made.
constexpr int kLastSyncCount = 21;

bool isComplete(const Dictionary& answer) {
    const auto* complete = valueForKey(answer, "synchronisation_complete");
    return complete && complete->is_boolean() && complete->get<bool>();
}

void logMarkedAsRead(std::uint64_t notificationId, bool isMarked, std::int64_t statusCode) {
    if (isMarked) {
        return logMessage(VLLogLevel::Debug, fmt::format("Inbox: message {} marked as read remotely", notificationId));
    }
    logMessage(VLLogLevel::Error, fmt::format("Inbox: message {} could not be marked as read remotely, HTTP error {}",
                                              notificationId, statusCode));
}

}  // namespace

VLInboxServer::VLInboxServer(std::weak_ptr<VLURLBuilder> urlBuilder, std::shared_ptr<VLURLSession> urlSession)
    : urlBuilder_(std::move(urlBuilder)), urlSession_(std::move(urlSession)) {}

void VLInboxServer::syncWithHash(const std::optional<std::string>& hash, const std::string& trackingId, int syncCount,
                                 SyncHandler completion) {
    const auto urlBuilder = urlBuilder_.lock();
    if (!hash || !urlBuilder) return completion(std::nullopt);
    urlSession_->GETJSON(
        urlBuilder->inboxStateURLWithTrackingId(trackingId, *hash),
        [self = shared_from_this(), trackingId, syncCount, completion = std::move(completion)](
            std::optional<Dictionary> answer, std::int64_t /*statusCode*/, const std::optional<NSError>& error) {
            if (error || !answer) return completion(std::nullopt);
            self->stateArrived(*answer, trackingId, syncCount, completion);
        });
}

void VLInboxServer::stateArrived(const Dictionary& answer, const std::string& trackingId, int syncCount,
                                 SyncHandler completion) {
    if (!isComplete(answer) && syncCount < kLastSyncCount) {
        return syncWithHash(stringForKey(answer, "state_hash"), trackingId, syncCount + 1, std::move(completion));
    }
    const auto* elements = arrayForKey(answer, "notification");
    completion(elements ? std::optional(inboxEntriesWithArray(*elements)) : std::nullopt);
}

void VLInboxServer::requestMessageDataForNotification(std::uint64_t notificationId, const std::string& trackingId,
                                                      MessageHandler completionHandler) {
    const auto url = messageURL(notificationId, trackingId);
    if (!url) return completionHandler(std::nullopt);
    urlSession_->GETJSON(
        *url, [handler = std::move(completionHandler)](std::optional<Dictionary> message, std::int64_t /*statusCode*/,
                                                       const std::optional<NSError>& error) {
            handler(error ? std::nullopt : std::move(message));
        });
}

void VLInboxServer::updateServerRecordForNotificationId(std::uint64_t notificationId, const std::string& trackingId) {
    const auto url = messageURL(notificationId, trackingId);
    if (!url) return logMarkedAsRead(notificationId, false, -1);
    urlSession_->PUT(
        *url, {{"read", true}},
        [notificationId](const std::optional<std::string>& /*text*/, std::int64_t statusCode,
                         const std::optional<NSError>& error) { logMarkedAsRead(notificationId, !error, statusCode); });
}

void VLInboxServer::deleteServerRecordForNotificationId(std::uint64_t notificationId, const std::string& trackingId) {
    if (const auto url = messageURL(notificationId, trackingId)) urlSession_->PUT(*url, {{"deleted", true}}, nullptr);
}

std::optional<NSURL> VLInboxServer::messageURL(std::uint64_t notificationId, const std::string& trackingId) const {
    const auto urlBuilder = urlBuilder_.lock();
    if (!urlBuilder) return std::nullopt;
    return urlBuilder->inboxMessageURLWithNotificationId(notificationId, trackingId);
}

}  // namespace vorlane
