#include <gmock/gmock.h>

#include <chrono>

#include "Categories/NSString+VLHash.h"
#include "Tests/Inbox/InboxTest.h"

namespace vorlane {

namespace {

using Rows = std::vector<TestDatabase::Row>;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class VLInboxServiceSyncTest : public InboxTest {
protected:
    /// Returns the hash that a state request sends.
    static std::string hashOf(const RecordedRequest& request) {
        const auto query = request.request.URL.query().value_or("");
        const auto start = query.find("stateHash=") + std::string("stateHash=").size();
        return query.substr(start, query.find('&', start) - start);
    }

    std::vector<std::string> stateHashes() {
        std::vector<std::string> hashes;
        for (const auto& request : session().requests(kState)) hashes.push_back(hashOf(request));
        return hashes;
    }

    static std::string unfinished(const std::string& hash, const std::vector<std::string>& entries = {}) {
        return fmt::format(R"({{"synchronisation_complete":false,"state_hash":"{}","notification":[{}]}})", hash,
                           fmt::join(entries, ","));
    }

    std::vector<Value> puts(std::uint64_t id) {
        std::vector<Value> bodies;
        for (const auto& request : requests("PUT", messagePath(id))) bodies.push_back(request.payload());
        return bodies;
    }

    int logged(const std::string& message, VLLogLevel level = VLLogLevel::Debug) { return log().count(message, level); }
};

// When a synchronisation is due.

TEST_F(VLInboxServiceSyncTest, TheFirstListFollowsASynchronisation) {
    service->getInboxMessagesWithCompletionHandler(listHandler());
    phone().settle();
    EXPECT_THAT(lists, IsEmpty());
    session().answer(kState, 200, state({}));
    phone().settle();
    ASSERT_EQ(lists.size(), 1U);
    EXPECT_THAT(lists[0].messages, IsEmpty());
    EXPECT_EQ(lists[0].unreadCount, 0U);
    EXPECT_EQ(logged("Inbox: enter sync queue"), 1);
    EXPECT_EQ(logged("Inbox: perform sync"), 1);
    EXPECT_THAT(log().linesContaining("last sync occured"), IsEmpty());
}

TEST_F(VLInboxServiceSyncTest, AListWithin30SecondsUsesOnlyTheDatabase) {
    listAtServer({});
    list();
    store(1);
    EXPECT_THAT(listAfter(29.9).ids(), ElementsAre(1));
    EXPECT_EQ(lists.size(), 1U);
    EXPECT_EQ(session().requests(kState).size(), 1U);
    EXPECT_EQ(logged("Inbox: last sync occured 29 seconds ago, limit set to 30"), 1);
    EXPECT_EQ(logged("Inbox: loading message from database only"), 1);
}

TEST_F(VLInboxServiceSyncTest, AListAfter30SecondsSynchronisesAgain) {
    listAtServer({});
    list();
    listAfter(30);
    EXPECT_EQ(session().requests(kState).size(), 2U);
    EXPECT_EQ(logged("Inbox: last sync occured 30 seconds ago, limit set to 30"), 1);
    EXPECT_EQ(logged("Inbox: perform sync"), 2);
}

TEST_F(VLInboxServiceSyncTest, TheConfigurationSetsTheSyncInterval) {
    session().alwaysAnswer("/config/", 200, R"({"configs":{"rich_inbox":{"sync_time_limit_s":100}}})");
    configService->loadConfigWithCompletion(nullptr);
    listAtServer({});
    list();
    listAfter(99);
    EXPECT_EQ(session().requests(kState).size(), 1U);
    EXPECT_EQ(logged("Inbox: last sync occured 99 seconds ago, limit set to 100"), 1);
    listAfter(1);
    EXPECT_EQ(session().requests(kState).size(), 2U);
}

TEST_F(VLInboxServiceSyncTest, AFailedSynchronisationCountsAsOne) {
    session().alwaysFail(kState);
    list();
    list();
    EXPECT_EQ(session().requests(kState).size(), 1U);
    EXPECT_EQ(lists.size(), 2U);
}

TEST_F(VLInboxServiceSyncTest, AnotherUserSynchronisesAtOnce) {
    listAtServer({});
    list();
    settings->setTrackingId("U");
    list();
    ASSERT_EQ(session().requests(kState).size(), 2U);
    EXPECT_THAT(session().lastRequest(kState).request.URL.path(), "/K/U/rich/mailbox");
}

TEST_F(VLInboxServiceSyncTest, AfterTheClockWasSetBackAListSynchronisesAgain) {
    listAtServer({});
    list();
    phone().setClock(phone().now() - 3600);
    list();
    EXPECT_EQ(session().requests(kState).size(), 2U);
}

TEST_F(VLInboxServiceSyncTest, WithoutAURLBuilderTheDatabaseIsListed) {
    session().alwaysAnswer("/", 200, "ok");
    service = VLInboxService::serviceWith(
        {.settings = settings,
         .eventService = eventService,
         .configService = configService,
         .urlBuilder = std::make_shared<VLURLBuilder>(std::make_shared<VLURLsProduction>(), settings),
         .urlSession = urlSession,
         .imageSession = phone().makeURLSession({})});
    store(1);
    EXPECT_THAT(list().ids(), ElementsAre(1));
    service->openInboxMessage(message(1), outcomeHandler());
    service->deleteInboxMessage(message(1), outcomeHandler());
    phone().settle();
    EXPECT_EQ(outcome.calls, 2);
    EXPECT_EQ(outcome.error, std::nullopt);
    EXPECT_EQ(logged("Inbox: message 1 could not be marked as read remotely, HTTP error -1", VLLogLevel::Error), 1);
    EXPECT_THAT(session().requests("/rich/mailbox"), IsEmpty());
}

TEST_F(VLInboxServiceSyncTest, TheListHandlerMayBeEmpty) {
    listAtServer({entry(1)});
    answerMessage(1);
    service->getInboxMessagesWithCompletionHandler(nullptr);
    phone().settle();
    EXPECT_EQ(value("SELECT NOTIF_ID FROM RICH_INBOX"), "1");
    service->getInboxMessagesWithCompletionHandler(nullptr);
    phone().settle();
    EXPECT_EQ(logged("Inbox: loading message from database only"), 1);
}

// The state hash.

TEST_F(VLInboxServiceSyncTest, TheHashOfAnEmptyInboxCoversAnEmptyList) {
    listAtServer({});
    list();
    EXPECT_THAT(stateHashes(), ElementsAre(vl_md5(R"({"notification":[]})")));
}

TEST_F(VLInboxServiceSyncTest, TheHashCoversTheUsersMessagesByDescendingId) {
    store(5, 1, 100);
    store(40, 0, 50);
    store(7, 0, 900, 1);  // expired
    store(6, 0, 100, kLater, "U");
    std::optional<std::string> json;
    service->getStateHash("T", [&](std::optional<std::string> text) { json = std::move(text); });
    EXPECT_EQ(json, R"({"notification":[{"id":40,"read":0},{"id":7,"read":0},{"id":5,"read":1}]})");
    session().alwaysFail(kState);
    list();
    EXPECT_THAT(stateHashes(), ElementsAre(vl_md5(*json)));
}

/// Ids above the signed range are negative in the database, so they are last.
TEST_F(VLInboxServiceSyncTest, TheHashContainsUnsignedIds) {
    store(18446744073709551615U);
    store(9223372036854775808U);
    store(1);
    std::optional<std::string> json;
    service->getStateHash("T", [&](std::optional<std::string> text) { json = std::move(text); });
    EXPECT_EQ(json, R"({"notification":[{"id":1,"read":0},{"id":18446744073709551615,"read":0},)"
                    R"({"id":9223372036854775808,"read":0}]})");
}

// Rounds.

TEST_F(VLInboxServiceSyncTest, ACompleteAnswerEndsTheRounds) {
    store(1);
    listAtServer({entry(1)});
    EXPECT_THAT(list().ids(), ElementsAre(1));
    EXPECT_EQ(session().requests(kState).size(), 1U);
}

TEST_F(VLInboxServiceSyncTest, EachRoundSendsTheHashOfTheLastAnswer) {
    service->getInboxMessagesWithCompletionHandler(listHandler());
    phone().settle();
    session().answer(kState, 200, unfinished("first", {entry(1)}));
    session().answer(kState, 200, unfinished("second", {entry(2)}));
    session().answer(kState, 200, state({entry(3)}));
    phone().settle();
    EXPECT_THAT(stateHashes(), ElementsAre(vl_md5(R"({"notification":[]})"), "first", "second"));
    EXPECT_EQ(requests("GET", kMessages).size(), 1U);
    EXPECT_EQ(requests("GET", messagePath(3)).size(), 1U);
}

TEST_F(VLInboxServiceSyncTest, After22UnfinishedRoundsTheLastListIsUsed) {
    service->getInboxMessagesWithCompletionHandler(listHandler());
    phone().settle();
    answerMessage(22);
    for (int i = 1; i <= 22; ++i) {
        ASSERT_EQ(session().requests(kState).size(), static_cast<std::size_t>(i));
        session().answer(kState, 200, unfinished(fmt::format("hash{}", i), {entry(static_cast<std::uint64_t>(i))}));
    }
    phone().settle();
    EXPECT_EQ(session().requests(kState).size(), 22U);
    EXPECT_EQ(stateHashes().back(), "hash21");
    ASSERT_EQ(lists.size(), 1U);
    EXPECT_THAT(lists[0].ids(), ElementsAre(22));
}

TEST_F(VLInboxServiceSyncTest, AnAnswerThatCompletesInRound22IsUsed) {
    store(9);
    service->getInboxMessagesWithCompletionHandler(listHandler());
    phone().settle();
    for (int i = 1; i <= 21; ++i) session().answer(kState, 200, unfinished("h"));
    session().answer(kState, 200, state({entry(9)}));
    phone().settle();
    EXPECT_EQ(session().requests(kState).size(), 22U);
    EXPECT_THAT(lists.back().ids(), ElementsAre(9));
}

TEST_F(VLInboxServiceSyncTest, AnUnfinishedAnswerWithoutAHashChangesNothing) {
    store(1);
    for (const auto* body : {R"({"synchronisation_complete":false,"notification":[]})",
                             R"({"synchronisation_complete":false,"state_hash":7,"notification":[]})",
                             R"({"synchronisation_complete":1,"notification":[]})",
                             R"({"synchronisation_complete":"true","notification":[]})", R"({"notification":[]})"}) {
        session().alwaysAnswer(kState, 200, body);
        EXPECT_THAT(listAfter(30).ids(), ElementsAre(1)) << body;
        EXPECT_EQ(lists.size(), 1U) << body;
    }
    EXPECT_EQ(session().requests(kState).size(), 5U);
}

TEST_F(VLInboxServiceSyncTest, AnAnswerWithoutAListChangesNothing) {
    store(1);
    for (const auto* body :
         {R"({"synchronisation_complete":true})", R"({"synchronisation_complete":true,"notification":null})",
          R"({"synchronisation_complete":true,"notification":{"id":1}})", R"({})"}) {
        session().alwaysAnswer(kState, 200, body);
        EXPECT_THAT(listAfter(30).ids(), ElementsAre(1)) << body;
    }
}

TEST_F(VLInboxServiceSyncTest, AFailureInALaterRoundChangesNothing) {
    store(1);
    service->getInboxMessagesWithCompletionHandler(listHandler());
    phone().settle();
    session().answer(kState, 200, unfinished("h"));
    session().answer(kState, 500, "no");
    phone().settle();
    ASSERT_EQ(lists.size(), 1U);
    EXPECT_THAT(lists[0].ids(), ElementsAre(1));
}

// What an update does.

TEST_F(VLInboxServiceSyncTest, ThreeNewMessagesRunTheHandlerThreeTimes) {
    listAtServer({entry(1), entry(2), entry(3)});
    service->getInboxMessagesWithCompletionHandler(listHandler());
    phone().settle();
    EXPECT_EQ(requests("GET", kMessages).size(), 3U);
    session().answer(messagePath(2), 200, messageJSON(2, 200));
    session().answer(messagePath(1), 200, messageJSON(1, 100));
    session().answer(messagePath(3), 200, messageJSON(3, 300));
    phone().settle();
    ASSERT_EQ(lists.size(), 3U);
    EXPECT_THAT(lists[0].ids(), ElementsAre(2));
    EXPECT_THAT(lists[1].ids(), ElementsAre(2, 1));
    EXPECT_THAT(lists[2].ids(), ElementsAre(3, 2, 1));
    EXPECT_EQ(lists[0].unreadCount, 1U);
    EXPECT_EQ(lists[2].unreadCount, 3U);
    for (int id = 1; id <= 3; ++id) EXPECT_EQ(logged(fmt::format("Inbox: inserted message {} into local DB", id)), 1);
}

TEST_F(VLInboxServiceSyncTest, AFetchedMessageIsStoredWithEveryField) {
    listAtServer({entry(18446744073709551615U, 1)});
    session().alwaysAnswer(
        kMessages, 200,
        R"({"id":18446744073709551615,"sline":"Hé","content":"<p>","blbl":"L","burl":"u","phash":"p",)"
        R"("read":1,"created":1700000000.5,"end":1800000000,"card_url":"c","bg_color":"#111111",)"
        R"("fg_color":"#222222","meta_data":{"b":[1,null],"a":"x"}})");
    list();
    EXPECT_EQ(rows("SELECT NOTIF_ID,TRACKING_ID,SUBJECT,CONTENT,LABEL,URL,PHASH,READ,CREATED,END,CARD_URL,"
                   "BACKGROUND_COLOR,FOREGROUND_COLOR,CARD_IMAGE,METADATA FROM RICH_INBOX"),
              (Rows{{"-1", "T", "Hé", "<p>", "L", "u", "p", "1", "1700000000.5", "1800000000", "c", "#111111",
                     "#222222", "NULL", R"({"a":"x","b":[1,null]})"}}));
    EXPECT_EQ(session().lastRequest(kMessages).request.URL.path(), "/K/T/rich/mailbox/messages/18446744073709551615");
    EXPECT_EQ(logged("Inbox: inserted message 18446744073709551615 into local DB"), 1);
    EXPECT_THAT(lists.back().ids(), ElementsAre(18446744073709551615U));
}

TEST_F(VLInboxServiceSyncTest, AFetchThatFailsLeavesTheOthersAlone) {
    listAtServer({entry(1), entry(2), entry(3)});
    answerMessage(1);
    session().alwaysFail(messagePath(2));
    session().alwaysAnswer(messagePath(3), 404, "{}");
    list();
    EXPECT_EQ(lists.size(), 1U);
    EXPECT_THAT(lists[0].ids(), ElementsAre(1));
    EXPECT_EQ(logged("Inbox: no data returned for message 2", VLLogLevel::Error), 1);
    EXPECT_EQ(logged("Inbox: no data returned for message 3", VLLogLevel::Error), 1);
    answerMessage(2);
    answerMessage(3);
    EXPECT_THAT(listAfter(30).ids(), ElementsAre(3, 2, 1));
    EXPECT_EQ(lists.size(), 2U);
}

TEST_F(VLInboxServiceSyncTest, FetchesThatAllFailRunTheHandlerOnce) {
    store(9);
    listAtServer({entry(1), entry(2), entry(9)});
    session().alwaysFail(kMessages);
    EXPECT_THAT(list().ids(), ElementsAre(9));
    EXPECT_EQ(lists.size(), 1U);
}

TEST_F(VLInboxServiceSyncTest, AMessageListedTwiceIsFetchedOnce) {
    listAtServer({entry(1), entry(1, 1), entry(1)});
    answerMessage(1);
    list();
    EXPECT_EQ(lists.size(), 1U);
    EXPECT_EQ(requests("GET", messagePath(1)).size(), 1U);
    EXPECT_EQ(value("SELECT count(*) FROM RICH_INBOX"), "1");
}

TEST_F(VLInboxServiceSyncTest, MessagesThatAreNoLongerListedAreDeletedHere) {
    store(1);
    store(2);
    store(3, 0, 100, 1);
    store(2, 0, 100, kLater, "U");
    listAtServer({entry(1)});
    EXPECT_THAT(list().ids(), ElementsAre(1));
    EXPECT_EQ(rows("SELECT NOTIF_ID, TRACKING_ID FROM RICH_INBOX ORDER BY ID"), (Rows{{"1", "T"}, {"2", "U"}}));
    EXPECT_EQ(logged("Inbox: deleted message 2 from local DB"), 1);
    EXPECT_EQ(logged("Inbox: deleted message 3 from local DB"), 1);
    EXPECT_EQ(value("SELECT count(*) FROM RICH_TRASH"), "0");
}

TEST_F(VLInboxServiceSyncTest, AnExpiredMessageStaysUntilItIsNoLongerListed) {
    store(1, 0, 100, 1);
    listAtServer({entry(1)});
    EXPECT_THAT(list().ids(), IsEmpty());
    EXPECT_EQ(lists.back().unreadCount, 0U);
    EXPECT_EQ(value("SELECT count(*) FROM RICH_INBOX"), "1");
    listAtServer({});
    listAfter(30);
    EXPECT_EQ(value("SELECT count(*) FROM RICH_INBOX"), "0");
}

TEST_F(VLInboxServiceSyncTest, AMessageReadLocallyIsMarkedAtTheService) {
    store(1, 1);
    session().alwaysAnswer(kMessages, 200, "");
    listAtServer({entry(1, 0)});
    list();
    EXPECT_THAT(puts(1), ElementsAre(Value{{"read", true}}));
    EXPECT_EQ(session().lastRequest(messagePath(1)).request.URL.path(), "/K/T/rich/mailbox/messages/1");
    EXPECT_EQ(value("SELECT READ FROM RICH_INBOX"), "1");
    EXPECT_EQ(logged("Inbox: message 1 marked as read remotely"), 1);
}

TEST_F(VLInboxServiceSyncTest, AMessageOfAnotherUserIsFetchedAgain) {
    store(1, 1, 100, kLater, "U");
    listAtServer({entry(1, 0)});
    answerMessage(1);
    EXPECT_THAT(list().ids(), ElementsAre(1));
    EXPECT_EQ(rows("SELECT NOTIF_ID, TRACKING_ID FROM RICH_INBOX ORDER BY ID"), (Rows{{"1", "U"}, {"1", "T"}}));
    EXPECT_TRUE(requests("PUT", kMessages).empty());
}

TEST_F(VLInboxServiceSyncTest, OnlyALocalFlagOf1Wins) {
    store(1, 2);
    listAtServer({entry(1, 0)});
    list();
    EXPECT_EQ(value("SELECT READ FROM RICH_INBOX"), "0");
    EXPECT_TRUE(requests("PUT", kMessages).empty());
}

TEST_F(VLInboxServiceSyncTest, AMessageReadElsewhereIsMarkedLocally) {
    store(1, 0);
    store(2, 0);
    listAtServer({entry(1, 1), entry(2, 0)});
    const auto shown = list();
    EXPECT_EQ(rows("SELECT NOTIF_ID, READ FROM RICH_INBOX ORDER BY ID"), (Rows{{"1", "1"}, {"2", "0"}}));
    EXPECT_THAT(requests("PUT", kMessages), IsEmpty());
    EXPECT_EQ(logged("Inbox: updated message 1 in local DB"), 1);
    EXPECT_EQ(shown.unreadCount, 1U);
}

TEST_F(VLInboxServiceSyncTest, AFailedRemoteMarkIsRepeatedAtTheNextSync) {
    store(1, 1);
    session().alwaysAnswer(kMessages, 503, "");
    listAtServer({entry(1, 0)});
    list();
    EXPECT_EQ(logged("Inbox: message 1 could not be marked as read remotely, HTTP error 503", VLLogLevel::Error), 1);
    session().alwaysFail(kMessages);
    listAfter(30);
    EXPECT_EQ(logged("Inbox: message 1 could not be marked as read remotely, HTTP error -1", VLLogLevel::Error), 1);
    EXPECT_EQ(puts(1).size(), 2U);
}

TEST_F(VLInboxServiceSyncTest, AMessageInTheTrashIsDeletedRemotelyAgain) {
    execute("INSERT INTO RICH_TRASH VALUES (1, 'T'), (2, 'T'), (3, 'U')");
    store(1);  // As after a kill during the deletion.
    answerMessage(3);
    listAtServer({entry(1), entry(3)});
    EXPECT_THAT(list().ids(), ElementsAre(3));
    EXPECT_THAT(puts(1), ElementsAre(Value{{"deleted", true}}));
    EXPECT_THAT(puts(2), IsEmpty());
    EXPECT_THAT(puts(3), IsEmpty());
    EXPECT_THAT(requests("GET", messagePath(1)), IsEmpty());
    listAfter(30);
    EXPECT_EQ(puts(1).size(), 2U);
    EXPECT_EQ(value("SELECT count(*) FROM RICH_TRASH"), "3");
}

TEST_F(VLInboxServiceSyncTest, FetchedMessagesAreSortedIntoALongList) {
    for (std::uint64_t id = 100; id < 140; ++id) store(id, 0, static_cast<double>(id));
    std::vector<std::string> entries;
    for (std::uint64_t id = 100; id < 140; ++id) entries.push_back(entry(id));
    for (std::uint64_t id = 1; id <= 100; ++id) {
        if (id == 100) continue;
        entries.push_back(entry(id));
    }
    for (std::uint64_t id = 1; id < 100; ++id) answerMessage(id, static_cast<double>(100 + id % 50));
    listAtServer(entries);
    list();
    ASSERT_EQ(lists.size(), 99U);
    for (std::size_t i = 0; i < lists.size(); ++i) {
        EXPECT_EQ(lists[i].messages.size(), 41 + i);
        EXPECT_EQ(lists[i].unreadCount, 41 + i);
    }
    // The list built message by message is the same as one read from the database.
    EXPECT_EQ(listAfter(1).ids(), lists.back().ids());
    Ids sorted;
    for (const auto& row : rows("SELECT NOTIF_ID FROM RICH_INBOX ORDER BY CREATED DESC, NOTIF_ID DESC")) {
        sorted.push_back(std::stoull(row[0]));
    }
    EXPECT_EQ(lists.back().ids(), sorted);
}

TEST_F(VLInboxServiceSyncTest, AListDuringASyncShowsOtherWrites) {
    listAtServer({entry(1), entry(2), entry(3)});
    service->getInboxMessagesWithCompletionHandler(listHandler());
    phone().settle();
    session().answer(messagePath(1), 200, messageJSON(1));
    phone().settle();
    store(50, 0, 500);
    session().answer(messagePath(2), 200, messageJSON(2));
    phone().settle();
    execute("UPDATE RICH_INBOX SET READ = 1 WHERE NOTIF_ID = 50");
    session().answer(messagePath(3), 200, messageJSON(3));
    phone().settle();
    ASSERT_EQ(lists.size(), 3U);
    EXPECT_THAT(lists[1].ids(), ElementsAre(50, 2, 1));
    EXPECT_EQ(lists[1].unreadCount, 3U);
    EXPECT_THAT(lists[2].ids(), ElementsAre(50, 3, 2, 1));
    EXPECT_EQ(lists[2].unreadCount, 3U);
    EXPECT_EQ(lists[2].messages[0]->read(), 1);
}

TEST_F(VLInboxServiceSyncTest, AMessageOpenedDuringASyncIsListedAsRead) {
    listAtServer({entry(1), entry(2)});
    service->getInboxMessagesWithCompletionHandler(listHandler());
    phone().settle();
    session().answer(messagePath(1), 200, messageJSON(1));
    phone().settle();
    service->openInboxMessage(lists[0].messages[0], outcomeHandler());
    phone().settle();
    session().answer(messagePath(2), 200, messageJSON(2));
    phone().settle();
    ASSERT_EQ(lists.size(), 2U);
    EXPECT_EQ(lists[1].messages[1]->read(), 1);
    EXPECT_EQ(lists[1].unreadCount, 1U);
}

/// With a busy main thread, memory would otherwise hold one list for each message.
TEST_F(VLInboxServiceSyncTest, NoMoreThan16ListsWaitForTheMainThread) {
    std::vector<std::string> entries;
    for (std::uint64_t id = 1; id <= 40; ++id) {
        entries.push_back(entry(id));
        answerMessage(id);
    }
    std::vector<std::size_t> stored;
    service->getInboxMessagesWithCompletionHandler([&](const VLInboxService::Messages& messages, std::size_t) {
        lists.push_back({messages, 0});
        stored.push_back(std::stoul(value("SELECT count(*) FROM RICH_INBOX")));
    });
    listAtServer(entries);
    phone().settle();
    ASSERT_EQ(lists.size(), 40U);
    for (std::size_t i = 0; i < lists.size(); ++i) {
        EXPECT_EQ(lists[i].messages.size(), i + 1);
        EXPECT_LE(stored[i], i + 16);
    }
}

TEST_F(VLInboxServiceSyncTest, AtMost64MessagesAreRequestedAtOnce) {
    std::vector<std::string> entries;
    for (std::uint64_t id = 1; id <= 200; ++id) entries.push_back(entry(id));
    listAtServer(entries);
    service->getInboxMessagesWithCompletionHandler(listHandler());
    phone().settle();
    EXPECT_EQ(requests("GET", kMessages).size(), 64U);
    session().alwaysFail(kMessages);
    phone().settle();
    EXPECT_EQ(requests("GET", kMessages).size(), 200U);
    EXPECT_EQ(lists.size(), 1U);
}

// One at a time.

TEST_F(VLInboxServiceSyncTest, ASecondRequestWaitsForTheFirstSynchronisation) {
    service->getInboxMessagesWithCompletionHandler(listHandler());
    service->getInboxMessagesWithCompletionHandler(listHandler());
    phone().settle();
    EXPECT_EQ(session().requests(kState).size(), 1U);
    EXPECT_EQ(logged("Inbox: enter sync queue"), 1);
    session().answer(kState, 200, state({entry(1)}));
    phone().settle();
    EXPECT_EQ(logged("Inbox: enter sync queue"), 1);
    session().answer(messagePath(1), 200, messageJSON(1));
    phone().settle();
    EXPECT_EQ(logged("Inbox: enter sync queue"), 2);
    EXPECT_EQ(session().requests(kState).size(), 1U);
    ASSERT_EQ(lists.size(), 2U);
    EXPECT_THAT(lists[1].ids(), ElementsAre(1));
}

TEST_F(VLInboxServiceSyncTest, ASecondRequestWaitsNoLongerThan300Seconds) {
    service->getInboxMessagesWithCompletionHandler(listHandler());
    service->getInboxMessagesWithCompletionHandler(listHandler());
    phone().advance(299);
    EXPECT_EQ(session().requests(kState).size(), 1U);
    phone().advance(1);
    EXPECT_EQ(session().requests(kState).size(), 2U);
    session().alwaysAnswer(kState, 200, state({}));
    phone().settle();
    EXPECT_EQ(lists.size(), 2U);
    // The late end of the first request did not start another one.
    service->getInboxMessagesWithCompletionHandler(listHandler());
    phone().settle();
    EXPECT_EQ(lists.size(), 3U);
}

TEST_F(VLInboxServiceSyncTest, WaitingForASyncSetsNoApplicationTimer) {
    service->getInboxMessagesWithCompletionHandler(listHandler());
    phone().settle();
    EXPECT_THAT(phone().timers(), IsEmpty());
}

TEST_F(VLInboxServiceSyncTest, AShutdownEndsAllWaitingRequests) {
    for (int i = 0; i < 3; ++i) service->getInboxMessagesWithCompletionHandler(listHandler());
    phone().settle();
    EXPECT_THAT(lists, IsEmpty());
    const auto start = std::chrono::steady_clock::now();
    Platform::shutdown();
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(2));
    EXPECT_EQ(lists.size(), 3U);
}

TEST_F(VLInboxServiceSyncTest, MessagesWithoutADateKeepTheirOrder) {
    listAtServer({entry(9), entry(5)});
    session().alwaysAnswer(messagePath(9), 200, R"({"end":1800000000})");
    session().alwaysAnswer(messagePath(5), 200, R"({"created":0,"end":1800000000})");
    EXPECT_THAT(list().ids(), ElementsAre(5, 9));
    EXPECT_THAT(listAfter(1).ids(), ElementsAre(5, 9));
}

TEST_F(VLInboxServiceSyncTest, AClockSetBack400MillisecondsCountsAs0Seconds) {
    listAtServer({});
    list();
    phone().setClock(phone().now() - 0.4);
    list();
    EXPECT_EQ(logged("Inbox: last sync occured 0 seconds ago, limit set to 30"), 1);
}

TEST_F(VLInboxServiceSyncTest, AListOf10000MessagesIsSynchronised) {
    constexpr int kCount = 10'000;
    execute(
        "WITH RECURSIVE ids(id) AS (SELECT 1 UNION ALL SELECT id + 1 FROM ids WHERE id < 10000) INSERT INTO RICH_INBOX "
        "(TRACKING_ID, NOTIF_ID, READ, CREATED, END) SELECT 'T', id, 0, id, 1800000000 FROM ids");
    std::vector<std::string> local;
    std::vector<std::string> listed;
    for (int id = kCount; id > 0; --id) {
        local.push_back(entry(static_cast<std::uint64_t>(id)));
        // The service lists half of them, some read on another device.
        if (id % 2 == 0) listed.push_back(entry(static_cast<std::uint64_t>(id), id % 100 == 0 ? 1 : 0));
    }
    listAtServer(listed);
    const auto shown = list();
    EXPECT_THAT(stateHashes(), ElementsAre(vl_md5(fmt::format(R"({{"notification":[{}]}})", fmt::join(local, ",")))));
    EXPECT_EQ(shown.messages.size(), 5'000U);
    EXPECT_EQ(shown.unreadCount, 4'900U);
    EXPECT_EQ(value("SELECT count(*) || ' ' || sum(READ) FROM RICH_INBOX"), "5000 100");
    EXPECT_TRUE(session().requests(kMessages).empty());
}

}  // namespace

}  // namespace vorlane
