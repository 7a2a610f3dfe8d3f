#pragma once

#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "Public/VLValue.h"
#include "Simulator/Service/Store/BeaconStore.h"
#include "Simulator/Service/Store/GeoStore.h"
#include "Simulator/Service/Store/MailboxStore.h"
#include "Simulator/Service/Store/NotificationStore.h"
#include "Simulator/Service/Store/SQLiteDatabase.h"

namespace vorlane::service {

struct DeviceRegistration;
struct EventReport;
struct Placement;
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

    /// Nothing when the app has none of its own; one without a page when it was removed.
    std::optional<Placement> placement(const std::string& appKey, const std::string& name);
    /// The app's own, by name.
    std::vector<Placement> placements(const std::string& appKey);
    void setPlacement(const std::string& appKey, const Placement& placement);
    void removePlacements(const std::string& appKey);

    GeoStore& geo() { return geo_; }
    BeaconStore& beacons() { return beacons_; }
    NotificationStore& notifications() { return notifications_; }
    MailboxStore& mailboxes() { return mailboxes_; }

    // Lists of objects, oldest first; tags and devices by their names.
    Array sessions(const StoreFilter& filter);
    Array events(const StoreFilter& filter);
    Array tags(const StoreFilter& filter);
    Array devices(const StoreFilter& filter);

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
    // They guard themselves by mutex_.
    GeoStore geo_;
    BeaconStore beacons_;
    NotificationStore notifications_;
    MailboxStore mailboxes_;
};

}  // namespace vorlane::service
