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

/// The mailboxes of the users: their messages, whether these are read, and the images of their cards. A part of
/// ServiceStore. Any thread. Every operation is atomic and throws ServiceError if the database fails.
///
/// A message stays in a mailbox until its user deletes it or the operator removes it. The app decides whether it has
/// expired.
class MailboxStore {
public:
    /// Both must outlive the store.
    MailboxStore(std::mutex& mutex, SQLiteDatabase& database) : mutex_(mutex), database_(database) {}

    struct Entry {
        std::uint64_t id = 0;
        bool isRead = false;
    };
    /// The messages of a user, by descending id; ids above the signed range of 64 bits come last.
    std::vector<Entry> entries(const std::string& appKey, const std::string& trackingId);
    /// Returns one message of a user, in the form of `list()`, or `nullopt` if the user does not have it.
    std::optional<Dictionary> message(const std::string& appKey, const std::string& trackingId, std::uint64_t id);

    struct Change {
        bool isRead = false;
        bool isDeleted = false;
    };
    /// Marks a message of a user as read, deleted or both. Returns false if the user never had it. A message may be
    /// deleted again.
    bool change(const std::string& appKey, const std::string& trackingId, std::uint64_t id, const Change& change);

    struct Sent {
        std::uint64_t id = 0;
        std::string phash;
        std::size_t recipients = 0;
    };
    /// Puts a message into the user's mailbox, or, without a user, into the mailboxes of all known users of the app.
    /// Returns `nullopt` if its id was used before.
    std::optional<Sent> send(const MailboxMessage& message, const std::optional<std::string>& trackingId);
    /// Returns `nullopt` for an unknown name.
    std::optional<CardImage> image(const std::string& name);

    /// Every message in every mailbox by user and id, including messages that their users deleted.
    Array list(const StoreFilter& filter);
    /// Removes messages from the mailboxes, with an id only that message, and returns their number. Their ids are not
    /// used again.
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
