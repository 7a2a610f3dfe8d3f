#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "Platform/CLLocationManagerDelegate.h"
#include "Platform/CLRegion.h"
#include "Public/VLExport.h"
#include "Public/VLValue.h"

namespace vorlane {

class PropertyListFile;

/// The regions that a location manager monitors, by identifier, kept in a property list across restarts of the
/// application. Any thread.
class VORLANE_EXPORT MonitoredRegions {
public:
    /// Reads the file; what is no region in it is left out. An empty path: the regions are kept in memory only.
    ///
    /// A file that cannot be read is left alone: before the first write that succeeds, its regions join those that were
    /// added meanwhile.
    explicit MonitoredRegions(std::string path);
    ~MonitoredRegions();

    /// Adds the region in that state, or replaces the one with its identifier.
    void add(std::shared_ptr<CLRegion> region, CLRegionState state = CLRegionState::Unknown);
    /// Returns false if no region has the identifier.
    bool remove(const std::string& identifier);

    /// Null if no region has the identifier.
    std::shared_ptr<CLRegion> find(const std::string& identifier) const;
    /// Unknown if no region has the identifier.
    CLRegionState stateOf(const std::string& identifier) const;
    /// Ignored if no region has the identifier.
    void setState(const std::string& identifier, CLRegionState state);
    /// By identifier, ascending.
    std::vector<std::shared_ptr<CLRegion>> all() const;

private:
    struct Entry {
        std::shared_ptr<CLRegion> region;
        CLRegionState state;
    };

    void take(const Value& root);
    void write();

    mutable std::mutex mutex_;
    // Guarded by mutex_.
    std::map<std::string, Entry> regions_;
    const std::unique_ptr<PropertyListFile> file_;
};

}  // namespace vorlane
