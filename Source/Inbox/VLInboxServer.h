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

/// The service's mailbox of one user at a time: what it lists, its messages, and telling it what became of them. Any
/// thread; handlers run once, on the HTTP layer's queue or, where nothing is asked of the service, inside the call.
class VLInboxServer : public std::enable_shared_from_this<VLInboxServer> {
public:
    /// The messages that the device should hold; nothing when the service could not be asked.
    using SyncHandler = std::function<void(std::optional<std::vector<VLInboxEntry>> entries)>;
    using MessageHandler = std::function<void(std::optional<Dictionary> message)>;

    VLInboxServer(std::shared_ptr<VLURLBuilder> urlBuilder, std::shared_ptr<VLURLSession> urlSession);

    /// `syncWithHash:trackingId:syncCount:completion:` asks with the hash of what the device holds, and again with the
    /// hash of each answer until the service says that it is done. At most 22 times; the last list then counts.
    void syncWithHash(const std::optional<std::string>& hash, const std::string& trackingId, int syncCount,
                      SyncHandler completion);

    /// `requestMessageDataForNotification:trackingId:withCompletionHandler:`
    void requestMessageDataForNotification(std::uint64_t notificationId, const std::string& trackingId,
                                           MessageHandler completionHandler);

    /// `updateServerRecordForNotificationId:trackingId:` marks it as read. Not retried.
    void updateServerRecordForNotificationId(std::uint64_t notificationId, const std::string& trackingId);
    /// `deleteServerRecordForNotificationId:trackingId:`. Not retried.
    void deleteServerRecordForNotificationId(std::uint64_t notificationId, const std::string& trackingId);

    /// Where a message comes from.
    NSURL messageURL(std::uint64_t notificationId, const std::string& trackingId) const;

private:
    void stateArrived(const Dictionary& answer, const std::string& trackingId, int syncCount, SyncHandler completion);

    // Fixed at construction.
    const std::shared_ptr<VLURLBuilder> urlBuilder_;
    const std::shared_ptr<VLURLSession> urlSession_;
};

}  // namespace vorlane
