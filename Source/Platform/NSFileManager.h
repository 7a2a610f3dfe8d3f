#pragma once

#include <optional>
#include <string>

#include "Public/VLExport.h"
#include "Public/VLValue.h"

namespace vorlane {

/// Files as the library writes them: its folder with mode 0700, its files with mode 0600, each replaced whole.
class VORLANE_EXPORT NSFileManager {
public:
    /// The whole file; nothing when it cannot be read or is longer than 64 MiB.
    static std::optional<Data> contentsAtPath(const std::string& path);

    /// `writeToFile:atomically:` replaces the file whole: a temporary file in the same folder, flushed to disk, then
    /// renamed. After a kill or a power cut at any instant the path holds the old bytes or the new ones. The folder is
    /// made when missing. Returns whether it succeeded; after a failure the old file stands and no temporary file is
    /// left.
    static bool writeToFile(const Data& bytes, const std::string& path);

    /// Removes the temporary files of property lists that a kill in the middle of `writeToFile` left in the folder,
    /// last written before `time` (seconds since 1970); newer ones may be under way in another process.
    static void removeAbandonedTemporaryFilesInFolder(const std::string& folder, double time);

    /// Makes the folder and its parents; true when it is there afterwards.
    static bool createDirectoryAtPath(const std::string& path);

    /// Moves a file over whatever stood at the destination.
    static bool moveItemAtPath(const std::string& path, const std::string& destination);

    static bool fileExistsAtPath(const std::string& path);

    /// When the item was made, in seconds since 1970: its birth time, or the earliest of its other times where the file
    /// system keeps none. Nothing when it cannot be read.
    static std::optional<double> creationDateOfItemAtPath(const std::string& path);
};

}  // namespace vorlane
