#pragma once

#include <optional>
#include <string>
#include <vector>

#include "Public/VLValue.h"

namespace vorlane {

/// The records of the monitored geofences in "VLGeoRegions.plist" in the documents folder: a property list whose root
/// is their array. Nothing is kept in memory. Main queue only.
class VLGeoRegionFile {
public:
    using Records = std::vector<Dictionary>;

    /// `getRegionsFromFile` gives the records, in their order, without what is no dictionary; nothing when the file is
    /// missing or unreadable.
    static std::optional<Records> getRegionsFromFile();
    /// `saveRegionsToFile:` replaces the file whole; a failure is silent. Returns whether it succeeded.
    static bool saveRegionsToFile(const Records& records);
    static void deleteGeoRegionsFile();

    static std::string path();
};

}  // namespace vorlane
