#pragma once

#include <set>
#include <string>

#include "Public/VLExport.h"

namespace vorlane {

/// The last generation of a file that is known to be on the disk, in the subfolder ".flushed" of the file's folder.
///
/// A file that is replaced without a flush may be old, empty or cut off after a power cut, in whatever order the disk
/// took the changes of bytes and names. The flushed generation is whole at any instant: its bytes are flushed before it
/// gets its name. It is a hard link, so at rest it is the file itself and takes no space; where there are no hard links
/// it is a copy.
class VORLANE_EXPORT FlushedGeneration {
public:
    /// Makes the files of one folder durable as they are now: their bytes, their flushed generations, their names. A
    /// file that no longer exists loses its flushed generation. Blocks as long as the disk takes: storage thread only.
    /// Returns the paths that could not be made durable, and reports them (see StorageFaults).
    static std::set<std::string> keep(const std::string& folder, const std::set<std::string>& paths);

    /// Makes the entries of the folder and of those above it durable. Storage thread only.
    static void flushPathOf(const std::string& folder);

    /// The path of the file's flushed generation, which need not exist.
    static std::string pathOf(const std::string& path);

    /// Puts the flushed generation in the place of the file. Does not flush. Returns whether it did.
    static bool restore(const std::string& path);

    /// Removes the flushed generation of a file that the application has deleted. Does not flush.
    static void forget(const std::string& path);
};

}  // namespace vorlane
