#pragma once

#include <optional>
#include <string>
#include <vector>

#include "Platform/Internal/PropertyListFile.h"
#include "Public/VLValue.h"

namespace vorlane {

/// The records of the monitored geofences, kept in memory and in "VLGeoRegions.plist" in the documents folder. The file
/// is a property list whose root is the array of the records. It is read on first use. If it cannot be written, it
/// stays as it is and the records in memory stay in effect. Main queue only.
class VLGeoRegionFile {
public:
    using Records = std::vector<Dictionary>;

    /// `getRegionsFromFile` returns the records in their order, or `nullopt` if the file is missing or unreadable. An
    /// unreadable file is read again by the next call. Elements that are not dictionaries are skipped.
    const std::optional<Records>& getRegionsFromFile();
    /// `saveRegionsToFile:` replaces the records.
    void saveRegionsToFile(Records records);
    void deleteGeoRegionsFile();

    static std::string path();

private:
    void readFile();
    void writeFile();

    bool isRead_ = false;
    std::optional<Records> records_;
    PropertyListFile file_{path(), PropertyListFile::Root::array};
};

}  // namespace vorlane
