#include <algorithm>

#include "Public/VLInboxMessage.h"
#include "Tests/Simulator/LaunchedPhoneTest.h"

namespace vorlane {

namespace {

class SimulatedPhoneInboxTest : public LaunchedPhoneTest {
protected:
    using Messages = std::vector<std::shared_ptr<VLInboxMessage>>;

    /// Returns the list after a synchronisation.
    Messages list() {
        Messages newest;
        phone().advance(31);
        Vorlane::getInboxMessagesWithCompletionHandler(
            [&](const Messages& messages, std::size_t) { newest = messages; });
        phone().settle();
        return newest;
    }

    std::vector<std::string> subjects() {
        std::vector<std::string> found;
        for (const auto& message : list()) found.push_back(message->subject().value_or("(none)"));
        std::ranges::sort(found);
        return found;
    }

    using Subjects = std::vector<std::string>;
};

TEST_F(SimulatedPhoneInboxTest, AddedMessagesAreListed) {
    EXPECT_EQ(phone().addInboxMessage({.subject = "Hello"}), 1U);
    EXPECT_EQ(phone().addInboxMessage({.subject = "World"}), 2U);
    launch();
    EXPECT_EQ(subjects(), (Subjects{"Hello", "World"}));
}

TEST_F(SimulatedPhoneInboxTest, EveryFieldArrives) {
    const std::string page = "<p title='50%'>Ünder 20 & more &amp; \"so\"</p>";
    phone().addInboxMessage({.messageId = 77,
                             .subject = "100% \"Kaffee\" & Küche",
                             .htmlContent = page,
                             .label = "Open",
                             .url = "https://shop.example/a?b=c&d",
                             .phash = "P",
                             .created = phone().now() - 10,
                             .end = phone().now() + 1000,
                             .cardImage = "https://shop.example/card.png",
                             .cardBackgroundColor = "#102030",
                             .cardForegroundColor = "#FFEEDD",
                             .metadata = {{"price", 3.5}}});
    const double start = phone().now();
    launch();
    const auto messages = list();
    ASSERT_EQ(messages.size(), 1U);
    const auto& message = *messages.front();
    EXPECT_EQ(message.messageId(), 77U);
    EXPECT_EQ(message.subject(), "100% \"Kaffee\" & Küche");
    EXPECT_TRUE(message.htmlContent()->ends_with(page)) << *message.htmlContent();
    EXPECT_EQ(message.label(), "Open");
    EXPECT_EQ(message.url(), "https://shop.example/a?b=c&d");
    EXPECT_EQ(message.phash(), "P");
    EXPECT_EQ(message.read(), 0);
    EXPECT_EQ(message.created(), start - 10);
    EXPECT_EQ(message.end(), start + 1000);
    EXPECT_EQ(message.cardImage(), "https://shop.example/card.png");
    EXPECT_EQ(message.cardBackgroundColor(), "#102030");
    EXPECT_EQ(message.cardForegroundColor(), "#FFEEDD");
    EXPECT_EQ(message.metadata(), (Dictionary{{"price", 3.5}}));
}

TEST_F(SimulatedPhoneInboxTest, AMessageIsKeptFor30DaysByDefault) {
    phone().addInboxMessage({.subject = "Hello"});
    launch();
    phone().advance(30 * 86400 - 100);
    EXPECT_EQ(subjects(), Subjects{"Hello"});
    phone().advance(100);
    EXPECT_EQ(subjects(), Subjects{});
}

TEST_F(SimulatedPhoneInboxTest, OpeningReachesTheService) {
    phone().addInboxMessage({.subject = "Hello"});
    launch();
    const auto messages = list();
    ASSERT_EQ(messages.size(), 1U);
    EXPECT_FALSE(phone().inboxMessages().front().isRead);
    Vorlane::openInboxMessage(messages.front(), nullptr);
    phone().settle();
    EXPECT_TRUE(phone().inboxMessages().front().isRead);
}

TEST_F(SimulatedPhoneInboxTest, AMessageReadElsewhereIsRead) {
    phone().addInboxMessage({.subject = "Hello", .isRead = true});
    launch();
    const auto messages = list();
    ASSERT_EQ(messages.size(), 1U);
    EXPECT_EQ(messages.front()->read(), 1);
}

TEST_F(SimulatedPhoneInboxTest, DeletingReachesTheService) {
    phone().addInboxMessage({.subject = "Hello"});
    launch();
    const auto messages = list();
    ASSERT_EQ(messages.size(), 1U);
    Vorlane::deleteInboxMessage(messages.front(), nullptr);
    phone().settle();
    EXPECT_TRUE(phone().inboxMessages().empty());
    EXPECT_EQ(subjects(), Subjects{});
}

TEST_F(SimulatedPhoneInboxTest, MessagesMayChangeWhileTheApplicationRuns) {
    const auto hello = phone().addInboxMessage({.subject = "Hello"});
    launch();
    EXPECT_EQ(subjects(), Subjects{"Hello"});
    phone().addInboxMessage({.subject = "World"});
    EXPECT_TRUE(phone().removeInboxMessage(hello));
    EXPECT_FALSE(phone().removeInboxMessage(hello));
    EXPECT_EQ(subjects(), Subjects{"World"});
}

TEST_F(SimulatedPhoneInboxTest, MessagesOfAnotherUserAreNotListed) {
    phone().addInboxMessage({.trackingId = "anna/smith", .subject = "For Anna"});
    phone().addInboxMessage({.trackingId = "smith", .subject = "For Smith"});
    phone().addInboxMessage({.trackingId = "ben", .subject = "For Ben"});
    phone().addInboxMessage({.subject = "For everyone"});
    launch();
    Vorlane::setTrackingId("anna/smith");
    EXPECT_EQ(list().size(), 3U);
    Vorlane::setTrackingId("ben");
    EXPECT_EQ(subjects(), (Subjects{"For Ben", "For everyone"}));
}

TEST_F(SimulatedPhoneInboxTest, LaterRulesOfTheTestTakePrecedence) {
    phone().addInboxMessage({.subject = "Hello"});
    session().alwaysFail("/rich/mailbox");
    launch();
    EXPECT_EQ(subjects(), Subjects{});
    session().forgetRules();
    phone().addInboxMessage({.subject = "World"});
    EXPECT_EQ(subjects(), (Subjects{"Hello", "World"}));
}

TEST_F(SimulatedPhoneInboxTest, OtherRequestsStayOpen) {
    phone().addInboxMessage({.subject = "Hello"});
    launch();
    EXPECT_FALSE(session().lastRequest("/config/").answered);
}

}  // namespace

}  // namespace vorlane
