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
#include "Simulator/Service/Store/PlacementStore.h"
#include "Simulator/Service/Store/SQLiteDatabase.h"

namespace vorlane::service {

struct DeviceRegistration;
struct EventReport;
struct SessionReport;
struct StoreFilter;
struct Tag;

/// Everything that the service stores about apps, users and devices, in a SQLite database. Any thread. Every operation
/// is atomic and throws ServiceError if the database fails.
class ServiceStore {
public:
    /// Opens a file, which is created if it is missing, or ":memory:".
    explicit ServiceStore(const std::string& path);

    /// Records that a request named this user.
    void noteUser(const std::string& appKey, const std::string& trackingId);
    /// Whether a request has ever named this user.
    bool knowsUser(const std::string& appKey, const std::string& trackingId);

    /// Stores the report and assigns its device to its tracking id.
    void addSession(const SessionReport& session);
    void addEvent(const EventReport& event);
    void registerDevice(const DeviceRegistration& registration);

    /// Sets the tags with a value and removes the tags without one.
    void setTags(const std::string& appKey, const std::string& trackingId, const std::vector<Tag>& tags);
    std::optional<Tag> tag(const std::string& appKey, const std::string& trackingId, const std::string& name);
    void deleteTags(const std::string& appKey, const std::string& trackingId);

    /// Returns `nullopt` if none was set.
    std::optional<Dictionary> configuration(const std::string& appKey);
    void setConfiguration(const std::string& appKey, const Dictionary& document);
    void removeConfiguration(const std::string& appKey);

    GeoStore& geo() { return geo_; }
    BeaconStore& beacons() { return beacons_; }
    NotificationStore& notifications() { return notifications_; }
    PlacementStore& placements() { return placements_; }
    MailboxStore& mailboxes() { return mailboxes_; }

    // Lists of objects, oldest first; tags and devices by name.
    Array sessions(const StoreFilter& filter);
    Array events(const StoreFilter& filter);
    Array tags(const StoreFilter& filter);
    Array devices(const StoreFilter& filter);

    /// Removes everything.
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
    // Each locks mutex_ itself.
    GeoStore geo_;
    BeaconStore beacons_;
    NotificationStore notifications_;
    PlacementStore placements_;
    MailboxStore mailboxes_;
};

}  // namespace vorlane::service
