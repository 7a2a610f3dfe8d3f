#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "Platform/CLLocationManagerDelegate.h"
#include "Platform/CLRegion.h"
#include "Public/VLExport.h"

namespace vorlane {

/// The regions that a location manager watches, by identifier, kept in a property list across restarts of the
/// application. Its owner guards it.
class VORLANE_EXPORT MonitoredRegions {
public:
    /// Reads the file. What is no region in it is passed over; a file that is no property list is first kept with the
    /// suffix ".corrupt". An empty path keeps nothing.
    explicit MonitoredRegions(std::string path);

    /// Puts the region in the place of one with its identifier, or adds it, with an unknown state. A failure to write
    /// is silent and what is in memory stays.
    void add(std::shared_ptr<CLRegion> region);
    /// False when none has the identifier.
    bool remove(const std::string& identifier);

    /// Null when none has the identifier.
    std::shared_ptr<CLRegion> find(const std::string& identifier) const;
    /// Unknown when none has the identifier.
    CLRegionState stateOf(const std::string& identifier) const;
    /// Ignored when none has the identifier.
    void setState(const std::string& identifier, CLRegionState state);
    /// By identifier, ascending.
    std::vector<std::shared_ptr<CLRegion>> all() const;

private:
    struct Entry {
        std::shared_ptr<CLRegion> region;
        CLRegionState state;
    };

    void write() const;

    // Fixed at construction.
    const std::string path_;
    std::map<std::string, Entry> regions_;
};

}  // namespace vorlane
