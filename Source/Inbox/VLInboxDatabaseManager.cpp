#include "Inbox/VLInboxDatabaseManager.h"

#include <fmt/format.h>
#include <sqlite3.h>

#include <filesystem>
#include <mutex>
#include <optional>
#include <system_error>
#include <utility>

#include "Inbox/VLInboxDatabaseCheck.h"
#include "Inbox/VLInboxDatabaseFile.h"
#include "Inbox/VLInboxDatabaseSalvage.h"
#include "Inbox/VLInboxSchema.h"
#include "Inbox/VLInboxStatement.h"
#include "Platform/Internal/ProcessWide.h"
#include "Platform/NSFileManager.h"
#include "Platform/Platform.h"
#include "Public/VLLog.h"

namespace vorlane {

namespace {

constexpr std::uint32_t kCurrentVersion = 2;

/// The paths of the process, each determined and logged once.
struct Paths {
    std::mutex mutex;
    // Guarded by mutex; empty before the first call.
    std::string documents;
    std::string v1;
    std::string v2Plus;
};

constinit ProcessWide<Paths> sharedPaths;

std::string pathOnce(std::string Paths::*member, const char* logFormat, const std::string& path) {
    auto& paths = sharedPaths.get();
    {
        const std::lock_guard lock(paths.mutex);
        auto& kept = paths.*member;
        if (!kept.empty()) return kept;
        kept = path;
    }
    logMessage(VLLogLevel::Debug, fmt::format(fmt::runtime(logFormat), path));
    return path;
}

VLInboxDatabaseFile liveFile() { return VLInboxDatabaseFile(VLInboxDatabaseManager::databaseV2PlusPath()); }

void logPrepareFailure(const VLInboxConnection& connection) {
    logMessage(VLLogLevel::Error, fmt::format("Could not prepare statement: {}", connection.errorMessage()));
}

}  // namespace

void VLInboxDatabaseManager::performSchemaUpgradeDowngrade() const {
    NSFileManager::createDirectoryAtPath(documentDirectoryPath());
    const auto outcome = bringLiveDatabaseToCurrent();
    if (outcome == Outcome::CannotOpen) return;
    if (outcome == Outcome::Suspicious && repairDatabase()) bringLiveDatabaseToCurrent();
    deleteV1DatabaseFile();
    logMessage(VLLogLevel::Debug, "Inbox upgrade/downgrade operations complete.");
}

VLInboxDatabaseManager::Outcome VLInboxDatabaseManager::bringLiveDatabaseToCurrent() const {
    const auto file = liveFile();
    file.prepare();
    VLInboxConnection connection(file.path());
    if (!connection.isOpen()) {
        logMessage(VLLogLevel::Error,
                   fmt::format("Inbox fatal error - can't open/create database: {}", connection.errorMessage()));
        return Outcome::CannotOpen;
    }
    const auto version = getSchemaVersion(connection);
    connection = bringToCurrent(std::move(connection), version);
    const bool isSuspicious = VLInboxDatabaseCheck::isSuspicious(connection) || connection.isCorrupt();
    return isSuspicious ? Outcome::Suspicious : Outcome::Done;
}

VLInboxConnection VLInboxDatabaseManager::openDatabase() const {
    const auto file = liveFile();
    if (!file.exists()) performSchemaUpgradeDowngrade();
    file.prepare();
    return VLInboxConnection(file.path());
}

VLInboxConnection VLInboxDatabaseManager::bringToCurrent(VLInboxConnection connection, std::uint32_t version) const {
    logMessage(VLLogLevel::Debug,
               fmt::format("Currently using Inbox DB schema version {}", static_cast<std::int32_t>(version)));
    if (version == kCurrentVersion) return connection;
    if (version > kCurrentVersion) {
        logMessage(VLLogLevel::Debug, fmt::format("Downgrading Inbox DB schema to version {}", kCurrentVersion));
        return recreateSchemaToCurrent(std::move(connection));
    }
    if (version == 1) {
        logMessage(VLLogLevel::Debug, fmt::format("Upgrading Inbox DB schema to version {}", kCurrentVersion));
    } else {
        // Intended: names the current version instead of the one found, and upgrades nevertheless.
        logMessage(VLLogLevel::Warn,
                   fmt::format("Found unknown Inbox DB schema version {}. Nothing to do", kCurrentVersion));
    }
    upgradeSchemaFromV1ToV2(connection);
    return connection;
}

std::uint32_t VLInboxDatabaseManager::getSchemaVersion(VLInboxConnection& connection) const {
    VLInboxStatement statement(connection, "PRAGMA user_version;");
    if (!statement.isPrepared()) {
        logPrepareFailure(connection);
        return 1;
    }
    std::int32_t version = 0;
    while (statement.step() == SQLITE_ROW) version = static_cast<std::int32_t>(statement.integer(0));
    logMessage(VLLogLevel::Debug, fmt::format("Found inbox schema version: {}", version));
    return version == 0 ? 1 : static_cast<std::uint32_t>(version);
}

void VLInboxDatabaseManager::setSchemaVersion(VLInboxConnection& connection, std::uint32_t version) const {
    const auto number = static_cast<std::int32_t>(version);
    VLInboxStatement statement(connection, fmt::format("PRAGMA user_version = {};", number).c_str());
    if (!statement.isPrepared()) return logPrepareFailure(connection);
    if (statement.step() == SQLITE_DONE) {
        logMessage(VLLogLevel::Debug, fmt::format("Successfully updated user_version to {}", number));
    } else {
        logMessage(VLLogLevel::Error, fmt::format("Could not update user_version: {}", connection.errorMessage()));
    }
}

void VLInboxDatabaseManager::createTablesForV2(VLInboxConnection& connection) const {
    const auto inboxError = connection.execute(kInboxTable.statement);
    if (!inboxError.empty()) {
        logMessage(VLLogLevel::Error, fmt::format("Failed to create RICH_INBOX table: {}", inboxError));
    }
    const auto trashError = connection.execute(kTrashTable.statement);
    if (!trashError.empty()) {
        logMessage(VLLogLevel::Error, fmt::format("Failed to create RICH_TRASH table: {}", trashError));
    }
    if (inboxError.empty() && trashError.empty()) {
        logMessage(VLLogLevel::Debug, "Successfully created Inbox v2 tables");
    }
}

void VLInboxDatabaseManager::upgradeSchemaFromV1ToV2(VLInboxConnection& connection) const {
    createTablesForV2(connection);
    setSchemaVersion(connection, kCurrentVersion);
}

VLInboxConnection VLInboxDatabaseManager::recreateSchemaToCurrent(VLInboxConnection connection) const {
    connection = recreateDatabaseFile(std::move(connection));
    createTablesForV2(connection);
    setSchemaVersion(connection, kCurrentVersion);
    return connection;
}

VLInboxConnection VLInboxDatabaseManager::recreateDatabaseFile(VLInboxConnection connection) const {
    const auto file = liveFile();
    if (connection.close() != SQLITE_OK) {
        logMessage(VLLogLevel::Error,
                   fmt::format("Failed to close DB connection prior to schema upgrade: {}", connection.errorMessage()));
        return connection;
    }
    if (const auto error = file.remove(); !error.empty()) {
        logMessage(VLLogLevel::Error, fmt::format("Failed to delete old DB file for schema upgrade: {}", error));
        return connection;
    }
    file.prepare();
    VLInboxConnection fresh(file.path());
    if (!fresh.isOpen()) {
        logMessage(VLLogLevel::Error,
                   fmt::format("Failed to create new DB file at path {} : {}", file.path(), fresh.errorMessage()));
        return connection;
    }
    logMessage(VLLogLevel::Debug, fmt::format("Successfully recreated DB file at path {}", file.path()));
    return fresh;
}

void VLInboxDatabaseManager::deleteV1DatabaseFile() const {
    const auto path = databaseV1Path();
    if (!NSFileManager::fileExistsAtPath(path)) return;
    std::error_code error;
    if (std::filesystem::remove(path, error)) {
        logMessage(VLLogLevel::Debug, "Deleted legacy v1 database");
    } else {
        logMessage(VLLogLevel::Error, fmt::format("Failed to delete v1 database at path: {}", path));
    }
}

bool VLInboxDatabaseManager::repairDatabase() const {
    switch (VLInboxDatabaseCheck::check(databaseV2PlusPath())) {
        case VLInboxDatabaseCheck::Result::Sound:
            logMessage(VLLogLevel::Warn, "Inbox: the database was suspected of damage, but a check found it sound");
            return true;
        case VLInboxDatabaseCheck::Result::Damaged:
            return replaceDamagedDatabase();
        case VLInboxDatabaseCheck::Result::Unknown:
            break;
    }
    logMessage(VLLogLevel::Error, "Inbox: the database was suspected of damage, but cannot be checked; it is kept");
    return false;
}

bool VLInboxDatabaseManager::replaceDamagedDatabase() const {
    const auto file = liveFile();
    const VLInboxDatabaseFile replacement(file.path() + ".new");
    std::optional<std::string> copy;
    if (rebuild(replacement.path())) copy = file.replaceWith(replacement.path());
    if (copy) {
        logMessage(VLLogLevel::Error, fmt::format("Inbox: moved the damaged database to {}", *copy));
    } else {
        logMessage(VLLogLevel::Error, fmt::format("Inbox: unable to replace the damaged database {}", file.path()));
        replacement.remove();
    }
    return copy.has_value();
}

bool VLInboxDatabaseManager::rebuild(const std::string& path) const {
    const VLInboxDatabaseFile file(path);
    file.remove();
    file.prepare();
    VLInboxConnection connection(path);
    if (!connection.isOpen()) return false;
    upgradeSchemaFromV1ToV2(connection);
    if (getSchemaVersion(connection) != kCurrentVersion) return false;
    const auto count = VLInboxDatabaseSalvage(databaseV2PlusPath()).copyRowsTo(connection);
    if (count) logMessage(VLLogLevel::Info, fmt::format("Inbox: copied {} rows of the damaged database", *count));
    return count && connection.close() == SQLITE_OK;
}

std::string VLInboxDatabaseManager::databaseV1Path() {
    return pathOnce(&Paths::v1, "Inbox version 1 database path: {}", documentDirectoryPath() + "/AppInbox.db");
}

std::string VLInboxDatabaseManager::databaseV2PlusPath() {
    return pathOnce(&Paths::v2Plus, "Inbox version 2 database path: {}",
                    documentDirectoryPath() + "/AppInboxV2Plus.db");
}

std::string VLInboxDatabaseManager::documentDirectoryPath() {
    return pathOnce(&Paths::documents, "Inbox documents directory path: {}", Platform::current().documentsFolder());
}

}  // namespace vorlane
