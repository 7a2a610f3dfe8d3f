#include "Inbox/VLInboxDatabaseManager.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <mutex>
#include <system_error>
#include <utility>

#include "Inbox/VLInboxStatement.h"
#include "Platform/Internal/ProcessWide.h"
#include "Platform/NSFileManager.h"
#include "Platform/Platform.h"
#include "Public/VLLog.h"

namespace vorlane {

namespace {

constexpr std::uint32_t kCurrentVersion = 2;
constexpr mode_t kFileMode = 0600;

constexpr const char* kCreateInbox =
    "CREATE TABLE IF NOT EXISTS RICH_INBOX(ID INTEGER PRIMARY KEY AUTOINCREMENT,     TRACKING_ID TEXT, "
    "NOTIF_ID INTEGER, SUBJECT TEXT, CONTENT TEXT, LABEL TEXT, URL TEXT, PHASH TEXT, READ INTEGER,     "
    "CREATED INTEGER, END INTEGER, CARD_URL TEXT, BACKGROUND_COLOR TEXT, FOREGROUND_COLOR TEXT, CARD_IMAGE BLOB, "
    "METADATA TEXT)";
constexpr const char* kCreateTrash =
    "CREATE TABLE IF NOT EXISTS RICH_TRASH(NOTIF_ID INTEGER PRIMARY KEY, TRACKING_ID TEXT)";

/// The paths of the process, each worked out and logged once.
struct Paths {
    std::mutex mutex;
    // Guarded by mutex; empty until asked for.
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

/// SQLite would make the file readable for everybody; one that is there already is made private, too. That one is not
/// opened, because closing it again would drop the locks that this process holds on it.
void makePrivateFile(const std::string& path) {
    const int file = ::open(path.c_str(), O_CREAT | O_EXCL | O_RDONLY | O_CLOEXEC, kFileMode);
    if (file >= 0) {
        ::close(file);
    } else {
        ::chmod(path.c_str(), kFileMode);
    }
}

/// Empty on success, else what went wrong.
std::string removeFile(const std::string& path) {
    std::error_code error;
    std::filesystem::remove(path, error);
    return error ? error.message() : std::string();
}

void logPrepareFailure(const VLInboxConnection& connection) {
    logMessage(VLLogLevel::Error, fmt::format("Could not prepare statement: {}", connection.errorMessage()));
}

VLInboxConnection openLiveDatabase() {
    const auto path = VLInboxDatabaseManager::databaseV2PlusPath();
    makePrivateFile(path);
    VLInboxConnection connection(path);
    if (!connection.isOpen()) {
        logMessage(VLLogLevel::Error,
                   fmt::format("Inbox fatal error - can't open/create database: {}", connection.errorMessage()));
    }
    return connection;
}

}  // namespace

void VLInboxDatabaseManager::performSchemaUpgradeDowngrade() const {
    NSFileManager::createDirectoryAtPath(documentDirectoryPath());
    auto connection = openLiveDatabase();
    if (!connection.isOpen()) return;
    const auto version = getSchemaVersion(connection);
    connection = bringToCurrent(std::move(connection), version);
    if (connection.isCorrupt()) {
        connection.close();
        replaceCorruptDatabase();
    }
    connection.close();
    deleteV1DatabaseFile();
    logMessage(VLLogLevel::Debug, "Inbox upgrade/downgrade operations complete.");
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
        // Names the current version rather than the one found, and upgrades all the same; meant so.
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
    const auto inboxError = connection.execute(kCreateInbox);
    if (!inboxError.empty()) {
        logMessage(VLLogLevel::Error, fmt::format("Failed to create RICH_INBOX table: {}", inboxError));
    }
    const auto trashError = connection.execute(kCreateTrash);
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
    const auto path = databaseV2PlusPath();
    if (connection.close() != SQLITE_OK) {
        logMessage(VLLogLevel::Error,
                   fmt::format("Failed to close DB connection prior to schema upgrade: {}", connection.errorMessage()));
        return connection;
    }
    if (const auto error = removeFile(path); !error.empty()) {
        logMessage(VLLogLevel::Error, fmt::format("Failed to delete old DB file for schema upgrade: {}", error));
        return connection;
    }
    makePrivateFile(path);
    VLInboxConnection fresh(path);
    if (!fresh.isOpen()) {
        logMessage(VLLogLevel::Error,
                   fmt::format("Failed to create new DB file at path {} : {}", path, fresh.errorMessage()));
        return connection;
    }
    logMessage(VLLogLevel::Debug, fmt::format("Successfully recreated DB file at path {}", path));
    return fresh;
}

void VLInboxDatabaseManager::deleteV1DatabaseFile() const {
    const auto path = databaseV1Path();
    if (!NSFileManager::fileExistsAtPath(path)) return;
    if (removeFile(path).empty()) {
        logMessage(VLLogLevel::Debug, "Deleted legacy v1 database");
    } else {
        logMessage(VLLogLevel::Error, fmt::format("Failed to delete v1 database at path: {}", path));
    }
}

void VLInboxDatabaseManager::replaceCorruptDatabase() const {
    moveDatabaseAside();
    auto connection = openLiveDatabase();
    if (!connection.isOpen()) return;
    const auto version = getSchemaVersion(connection);
    bringToCurrent(std::move(connection), version);
}

void VLInboxDatabaseManager::moveDatabaseAside() const {
    const auto path = databaseV2PlusPath();
    const auto destination = path + ".corrupt";
    // A journal left beside a fresh file would be played into it.
    for (const char* companion : {"-journal", "-wal", "-shm"}) {
        if (!NSFileManager::moveItemAtPath(path + companion, destination + companion)) removeFile(path + companion);
    }
    if (NSFileManager::moveItemAtPath(path, destination)) {
        return logMessage(VLLogLevel::Error, fmt::format("Inbox: moved the damaged database to {}", destination));
    }
    logMessage(VLLogLevel::Error, fmt::format("Inbox: unable to move the damaged database to {}", destination));
    removeFile(path);
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
