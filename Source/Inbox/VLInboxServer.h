#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Inbox/VLInboxRecord.h"
#include "Platform/NSURL.h"
#include "Public/VLValue.h"

namespace vorlane {

class VLURLBuilder;
class VLURLSession;

/// The mailbox at the service: its list, its messages and their state there. Any thread. Handlers run once: on the HTTP
/// layer's queue, or inside the call if no request is made. Without a URL builder no request is made, and each
/// operation fails.
class VLInboxServer : public std::enable_shared_from_this<VLInboxServer> {
public:
    /// Receives the messages that the device should hold, or `nullopt` after a failure.
    using SyncHandler = std::function<void(std::optional<std::vector<VLInboxEntry>> entries)>;
    using MessageHandler = std::function<void(std::optional<Dictionary> message)>;

    VLInboxServer(std::weak_ptr<VLURLBuilder> urlBuilder, std::shared_ptr<VLURLSession> urlSession);

    /// `syncWithHash:trackingId:syncCount:completion:` sends the hash of what the device holds, and then the hash of
    /// each answer until the service reports that the synchronisation is complete. After 22 requests the last list is
    /// used.
    void syncWithHash(const std::optional<std::string>& hash, const std::string& trackingId, int syncCount,
                      SyncHandler completion);

    /// `requestMessageDataForNotification:trackingId:withCompletionHandler:`
    void requestMessageDataForNotification(std::uint64_t notificationId, const std::string& trackingId,
                                           MessageHandler completionHandler);

    /// `updateServerRecordForNotificationId:trackingId:` marks the message as read. Not retried.
    void updateServerRecordForNotificationId(std::uint64_t notificationId, const std::string& trackingId);
    /// `deleteServerRecordForNotificationId:trackingId:`. Not retried.
    void deleteServerRecordForNotificationId(std::uint64_t notificationId, const std::string& trackingId);

    /// Returns the URL of a message; `nullopt` without a URL builder.
    std::optional<NSURL> messageURL(std::uint64_t notificationId, const std::string& trackingId) const;

private:
    void stateArrived(const Dictionary& answer, const std::string& trackingId, int syncCount, SyncHandler completion);

    // Fixed at construction.
    const std::weak_ptr<VLURLBuilder> urlBuilder_;
    const std::shared_ptr<VLURLSession> urlSession_;
};

}  // namespace vorlane
