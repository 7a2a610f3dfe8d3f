#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Inbox/VLInboxRecord.h"
#include "Inbox/VLInboxStore.h"
#include "Public/VLValue.h"

namespace vorlane {

class DispatchGroup;
class DispatchQueue;
class VLInboxServer;

/// Brings the messages of one user in step with what the service lists: removes, marks and fetches them one by one.
/// Made for one synchronisation by the inbox service; runs on its background queue.
class VLInboxUpdate : public std::enable_shared_from_this<VLInboxUpdate> {
public:
    /// What all updates share.
    struct Collaborators {
        std::shared_ptr<VLInboxStore> store;
        std::shared_ptr<VLInboxServer> server;
        std::shared_ptr<DispatchQueue> backgroundQueue;
    };

    /// Reads the list and hands it to the host; `shown` runs once the host has seen it, on any queue.
    using ShowList = std::function<void(std::function<void()> shown)>;

    /// `showList` is called on the background queue after each message that was inserted; once in the end when none
    /// was.
    VLInboxUpdate(Collaborators collaborators, std::string trackingId, std::vector<VLInboxEntry> entries,
                  ShowList showList);

    /// `updateRecords:trackingId:messageListBlock:syncFinishGroup:`; `completion` runs on the background queue when all
    /// is done.
    void run(std::function<void()> completion);

private:
    void dropTrashed(const std::vector<std::uint64_t>& trash);
    void removeUnlisted(std::vector<VLInboxEntry>& local);
    void updateReadFlags(const std::vector<VLInboxEntry>& local);
    void fetch(const std::vector<VLInboxEntry>& local, std::function<void()> completion);
    void requestMore();
    void request(std::uint64_t notificationId);
    void insertMore();
    void insertNotification(std::uint64_t notificationId, const std::optional<Dictionary>& data);
    void show();

    /// A message that has come, or has failed to.
    struct Arrival {
        std::uint64_t notificationId;
        std::optional<Dictionary> data;
    };

    // Fixed at construction.
    const Collaborators collaborators_;
    const std::string trackingId_;
    const ShowList showList_;
    const std::shared_ptr<DispatchGroup> group_;
    // The background queue only.
    std::vector<VLInboxEntry> entries_;
    std::deque<std::uint64_t> wanted_;
    std::deque<Arrival> arrivals_;
    std::size_t requested_ = 0;
    std::size_t listsOnTheirWay_ = 0;
    bool hasInserted_ = false;
};

}  // namespace vorlane
