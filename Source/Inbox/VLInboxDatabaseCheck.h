#pragma once

#include <cstdint>
#include <string>

namespace vorlane {

class VLInboxConnection;

/// Tells damage of the database file apart from a file that cannot be read at the moment. SQLite reports some read
/// errors of the device as damage, so its word alone is not enough. The inbox service's background queue only.
class VLInboxDatabaseCheck {
public:
    enum class Result : std::uint8_t {
        Sound,
        /// All of the file can be read, and it is no sound database.
        Damaged,
        /// The file could not be read or is locked, so its state is unknown.
        Unknown,
    };

    /// Checks the whole file over connections of its own; takes a damaged file for damaged only after a second look.
    static Result check(const std::string& path);

    /// Returns whether something is wrong that SQLite does not report: the header has an unknown format, or a table is
    /// missing or not defined as usual. Reads a page or two.
    static bool isSuspicious(VLInboxConnection& connection);
};

}  // namespace vorlane
