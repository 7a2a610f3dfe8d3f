#include "Inbox/VLInboxConnection.h"

#include <filesystem>
#include <fstream>

#include "Inbox/VLInboxStatement.h"
#include "Tests/Inbox/TestDatabase.h"
#include "Tests/Support/TemporaryFolderTest.h"

namespace vorlane {

namespace {

class VLInboxConnectionTest : public TemporaryFolderTest {
protected:
    static std::string value(VLInboxConnection& connection, const char* sql) {
        VLInboxStatement statement(connection, sql);
        statement.step();
        return statement.text(0).value_or("none");
    }
};

/// A commit must be on the disk when it returns, whatever SQLite was built with.
TEST_F(VLInboxConnectionTest, EveryCommitIsFlushedThroughARollbackJournal) {
    VLInboxConnection connection(path("a.db"));
    EXPECT_EQ(value(connection, "PRAGMA synchronous"), "2");
    EXPECT_EQ(value(connection, "PRAGMA journal_mode"), "delete");
}

TEST_F(VLInboxConnectionTest, AnUnknownFormatIsFound) {
    for (const int place : {18, 19, 44, 59}) {
        std::filesystem::remove(path("a.db"));
        TestDatabase(path("a.db")).execute("CREATE TABLE T(A)");
        EXPECT_FALSE(VLInboxConnection(path("a.db")).hasUnknownFormat());
        std::fstream(path("a.db"), std::ios::in | std::ios::out | std::ios::binary).seekp(place) << '\x03';
        EXPECT_TRUE(VLInboxConnection(path("a.db")).hasUnknownFormat()) << place;
    }
}

TEST_F(VLInboxConnectionTest, AWholeFileIsReadable) {
    TestDatabase(path("a.db")).execute("CREATE TABLE T AS SELECT zeroblob(300000)");
    EXPECT_TRUE(VLInboxConnection(path("a.db")).isReadable());
    EXPECT_TRUE(VLInboxConnection(path("new.db")).isReadable());
    EXPECT_FALSE(VLInboxConnection(path("no/folder.db")).isReadable());
}

}  // namespace

}  // namespace vorlane
