#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "Platform/UIApplication.h"
#include "Public/VLExport.h"
#include "Public/VLValue.h"

namespace vorlane {

class PropertyListFile;

/// The local notifications that an application has scheduled, kept in a property list across restarts of the
/// application. Its owner guards it.
///
/// Each operation that changes the list replaces the file before it returns. After a failure to write, the list in
/// memory stays in effect, and the next change writes it. The cost of an operation on one notification does not grow
/// with the list, except for the copying of the file.
class VORLANE_EXPORT ScheduledLocalNotifications {
public:
    using Entry = UIApplication::ScheduledLocalNotification;

    /// While one exists, the file stays as it is; the last one to end replaces it if the list has changed.
    class VORLANE_EXPORT Step {
    public:
        explicit Step(ScheduledLocalNotifications& list);
        ~Step();
        Step(const Step&) = delete;
        Step& operator=(const Step&) = delete;

    private:
        ScheduledLocalNotifications& list_;
    };

    ScheduledLocalNotifications();
    ~ScheduledLocalNotifications();

    /// Adds the notifications in the file to the list and keeps the file up to date from now on. An element that is no
    /// notification is skipped. If the file cannot be read, or another process uses its folder, its notifications join
    /// the list before the first write that succeeds. Without this call the list is kept in memory only.
    void keepInFile(const std::string& path);

    Entry add(const UILocalNotification& notification);

    /// Removes every entry with the notification's identity. If there is none, and either notification was read back
    /// from a dictionary, removes the first entry whose fields are all equal. Returns the removed entries.
    std::vector<Entry> remove(const UILocalNotification& notification);
    std::vector<Entry> removeAll();

    /// Removes the entry that is due first, or returns `nullopt` if none is due at `time`.
    std::optional<Entry> takeDue(double time);

    /// The fire date of the entry that is due first, or `nullopt` for an empty list. A notification without a fire date
    /// is due at minus infinity, one whose fire date is no number at infinity.
    std::optional<double> nextFireDate() const;

    /// In the order of scheduling.
    std::vector<Entry> entries() const;
    std::vector<UILocalNotification> notifications() const;

private:
    struct Record {
        UILocalNotification notification;
        // The notification in the file; made when the file is first written with it.
        mutable std::string element;
    };

    std::uint64_t insert(const UILocalNotification& notification);
    Entry extract(std::uint64_t number);
    std::vector<std::uint64_t> numbersOf(const UILocalNotification& notification) const;
    void didChange();
    void restore(const Value& root);
    void write();

    // Null if the list is kept in memory only.
    std::unique_ptr<PropertyListFile> file_;
    int openSteps_ = 0;
    bool isWriteDue_ = false;
    // The list by number, and the numbers by due time and by identity.
    std::uint64_t newestNumber_ = 0;
    std::map<std::uint64_t, Record> records_;
    std::set<std::pair<double, std::uint64_t>> dueTimes_;
    std::unordered_multimap<std::uint64_t, std::uint64_t> identities_;
};

}  // namespace vorlane
