#pragma once

#include <cstdint>
#include <string>

#include "Inbox/VLInboxConnection.h"

namespace vorlane {

/// Where the inbox database lies, and the shape of its tables: makes them, upgrades an old file, rebuilds one that is
/// newer than the library. Failures are only logged. Called by the inbox service on its background queue.
class VLInboxDatabaseManager {
public:
    /// `performSchemaUpgradeDowngrade` brings the live database to the current version. Messages of a newer version are
    /// lost. A file that is no database, or a damaged one, is first moved aside with the suffix ".corrupt".
    void performSchemaUpgradeDowngrade() const;

    /// Moves a damaged live database aside and makes an empty one. No connection to it may be open.
    void replaceCorruptDatabase() const;

    /// Upgrades a file of that version, or starts again with an empty one; gives the connection in use afterwards.
    VLInboxConnection bringToCurrent(VLInboxConnection connection, std::uint32_t version) const;
    /// `getSchemaVersion:`; 1 for a file without a version, and when it cannot be read.
    std::uint32_t getSchemaVersion(VLInboxConnection& connection) const;
    /// `setSchemaVersion:version:`
    void setSchemaVersion(VLInboxConnection& connection, std::uint32_t version) const;
    /// `createTablesForV2:`
    void createTablesForV2(VLInboxConnection& connection) const;
    /// `upgradeSchemaFromV1ToV2:`
    void upgradeSchemaFromV1ToV2(VLInboxConnection& connection) const;
    /// `recreateSchemaToCurrent:` starts again with an empty file; gives the connection in use afterwards.
    VLInboxConnection recreateSchemaToCurrent(VLInboxConnection connection) const;
    /// `recreateDatabaseFile:` gives a connection to a new file, or the one given when a step fails.
    VLInboxConnection recreateDatabaseFile(VLInboxConnection connection) const;
    /// `deleteV1DatabaseFile` removes the file of older versions of the library, which is never read.
    void deleteV1DatabaseFile() const;

    /// Worked out once, when first asked for.
    static std::string databaseV1Path();
    static std::string databaseV2PlusPath();
    static std::string documentDirectoryPath();

private:
    void moveDatabaseAside() const;
};

}  // namespace vorlane
