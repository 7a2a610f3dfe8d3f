#pragma once

#include <optional>
#include <string>

#include "Public/VLExport.h"
#include "Public/VLValue.h"

namespace vorlane {

/// Files as the library writes them: its folder with mode 0700, its files with mode 0600, each replaced whole.
///
/// Nothing here waits for the disk. The property lists of the library are PropertyListFile objects, whose files are
/// made durable afterwards.
class VORLANE_EXPORT NSFileManager {
public:
    /// Returns the whole file, or `nullopt` if it cannot be read, is not a regular file or is longer than 64 MiB.
    static std::optional<Data> contentsAtPath(const std::string& path);

    /// Reads the whole file into `bytes` and returns 0, or the system's error number: `EINVAL` for an item that is not
    /// a regular file, `EFBIG` for one that is longer than 64 MiB.
    static int readFile(const std::string& path, Data& bytes);

    /// `writeToFile:atomically:` replaces the file whole: a temporary file in the same folder, then renamed. A kill at
    /// any instant leaves the old bytes or the new ones. Makes the folder if it is missing. Returns whether it
    /// succeeded; a failure leaves the old file and no temporary file.
    static bool writeToFile(const Data& bytes, const std::string& path);

    /// The same; returns 0 or the system's error number.
    static int replaceFile(const Data& bytes, const std::string& path);

    /// Removes the temporary files that a kill during a write of a property list left in the folder, if they were last
    /// written before `time` (seconds since 1970). Newer ones may belong to a write of another process.
    static void removeAbandonedTemporaryFilesInFolder(const std::string& folder, double time);

    /// Makes the folder and its parents; returns whether it exists afterwards, else sets `errno`.
    static bool createDirectoryAtPath(const std::string& path);

    /// Moves a file over the destination.
    static bool moveItemAtPath(const std::string& path, const std::string& destination);

    static bool fileExistsAtPath(const std::string& path);

    /// Returns when the item was made, in seconds since 1970: its birth time, or the earliest of its other times if the
    /// file system keeps none; `nullopt` if it cannot be read.
    static std::optional<double> creationDateOfItemAtPath(const std::string& path);
};

}  // namespace vorlane
