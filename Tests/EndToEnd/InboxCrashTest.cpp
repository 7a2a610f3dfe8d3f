#include <fmt/format.h>

#include <csignal>
#include <random>

#include "Tests/EndToEnd/InboxEndToEndTest.h"
#include "Tests/Inbox/TestDatabase.h"

namespace vorlane {

namespace {

/// Kills a phone repeatedly during synchronisation. The fixed seed repeats each run as far as two processes allow.
class InboxCrashTest : public InboxEndToEndTest {
protected:
    /// Returns a random number from 0 to `count` - 1.
    std::size_t chance(std::size_t count) {
        return std::uniform_int_distribution<std::size_t>(0, count - 1)(generator_);
    }

    /// Adds some messages and sometimes removes one. Returns the least number of messages that the phone must fetch.
    std::size_t changeMailbox() {
        const auto count = 3 + chance(8);
        for (std::size_t i = 0; i < count; ++i)
            sendMessage({{"created", kStart - 1 - static_cast<double>(chance(1000))}});
        const auto listed = listedByService();
        if (chance(2) == 0) removeMessage(listed[chance(listed.size())]);
        return count - 1;
    }

    /// Waits until the service has received `count` requests to an endpoint after the request `since`.
    void waitForRequests(const std::string& endpoint, std::int64_t since, std::size_t count) const {
        service.get(fmt::format("requests?endpoint={}&since={}&waitFor={}&timeout=20", endpoint, since, count));
    }

    std::int64_t lastRequest() const {
        const auto requests = service.requests();
        return requests.empty() ? 0 : requests.back()["number"].get<std::int64_t>();
    }

    void kill() {
        phone->kill(SIGKILL);
        phone->wait();
    }

    /// The ids of all rows, to find duplicates.
    Ids rows() const {
        Ids ids;
        TestDatabase database(databasePath());
        for (const auto& row : database.rows("SELECT NOTIF_ID FROM RICH_INBOX ORDER BY NOTIF_ID DESC"))
            ids.push_back(std::stoull(row.front()));
        return ids;
    }

    void expectInStep() {
        const auto inbox = list();
        auto shown = inbox.ids();
        std::ranges::sort(shown, std::greater());
        EXPECT_EQ(shown, listedByService());
        EXPECT_EQ(rows(), listedByService());
        EXPECT_EQ(TestDatabase(databasePath()).value("PRAGMA integrity_check"), "ok");
        for (const auto& message : inbox.messages) {
            const auto there = stored(message["messageId"].get<std::uint64_t>());
            EXPECT_EQ(message["subject"], there["subject"]);
            EXPECT_EQ(message["read"] == Value(1), there["read"] == Value(true));
        }
    }

private:
    std::mt19937 generator_{20231114};
};

TEST_F(InboxCrashTest, KillsDuringSynchronisationKeepEveryMessageOnce) {
    for (int round = 0; round < 24; ++round) {
        const auto fetches = changeMailbox();
        const auto since = lastRequest();
        phone->send(fmt::format(R"({{"do":"call","op":"{}"}})", kList));
        // The kill may come immediately, during the comparison of states, or while messages are fetched.
        const auto instant = chance(8);
        if (instant == 1) waitForRequests("inboxState", since, 1);
        if (instant == 2) waitForRequests("inboxState", since, 2);
        if (instant > 2) waitForRequests("inboxMessage", since, 1 + chance(fetches));
        kill();
        ASSERT_EQ(TestDatabase(databasePath()).value("PRAGMA integrity_check"), "ok") << round;
        startPhoneOf("anna");
    }
    expectInStep();
    const auto rounds = count("inboxState");
    listAnew();
    EXPECT_EQ(count("inboxState"), rounds + 1) << "both make the same hash";
}

TEST_F(InboxCrashTest, KillsDuringChangesLeaveConsistentTables) {
    for (int round = 0; round < 12; ++round) {
        changeMailbox();
        const auto ids = list().ids();
        ASSERT_GE(ids.size(), 2U);
        const auto since = lastRequest();
        const auto opened = ids[chance(ids.size())];
        const auto deleted = ids[chance(ids.size())];
        phone->send(fmt::format(R"({{"do":"call","op":"openInboxMessage:completionHandler:","args":[{}]}})", opened));
        phone->send(
            fmt::format(R"({{"do":"call","op":"deleteInboxMessage:completionHandler:","args":[{}]}})", deleted));
        const auto instant = chance(4);
        if (instant > 0) waitForRequests("registerEvent", since, std::min<std::size_t>(instant, 2));
        kill();
        // A deleted message is either in the trash or in the inbox.
        TestDatabase database(databasePath());
        const auto places = fmt::format(
            "SELECT (SELECT count(*) FROM RICH_INBOX WHERE NOTIF_ID = {0}) + "
            "(SELECT count(*) FROM RICH_TRASH WHERE NOTIF_ID = {0})",
            deleted);
        ASSERT_EQ(database.value(places), "1") << round;
        startPhoneOf("anna");
    }
    // The first list reports the changes made here, the second receives the service's.
    list();
    phone->perform({{"do", "advance"}, {"seconds", kSyncLimit}});
    expectInStep();
}

TEST_F(InboxCrashTest, KillsAfterAnyOutputKeepEveryMessageOnce) {
    for (int i = 0; i < 40; ++i) sendMessage();
    for (int round = 0; round < 8; ++round) {
        startPhoneOf("anna", {"--log-level", "4"});
        const auto lines = chance(12);
        phone->send(fmt::format(R"({{"do":"call","op":"{}"}})", kList));
        for (std::size_t i = 0; i < lines; ++i) phone->perform({{"do", "query"}, {"what", "time"}});
        kill();
    }
    startPhoneOf("anna");
    expectInStep();
    EXPECT_EQ(listedByService().size(), 40U);
}

}  // namespace

}  // namespace vorlane
