#pragma once

#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "Public/VLValue.h"
#include "Simulator/Service/MailboxStore.h"
#include "Simulator/Service/SQLiteDatabase.h"

namespace vorlane::service {

struct DeviceRegistration;
struct EventReport;
struct SessionReport;
struct StoreFilter;
struct Tag;

/// All that the service knows of apps, users and devices, in a SQLite database. Any thread; every operation is whole or
/// not at all, and throws ServiceError when the database fails.
class ServiceStore {
public:
    /// A file, made when missing, or ":memory:".
    explicit ServiceStore(const std::string& path);

    /// Keeps in mind that a request named this user.
    void noteUser(const std::string& appKey, const std::string& trackingId);
    /// Whether a request has ever named this user.
    bool knowsUser(const std::string& appKey, const std::string& trackingId);

    /// Stores the report; its device belongs to its tracking id from now on.
    void addSession(const SessionReport& session);
    void addEvent(const EventReport& event);
    void registerDevice(const DeviceRegistration& registration);

    /// Sets the tags that have a value and removes those that have none.
    void setTags(const std::string& appKey, const std::string& trackingId, const std::vector<Tag>& tags);
    std::optional<Tag> tag(const std::string& appKey, const std::string& trackingId, const std::string& name);
    void deleteTags(const std::string& appKey, const std::string& trackingId);

    /// Nothing when none was set.
    std::optional<Dictionary> configuration(const std::string& appKey);
    void setConfiguration(const std::string& appKey, const Dictionary& document);
    void removeConfiguration(const std::string& appKey);

    // Lists of objects, oldest first; tags and devices by their names.
    Array sessions(const StoreFilter& filter);
    Array events(const StoreFilter& filter);
    Array tags(const StoreFilter& filter);
    Array devices(const StoreFilter& filter);

    MailboxStore& mailboxes() { return mailboxes_; }

    /// Forgets everything.
    void clear();

private:
    void insertUser(const std::string& appKey, const std::string& trackingId);
    void insertSession(const SessionReport& session);
    void moveDevice(const SessionReport& session);
    void setTag(const std::string& appKey, const std::string& trackingId, const Tag& tag);
    Array list(const std::string& sql, const StoreFilter& filter);

    std::mutex mutex_;
    // Guarded by mutex_.
    SQLiteDatabase database_;
    MailboxStore mailboxes_{database_, mutex_};
};

}  // namespace vorlane::service
