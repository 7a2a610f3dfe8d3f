#include "Inbox/VLInboxDatabaseManager.h"

#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <iterator>

#include "Inbox/VLInboxStatement.h"
#include "Tests/Inbox/TestDatabase.h"
#include "Tests/Support/SimulatedPhoneTest.h"

namespace vorlane {

namespace {

using Rows = std::vector<TestDatabase::Row>;

constexpr const char* kInboxTable =
    "CREATE TABLE RICH_INBOX(ID INTEGER PRIMARY KEY AUTOINCREMENT,     TRACKING_ID TEXT, NOTIF_ID INTEGER, SUBJECT "
    "TEXT, CONTENT TEXT, LABEL TEXT, URL TEXT, PHASH TEXT, READ INTEGER,     CREATED INTEGER, END INTEGER, CARD_URL "
    "TEXT, BACKGROUND_COLOR TEXT, FOREGROUND_COLOR TEXT, CARD_IMAGE BLOB, METADATA TEXT)";
constexpr const char* kTrashTable = "CREATE TABLE RICH_TRASH(NOTIF_ID INTEGER PRIMARY KEY, TRACKING_ID TEXT)";

class VLInboxDatabaseManagerTest : public SimulatedPhoneTest {
protected:
    std::string path() const { return documentsPath("AppInboxV2Plus.db"); }
    std::string oldPath() const { return documentsPath("AppInbox.db"); }

    static void write(const std::string& file, const std::string& text) { std::ofstream(file) << text; }
    static std::string contents(const std::string& file) {
        std::ifstream stream(file);
        return {std::istreambuf_iterator<char>(stream), {}};
    }

    /// Creates a file of that version with one message in it.
    void prepare(std::int32_t version) const {
        TestDatabase database(path());
        database.execute(kInboxTable);
        database.execute(kTrashTable);
        database.execute("INSERT INTO RICH_INBOX (NOTIF_ID) VALUES (7)");
        database.execute("PRAGMA user_version = " + std::to_string(version));
    }

    std::vector<std::string> messages() {
        std::vector<std::string> texts;
        for (const auto& line : log().lines()) texts.push_back(line.message);
        return texts;
    }
    int logged(const std::string& message, VLLogLevel level = VLLogLevel::Debug) { return log().count(message, level); }

    void expectCurrent(const std::string& messageCount) {
        TestDatabase database(path());
        EXPECT_EQ(database.value("PRAGMA user_version"), "2");
        EXPECT_EQ(database.value("SELECT count(*) FROM RICH_INBOX"), messageCount);
        EXPECT_EQ(database.value("SELECT count(*) FROM RICH_TRASH"), "0");
    }

    void expectRebuilt(std::int32_t version) {
        prepare(version);
        manager.performSchemaUpgradeDowngrade();
        expectCurrent("0");
        EXPECT_EQ(logged("Found inbox schema version: " + std::to_string(version)), 1);
        EXPECT_EQ(logged("Currently using Inbox DB schema version " + std::to_string(version)), 1);
        EXPECT_EQ(logged("Downgrading Inbox DB schema to version 2"), 1);
        EXPECT_EQ(logged("Successfully recreated DB file at path " + path()), 1);
    }

    const VLInboxDatabaseManager manager{};
};

TEST_F(VLInboxDatabaseManagerTest, TheFirstRunCreatesTheTablesByteForByte) {
    manager.performSchemaUpgradeDowngrade();
    TestDatabase database(path());
    EXPECT_EQ(database.rows("SELECT sql FROM sqlite_master WHERE name NOT LIKE 'sqlite_%' ORDER BY name"),
              (Rows{{kInboxTable}, {kTrashTable}}));
    EXPECT_EQ(database.rows("SELECT name FROM sqlite_master ORDER BY name"),
              (Rows{{"RICH_INBOX"}, {"RICH_TRASH"}, {"sqlite_sequence"}}));
    expectCurrent("0");
    const auto folder = phone().documentsFolder();
    EXPECT_EQ(messages(), (std::vector<std::string>{
                              "Inbox documents directory path: " + folder, "Inbox version 2 database path: " + path(),
                              "Found inbox schema version: 0", "Currently using Inbox DB schema version 1",
                              "Upgrading Inbox DB schema to version 2", "Successfully created Inbox v2 tables",
                              "Successfully updated user_version to 2", "Inbox version 1 database path: " + oldPath(),
                              "Inbox upgrade/downgrade operations complete."}));
    for (const auto& line : log().lines()) EXPECT_EQ(line.level, VLLogLevel::Debug) << line.message;
}

TEST_F(VLInboxDatabaseManagerTest, AMissingDocumentsFolderIsCreated) {
    std::filesystem::remove_all(phone().documentsFolder());
    manager.performSchemaUpgradeDowngrade();
    expectCurrent("0");
}

TEST_F(VLInboxDatabaseManagerTest, TheFileHasMode0600) {
    struct stat status {};
    manager.performSchemaUpgradeDowngrade();
    ASSERT_EQ(stat(path().c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0600U);
    chmod(path().c_str(), 0644);
    manager.performSchemaUpgradeDowngrade();
    ASSERT_EQ(stat(path().c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0600U);
}

TEST_F(VLInboxDatabaseManagerTest, ACurrentFileIsNotChanged) {
    prepare(2);
    const auto before = contents(path());
    manager.performSchemaUpgradeDowngrade();
    EXPECT_EQ(contents(path()), before);
    EXPECT_EQ(logged("Currently using Inbox DB schema version 2"), 1);
    EXPECT_EQ(logged("Inbox upgrade/downgrade operations complete."), 1);
}

TEST_F(VLInboxDatabaseManagerTest, AFileWithoutAVersionIsUpgradedWithItsMessages) {
    prepare(0);
    manager.performSchemaUpgradeDowngrade();
    expectCurrent("1");
}

TEST_F(VLInboxDatabaseManagerTest, AFileOfVersion1IsUpgradedWithItsMessages) {
    prepare(1);
    manager.performSchemaUpgradeDowngrade();
    expectCurrent("1");
    EXPECT_EQ(logged("Found inbox schema version: 1"), 1);
    EXPECT_EQ(logged("Upgrading Inbox DB schema to version 2"), 1);
}

TEST_F(VLInboxDatabaseManagerTest, AFileOfVersion3IsRebuilt) { expectRebuilt(3); }
TEST_F(VLInboxDatabaseManagerTest, AFileOfVersion5IsRebuilt) { expectRebuilt(5); }
TEST_F(VLInboxDatabaseManagerTest, AFileOfTheHighestVersionIsRebuilt) { expectRebuilt(2147483647); }
/// Versions are compared without a sign.
TEST_F(VLInboxDatabaseManagerTest, AFileOfANegativeVersionIsRebuilt) { expectRebuilt(-1); }

TEST_F(VLInboxDatabaseManagerTest, AnUnknownVersionIsUpgradedWithTheDesignedWarning) {
    VLInboxConnection connection(path());
    connection = manager.bringToCurrent(std::move(connection), 0);
    EXPECT_TRUE(connection.isOpen());
    expectCurrent("0");
    EXPECT_EQ(logged("Found unknown Inbox DB schema version 2. Nothing to do", VLLogLevel::Warn), 1);
}

TEST_F(VLInboxDatabaseManagerTest, TheFileOfOldVersionsIsDeleted) {
    write(oldPath(), "anything");
    manager.performSchemaUpgradeDowngrade();
    EXPECT_FALSE(std::filesystem::exists(oldPath()));
    EXPECT_EQ(logged("Deleted legacy v1 database"), 1);
    EXPECT_EQ(logged("Inbox version 1 database path: " + oldPath()), 1);
}

TEST_F(VLInboxDatabaseManagerTest, AnOldFileThatCannotBeDeletedIsLogged) {
    std::filesystem::create_directory(oldPath());
    write(oldPath() + "/file", "in the way");
    manager.performSchemaUpgradeDowngrade();
    EXPECT_TRUE(std::filesystem::exists(oldPath() + "/file"));
    EXPECT_EQ(logged("Failed to delete v1 database at path: " + oldPath(), VLLogLevel::Error), 1);
    EXPECT_EQ(logged("Inbox upgrade/downgrade operations complete."), 1);
    expectCurrent("0");
}

TEST_F(VLInboxDatabaseManagerTest, ALockedOldFileIsDeleted) {
    TestDatabase old(oldPath());
    old.execute("BEGIN EXCLUSIVE");
    manager.performSchemaUpgradeDowngrade();
    EXPECT_FALSE(std::filesystem::exists(oldPath()));
}

TEST_F(VLInboxDatabaseManagerTest, AFileThatCannotBeOpenedEndsTheWork) {
    std::filesystem::create_directory(path());
    write(oldPath(), "anything");
    manager.performSchemaUpgradeDowngrade();
    EXPECT_EQ(logged("Inbox fatal error - can't open/create database: unable to open database file", VLLogLevel::Error),
              1);
    EXPECT_TRUE(std::filesystem::exists(oldPath()));
    EXPECT_EQ(logged("Inbox upgrade/downgrade operations complete."), 0);
}

TEST_F(VLInboxDatabaseManagerTest, AFileThatIsNoDatabaseIsMovedAside) {
    const std::string garbage(5000, 'x');
    write(path(), garbage);
    write(path() + "-journal", "what belongs to it");
    manager.performSchemaUpgradeDowngrade();
    expectCurrent("0");
    EXPECT_EQ(contents(path() + ".corrupt"), garbage);
    EXPECT_FALSE(std::filesystem::exists(path() + "-journal"));
    EXPECT_EQ(logged("Failed to create RICH_INBOX table: file is not a database", VLLogLevel::Error), 1);
    EXPECT_EQ(logged("Failed to create RICH_TRASH table: file is not a database", VLLogLevel::Error), 1);
    EXPECT_EQ(logged("Could not update user_version: file is not a database", VLLogLevel::Error), 1);
    EXPECT_EQ(logged("Inbox: moved the damaged database to " + path() + ".corrupt", VLLogLevel::Error), 1);
    EXPECT_EQ(logged("Successfully created Inbox v2 tables"), 1);
    EXPECT_EQ(logged("Inbox upgrade/downgrade operations complete."), 1);
}

TEST_F(VLInboxDatabaseManagerTest, AnEmptyFileIsANewDatabase) {
    write(path(), "");
    manager.performSchemaUpgradeDowngrade();
    expectCurrent("0");
    EXPECT_FALSE(std::filesystem::exists(path() + ".corrupt"));
}

TEST_F(VLInboxDatabaseManagerTest, ALockedFileIsKeptAndLogged) {
    prepare(1);
    TestDatabase other(path());
    other.execute("BEGIN IMMEDIATE");
    manager.performSchemaUpgradeDowngrade();
    EXPECT_EQ(logged("Could not update user_version: database is locked", VLLogLevel::Error), 1);
    EXPECT_EQ(logged("Inbox upgrade/downgrade operations complete."), 1);
    other.execute("COMMIT");
    EXPECT_EQ(other.value("PRAGMA user_version"), "1");
    EXPECT_EQ(other.value("SELECT count(*) FROM RICH_INBOX"), "1");
    manager.performSchemaUpgradeDowngrade();
    expectCurrent("1");
}

TEST_F(VLInboxDatabaseManagerTest, AStatementThatCannotBePreparedIsLogged) {
    VLInboxConnection connection(path());
    ASSERT_EQ(connection.close(), SQLITE_OK);
    EXPECT_EQ(manager.getSchemaVersion(connection), 1U);
    manager.setSchemaVersion(connection, 2);
    EXPECT_EQ(logged("Could not prepare statement: out of memory", VLLogLevel::Error), 2);
}

TEST_F(VLInboxDatabaseManagerTest, AConnectionThatCannotBeClosedStaysInUse) {
    prepare(5);
    VLInboxConnection connection(path());
    const VLInboxStatement statement(connection, "SELECT 1");
    connection = manager.recreateDatabaseFile(std::move(connection));
    EXPECT_TRUE(connection.isOpen());
    EXPECT_EQ(manager.getSchemaVersion(connection), 5U);
    EXPECT_EQ(logged("Failed to close DB connection prior to schema upgrade: unable to close due to unfinalized "
                     "statements or unfinished backups",
                     VLLogLevel::Error),
              1);
}

TEST_F(VLInboxDatabaseManagerTest, AFileThatCannotBeDeletedLeavesNoConnection) {
    VLInboxConnection connection(path());
    std::filesystem::remove(path());
    std::filesystem::create_directory(path());
    write(path() + "/file", "in the way");
    connection = manager.recreateSchemaToCurrent(std::move(connection));
    EXPECT_FALSE(connection.isOpen());
    EXPECT_EQ(logged("Failed to delete old DB file for schema upgrade: Directory not empty", VLLogLevel::Error), 1);
    EXPECT_EQ(log().linesContaining("Failed to create RICH_INBOX table: ").size(), 1U);
    EXPECT_EQ(log().linesContaining("Failed to create RICH_TRASH table: ").size(), 1U);
    EXPECT_EQ(log().linesContaining("Could not prepare statement: ").size(), 1U);
}

TEST_F(VLInboxDatabaseManagerTest, AFileThatCannotBeCreatedLeavesNoConnection) {
    VLInboxConnection connection(path());
    std::filesystem::remove_all(phone().documentsFolder());
    connection = manager.recreateDatabaseFile(std::move(connection));
    EXPECT_FALSE(connection.isOpen());
    EXPECT_EQ(
        logged("Failed to create new DB file at path " + path() + " : unable to open database file", VLLogLevel::Error),
        1);
}

TEST_F(VLInboxDatabaseManagerTest, EachPathIsLoggedOnce) {
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(VLInboxDatabaseManager::documentDirectoryPath(), phone().documentsFolder());
        EXPECT_EQ(VLInboxDatabaseManager::databaseV1Path(), oldPath());
        EXPECT_EQ(VLInboxDatabaseManager::databaseV2PlusPath(), path());
    }
    EXPECT_EQ(logged("Inbox documents directory path: " + phone().documentsFolder()), 1);
    EXPECT_EQ(logged("Inbox version 1 database path: " + oldPath()), 1);
    EXPECT_EQ(logged("Inbox version 2 database path: " + path()), 1);
}

TEST_F(VLInboxDatabaseManagerTest, ATakenNameOfACopyIsFreed) {
    std::filesystem::create_directory(path() + ".corrupt");
    write(path(), std::string(5000, 'x'));
    manager.performSchemaUpgradeDowngrade();
    expectCurrent("0");
    EXPECT_TRUE(std::filesystem::is_directory(path() + ".corrupt.1"));
    EXPECT_EQ(contents(path() + ".corrupt"), std::string(5000, 'x'));
    EXPECT_EQ(logged("Inbox: moved the damaged database to " + path() + ".corrupt", VLLogLevel::Error), 1);
}

TEST_F(VLInboxDatabaseManagerTest, TheOldFileIsDeletedBesideACurrentOne) {
    prepare(2);
    const auto before = contents(path());
    write(oldPath(), "anything");
    manager.performSchemaUpgradeDowngrade();
    EXPECT_EQ(contents(path()), before);
    EXPECT_FALSE(std::filesystem::exists(oldPath()));
}

}  // namespace

}  // namespace vorlane
