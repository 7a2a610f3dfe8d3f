#include <gmock/gmock.h>

#include "Public/VLConstants.h"
#include "Tests/Inbox/InboxTest.h"

namespace vorlane {

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// The service cannot be reached, so every list comes from the database.
class VLInboxServiceListTest : public InboxTest {
protected:
    VLInboxServiceListTest() { session().alwaysFail("/"); }
};

TEST_F(VLInboxServiceListTest, MessagesAreSortedByDateThenByDescendingId) {
    store(1, 0, 100);
    store(3, 0, 200);
    store(2, 0, 200);
    store(4, 0, 50);
    EXPECT_THAT(list().ids(), ElementsAre(3, 2, 1, 4));
}

TEST_F(VLInboxServiceListTest, EveryColumnBecomesAProperty) {
    execute(
        "INSERT INTO RICH_INBOX (TRACKING_ID, NOTIF_ID, SUBJECT, CONTENT, LABEL, URL, PHASH, READ, CREATED, END, "
        "CARD_URL, BACKGROUND_COLOR, FOREGROUND_COLOR, METADATA) VALUES ('T', -1, 'Subject', '%3Cp%3E&amp;', 'Label', "
        "'https://host/', 'phash', 1, 1600000000.25, 1800000000, 'https://host/card.png', '#12AB9f', '#000001', "
        "'{\"a\":{\"b\":1}}')");
    const auto shown = list();
    ASSERT_EQ(shown.messages.size(), 1U);
    const auto& message = *shown.messages[0];
    EXPECT_EQ(message.messageId(), 18446744073709551615U);
    EXPECT_EQ(message.subject(), "Subject");
    EXPECT_EQ(message.htmlContent(), std::string(VIEWPORT_META_TAG) + "<p>&");
    EXPECT_EQ(message.label(), "Label");
    EXPECT_EQ(message.url(), "https://host/");
    EXPECT_EQ(message.phash(), "phash");
    EXPECT_EQ(message.read(), 1);
    EXPECT_EQ(message.created(), 1'600'000'000.25);
    EXPECT_EQ(message.end(), 1'800'000'000.0);
    EXPECT_EQ(message.cardImage(), "https://host/card.png");
    EXPECT_EQ(message.cardBackgroundColor(), "#12AB9f");
    EXPECT_EQ(message.cardForegroundColor(), "#000001");
    EXPECT_EQ(Value(message.metadata()), (Value{{"a", {{"b", 1}}}}));
    EXPECT_EQ(message.service().lock(), service);
    EXPECT_EQ(message.loadedImage(), nullptr);
}

TEST_F(VLInboxServiceListTest, MissingColumnsBecomeDefaults) {
    execute("INSERT INTO RICH_INBOX (TRACKING_ID, NOTIF_ID, END) VALUES ('T', 5, 1800000000)");
    const auto shown = list();
    ASSERT_EQ(shown.messages.size(), 1U);
    const auto& message = *shown.messages[0];
    EXPECT_EQ(message.messageId(), 5U);
    EXPECT_EQ(message.subject(), std::nullopt);
    EXPECT_EQ(message.htmlContent(), std::nullopt);
    EXPECT_EQ(message.label(), std::nullopt);
    EXPECT_EQ(message.url(), std::nullopt);
    EXPECT_EQ(message.phash(), std::nullopt);
    EXPECT_EQ(message.read(), 0);
    EXPECT_EQ(message.created(), 0);
    EXPECT_EQ(message.cardImage(), std::nullopt);
    EXPECT_EQ(message.cardBackgroundColor(), "#FFFFFF");
    EXPECT_EQ(message.cardForegroundColor(), "#000000");
    EXPECT_EQ(message.metadata(), Dictionary());
    EXPECT_EQ(shown.unreadCount, 1U);
    for (const auto& line : log().lines()) {
        if (line.message.starts_with("RSPN")) continue;
        EXPECT_NE(line.level, VLLogLevel::Error) << line.message;
    }
}

TEST_F(VLInboxServiceListTest, AMessageIsHiddenFromItsEndOn) {
    const double start = phone().now();
    store(1, 0, 100, start + 10);
    store(2, 0, 100, start + 10.5);
    store(3, 0, 100, start + 11);
    list();
    EXPECT_THAT(listAfter(9.9).ids(), ElementsAre(3, 2, 1));
    EXPECT_EQ(lists.back().unreadCount, 3U);
    EXPECT_THAT(listAfter(0.1).ids(), ElementsAre(3, 2));
    EXPECT_EQ(lists.back().unreadCount, 2U);
    EXPECT_THAT(listAfter(0.5).ids(), ElementsAre(3));
    EXPECT_THAT(listAfter(0.5).ids(), IsEmpty());
    EXPECT_EQ(lists.back().unreadCount, 0U);
    EXPECT_EQ(value("SELECT count(*) FROM RICH_INBOX"), "3");
}

TEST_F(VLInboxServiceListTest, AMessageWithoutAnEndIsHidden) {
    execute("INSERT INTO RICH_INBOX (TRACKING_ID, NOTIF_ID, READ) VALUES ('T', 5, 0)");
    EXPECT_THAT(list().ids(), IsEmpty());
    EXPECT_EQ(lists.back().unreadCount, 0U);
}

TEST_F(VLInboxServiceListTest, ADuplicateMessageIsListedAndCountedOnce) {
    store(1, 0, 100);
    store(1, 0, 300);
    store(1, 1, 200);
    store(2, 1, 50);
    store(2, 0, 40);
    const auto shown = list();
    EXPECT_THAT(shown.ids(), ElementsAre(1, 2));
    EXPECT_EQ(shown.messages[0]->created(), 300);
    EXPECT_EQ(shown.messages[1]->read(), 1);
    // A message with one unread row counts as unread.
    EXPECT_EQ(shown.unreadCount, 2U);
}

TEST_F(VLInboxServiceListTest, AnExpiredDuplicateDoesNotHideAMessage) {
    store(1, 0, 300, 5);
    store(1, 1, 100);
    const auto shown = list();
    ASSERT_THAT(shown.ids(), ElementsAre(1));
    EXPECT_EQ(shown.messages[0]->created(), 100);
    EXPECT_EQ(shown.unreadCount, 0U);
}

TEST_F(VLInboxServiceListTest, ReadMessagesAreNotCounted) {
    store(1, 0);
    store(2, 1);
    store(3, 1);
    store(4, 0, 100, 5);
    EXPECT_EQ(list().unreadCount, 1U);
    EXPECT_EQ(service->getUnreadCount("T"), 1U);
}

TEST_F(VLInboxServiceListTest, TheUnreadCountDoesNotReadTheContent) {
    store(1);
    execute("ALTER TABLE RICH_INBOX DROP COLUMN CONTENT");
    EXPECT_EQ(service->getUnreadCount("T"), 1U);
    EXPECT_TRUE(service->getInboxList("T").empty());
}

TEST_F(VLInboxServiceListTest, UsersSeeOnlyTheirOwnMessages) {
    store(1, 0, 100, kLater, "T");
    store(2, 0, 100, kLater, "U");
    store(1, 1, 100, kLater, "U");
    EXPECT_THAT(list().ids(), ElementsAre(1));
    EXPECT_EQ(lists.back().unreadCount, 1U);
    settings->setTrackingId("U");
    EXPECT_THAT(list().ids(), ElementsAre(2, 1));
    EXPECT_EQ(lists.back().unreadCount, 1U);
    settings->setTrackingId("V");
    EXPECT_THAT(list().ids(), IsEmpty());
    settings->setTrackingId("T' OR '1'='1");
    EXPECT_THAT(list().ids(), IsEmpty());
}

TEST_F(VLInboxServiceListTest, AStringWithANULByteIsComplete) {
    execute(
        "INSERT INTO RICH_INBOX (TRACKING_ID, NOTIF_ID, END, SUBJECT) VALUES ('T', 5, 1800000000, 'a' || "
        "char(0) || 'b')");
    EXPECT_EQ(list().messages.at(0)->subject(), std::string("a\0b", 3));
}

TEST_F(VLInboxServiceListTest, AListOf10000MessagesIsComplete) {
    execute(
        "WITH RECURSIVE ids(id) AS (SELECT 1 UNION ALL SELECT id + 1 FROM ids WHERE id < 10000) INSERT INTO RICH_INBOX "
        "(TRACKING_ID, NOTIF_ID, READ, CREATED, END, CONTENT, METADATA) SELECT 'T', id, id % 2, id % 1000, 1800000000, "
        "'%3Cp%3EMessage &amp; ' || id || printf('%.4000c', 'x'), '{\"number\":' || id || '}' FROM ids");
    const auto shown = list();
    ASSERT_EQ(shown.messages.size(), 10'000U);
    EXPECT_EQ(shown.unreadCount, 5'000U);
    EXPECT_EQ(shown.messages.front()->messageId(), 9'999U);
    EXPECT_EQ(shown.messages.back()->messageId(), 1'000U);
    const auto& message = *shown.messages[0];
    EXPECT_EQ(message.htmlContent(), std::string(VIEWPORT_META_TAG) + "<p>Message & 9999" + std::string(4000, 'x'));
    EXPECT_EQ(Value(message.metadata()), (Value{{"number", 9999}}));
}

TEST_F(VLInboxServiceListTest, ARequestOnlyQueuesWork) {
    store(1);
    list();
    service->getInboxMessagesWithCompletionHandler(listHandler());
    EXPECT_EQ(lists.size(), 1U);
    phone().settle();
    EXPECT_EQ(lists.size(), 2U);
}

}  // namespace

}  // namespace vorlane
