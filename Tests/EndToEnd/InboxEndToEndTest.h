#pragma once

#include <algorithm>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "Tests/EndToEnd/EndToEndTest.h"

namespace vorlane {

/// A fixture with a phone of the user anna, whose mailbox is empty at first.
class InboxEndToEndTest : public EndToEndTest {
protected:
    using Ids = std::vector<std::uint64_t>;

    /// The start of the phone's clock.
    static constexpr double kStart = 1'700'000'000.0;
    /// Slightly longer than lists come from the database alone.
    static constexpr double kSyncLimit = 31;
    static constexpr const char* kList = "getInboxMessagesWithCompletionHandler:";

    InboxEndToEndTest() { startPhoneOf("anna"); }

    /// Starts and launches a phone with the files of the previous phone.
    void startPhoneOf(const std::string& user, const std::vector<std::string>& further = {}) {
        startPhone(further);
        launch();
        phone->call("setTrackingId:", {user});
        phone->settle();
    }

    /// Sends a message as the operator and returns its id.
    std::uint64_t sendMessage(Dictionary message = {}, const std::string& user = "anna") const {
        message.insert({{"appKey", appKey()}, {"trackingId", user}, {"subject", "Hello"}, {"created", kStart - 60}});
        return service.post("messages", Value(std::move(message)))["id"].get<std::uint64_t>();
    }

    void removeMessage(std::uint64_t id) const { service.remove("messages?id=" + std::to_string(id)); }

    /// The service's record of a message: "read", "deleted" and more; null without one.
    Value stored(std::uint64_t id, const std::string& user = "anna") const {
        const auto answer = service.get("messages?trackingId=" + user);
        for (const auto& message : answer["messages"]) {
            if (message["id"] == Value(id)) return message;
        }
        return nullptr;
    }

    /// The ids that the service lists for a user, descending.
    Ids listedByService(const std::string& user = "anna") const {
        Ids ids;
        const auto answer = service.get("messages?trackingId=" + user);
        for (const auto& message : answer["messages"]) {
            if (message["deleted"] == Value(false)) ids.push_back(message["id"].get<std::uint64_t>());
        }
        std::ranges::sort(ids, std::greater());
        return ids;
    }

    void addFault(const std::string& endpoint, const std::string& kind, int count = 1'000'000) const {
        service.post("faults", Dictionary{{"endpoint", endpoint}, {"kind", kind}, {"count", count}});
    }

    /// Drops every request until `goOnline()`.
    void goOffline() const { addFault("*", "drop"); }
    void goOnline() const { service.remove("faults"); }

    struct Inbox {
        Array messages;
        std::uint64_t unread = 0;

        Ids ids() const {
            Ids ids;
            for (const auto& message : messages) ids.push_back(message["messageId"].get<std::uint64_t>());
            return ids;
        }
    };

    /// Settles and returns the last list that the handler received.
    Inbox list() {
        phone->takeEvents();
        phone->call(kList);
        const auto values = lastResult();
        if (values.size() != 2) ADD_FAILURE() << "no list";
        return values.size() == 2 ? Inbox{values[0].get<Array>(), values[1].get<std::uint64_t>()} : Inbox();
    }
    /// As `list()`, after the phone must ask the service again.
    Inbox listAnew() {
        phone->perform({{"do", "advance"}, {"seconds", kSyncLimit}});
        return list();
    }

    /// Opens or deletes a message of the last list.
    void open(std::uint64_t id) { expectDone("openInboxMessage:completionHandler:", id); }
    void deleteMessage(std::uint64_t id) { expectDone("deleteInboxMessage:completionHandler:", id); }

    std::size_t count(const std::string& endpoint) const { return service.requests(endpoint).size(); }

    std::string databasePath() const { return path("phone/AppInboxV2Plus.db"); }

private:
    void expectDone(const std::string& operation, std::uint64_t id) {
        phone->call(operation, {id});
        EXPECT_EQ(lastResult(), Value(Array{nullptr})) << operation << " " << id;
    }
};

}  // namespace vorlane
