#pragma once

#include <functional>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Public/VLExport.h"

namespace vorlane {

/// What goes wrong with the library's files, as log lines: one for each file and cause, however often the library tries
/// again, and one when the file works again. Any thread.
///
/// The platform cannot log by itself: the log is built on it. Lines that come before there is a handler wait for it.
class VORLANE_EXPORT StorageFaults {
public:
    enum class Level { Error, Warning, Info };
    /// Must only queue the line: the caller may hold the lock of the store that failed.
    using Handler = std::function<void(Level level, const std::string& line)>;

    /// The faults since the installed platform was put in place.
    static StorageFaults& shared();

    void setHandler(Handler handler);

    /// `operation` is what could not be done with the file: "read", "written", "flushed"; `error` is the system's
    /// number.
    void failed(const std::string& path, const char* operation, int error);
    /// Reports that the file works again, if that operation on it has failed before.
    void succeeded(const std::string& path, const char* operation);

    /// Reports at ERROR why nothing can be stored in the folder; once until the folder can be used.
    void folderFailed(const std::string& folder, const std::string& reason);
    /// Reports at ERROR that there is no folder, so that no identity outlives the process. `placeholder` is the path
    /// that stands for it; further faults of it are not reported.
    void folderIsMissing(const std::string& placeholder, const std::string& reason);
    /// Reports at ERROR that the folder goes when the user logs out, and the identity with it.
    void folderIsShortLived(const std::string& folder, const std::string& reason);
    /// Reports that the folder can be used, if it could not be used before.
    void folderSucceeded(const std::string& folder);

private:
    void report(Level level, const std::string& line);

    std::mutex mutex_;
    // Guarded by mutex_.
    Handler handler_;
    std::vector<std::pair<Level, std::string>> waiting_;
    // By file and operation: the causes that were reported.
    std::map<std::pair<std::string, std::string_view>, std::set<int>> causes_;
    std::set<std::string> failedFolders_;
};

}  // namespace vorlane
