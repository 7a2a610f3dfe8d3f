#pragma once

#include <fmt/format.h>

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Inbox/VLInboxDatabaseManager.h"
#include "Inbox/VLInboxService.h"
#include "Tests/Inbox/TestDatabase.h"
#include "Tests/Support/ServicesTest.h"
#include "Tracking/VLConfigService.h"
#include "Tracking/VLEventService.h"

namespace vorlane {

/// A fixture with an inbox service for the application "K" and the user "T", and a scripted mailbox.
class InboxTest : public ServicesTest {
protected:
    /// What a list handler received in one call.
    struct List {
        VLInboxService::Messages messages;
        std::size_t unreadCount;

        std::vector<std::uint64_t> ids() const {
            std::vector<std::uint64_t> ids;
            for (const auto& message : messages) ids.push_back(message->messageId());
            return ids;
        }
    };
    using Ids = std::vector<std::uint64_t>;

    static constexpr const char* kState = "/rich/mailbox?";
    static constexpr const char* kMessages = "/rich/mailbox/messages/";
    static constexpr double kLater = 1'800'000'000.0;

    explicit InboxTest(SimulatedPhone::Options options = {}) : ServicesTest(std::move(options)) { restartService(); }

    /// Creates the service as the next run of the application does.
    void restartService() {
        service.reset();
        service = VLInboxService::serviceWith(
            {settings, eventService, configService, urlBuilder, urlSession, phone().makeURLSession({})});
        phone().settle();
    }

    std::string databasePath() const { return documentsPath("AppInboxV2Plus.db"); }
    std::vector<TestDatabase::Row> rows(const std::string& sql) { return TestDatabase(databasePath()).rows(sql); }
    std::string value(const std::string& sql) { return TestDatabase(databasePath()).value(sql); }
    void execute(const std::string& sql) { TestDatabase(databasePath()).execute(sql); }

    /// Inserts a message into the database.
    void store(std::uint64_t id, int read = 0, double created = 100, double end = kLater,
               const std::string& user = "T") {
        execute(
            fmt::format("INSERT INTO RICH_INBOX (NOTIF_ID, READ, CREATED, END, TRACKING_ID, SUBJECT, PHASH) VALUES "
                        "({}, {}, {:.3f}, {:.3f}, '{}', 'Subject {}', 'phash {}')",
                        static_cast<std::int64_t>(id), read, created, end, user, id, id));
    }

    // The mailbox.

    static std::string entry(std::uint64_t id, int read = 0) {
        return fmt::format(R"({{"id":{},"read":{}}})", id, read);
    }
    static std::string state(const std::vector<std::string>& entries) {
        return fmt::format(R"({{"synchronisation_complete":true,"state_hash":"h","notification":[{}]}})",
                           fmt::join(entries, ","));
    }
    void listAtServer(const std::vector<std::string>& entries) { session().alwaysAnswer(kState, 200, state(entries)); }

    static std::string messageJSON(std::uint64_t id, double created = 100) {
        return fmt::format(R"({{"id":{0},"sline":"Subject {0}","content":"Body {0}","created":{1},"end":{2:.0f},)"
                           R"("read":0,"phash":"phash {0}"}})",
                           id, created, kLater);
    }
    static std::string messagePath(std::uint64_t id) { return fmt::format("{}{}", kMessages, id); }
    void answerMessage(std::uint64_t id, double created = 100) {
        session().alwaysAnswer(messagePath(id), 200, messageJSON(id, created));
    }

    std::vector<RecordedRequest> requests(const std::string& method, const std::string& part) {
        std::vector<RecordedRequest> found;
        for (auto& request : session().requests(part)) {
            if (request.request.HTTPMethod == method) found.push_back(std::move(request));
        }
        return found;
    }

    // The host.

    VLInboxService::ListHandler listHandler() {
        return [this](const VLInboxService::Messages& messages, std::size_t unreadCount) {
            EXPECT_TRUE(phone().mainQueue()->isCurrent());
            lists.push_back({messages, unreadCount});
        };
    }
    /// Requests the list, waits until everything has settled, and returns the last list.
    List list() {
        service->getInboxMessagesWithCompletionHandler(listHandler());
        // 10,000 messages take long under the sanitizers.
        phone().settle(120);
        return lists.empty() ? List{} : lists.back();
    }
    /// Returns the list after a pause. 30 seconds after the last synchronisation the request starts another one.
    List listAfter(TimeInterval seconds) {
        phone().advance(seconds);
        lists.clear();
        return list();
    }
    std::shared_ptr<VLInboxMessage> message(std::uint64_t id) {
        VLInboxMessage::Content content;
        content.messageId = id;
        content.phash = fmt::format("phash {}", id);
        return std::make_shared<VLInboxMessage>(std::move(content), service);
    }

    struct Outcome {
        std::shared_ptr<VLInboxMessage> message;
        std::optional<NSError> error;
        int calls = 0;
    };
    VLInboxService::MessageHandler outcomeHandler() {
        return [this](const std::shared_ptr<VLInboxMessage>& message, std::optional<NSError> error) {
            EXPECT_TRUE(phone().mainQueue()->isCurrent());
            outcome = {message, std::move(error), outcome.calls + 1};
        };
    }

    std::shared_ptr<VLEventService> eventService =
        std::make_shared<VLEventService>(settings, urlBuilder, payloadBuilder, urlSession);
    std::shared_ptr<VLConfigService> configService =
        std::make_shared<VLConfigService>(settings, urlBuilder, urlSession);
    std::shared_ptr<VLInboxService> service;
    std::vector<List> lists;
    Outcome outcome;
};

}  // namespace vorlane
