#include <gmock/gmock.h>

#include "Public/VLErrorDomains.h"
#include "Tests/Inbox/InboxTest.h"

namespace vorlane {

namespace {

using Rows = std::vector<TestDatabase::Row>;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class VLInboxServiceMessageTest : public InboxTest {
protected:
    static constexpr const char* kEvents = "register_app_event";

    VLInboxServiceMessageTest() {
        session().alwaysAnswer(kEvents, 200, "ok");
        session().alwaysAnswer(kMessages, 200, "");
    }

    void open(std::uint64_t id, const std::optional<std::string>& sourcePage = std::nullopt) {
        service->openInboxMessage(message(id), sourcePage, outcomeHandler());
        phone().settle();
    }
    void remove(std::uint64_t id) {
        service->deleteInboxMessage(message(id), outcomeHandler());
        phone().settle();
    }

    Value event() { return session().lastRequest(kEvents).payload(); }
    Value expectedEvent(const std::string& type, const std::string& label, const std::string& phash) const {
        auto basic = basicFields(true);
        basic["phash"] = phash;
        return merged({{"event_type", type}, {"event_label", label}}, std::move(basic));
    }
    Value lastPut() {
        const auto puts = requests("PUT", kMessages);
        return puts.empty() ? Value() : puts.back().payload();
    }
};

// Opening.

TEST_F(VLInboxServiceMessageTest, OpeningMarksTheMessageLocallyAndRemotely) {
    store(7);
    store(8);
    store(7, 0, 100, kLater, "U");
    const auto opened = message(7);
    service->openInboxMessage(opened, outcomeHandler());
    EXPECT_EQ(outcome.calls, 0);
    phone().settle();
    EXPECT_EQ(rows("SELECT NOTIF_ID, TRACKING_ID, READ FROM RICH_INBOX ORDER BY ID"),
              (Rows{{"7", "T", "1"}, {"8", "T", "0"}, {"7", "U", "0"}}));
    EXPECT_EQ(lastPut(), (Value{{"read", true}}));
    EXPECT_EQ(session().lastRequest(messagePath(7)).request.URL.path(), "/K/T/rich/mailbox/messages/7");
    EXPECT_EQ(outcome.calls, 1);
    EXPECT_EQ(outcome.message, opened);
    EXPECT_EQ(outcome.error, std::nullopt);
    EXPECT_EQ(log().count("Inbox: message 7 marked as read remotely", VLLogLevel::Debug), 1);
}

TEST_F(VLInboxServiceMessageTest, ReadFlagsOfAnotherUserDoNotCount) {
    store(7, 1, 100, kLater, "U");
    store(7, 0);
    open(7);
    EXPECT_EQ(event()["event_type"], Value("Read"));
    EXPECT_EQ(value("SELECT READ FROM RICH_INBOX WHERE TRACKING_ID = 'T'"), "1");
}

TEST_F(VLInboxServiceMessageTest, TheRemoteMarkPrecedesTheEvent) {
    store(7);
    open(7);
    ASSERT_EQ(session().requests().size(), 2U);
    EXPECT_EQ(session().requests().front().request.HTTPMethod, "PUT");
}

TEST_F(VLInboxServiceMessageTest, OpeningSendsTheReadEventWithTheMessagesPhash) {
    store(7);
    settings->setPhash("of a notification");
    open(7);
    EXPECT_EQ(event(), expectedEvent("Read", "Rich (null) Message Opened", "phash 7"));
    EXPECT_EQ(settings->phash(), "phash 7");
    EXPECT_EQ(session().requests(kEvents).size(), 1U);
}

TEST_F(VLInboxServiceMessageTest, OpeningAgainSendsOnlyTheReReadEvent) {
    store(7, 1);
    settings->setPhash(std::nullopt);
    open(7);
    EXPECT_EQ(event(), expectedEvent("Re-Read", "Rich (null) Message Re-Read", "phash 7"));
    EXPECT_THAT(requests("PUT", kMessages), IsEmpty());
    EXPECT_EQ(outcome.calls, 1);
    EXPECT_EQ(outcome.error, std::nullopt);
}

TEST_F(VLInboxServiceMessageTest, TheLabelContainsTheSourcePage) {
    store(7);
    open(7, "Home");
    EXPECT_EQ(event()["event_label"], Value("Rich Home Message Opened"));
    open(7, "Home");
    EXPECT_EQ(event()["event_label"], Value("Rich Home Message Re-Read"));
    open(7, "");
    EXPECT_EQ(event()["event_label"], Value("Rich  Message Re-Read"));
}

TEST_F(VLInboxServiceMessageTest, AMessageWithoutAPhashKeepsTheStoredPhash) {
    store(7);
    settings->setPhash("of a notification");
    VLInboxMessage::Content content;
    content.messageId = 7;
    service->openInboxMessage(std::make_shared<VLInboxMessage>(std::move(content), service), outcomeHandler());
    phone().settle();
    EXPECT_EQ(event()["phash"], Value("of a notification"));
}

TEST_F(VLInboxServiceMessageTest, AMessageMissingFromTheDatabaseCanBeOpened) {
    open(7);
    EXPECT_EQ(lastPut(), (Value{{"read", true}}));
    EXPECT_EQ(event()["event_type"], Value("Read"));
    EXPECT_EQ(outcome.error, std::nullopt);
}

TEST_F(VLInboxServiceMessageTest, OpeningOfflineIsNoError) {
    store(7);
    session().alwaysFail("/");
    open(7);
    EXPECT_EQ(outcome.calls, 1);
    EXPECT_EQ(outcome.error, std::nullopt);
    EXPECT_EQ(value("SELECT READ FROM RICH_INBOX"), "1");
    EXPECT_EQ(log().count("Inbox: message 7 could not be marked as read remotely, HTTP error -1", VLLogLevel::Error),
              1);
}

TEST_F(VLInboxServiceMessageTest, AMessageOpenedOfflineIsMarkedAtTheNextSync) {
    store(7);
    session().alwaysFail("/");
    open(7);
    session().forgetRules();
    listAtServer({entry(7, 0)});
    session().alwaysAnswer(messagePath(7), 200, "");
    EXPECT_EQ(list().messages.at(0)->read(), 1);
    EXPECT_EQ(requests("PUT", messagePath(7)).size(), 2U);
    EXPECT_EQ(lastPut(), (Value{{"read", true}}));
}

TEST_F(VLInboxServiceMessageTest, OpeningConcernsTheUserAtTheTimeOfTheCall) {
    store(7);
    store(7, 0, 100, kLater, "U");
    service->openInboxMessage(message(7), outcomeHandler());
    settings->setTrackingId("U");
    phone().settle();
    EXPECT_EQ(rows("SELECT TRACKING_ID, READ FROM RICH_INBOX ORDER BY ID"), (Rows{{"T", "1"}, {"U", "0"}}));
}

TEST_F(VLInboxServiceMessageTest, TheHighestIdCanBeOpenedAndDeleted) {
    store(18446744073709551615U);
    open(18446744073709551615U);
    EXPECT_EQ(value("SELECT READ FROM RICH_INBOX"), "1");
    EXPECT_EQ(session().lastRequest(kMessages).request.URL.path(), "/K/T/rich/mailbox/messages/18446744073709551615");
    remove(18446744073709551615U);
    EXPECT_EQ(value("SELECT count(*) FROM RICH_INBOX"), "0");
    EXPECT_EQ(value("SELECT NOTIF_ID FROM RICH_TRASH"), "-1");
}

TEST_F(VLInboxServiceMessageTest, ANullMessageIsAnError) {
    service->openInboxMessage(nullptr, outcomeHandler());
    service->deleteInboxMessage(nullptr, outcomeHandler());
    EXPECT_EQ(outcome.calls, 0);
    phone().settle();
    EXPECT_EQ(outcome.calls, 2);
    EXPECT_EQ(outcome.message, nullptr);
    ASSERT_TRUE(outcome.error);
    EXPECT_EQ(outcome.error->domain(), VLErrorDomainInbox);
    EXPECT_EQ(outcome.error->code(), 0);
    EXPECT_THAT(session().requests(), IsEmpty());
}

TEST_F(VLInboxServiceMessageTest, TheMessageHandlersMayBeEmpty) {
    store(7);
    service->openInboxMessage(message(7), nullptr);
    service->deleteInboxMessage(message(7), nullptr);
    phone().settle();
    EXPECT_EQ(value("SELECT count(*) FROM RICH_INBOX"), "0");
    EXPECT_EQ(session().requests(kEvents).size(), 2U);
}

// Deleting.

TEST_F(VLInboxServiceMessageTest, DeletingRemovesTheMessageLocallyAndRemotely) {
    store(7);
    store(8);
    store(7, 0, 100, kLater, "U");
    const auto deleted = message(7);
    service->deleteInboxMessage(deleted, outcomeHandler());
    phone().settle();
    EXPECT_EQ(rows("SELECT NOTIF_ID, TRACKING_ID FROM RICH_INBOX ORDER BY ID"), (Rows{{"8", "T"}, {"7", "U"}}));
    EXPECT_EQ(rows("SELECT NOTIF_ID, TRACKING_ID FROM RICH_TRASH"), (Rows{{"7", "T"}}));
    EXPECT_EQ(lastPut(), (Value{{"deleted", true}}));
    EXPECT_EQ(outcome.calls, 1);
    EXPECT_EQ(outcome.message, deleted);
    EXPECT_EQ(outcome.error, std::nullopt);
}

TEST_F(VLInboxServiceMessageTest, DeletingSendsTheDeleteEventWithTheMessagesPhash) {
    store(7);
    settings->setPhash("of a notification");
    remove(7);
    EXPECT_EQ(event(), expectedEvent("Delete", "Inbox Message Deleted", "phash 7"));
    EXPECT_EQ(settings->phash(), "of a notification");
}

TEST_F(VLInboxServiceMessageTest, DeletingTwiceHasNoFurtherEffect) {
    store(7);
    remove(7);
    remove(7);
    EXPECT_EQ(rows("SELECT NOTIF_ID, TRACKING_ID FROM RICH_TRASH"), (Rows{{"7", "T"}}));
    EXPECT_EQ(outcome.calls, 2);
    EXPECT_EQ(outcome.error, std::nullopt);
}

TEST_F(VLInboxServiceMessageTest, ADeletedMessageStaysDeletedAcrossRestarts) {
    store(7);
    session().alwaysFail("/");
    remove(7);
    session().forgetRules();
    restartService();
    listAtServer({entry(7)});
    session().alwaysAnswer(messagePath(7), 200, "");
    EXPECT_THAT(list().ids(), IsEmpty());
    EXPECT_THAT(requests("GET", messagePath(7)), IsEmpty());
    EXPECT_EQ(requests("PUT", messagePath(7)).size(), 2U);
    EXPECT_EQ(lastPut(), (Value{{"deleted", true}}));
    restartService();
    EXPECT_THAT(list().ids(), IsEmpty());
    EXPECT_EQ(requests("PUT", messagePath(7)).size(), 3U);
}

/// NOTIF_ID is the key of the trash, so the second user's deletion is only sent to the service.
TEST_F(VLInboxServiceMessageTest, TheTrashHoldsAnIdForOneUserOnly) {
    store(7);
    store(7, 0, 100, kLater, "U");
    remove(7);
    settings->setTrackingId("U");
    remove(7);
    EXPECT_EQ(rows("SELECT NOTIF_ID, TRACKING_ID FROM RICH_TRASH"), (Rows{{"7", "T"}}));
    EXPECT_EQ(value("SELECT count(*) FROM RICH_INBOX"), "0");
    EXPECT_EQ(session().lastRequest(messagePath(7)).request.URL.path(), "/K/U/rich/mailbox/messages/7");
}

}  // namespace

}  // namespace vorlane
