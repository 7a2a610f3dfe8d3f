#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>

#include "Public/VLErrorDomains.h"
#include "Tests/Inbox/FailingDatabaseCalls.h"
#include "Tests/Inbox/InboxTest.h"
#include "Tests/Tracking/HostileBodies.h"

namespace vorlane {

namespace {

using Rows = std::vector<TestDatabase::Row>;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class VLInboxServiceFailureTest : public InboxTest {
protected:
    void answerWithoutMessages() {
        session().alwaysAnswer("register_app_event", 200, "ok");
        session().alwaysAnswer(kMessages, 200, "");
    }

    int logged(const std::string& message, VLLogLevel level = VLLogLevel::Error) { return log().count(message, level); }

    void expectError(const char* key, int result) {
        EXPECT_EQ(outcome.calls, 1);
        ASSERT_TRUE(outcome.error);
        EXPECT_EQ(outcome.error->domain(), VLErrorDomainInbox);
        EXPECT_EQ(outcome.error->code(), 0);
        const auto& userInfo = outcome.error->userInfo();
        ASSERT_TRUE(userInfo.contains(key));
        EXPECT_EQ(userInfo.at(key), Value(result));
    }

    FailingDatabaseCalls failing;
};

TEST_F(VLInboxServiceFailureTest, OpeningInALockedDatabaseReportsAnError) {
    store(7);
    answerWithoutMessages();
    TestDatabase other(databasePath());
    other.execute("BEGIN IMMEDIATE");
    const auto opened = message(7);
    service->openInboxMessage(opened, outcomeHandler());
    phone().settle();
    expectError("sqlite3_step result", SQLITE_BUSY);
    EXPECT_EQ(outcome.message, opened);
    EXPECT_EQ(outcome.error->localizedDescription(), "database is locked");
    EXPECT_EQ(logged("sqlite3_errcode - 5"), 1);
    EXPECT_EQ(logged("Inbox: encountered error when updating message 7 in local DB"), 1);
    EXPECT_EQ(requests("PUT", messagePath(7)).size(), 1U);
    EXPECT_EQ(session().requests("register_app_event").size(), 1U);
}

TEST_F(VLInboxServiceFailureTest, OpeningWithoutATableFails) {
    execute("DROP TABLE RICH_INBOX");
    answerWithoutMessages();
    service->openInboxMessage(message(7), outcomeHandler());
    phone().settle();
    expectError("sqlite3_errcode", SQLITE_ERROR);
    EXPECT_EQ(logged("sqlite3_errmsg - no such table: RICH_INBOX"), 2);
    EXPECT_EQ(logged("Inbox: encountered error when updating message 7 in local DB"), 1);
}

TEST_F(VLInboxServiceFailureTest, DeletingInALockedDatabaseChangesNothing) {
    store(7);
    answerWithoutMessages();
    {
        TestDatabase other(databasePath());
        other.execute("BEGIN IMMEDIATE");
        service->deleteInboxMessage(message(7), outcomeHandler());
        phone().settle();
    }
    expectError("sqlite3_errcode", SQLITE_BUSY);
    EXPECT_EQ(logged("sqlite3_errmsg - database is locked"), 1);
    EXPECT_EQ(value("SELECT count(*) FROM RICH_INBOX"), "1");
    EXPECT_EQ(value("SELECT count(*) FROM RICH_TRASH"), "0");
    EXPECT_EQ(requests("PUT", messagePath(7)).size(), 1U);
}

TEST_F(VLInboxServiceFailureTest, DeletingWithoutATrashLeavesTheMessage) {
    store(7);
    execute("DROP TABLE RICH_TRASH");
    answerWithoutMessages();
    service->deleteInboxMessage(message(7), outcomeHandler());
    phone().settle();
    expectError("sqlite3_errcode", SQLITE_ERROR);
    EXPECT_EQ(value("SELECT count(*) FROM RICH_INBOX"), "1");
}

TEST_F(VLInboxServiceFailureTest, AFullDiskLosesNothing) {
    store(7);
    answerWithoutMessages();
    failing.fillDisk();
    service->openInboxMessage(message(7), outcomeHandler());
    phone().settle();
    expectError("sqlite3_step result", SQLITE_FULL);
    outcome = {};
    service->deleteInboxMessage(message(7), outcomeHandler());
    phone().settle();
    EXPECT_TRUE(outcome.error);
    failing.freeDisk();
    EXPECT_EQ(rows("SELECT NOTIF_ID, READ FROM RICH_INBOX"), (Rows{{"7", "0"}}));
    EXPECT_EQ(value("SELECT count(*) FROM RICH_TRASH"), "0");
    EXPECT_EQ(value("PRAGMA integrity_check"), "ok");
}

TEST_F(VLInboxServiceFailureTest, ASyncOnAFullDiskIsCompletedLater) {
    store(1, 0);
    store(2, 0);
    listAtServer({entry(2, 1), entry(3)});
    answerMessage(3);
    failing.fillDisk();
    EXPECT_THAT(list().ids(), ElementsAre(2, 1));
    EXPECT_EQ(lists.size(), 1U);
    EXPECT_EQ(logged("Inbox: unable to delete message 1 from local DB"), 1);
    EXPECT_EQ(logged("Inbox: unable to update message 2 in local DB"), 1);
    EXPECT_EQ(logged("Inbox: unable to insert message 3 into local DB"), 1);
    failing.freeDisk();
    EXPECT_THAT(listAfter(30).ids(), ElementsAre(3, 2));
    EXPECT_EQ(lists.back().messages[1]->read(), 1);
}

TEST_F(VLInboxServiceFailureTest, AReadOnlyFileSystemStillShowsTheList) {
    store(1);
    listAtServer({entry(1), entry(2)});
    answerMessage(2);
    answerWithoutMessages();
    failing.makeReadOnly();
    EXPECT_THAT(list().ids(), ElementsAre(1));
    service->openInboxMessage(message(1), outcomeHandler());
    phone().settle();
    expectError("sqlite3_step result", SQLITE_READONLY);
}

TEST_F(VLInboxServiceFailureTest, ASyncThatCannotReadTheDatabaseSendsNoRequest) {
    store(1);
    listAtServer({entry(1), entry(2)});
    TestDatabase other(databasePath());
    other.execute("BEGIN EXCLUSIVE");
    EXPECT_THAT(list().ids(), IsEmpty());
    EXPECT_EQ(lists.size(), 1U);
    EXPECT_EQ(lists[0].unreadCount, 0U);
    EXPECT_THAT(session().requests(), IsEmpty());
    other.execute("COMMIT");
    EXPECT_THAT(listAfter(1).ids(), ElementsAre(1));
}

/// Without the stored ids it would store every message once more.
TEST_F(VLInboxServiceFailureTest, AnUpdateThatCannotReadTheDatabaseFetchesNothing) {
    store(1);
    service->getInboxMessagesWithCompletionHandler(listHandler());
    phone().settle();
    TestDatabase other(databasePath());
    other.execute("BEGIN EXCLUSIVE");
    session().answer(kState, 200, state({entry(1), entry(2)}));
    phone().settle();
    EXPECT_EQ(lists.size(), 1U);
    EXPECT_THAT(requests("GET", kMessages), IsEmpty());
    other.execute("COMMIT");
    EXPECT_THAT(listAfter(30 - 1).ids(), ElementsAre(1));
}

TEST_F(VLInboxServiceFailureTest, AFileThatBecomesNoDatabaseIsReplaced) {
    store(1);
    listAtServer({entry(1)});
    answerMessage(1);
    const std::string garbage(8192, 'x');
    std::ofstream(databasePath()) << garbage;
    list();
    EXPECT_TRUE(std::filesystem::exists(databasePath() + ".corrupt"));
    EXPECT_THAT(listAfter(30).ids(), ElementsAre(1));
    EXPECT_EQ(value("PRAGMA user_version"), "2");
}

// Hostile answers.

TEST_F(VLInboxServiceFailureTest, HostileStateAnswersChangeNothing) {
    store(1);
    for (const auto& body : bodiesThatAreNoObject()) {
        lists.clear();
        phone().advance(30);
        service->getInboxMessagesWithCompletionHandler(listHandler());
        phone().settle();
        session().answerData(kState, 200, body.bytes);
        phone().settle();
        ASSERT_EQ(lists.size(), 1U) << body.name;
        EXPECT_THAT(lists[0].ids(), ElementsAre(1)) << body.name;
    }
}

TEST_F(VLInboxServiceFailureTest, HostileMessageAnswersCountAsNoData) {
    listAtServer({entry(1)});
    for (const auto& body : bodiesThatAreNoObject()) {
        lists.clear();
        log().clear();
        phone().advance(30);
        service->getInboxMessagesWithCompletionHandler(listHandler());
        phone().settle();
        session().answerData(messagePath(1), 200, body.bytes);
        phone().settle();
        EXPECT_EQ(lists.size(), 1U) << body.name;
        EXPECT_EQ(logged("Inbox: no data returned for message 1"), 1) << body.name;
    }
}

TEST_F(VLInboxServiceFailureTest, EntriesWithoutAUsableIdAreIgnored) {
    session().alwaysAnswer(
        kState, 200,
        R"({"synchronisation_complete":true,"notification":[null,1,"2",[3],{},{"id":null},{"id":-1},{"id":1.5},)"
        R"({"id":true},{"id":""},{"id":"x"},{"id":"-4"},{"id":" 5"},{"id":"6 "},{"id":"+7"},{"id":"0x8"},{"id":"9.0"},)"
        R"({"id":18446744073709551616},{"id":"18446744073709551616"},{"id":1e300},{"id":{}},{"id":[1]},)"
        R"({"id":0,"read":0},{"id":"20"},{"id":21.0},{"id":"18446744073709551615"},{"ID":22}]})");
    session().alwaysFail(kMessages);
    list();
    std::vector<std::string> paths;
    for (const auto& request : requests("GET", kMessages)) paths.push_back(request.request.URL.path());
    EXPECT_THAT(paths, ElementsAre("/K/T/rich/mailbox/messages/0", "/K/T/rich/mailbox/messages/20",
                                   "/K/T/rich/mailbox/messages/21", "/K/T/rich/mailbox/messages/18446744073709551615"));
}

TEST_F(VLInboxServiceFailureTest, ReadFlagsOfOtherTypesAreNumbersOr0) {
    for (std::uint64_t id = 1; id <= 6; ++id) store(id, 0);
    session().alwaysAnswer(
        kState, 200,
        R"({"synchronisation_complete":true,"notification":[{"id":1,"read":true},{"id":2,"read":"1"},)"
        R"({"id":3,"read":null},{"id":4},{"id":5,"read":[1]},{"id":6,"read":"yes"}]})");
    list();
    EXPECT_EQ(rows("SELECT NOTIF_ID FROM RICH_INBOX WHERE READ = 1 ORDER BY NOTIF_ID"), (Rows{{"1"}, {"2"}}));
    EXPECT_EQ(value("SELECT count(*) FROM RICH_INBOX"), "6");
}

TEST_F(VLInboxServiceFailureTest, FieldsOfTheWrongTypeAreNULL) {
    listAtServer({entry(1)});
    session().alwaysAnswer(kMessages, 200,
                           R"({"id":"x","sline":1,"content":{},"blbl":[],"burl":false,"phash":null,"read":[],)"
                           R"("created":{},"end":true,"card_url":3,"bg_color":4,"fg_color":{},"meta_data":"{}"})");
    list();
    EXPECT_EQ(
        rows("SELECT NOTIF_ID,SUBJECT,CONTENT,LABEL,URL,PHASH,READ,CREATED,END,CARD_URL,BACKGROUND_COLOR,"
             "FOREGROUND_COLOR,METADATA FROM RICH_INBOX"),
        (Rows{{"1", "NULL", "NULL", "NULL", "NULL", "NULL", "NULL", "NULL", "NULL", "NULL", "NULL", "NULL", "NULL"}}));
}

TEST_F(VLInboxServiceFailureTest, NumbersMayArriveAsStrings) {
    listAtServer({entry(1)});
    session().alwaysAnswer(kMessages, 200, R"({"read":"1","created":"1600000000.5","end":"1800000000"})");
    const auto shown = list();
    EXPECT_EQ(rows("SELECT READ,CREATED,END,typeof(READ),typeof(CREATED),typeof(END) FROM RICH_INBOX"),
              (Rows{{"1", "1600000000.5", "1800000000", "integer", "real", "integer"}}));
    ASSERT_EQ(shown.messages.size(), 1U);
    EXPECT_EQ(shown.messages[0]->created(), 1'600'000'000.5);
    EXPECT_EQ(shown.messages[0]->end(), 1'800'000'000.0);
}

TEST_F(VLInboxServiceFailureTest, AStringThatIsNoNumberIsNULL) {
    listAtServer({entry(1)});
    for (const auto* text : {"", " 1", "1 ", "nan", "inf", "1e999", "0x10", "one", "1,5"}) {
        execute("DELETE FROM RICH_INBOX");
        session().alwaysAnswer(kMessages, 200, fmt::format(R"({{"read":"{0}","created":"{0}","end":"{0}"}})", text));
        listAfter(30);
        EXPECT_EQ(rows("SELECT READ,CREATED,END FROM RICH_INBOX"), (Rows{{"NULL", "NULL", "NULL"}})) << text;
    }
}

TEST_F(VLInboxServiceFailureTest, TheRequestedIdIsStored) {
    listAtServer({entry(1)});
    session().alwaysAnswer(kMessages, 200, R"({"id":99,"end":1800000000})");
    EXPECT_THAT(list().ids(), ElementsAre(1));
}

TEST_F(VLInboxServiceFailureTest, StringsAreStoredUnchanged) {
    listAtServer({entry(1)});
    session().alwaysAnswer(kMessages, 200,
                           R"({"sline":"'); DROP TABLE RICH_INBOX; --","content":"100% of \u0000 it","end":1800000000,)"
                           R"("meta_data":{"\u0000":"'"}})");
    const auto shown = list();
    ASSERT_EQ(shown.messages.size(), 1U);
    EXPECT_EQ(shown.messages[0]->subject(), "'); DROP TABLE RICH_INBOX; --");
    EXPECT_TRUE(shown.messages[0]->htmlContent()->ends_with(std::string("100% of \0 it", 12)));
    EXPECT_EQ(value("SELECT count(*) FROM RICH_INBOX"), "1");
}

TEST_F(VLInboxServiceFailureTest, AReadFlagMayHaveAFraction) {
    listAtServer({entry(1, 1)});
    session().alwaysAnswer(kMessages, 200, R"({"read":"1.0","end":1800000000})");
    list();
    EXPECT_EQ(rows("SELECT READ, typeof(READ) FROM RICH_INBOX"), (Rows{{"1", "integer"}}));
}

}  // namespace

}  // namespace vorlane
