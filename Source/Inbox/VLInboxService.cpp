#include "Inbox/VLInboxService.h"

#include <fmt/format.h>

#include <utility>

#include "Categories/NSDate+VLTimestamp.h"
#include "Categories/NSDictionary+VLJSON.h"
#include "Categories/NSString+VLHash.h"
#include "Core/Base/VLCompletion.h"
#include "Core/Base/VLError.h"
#include "Core/Base/VLSettings.h"
#include "Inbox/VLCardImageLoader.h"
#include "Inbox/VLInboxDatabaseManager.h"
#include "Inbox/VLInboxServer.h"
#include "Inbox/VLInboxStore.h"
#include "Inbox/VLInboxSyncInterval.h"
#include "Inbox/VLInboxSyncQueue.h"
#include "Inbox/VLInboxUpdate.h"
#include "Platform/DispatchGroup.h"
#include "Platform/Platform.h"
#include "Public/VLLog.h"
#include "Tracking/VLEventService.h"

namespace vorlane {

namespace {

/// The host passed a null message.
void completeWithoutMessage(const VLInboxService::MessageHandler& completion) {
    completeOnMainQueue(completion, std::shared_ptr<VLInboxMessage>(),
                        std::optional(VLError::errorWithDomain(VLErrorDomainInbox, 0, "There is no message")));
}

}  // namespace

std::shared_ptr<VLInboxService> VLInboxService::serviceWith(Collaborators collaborators) {
    const std::shared_ptr<VLInboxService> service(new VLInboxService(std::move(collaborators)));
    service->start();
    return service;
}

VLInboxService::VLInboxService(Collaborators collaborators)
    : collaborators_(std::move(collaborators)),
      backgroundQueue_(Platform::current().makeSerialQueue("vorlane.InboxService")),
      inboxSyncQueue_(
          std::make_shared<VLInboxSyncQueue>(Platform::current().makeSerialQueue("vorlane.InboxServiceSync"))),
      databaseManager_(std::make_shared<VLInboxDatabaseManager>()),
      server_(std::make_shared<VLInboxServer>(collaborators_.urlBuilder, collaborators_.urlSession)),
      imageLoader_(std::make_shared<VLCardImageLoader>(collaborators_.imageSession, backgroundQueue_)),
      syncInterval_(std::make_shared<VLInboxSyncInterval>(collaborators_.configService)) {}

VLInboxService::~VLInboxService() = default;

void VLInboxService::start() {
    store_ = std::make_shared<VLInboxStore>(databaseManager_, weak_from_this());
    backgroundQueue_->post([manager = databaseManager_] { manager->performSchemaUpgradeDowngrade(); });
}

template <class Work>
void VLInboxService::onBackgroundQueue(Work work) {
    backgroundQueue_->post([self = shared_from_this(), work = std::move(work)]() mutable { work(*self); });
}

std::string VLInboxService::trackingId() const { return collaborators_.settings->trackingId(); }

void VLInboxService::getInboxMessagesWithCompletionHandler(ListHandler completionHandler) {
    inboxSyncQueue_->post(
        [self = shared_from_this(), handler = std::move(completionHandler)] { return self->listOrSync(handler); });
}

/// Runs on the sync queue. Returns the group to wait for, or null.
std::shared_ptr<DispatchGroup> VLInboxService::listOrSync(const ListHandler& completionHandler) {
    logMessage(VLLogLevel::Debug, "Inbox: enter sync queue");
    const auto user = trackingId();
    if (syncInterval_->isReturningLocalDatabaseResult(user)) {
        logMessage(VLLogLevel::Debug, "Inbox: loading message from database only");
        onBackgroundQueue([user, completionHandler](VLInboxService& self) {
            self.runMessageListBlockCallback(user, completionHandler, nullptr);
        });
        return nullptr;
    }
    logMessage(VLLogLevel::Debug, "Inbox: perform sync");
    auto group = std::make_shared<DispatchGroup>();
    group->enter();
    syncMessages(user, [self = shared_from_this(), user, completionHandler, group](Entries entries) {
        self->syncInterval_->syncEnded(user);
        self->onBackgroundQueue(
            [user, completionHandler, group, entries = std::move(entries)](VLInboxService& service) mutable {
                service.updateRecords(std::move(entries), user, completionHandler, group);
            });
    });
    return group;
}

void VLInboxService::syncMessages(const std::string& trackingId, std::function<void(Entries entries)> completion) {
    onBackgroundQueue([trackingId, completion = std::move(completion)](VLInboxService& self) {
        self.getStateHash(trackingId, [&](const std::optional<std::string>& json) {
            self.server_->syncWithHash(json ? std::optional(vl_md5(*json)) : std::nullopt, trackingId, 0, completion);
        });
    });
}

void VLInboxService::getStateHash(const std::string& trackingId,
                                  const std::function<void(std::optional<std::string> json)>& completion) {
    const auto entries = store_->stateEntries(trackingId);
    if (!entries) return completion(std::nullopt);
    Array elements;
    elements.reserve(entries->size());
    for (const auto& entry : *entries) {
        elements.emplace_back(Dictionary{{"id", entry.notificationId}, {"read", entry.read}});
    }
    completion(vl_asJSON({{"notification", std::move(elements)}}));
}

void VLInboxService::updateRecords(Entries entries, const std::string& trackingId, const ListHandler& messageListBlock,
                                   const std::shared_ptr<DispatchGroup>& syncFinishGroup) {
    if (!entries) {
        runMessageListBlockCallback(trackingId, messageListBlock, nullptr);
        syncFinishGroup->leave();
        return;
    }
    const auto showList = [self = shared_from_this(), trackingId, messageListBlock](std::function<void()> shown) {
        self->runMessageListBlockCallback(trackingId, messageListBlock, std::move(shown));
    };
    const auto update = std::make_shared<VLInboxUpdate>(VLInboxUpdate::Collaborators{store_, server_, backgroundQueue_},
                                                        trackingId, std::move(*entries), showList);
    update->run([syncFinishGroup] { syncFinishGroup->leave(); });
}

void VLInboxService::runMessageListBlockCallback(const std::string& trackingId, const ListHandler& messageListBlock,
                                                 std::function<void()> shown) {
    if (!messageListBlock) {
        if (shown) shown();
        return;
    }
    auto list = std::make_shared<List>(readList(trackingId));
    onMainQueue(
        [queue = backgroundQueue_, list = std::move(list), messageListBlock, shown = std::move(shown)]() mutable {
            messageListBlock(list->messages, list->unreadCount);
            if (shown) shown();
            // Off the main queue, because destroying a long list is slow.
            queue->post([list = std::move(list)] {});
        });
}

VLInboxService::List VLInboxService::readList(const std::string& trackingId) {
    const double time = vl_now();
    const auto list = store_->list(trackingId, time);
    return {list.rows ? visibleRows(*list.rows, time) : Messages(), list.unreadCount.value_or(0)};
}

VLInboxService::Messages VLInboxService::getInboxList(const std::string& trackingId) {
    return readList(trackingId).messages;
}

std::size_t VLInboxService::getUnreadCount(const std::string& trackingId) {
    return store_->unreadCount(trackingId, vl_now()).value_or(0);
}

void VLInboxService::openInboxMessage(const std::shared_ptr<VLInboxMessage>& message, MessageHandler completion) {
    openInboxMessage(message, std::nullopt, std::move(completion));
}

void VLInboxService::openInboxMessage(const std::shared_ptr<VLInboxMessage>& message,
                                      const std::optional<std::string>& sourcePage, MessageHandler completion) {
    if (!message) return completeWithoutMessage(completion);
    onBackgroundQueue([message, user = trackingId(), sourcePage, completion = std::move(completion)](
                          VLInboxService& self) { self.opened(message, user, sourcePage, completion); });
}

void VLInboxService::opened(const std::shared_ptr<VLInboxMessage>& message, const std::string& trackingId,
                            const std::optional<std::string>& sourcePage, const MessageHandler& completion) {
    auto result = store_->markRead(message->messageId(), trackingId);
    // Before the event, which sends the phash as one of its common fields.
    if (message->phash()) collaborators_.settings->setPhash(message->phash());
    const auto page = vl_description(sourcePage);
    if (result.wasRead) {
        collaborators_.eventService->registerEventWithType("Re-Read", fmt::format("Rich {} Message Re-Read", page));
    } else {
        server_->updateServerRecordForNotificationId(message->messageId(), trackingId);
        collaborators_.eventService->registerEventWithType("Read", fmt::format("Rich {} Message Opened", page));
    }
    completeOnMainQueue(completion, message, std::move(result.error));
}

void VLInboxService::deleteInboxMessage(const std::shared_ptr<VLInboxMessage>& message, MessageHandler completion) {
    if (!message) return completeWithoutMessage(completion);
    onBackgroundQueue([message, user = trackingId(), completion = std::move(completion)](VLInboxService& self) {
        self.deleted(message, user, completion);
    });
}

void VLInboxService::deleted(const std::shared_ptr<VLInboxMessage>& message, const std::string& trackingId,
                             const MessageHandler& completion) {
    auto error = store_->moveToTrash(message->messageId(), trackingId);
    server_->deleteServerRecordForNotificationId(message->messageId(), trackingId);
    collaborators_.eventService->registerEventWithType("Delete", "Inbox Message Deleted", message->phash());
    completeOnMainQueue(completion, message, std::move(error));
}

void VLInboxService::loadImageForNotificationId(std::uint64_t notificationId, const std::string& trackingId,
                                                ImageHandler completionHandler) {
    onBackgroundQueue([=, handler = std::move(completionHandler)](VLInboxService& self) {
        auto data = self.store_->cardImage(notificationId, trackingId);
        if (handler) handler(data ? VLImage::imageWithData(std::move(*data)) : nullptr);
    });
}

void VLInboxService::saveImage(const Data& image, std::uint64_t notificationId, const std::string& trackingId,
                               ErrorHandler completionHandler) {
    onBackgroundQueue([=, handler = std::move(completionHandler)](VLInboxService& self) {
        completeOnMainQueue(handler, self.store_->setCardImage(image, notificationId, trackingId));
    });
}

void VLInboxService::downloadImage(const NSURL& imageURL, std::uint64_t notificationId,
                                   ImageHandler completionHandler) {
    imageLoader_->load(imageURL, server_->messageURL(notificationId, trackingId()), std::move(completionHandler));
}

}  // namespace vorlane
