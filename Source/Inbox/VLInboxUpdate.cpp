#include "Inbox/VLInboxUpdate.h"

#include <fmt/format.h>

#include <algorithm>
#include <unordered_map>
#include <utility>

#include "Inbox/VLInboxIds.h"
#include "Inbox/VLInboxServer.h"
#include "Platform/DispatchGroup.h"
#include "Platform/DispatchQueue.h"
#include "Public/VLLog.h"

namespace vorlane {

namespace {

/// Limits the messages that are requested or wait to be inserted: enough to keep the network busy, and little memory
/// for a list of any length.
constexpr std::size_t kMostRequests = 64;
/// Limits the lists that wait for the host's main thread.
constexpr std::size_t kMostListsOnTheirWay = 16;

VLInboxIds idsOf(const std::vector<VLInboxEntry>& entries) {
    VLInboxIds ids;
    ids.reserve(entries.size());
    for (const auto& entry : entries) ids.insert(entry.notificationId);
    return ids;
}

void logOutcome(bool isDone, const char* done, const char* failed, std::uint64_t notificationId) {
    logMessage(isDone ? VLLogLevel::Debug : VLLogLevel::Error,
               fmt::format(fmt::runtime(isDone ? done : failed), notificationId));
}

}  // namespace

VLInboxUpdate::VLInboxUpdate(Collaborators collaborators, std::string trackingId, std::vector<VLInboxEntry> entries,
                             ShowList showList)
    : collaborators_(std::move(collaborators)),
      trackingId_(std::move(trackingId)),
      showList_(std::move(showList)),
      group_(std::make_shared<DispatchGroup>()),
      entries_(std::move(entries)) {}

void VLInboxUpdate::run(std::function<void()> completion) {
    auto local = collaborators_.store->local(trackingId_);
    if (!local) {
        // Fetching without knowing the stored ids would store messages twice.
        show();
        return completion();
    }
    dropTrashed(local->trash);
    removeUnlisted(local->entries);
    updateReadFlags(local->entries);
    fetch(local->entries, std::move(completion));
}

/// A message that was deleted on this device is deleted at the service once more, and not fetched again.
void VLInboxUpdate::dropTrashed(const std::vector<std::uint64_t>& trash) {
    const auto listed = idsOf(entries_);
    VLInboxIds dropped;
    for (const auto notificationId : trash) {
        if (!listed.contains(notificationId)) continue;
        dropped.insert(notificationId);
        collaborators_.server->deleteServerRecordForNotificationId(notificationId, trackingId_);
    }
    std::erase_if(entries_, [&dropped](const auto& entry) { return dropped.contains(entry.notificationId); });
}

void VLInboxUpdate::removeUnlisted(std::vector<VLInboxEntry>& local) {
    const auto listed = idsOf(entries_);
    const auto isListed = [&listed](const VLInboxEntry& entry) { return listed.contains(entry.notificationId); };
    std::vector<std::uint64_t> unlisted;
    VLInboxIds seen;
    for (const auto& entry : local) {
        if (!isListed(entry) && seen.insert(entry.notificationId).second) unlisted.push_back(entry.notificationId);
    }
    std::erase_if(local, [&isListed](const VLInboxEntry& entry) { return !isListed(entry); });
    const auto removed = collaborators_.store->removeRows(unlisted, trackingId_);
    for (std::size_t i = 0; i < removed.size(); ++i) {
        logOutcome(removed[i], "Inbox: deleted message {} from local DB",
                   "Inbox: unable to delete message {} from local DB", unlisted[i]);
    }
}

/// A message that was read on this device stays read; otherwise the service's flag counts.
void VLInboxUpdate::updateReadFlags(const std::vector<VLInboxEntry>& local) {
    std::unordered_map<std::uint64_t, std::int64_t, VLInboxIdHash> flags;
    for (const auto& entry : local) flags.emplace(entry.notificationId, entry.read);
    std::vector<VLInboxEntry> changed;
    for (const auto& entry : entries_) {
        const auto flag = flags.find(entry.notificationId);
        if (flag == flags.end() || flag->second == entry.read) continue;
        if (flag->second == 1) {
            collaborators_.server->updateServerRecordForNotificationId(entry.notificationId, trackingId_);
        } else {
            changed.push_back(entry);
        }
    }
    const auto isSet = collaborators_.store->setReadFlags(changed, trackingId_);
    for (std::size_t i = 0; i < isSet.size(); ++i) {
        logOutcome(isSet[i], "Inbox: updated message {} in local DB", "Inbox: unable to update message {} in local DB",
                   changed[i].notificationId);
    }
}

void VLInboxUpdate::fetch(const std::vector<VLInboxEntry>& local, std::function<void()> completion) {
    auto known = idsOf(local);
    for (const auto& entry : entries_) {
        // A list may contain an id twice.
        if (!known.insert(entry.notificationId).second) continue;
        group_->enter();
        wanted_.push_back(entry.notificationId);
    }
    collaborators_.store->beginKeepingRows();
    group_->notify(collaborators_.backgroundQueue, [self = shared_from_this(), completion = std::move(completion)] {
        if (!self->hasInserted_) self->show();
        self->collaborators_.store->endKeepingRows();
        completion();
    });
    requestMore();
}

void VLInboxUpdate::requestMore() {
    while (!wanted_.empty() && requested_ < kMostRequests) {
        ++requested_;
        request(wanted_.front());
        wanted_.pop_front();
    }
}

void VLInboxUpdate::request(std::uint64_t notificationId) {
    collaborators_.server->requestMessageDataForNotification(
        notificationId, trackingId_, [self = shared_from_this(), notificationId](std::optional<Dictionary> data) {
            self->collaborators_.backgroundQueue->post([self, notificationId, data = std::move(data)]() mutable {
                self->arrivals_.push_back({notificationId, std::move(data)});
                self->insertMore();
            });
        });
}

void VLInboxUpdate::insertMore() {
    while (!arrivals_.empty() && listsOnTheirWay_ < kMostListsOnTheirWay) {
        const auto arrival = std::move(arrivals_.front());
        arrivals_.pop_front();
        --requested_;
        insertNotification(arrival.notificationId, arrival.data);
        group_->leave();
    }
    requestMore();
}

void VLInboxUpdate::insertNotification(std::uint64_t notificationId, const std::optional<Dictionary>& data) {
    if (!data) {
        logMessage(VLLogLevel::Error, fmt::format("Inbox: no data returned for message {}", notificationId));
        return;
    }
    const bool isInserted =
        collaborators_.store->insert(VLInboxRecord::recordWithAnswer(notificationId, *data), trackingId_);
    logOutcome(isInserted, "Inbox: inserted message {} into local DB",
               "Inbox: unable to insert message {} into local DB", notificationId);
    if (!isInserted) return;
    hasInserted_ = true;
    show();
}

void VLInboxUpdate::show() {
    ++listsOnTheirWay_;
    showList_([self = shared_from_this()] {
        self->collaborators_.backgroundQueue->post([self] {
            --self->listsOnTheirWay_;
            self->insertMore();
        });
    });
}

}  // namespace vorlane
