#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
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
class VLInboxSyncInterval;
class VLInboxSyncQueue;
class VLSettings;
class VLURLBuilder;
class VLURLSession;
struct VLInboxEntry;

/// The rich inbox: keeps the local database in step with the current user's mailbox at the service, and serves the
/// host's calls. Called by the facade and by messages; any thread.
///
/// All database work runs on the serial queue "vorlane.InboxService", the schema check first. Handlers may be empty and
/// run once, on the main queue, except where an operation says otherwise. An operation concerns the user who is current
/// when it is called; a list request, the user who is current when it starts.
class VLInboxService : public std::enable_shared_from_this<VLInboxService> {
public:
    /// Card images are loaded by `imageSession`. Once the URL builder is gone, no request is made.
    struct Collaborators {
        std::shared_ptr<VLSettings> settings;
        std::shared_ptr<VLEventService> eventService;
        std::shared_ptr<VLConfigService> configService;
        std::weak_ptr<VLURLBuilder> urlBuilder;
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

    /// `getInboxMessagesWithCompletionHandler:` passes the list and the unread count to the handler. They come from the
    /// database alone if the last synchronisation for this user is recent (see VLInboxSyncInterval), and otherwise
    /// after another synchronisation. The handler then runs for each fetched message with the whole list so far, and at
    /// least once.
    void getInboxMessagesWithCompletionHandler(ListHandler completionHandler);

    /// `openInboxMessage:completion:`
    void openInboxMessage(const std::shared_ptr<VLInboxMessage>& message, MessageHandler completion);
    /// `openInboxMessage:sourcePage:completion:` marks the message as read on this device and at the service, and sends
    /// the event "Read". If the message was read before, it only sends the event "Re-Read". Errors:
    /// `VLErrorDomainInbox` code 0.
    void openInboxMessage(const std::shared_ptr<VLInboxMessage>& message, const std::optional<std::string>& sourcePage,
                          MessageHandler completion);
    /// `deleteInboxMessage:completion:` deletes the message on this device and at the service, and sends the event
    /// "Delete". A later synchronisation repeats the deletion while the service still lists the message. Errors:
    /// `VLErrorDomainInbox` code 0.
    void deleteInboxMessage(const std::shared_ptr<VLInboxMessage>& message, MessageHandler completion);

    /// `loadImageForNotificationId:trackingId:completionHandler:` reads the stored image. The handler runs on the
    /// service's queue.
    void loadImageForNotificationId(std::uint64_t notificationId, const std::string& trackingId,
                                    ImageHandler completionHandler);
    /// `saveImage:notificationId:trackingId:completionHandler:`
    void saveImage(const Data& image, std::uint64_t notificationId, const std::string& trackingId,
                   ErrorHandler completionHandler);
    /// Downloads the card image of a message. The handler runs on the service's queue.
    void downloadImage(const NSURL& imageURL, std::uint64_t notificationId, ImageHandler completionHandler);

    /// The current user.
    std::string trackingId() const;

    // The service's queue only.

    /// `getInboxList:` returns the messages that have not expired, newest first; an empty list if the database cannot
    /// be read.
    Messages getInboxList(const std::string& trackingId);
    /// `getUnreadCount:`
    std::size_t getUnreadCount(const std::string& trackingId);
    /// `getStateHash:completion:` passes on the JSON string that the state hash is computed from; `nullopt` if the
    /// database cannot be read.
    void getStateHash(const std::string& trackingId,
                      const std::function<void(std::optional<std::string> json)>& completion);

private:
    using Entries = std::optional<std::vector<VLInboxEntry>>;
    struct List {
        Messages messages;
        std::size_t unreadCount;
    };

    explicit VLInboxService(Collaborators collaborators);
    void start();

    std::shared_ptr<DispatchGroup> listOrSync(const ListHandler& completionHandler);
    void syncMessages(const std::string& trackingId, std::function<void(Entries entries)> completion);
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
    const std::shared_ptr<VLInboxSyncInterval> syncInterval_;
    std::shared_ptr<VLInboxStore> store_;
};

}  // namespace vorlane
