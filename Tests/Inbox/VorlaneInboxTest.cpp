#include <gmock/gmock.h>

#include <fmt/format.h>

#include "Core/Startup/VLBootstrap.h"
#include "Inbox/VLInboxService.h"
#include "Public/Vorlane.h"
#include "Tests/Inbox/TestDatabase.h"
#include "Tests/Support/SimulatedPhoneTest.h"

namespace vorlane {

namespace {

using Messages = std::vector<std::shared_ptr<VLInboxMessage>>;
using ::testing::ElementsAre;

class VorlaneInboxTest : public SimulatedPhoneTest {
protected:
    VorlaneInboxTest() {
        session().alwaysAnswer("", 200, "{}");
        session().alwaysAnswer("/rich/mailbox?", 200,
                               R"({"synchronisation_complete":true,"notification":[{"id":1,"read":0}]})");
        session().alwaysAnswer("/messages/1", 200, R"({"end":1800000000,"read":0,"phash":"p"})");
    }

    Messages list() {
        Messages received;
        Vorlane::getInboxMessagesWithCompletionHandler([&](const Messages& messages, std::size_t count) {
            EXPECT_TRUE(phone().mainQueue()->isCurrent());
            received = messages;
            unreadCount = count;
        });
        EXPECT_TRUE(received.empty());
        phone().settle();
        return received;
    }

    Vorlane::ErrorHandler errorHandler() {
        return [this](std::optional<NSError> error) {
            EXPECT_TRUE(phone().mainQueue()->isCurrent());
            errors.push_back(std::move(error));
        };
    }

    std::size_t unreadCount = 0;
    std::vector<std::optional<NSError>> errors;
};

TEST_F(VorlaneInboxTest, AMessageIsListedOpenedAndDeleted) {
    const auto messages = list();
    ASSERT_EQ(messages.size(), 1U);
    EXPECT_EQ(messages[0]->messageId(), 1U);
    EXPECT_EQ(unreadCount, 1U);
    Vorlane::openInboxMessage(messages[0], errorHandler());
    EXPECT_TRUE(errors.empty());
    EXPECT_EQ(list().at(0)->read(), 1);
    EXPECT_EQ(unreadCount, 0U);
    Vorlane::deleteInboxMessage(messages[0], errorHandler());
    EXPECT_TRUE(list().empty());
    EXPECT_THAT(errors, ElementsAre(std::nullopt, std::nullopt));
}

TEST_F(VorlaneInboxTest, ADatabaseFailureReachesTheHandler) {
    const auto messages = list();
    TestDatabase(documentsPath("AppInboxV2Plus.db")).execute("DROP TABLE RICH_INBOX");
    Vorlane::openInboxMessage(messages.at(0), errorHandler());
    Vorlane::deleteInboxMessage(messages.at(0), errorHandler());
    phone().settle();
    ASSERT_EQ(errors.size(), 2U);
    for (const auto& error : errors) {
        ASSERT_TRUE(error);
        EXPECT_EQ(error->domain(), VLErrorDomainInbox);
        EXPECT_EQ(error->code(), 0);
        EXPECT_EQ(error->userInfo().at("sqlite3_errcode"), Value(SQLITE_ERROR));
    }
}

TEST_F(VorlaneInboxTest, ANullMessageIsAnErrorForTheHost) {
    Vorlane::openInboxMessage(nullptr, errorHandler());
    Vorlane::deleteInboxMessage(nullptr, errorHandler());
    phone().settle();
    ASSERT_EQ(errors.size(), 2U);
    EXPECT_TRUE(errors[0] && errors[1]);
}

TEST_F(VorlaneInboxTest, EveryHandlerMayBeEmpty) {
    const auto messages = list();
    Vorlane::getInboxMessagesWithCompletionHandler(nullptr);
    Vorlane::openInboxMessage(messages.at(0), nullptr);
    Vorlane::deleteInboxMessage(messages.at(0), nullptr);
    Vorlane::openInboxMessage(nullptr, nullptr);
    Vorlane::deleteInboxMessage(nullptr, nullptr);
    phone().settle();
    EXPECT_TRUE(list().empty());
}

TEST_F(VorlaneInboxTest, MessagesOutliveTheService) {
    const auto messages = list();
    Platform::shutdown();
    Platform::install(nullptr);
    EXPECT_EQ(messages.at(0)->messageId(), 1U);
    EXPECT_EQ(messages.at(0)->service().lock(), nullptr);
}

TEST_F(VorlaneInboxTest, TheRegistryCreatesOneInboxService) {
    const auto registry = VLBootstrap::bootstrapWithURLs(std::make_shared<VLURLsProduction>());
    EXPECT_TRUE(registry->getComponent<VLInboxService>());
    EXPECT_EQ(registry->getComponent<VLInboxService>(), registry->getComponent<VLInboxService>());
}

TEST_F(VorlaneInboxTest, TheFirstUseChecksTheSchema) {
    Vorlane::sharedInstance();
    EXPECT_EQ(log().count("Inbox upgrade/downgrade operations complete.", VLLogLevel::Debug), 1);
}

}  // namespace

}  // namespace vorlane
