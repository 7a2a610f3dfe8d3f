#pragma once

#include <cstddef>
#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "Public/VLValue.h"
#include "Simulator/Service/Store/StoreFilter.h"

namespace vorlane::service {

class SQLiteDatabase;
struct CardImage;
struct MailboxMessage;

/// The users' mailboxes: which messages each has, read or not, and the images of their cards. A part of the store, with
/// the same rules: any thread; every operation is whole or not at all, and throws ServiceError when the database fails.
///
/// A message stays in a mailbox until its user deletes it or the operator removes it; whether it has expired is for the
/// app to say.
class MailboxStore {
public:
    /// The store's database and what guards it, both of which have to outlive this.
    MailboxStore(std::mutex& mutex, SQLiteDatabase& database) : mutex_(mutex), database_(database) {}

    struct Entry {
        std::uint64_t id = 0;
        bool isRead = false;
    };
    /// What a user has, by descending id; ids above the signed range of 64 bits come last.
    std::vector<Entry> entries(const std::string& appKey, const std::string& trackingId);
    /// One message of a user's as list() has it; nothing when the user does not have it.
    std::optional<Dictionary> message(const std::string& appKey, const std::string& trackingId, std::uint64_t id);

    struct Change {
        bool isRead = false;
        bool isDeleted = false;
    };
    /// Marks a message of a user's as read, as deleted, or as both; false when the user never had it. A message may be
    /// deleted again.
    bool change(const std::string& appKey, const std::string& trackingId, std::uint64_t id, const Change& change);

    struct Sent {
        std::uint64_t id = 0;
        std::string phash;
        std::size_t recipients = 0;
    };
    /// Puts a message into the user's mailbox, or into those of all users of the app that are known by now. Nothing
    /// when its id was used before.
    std::optional<Sent> send(const MailboxMessage& message, const std::optional<std::string>& trackingId);
    /// Nothing when there is none of this name.
    std::optional<CardImage> image(const std::string& name);

    /// Every message in every mailbox, also those that their users deleted, by user and id.
    Array list(const StoreFilter& filter);
    /// Takes messages out of the mailboxes, with an id that one alone; how many there were. Their ids are not used
    /// again.
    std::size_t remove(const StoreFilter& filter, const std::optional<std::uint64_t>& id);

private:
    std::optional<std::uint64_t> takeId(const std::optional<std::uint64_t>& wanted);
    void insertMessage(const MailboxMessage& message, const Sent& sent);
    void deliver(const std::string& appKey, const std::optional<std::string>& trackingId, Sent& sent);
    std::size_t changedRows() const;

    std::mutex& mutex_;
    // Guarded by mutex_.
    SQLiteDatabase& database_;
};

}  // namespace vorlane::service
