#pragma once

#include <cstdint>
#include <string>

#include "Inbox/VLInboxConnection.h"

namespace vorlane {

/// The location of the inbox database and its schema: creates the tables, upgrades an old file, rebuilds one that is
/// newer than the library, and replaces a damaged one. Failures are only logged. Called by the inbox service on its
/// background queue.
class VLInboxDatabaseManager {
public:
    /// `performSchemaUpgradeDowngrade` brings the live database to the current version. Messages of a newer version are
    /// lost. A damaged file is replaced as in `repairDatabase()`.
    void performSchemaUpgradeDowngrade() const;

    /// Opens the live database for one operation. A database that was deleted is created again first, with its tables.
    VLInboxConnection openDatabase() const;

    /// Checks a live database that is suspected of damage; no connection to it may be open. One that is proven to be
    /// damaged is replaced by a new one with the rows that could still be read, and kept with ".corrupt" appended to
    /// its name. One that could not be checked stays as it is. Returns whether it is worth while to try again.
    bool repairDatabase() const;

    /// Upgrades a file of that version, or replaces it by an empty one. Returns the connection in use afterwards.
    VLInboxConnection bringToCurrent(VLInboxConnection connection, std::uint32_t version) const;
    /// `getSchemaVersion:` returns 1 for a file without a version, and for one whose version cannot be read.
    std::uint32_t getSchemaVersion(VLInboxConnection& connection) const;
    /// `setSchemaVersion:version:`
    void setSchemaVersion(VLInboxConnection& connection, std::uint32_t version) const;
    /// `createTablesForV2:`
    void createTablesForV2(VLInboxConnection& connection) const;
    /// `upgradeSchemaFromV1ToV2:`
    void upgradeSchemaFromV1ToV2(VLInboxConnection& connection) const;
    /// `recreateSchemaToCurrent:` starts again with an empty file. Returns the connection in use afterwards.
    VLInboxConnection recreateSchemaToCurrent(VLInboxConnection connection) const;
    /// `recreateDatabaseFile:` returns a connection to a new file, or the given one if a step fails.
    VLInboxConnection recreateDatabaseFile(VLInboxConnection connection) const;
    /// `deleteV1DatabaseFile` removes the file of older versions of the library, which is never read.
    void deleteV1DatabaseFile() const;

    /// Determined at the first call.
    static std::string databaseV1Path();
    static std::string databaseV2PlusPath();
    static std::string documentDirectoryPath();

private:
    enum class Outcome : std::uint8_t { Done, CannotOpen, Suspicious };

    Outcome bringLiveDatabaseToCurrent() const;
    bool replaceDamagedDatabase() const;
    bool rebuild(const std::string& path) const;
};

}  // namespace vorlane
