#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Public/VLValue.h"

namespace vorlane {

class PropertyListFile;

/// The records of the monitored geofences, kept in memory and in "VLGeoRegions.plist" in the documents folder. The file
/// is a property list whose root is the array of the records. It is read on first use. If it cannot be written, it
/// stays as it is and the records in memory stay in effect. Main queue only.
class VLGeoRegionFile {
public:
    using Records = std::vector<Dictionary>;

    VLGeoRegionFile();
    ~VLGeoRegionFile();

    /// `getRegionsFromFile` returns the records in their order, or `nullopt` if the file is missing or unreadable. An
    /// unreadable file is read again by the next call. Elements that are not dictionaries are skipped.
    const std::optional<Records>& getRegionsFromFile();
    /// `saveRegionsToFile:` replaces the records. If the file was unreadable, a later time of a crossing in it is kept.
    void saveRegionsToFile(Records records);
    void deleteGeoRegionsFile();

    static std::string path();

private:
    void write();

    // Fixed at construction.
    const std::unique_ptr<PropertyListFile> file_;
    bool isRead_ = false;
    std::optional<Records> records_;
};

}  // namespace vorlane
