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

/// Brings the stored messages of one user in step with the service's list: removes, marks and fetches them one by one.
/// The inbox service creates one for each synchronisation. Runs on the service's background queue.
class VLInboxUpdate : public std::enable_shared_from_this<VLInboxUpdate> {
public:
    struct Collaborators {
        std::shared_ptr<VLInboxStore> store;
        std::shared_ptr<VLInboxServer> server;
        std::shared_ptr<DispatchQueue> backgroundQueue;
    };

    /// Reads the list and passes it to the host. `shown` runs after the host's handler, on any queue.
    using ShowList = std::function<void(std::function<void()> shown)>;

    /// `showList` is called on the background queue after each inserted message, or once at the end if none was
    /// inserted.
    VLInboxUpdate(Collaborators collaborators, std::string trackingId, std::vector<VLInboxEntry> entries,
                  ShowList showList);

    /// `updateRecords:trackingId:messageListBlock:syncFinishGroup:` runs the update; `completion` runs on the
    /// background queue when it has ended.
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

    /// An answered request; `nullopt` for one that failed.
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
