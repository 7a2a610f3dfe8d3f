#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "Platform/NSError.h"
#include "Platform/NSURL.h"
#include "Public/VLInboxMessage.h"
#include "Public/VLValue.h"

namespace vorlane {

class DispatchGroup;
class DispatchQueue;
class NSURLSession;
class VLCardImageLoader;
class VLConfigService;
class VLEventService;
class VLInboxDatabaseManager;
class VLInboxServer;
class VLInboxStore;
class VLInboxSyncQueue;
class VLSettings;
class VLURLBuilder;
class VLURLSession;
struct VLInboxEntry;

/// The rich inbox: keeps the local database in step with the service's mailbox of the current user, and serves the
/// host's calls. Called by the facade and by messages; any thread.
///
/// All database work runs on the serial queue "vorlane.InboxService", the schema check first. Handlers may be empty and
/// run once, on the main queue, except where an operation says otherwise. An operation concerns the user that was the
/// current one when it was called; a list request, when its turn came.
class VLInboxService : public std::enable_shared_from_this<VLInboxService> {
public:
    /// What the service works with. Card images are loaded by `imageSession`.
    struct Collaborators {
        std::shared_ptr<VLSettings> settings;
        std::shared_ptr<VLEventService> eventService;
        std::shared_ptr<VLConfigService> configService;
        std::shared_ptr<VLURLBuilder> urlBuilder;
        std::shared_ptr<VLURLSession> urlSession;
        std::shared_ptr<NSURLSession> imageSession;
    };
    using Messages = std::vector<std::shared_ptr<VLInboxMessage>>;
    using ListHandler = std::function<void(const Messages& messages, std::size_t unreadCount)>;
    using MessageHandler =
        std::function<void(const std::shared_ptr<VLInboxMessage>& message, std::optional<NSError> error)>;
    using ImageHandler = std::function<void(std::shared_ptr<const VLImage> image)>;
    using ErrorHandler = std::function<void(std::optional<NSError> error)>;

    /// `initWithSettings:withEventService:withConfig:urlBuilder:urlSession:`
    static std::shared_ptr<VLInboxService> serviceWith(Collaborators collaborators);
    ~VLInboxService();

    /// `getInboxMessagesWithCompletionHandler:` gives the list and how many of it are unread: from the database alone
    /// when the last synchronisation for this user was less than the configured time ago, else after another one. Then
    /// the handler runs once for each message that was fetched, with the whole list so far, and at least once.
    void getInboxMessagesWithCompletionHandler(ListHandler completionHandler);

    /// `openInboxMessage:completion:`
    void openInboxMessage(const std::shared_ptr<VLInboxMessage>& message, MessageHandler completion);
    /// `openInboxMessage:sourcePage:completion:` marks the message as read, here and with the service, and sends the
    /// event "Read"; "Re-Read" alone when it was read before. Errors: `VLErrorDomainInbox` code 0.
    void openInboxMessage(const std::shared_ptr<VLInboxMessage>& message, const std::optional<std::string>& sourcePage,
                          MessageHandler completion);
    /// `deleteInboxMessage:completion:` deletes the message here and with the service, also when that still lists it at
    /// a later synchronisation, and sends the event "Delete". Errors: `VLErrorDomainInbox` code 0.
    void deleteInboxMessage(const std::shared_ptr<VLInboxMessage>& message, MessageHandler completion);

    /// `loadImageForNotificationId:trackingId:completionHandler:` reads the stored image. The handler runs on the
    /// service's queue.
    void loadImageForNotificationId(std::uint64_t notificationId, const std::string& trackingId,
                                    ImageHandler completionHandler);
    /// `saveImage:notificationId:trackingId:completionHandler:`
    void saveImage(const Data& image, std::uint64_t notificationId, const std::string& trackingId,
                   ErrorHandler completionHandler);
    /// Downloads a message's image. The handler runs on the service's queue.
    void downloadImage(const NSURL& imageURL, std::uint64_t notificationId, ImageHandler completionHandler);

    /// The current user.
    std::string trackingId() const;

    // The service's queue only.

    /// `getInboxList:` gives what is there and has not expired, newest first; nothing when it cannot be read.
    Messages getInboxList(const std::string& trackingId);
    /// `getUnreadCount:`
    std::size_t getUnreadCount(const std::string& trackingId);
    /// `getStateHash:completion:` gives the JSON text that the state hash is made of; nothing when it cannot be read.
    void getStateHash(const std::string& trackingId,
                      const std::function<void(std::optional<std::string> json)>& completion);

private:
    using Entries = std::optional<std::vector<VLInboxEntry>>;
    /// What a list handler receives.
    struct List {
        Messages messages;
        std::size_t unreadCount;
    };

    explicit VLInboxService(Collaborators collaborators);
    void start();

    std::shared_ptr<DispatchGroup> listOrSync(const ListHandler& completionHandler);
    bool isReturningLocalDatabaseResult(const std::string& trackingId);
    void syncMessages(const std::string& trackingId, std::function<void(Entries entries)> completion);
    void syncEnded(const std::string& trackingId);
    void updateRecords(Entries entries, const std::string& trackingId, const ListHandler& messageListBlock,
                       const std::shared_ptr<DispatchGroup>& syncFinishGroup);
    List readList(const std::string& trackingId);
    void runMessageListBlockCallback(const std::string& trackingId, const ListHandler& messageListBlock,
                                     std::function<void()> shown);
    void opened(const std::shared_ptr<VLInboxMessage>& message, const std::string& trackingId,
                const std::optional<std::string>& sourcePage, const MessageHandler& completion);
    void deleted(const std::shared_ptr<VLInboxMessage>& message, const std::string& trackingId,
                 const MessageHandler& completion);
    template <class Work>
    void onBackgroundQueue(Work work);

    // Fixed at construction.
    const Collaborators collaborators_;
    const std::shared_ptr<DispatchQueue> backgroundQueue_;
    const std::shared_ptr<VLInboxSyncQueue> inboxSyncQueue_;
    const std::shared_ptr<VLInboxDatabaseManager> databaseManager_;
    const std::shared_ptr<VLInboxServer> server_;
    const std::shared_ptr<VLCardImageLoader> imageLoader_;
    std::shared_ptr<VLInboxStore> store_;

    std::mutex mutex_;
    // Guarded by mutex_. Nothing before the first synchronisation.
    std::optional<double> lastSync_;
    std::string lastSyncTrackingId_;
};

}  // namespace vorlane
