#include <gmock/gmock.h>

#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <iterator>

#include "Tests/Inbox/FailingDatabaseCalls.h"
#include "Tests/Inbox/InboxTest.h"

namespace vorlane {

namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;
using ::testing::Ge;
using ::testing::IsEmpty;
using ::testing::SizeIs;

/// An inbox whose service cannot be reached, so that every list comes from the database.
class VLInboxDamageTest : public InboxTest {
protected:
    VLInboxDamageTest() { session().alwaysFail("/"); }

    std::string copyPath(const char* suffix = ".corrupt") const { return databasePath() + suffix; }

    std::string contents(const std::string& path) {
        std::ifstream stream(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }
    void overwrite(std::size_t place, const std::string& bytes) {
        std::fstream file(databasePath(), std::ios::in | std::ios::out | std::ios::binary);
        file.seekp(static_cast<std::streamoff>(place));
        file << bytes;
    }
    /// Replaces the first occurrence of `text` in the file.
    void overwrite(const std::string& text, const std::string& bytes) {
        const auto place = contents(databasePath()).find(text);
        ASSERT_NE(place, std::string::npos);
        overwrite(place, bytes);
    }
    static mode_t mode(const std::string& path) {
        struct stat status {};
        return ::stat(path.c_str(), &status) == 0 ? status.st_mode & 07777U : 0;
    }

    /// Each message takes about half a page of the file.
    void storeMany(int count) {
        execute(
            fmt::format("WITH RECURSIVE ids(id) AS (SELECT 1 UNION ALL SELECT id + 1 FROM ids WHERE id < {}) INSERT "
                        "INTO RICH_INBOX (TRACKING_ID, NOTIF_ID, READ, CREATED, END, CONTENT) SELECT 'T', id, 0, "
                        "id, 1800000000, printf('%.1900c', 'x') FROM ids",
                        count));
    }

    /// Restarts the service on a file with three messages and one deleted one, damaged by `damage`.
    template <class Damage>
    void expectAllSaved(Damage damage) {
        for (std::uint64_t id = 1; id <= 3; ++id) store(id, 0, static_cast<double>(id));
        execute("INSERT INTO RICH_TRASH VALUES (9, 'T')");
        damage();
        const auto damaged = contents(databasePath());
        restartService();
        EXPECT_THAT(list().ids(), ElementsAre(3, 2, 1));
        EXPECT_EQ(value("SELECT NOTIF_ID || TRACKING_ID FROM RICH_TRASH"), "9T");
        EXPECT_EQ(value("PRAGMA user_version"), "2");
        EXPECT_EQ(contents(copyPath()), damaged);
        EXPECT_EQ(mode(databasePath()), 0600U);
        EXPECT_FALSE(fs::exists(copyPath(".new")) || fs::exists(copyPath(".salvage")));
        EXPECT_EQ(log().count("Inbox: moved the damaged database to " + copyPath(), VLLogLevel::Error), 1);
        // The new file can be written to.
        service->openInboxMessage(message(2), outcomeHandler());
        phone().settle();
        EXPECT_EQ(outcome.error, std::nullopt);
        EXPECT_EQ(value("SELECT READ FROM RICH_INBOX WHERE NOTIF_ID = 2"), "1");
    }

    /// The service starts and lists in spite of the entry, which is moved aside.
    void expectMovedAside(const std::string& path) {
        restartService();
        EXPECT_THAT(list().ids(), ElementsAre(1));
        EXPECT_TRUE(fs::exists(fs::symlink_status(path + ".corrupt"))) << path;
        EXPECT_EQ(log().count("Inbox: moved aside " + path + ", which is no regular file", VLLogLevel::Error), 1);
    }

    FailingDatabaseCalls failing;
};

// Errors of the device.

TEST_F(VLInboxDamageTest, OneReadErrorAnywhereLosesNoMessage) {
    for (std::uint64_t id = 1; id <= 3; ++id) store(id, 0, static_cast<double>(id));
    execute("INSERT INTO RICH_TRASH VALUES (9, 'T')");
    long reads = 0;
    for (bool hasFailed = true; hasFailed && reads < 500;) {
        failing.failRead(++reads);
        restartService();
        list();
        hasFailed = failing.hasFailedRead();
        failing.healReads();
        ASSERT_FALSE(fs::exists(copyPath())) << reads;
        ASSERT_THAT(list().ids(), ElementsAre(3, 2, 1)) << reads;
        ASSERT_EQ(value("SELECT count(*) FROM RICH_TRASH"), "1") << reads;
    }
    EXPECT_GT(reads, 10);
    EXPECT_LT(reads, 500);
}

TEST_F(VLInboxDamageTest, AReportOfDamageIsCheckedAndRetried) {
    storeMany(20);
    std::size_t retried = 0;
    for (long read = 1; read <= 40; ++read) {
        phone().advance(1);
        failing.failRead(read);
        const auto shown = list();
        failing.healReads();
        const auto reports =
            log().count("Inbox: the database was suspected of damage, but a check found it sound", VLLogLevel::Warn);
        if (reports == 0) continue;
        ++retried;
        ASSERT_THAT(shown.messages, SizeIs(20)) << read;
        log().clear();
    }
    EXPECT_GT(retried, 0U);
}

TEST_F(VLInboxDamageTest, AFileThatCannotBeReadIsKept) {
    storeMany(20);
    const auto before = contents(databasePath());
    failing.failReadsAt(4096 * 5 + 10);
    restartService();
    EXPECT_THAT(list().messages, IsEmpty());
    EXPECT_GE(log().count("Inbox: the database was suspected of damage, but cannot be checked; it is kept",
                          VLLogLevel::Error),
              1);
    failing.healReads();
    EXPECT_FALSE(fs::exists(copyPath()));
    EXPECT_EQ(contents(databasePath()), before);
    EXPECT_THAT(list().messages, SizeIs(20));
}

// Damage.

TEST_F(VLInboxDamageTest, ADamagedPageCostsOnlyItsOwnMessages) {
    storeMany(400);
    execute("INSERT INTO RICH_TRASH VALUES (9, 'T')");
    overwrite(4096 * 60, std::string(4096, '\0'));
    overwrite(4096 * 120, std::string(4096, '\xFF'));
    const auto damaged = contents(databasePath());
    EXPECT_THAT(list().messages, SizeIs(Ge(394U)));
    EXPECT_EQ(value("PRAGMA quick_check"), "ok");
    EXPECT_EQ(value("SELECT count(*) FROM RICH_TRASH"), "1");
    EXPECT_EQ(contents(copyPath()), damaged);
    EXPECT_EQ(mode(copyPath()), 0600U);
}

TEST_F(VLInboxDamageTest, ACutOffFileKeepsItsFirstMessages) {
    storeMany(400);
    fs::resize_file(databasePath(), 4096 * 150);
    EXPECT_THAT(list().messages, SizeIs(Ge(200U)));
    EXPECT_EQ(value("PRAGMA quick_check"), "ok");
}

TEST_F(VLInboxDamageTest, ADamagedMagicIsRepaired) {
    expectAllSaved([this] { overwrite(0, "X"); });
}

TEST_F(VLInboxDamageTest, ADamagedWriteVersionIsRepaired) {
    expectAllSaved([this] { overwrite(18, "\x81"); });
}

TEST_F(VLInboxDamageTest, ADamagedPageSizeIsRepaired) {
    expectAllSaved([this] { overwrite(16, "\x11"); });
}

TEST_F(VLInboxDamageTest, ADamagedColumnNameIsRepaired) {
    expectAllSaved([this] { overwrite("NOTIF_ID INTEGER, SUBJECT", "NOTIF_IE"); });
}

TEST_F(VLInboxDamageTest, AMalformedDefinitionIsRepaired) {
    expectAllSaved([this] { overwrite("AUTOINCREMENT", "AUTOINCREMENU"); });
}

TEST_F(VLInboxDamageTest, ADamagedTableNameIsRepaired) {
    expectAllSaved([this] { overwrite("tableRICH_TRASH", "tableRICH_TRASX"); });
}

TEST_F(VLInboxDamageTest, DamageDuringTheRunIsRepairedAndTheListRead) {
    for (std::uint64_t id = 1; id <= 3; ++id) store(id, 0, static_cast<double>(id));
    list();
    overwrite(0, "X");
    EXPECT_THAT(listAfter(1).ids(), ElementsAre(3, 2, 1));
    EXPECT_TRUE(fs::exists(copyPath()));
}

TEST_F(VLInboxDamageTest, FlippedBitsNeverLeaveAnUnusableInbox) {
    for (std::uint64_t id = 1; id <= 3; ++id) store(id, 0, static_cast<double>(id));
    const auto sound = contents(databasePath());
    // The header and the definitions first, then a few bytes of every page.
    for (std::size_t place = 0; place < sound.size(); place += place < 100 ? 3 : place < 4096 ? 61 : 509) {
        std::ofstream(databasePath(), std::ios::binary) << sound;
        overwrite(place, std::string(1, static_cast<char>(sound[place] ^ 0x81)));
        restartService();
        list();
        ASSERT_EQ(value("PRAGMA user_version"), "2") << place;
        service->openInboxMessage(message(1), outcomeHandler());
        phone().settle();
        ASSERT_EQ(outcome.error, std::nullopt) << place;
    }
}

TEST_F(VLInboxDamageTest, ThreeDamagedFilesAreKept) {
    for (const auto* garbage : {"first", "second", "third", "fourth", "fifth"}) {
        std::ofstream(databasePath()) << std::string(5000, 'x') << garbage;
        restartService();
    }
    EXPECT_TRUE(contents(copyPath()).ends_with("fifth"));
    EXPECT_TRUE(contents(copyPath(".corrupt.1")).ends_with("fourth"));
    EXPECT_TRUE(contents(copyPath(".corrupt.2")).ends_with("third"));
    EXPECT_FALSE(fs::exists(copyPath(".corrupt.3")));
    EXPECT_EQ(value("SELECT count(*) FROM RICH_INBOX"), "0");
}

TEST_F(VLInboxDamageTest, AFullDiskKeepsTheDamagedFile) {
    store(1);
    overwrite(0, "X");
    const auto damaged = contents(databasePath());
    failing.fillDisk();
    EXPECT_THAT(list().ids(), IsEmpty());
    EXPECT_EQ(contents(databasePath()), damaged);
    EXPECT_FALSE(fs::exists(copyPath()));
    EXPECT_GE(log().count("Inbox: unable to replace the damaged database " + databasePath(), VLLogLevel::Error), 1);
    failing.freeDisk();
    EXPECT_THAT(list().ids(), ElementsAre(1));
    EXPECT_EQ(contents(copyPath()), damaged);
}

TEST_F(VLInboxDamageTest, ATableOfAnotherShapeIsNoDamage) {
    store(1);
    execute("ALTER TABLE RICH_INBOX ADD COLUMN EXTRA TEXT");
    const auto before = contents(databasePath());
    restartService();
    EXPECT_THAT(list().ids(), ElementsAre(1));
    EXPECT_EQ(contents(databasePath()), before);
}

// Other file types.

TEST_F(VLInboxDamageTest, APipeInPlaceOfAJournalDoesNotBlock) {
    store(1);
    for (const auto* suffix : {"-journal", "-wal", "-shm"}) {
        ASSERT_EQ(::mkfifo((databasePath() + suffix).c_str(), 0600), 0);
        expectMovedAside(databasePath() + suffix);
    }
}

TEST_F(VLInboxDamageTest, APipeThatAppearsDuringTheRunDoesNotBlock) {
    store(1);
    list();
    ASSERT_EQ(::mkfifo((databasePath() + "-journal").c_str(), 0600), 0);
    EXPECT_THAT(listAfter(1).ids(), ElementsAre(1));
}

TEST_F(VLInboxDamageTest, ALinkInPlaceOfAJournalIsMovedAside) {
    store(1);
    fs::create_symlink("/dev/null", databasePath() + "-journal");
    expectMovedAside(databasePath() + "-journal");
}

TEST_F(VLInboxDamageTest, APipeInPlaceOfTheDatabaseIsMovedAside) {
    fs::remove(databasePath());
    ASSERT_EQ(::mkfifo(databasePath().c_str(), 0644), 0);
    restartService();
    store(1);
    EXPECT_THAT(list().ids(), ElementsAre(1));
    EXPECT_TRUE(fs::is_fifo(copyPath()));
}

TEST_F(VLInboxDamageTest, ALinkedDatabaseKeepsTheModeOfItsTarget) {
    store(1);
    const auto target = documentsPath("elsewhere.db");
    fs::rename(databasePath(), target);
    fs::permissions(target, fs::perms(0640));
    fs::create_symlink(target, databasePath());
    ASSERT_EQ(::mkfifo((target + "-journal").c_str(), 0600), 0);
    expectMovedAside(target + "-journal");
    EXPECT_EQ(mode(target), 0640U);
}

TEST_F(VLInboxDamageTest, ALinkToAPipeIsMovedAsideUnchanged) {
    const auto pipe = documentsPath("pipe");
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0640), 0);
    fs::remove(databasePath());
    fs::create_symlink(pipe, databasePath());
    restartService();
    EXPECT_TRUE(fs::is_symlink(copyPath()));
    EXPECT_EQ(mode(pipe), 0640U);
    EXPECT_TRUE(fs::is_regular_file(fs::symlink_status(databasePath())));
}

// A missing file.

TEST_F(VLInboxDamageTest, ADeletedDatabaseComesBackPrivateWithItsTables) {
    store(1);
    list();
    fs::remove(databasePath());
    EXPECT_THAT(listAfter(1).ids(), IsEmpty());
    EXPECT_EQ(mode(databasePath()), 0600U);
    EXPECT_EQ(value("PRAGMA user_version"), "2");
    service->openInboxMessage(message(1), outcomeHandler());
    phone().settle();
    EXPECT_EQ(outcome.error, std::nullopt);
}

TEST_F(VLInboxDamageTest, ADeletedFolderComesBackWithTheDatabase) {
    fs::remove_all(phone().documentsFolder());
    session().forgetRules();
    listAtServer({entry(1)});
    answerMessage(1);
    EXPECT_THAT(list().ids(), ElementsAre(1));
    EXPECT_EQ(mode(phone().documentsFolder()), 0700U);
}

}  // namespace

}  // namespace vorlane
