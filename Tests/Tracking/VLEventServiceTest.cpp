#include "Tracking/VLEventService.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "Public/VLErrorDomains.h"
#include "Tests/Support/ServicesTest.h"

namespace vorlane {

namespace {

class VLEventServiceTest : public ServicesTest {
protected:
    RecordedRequest lastRequest() { return session().lastRequest("register_app_event"); }

    Value expected(const Value& label, const std::optional<std::string>& phash = std::nullopt) {
        Dictionary own{{"event_type", "buy"}, {"event_label", label}};
        if (phash) own["phash"] = *phash;
        return merged(own, basicFields(true));
    }

    std::shared_ptr<VLEventService> service =
        std::make_shared<VLEventService>(settings, urlBuilder, payloadBuilder, urlSession);
};

TEST_F(VLEventServiceTest, AnEventIsOneFormWithEveryField) {
    service->registerEventWithType("buy", "shoes");
    EXPECT_EQ(lastRequest().request.HTTPMethod, "POST");
    EXPECT_EQ(lastRequest().request.URL, urlBuilder->registerEventURL());
    EXPECT_EQ(lastRequest().header("Content-Type"), "application/x-www-form-urlencoded");
    EXPECT_TRUE(lastRequest().bodyText().starts_with("payload=%7B"));
    EXPECT_EQ(lastRequest().payload(), expected("shoes"));
}

TEST_F(VLEventServiceTest, NulloptIsSentAsAnEmptyLabel) {
    service->registerEventWithType("buy", std::nullopt);
    EXPECT_EQ(lastRequest().payload(), expected(""));
}

TEST_F(VLEventServiceTest, AGivenPhashReplacesTheStoredOne) {
    settings->setPhash("stored");
    service->registerEventWithType("buy", "shoes");
    EXPECT_EQ(lastRequest().payload()["phash"], Value("stored"));
    service->registerEventWithType("buy", "shoes", "given");
    EXPECT_EQ(lastRequest().payload(), expected("shoes", "given"));
}

TEST_F(VLEventServiceTest, DataIsSentAsANestedObject) {
    const Dictionary data{{"item", "shoes"}, {"sizes", Array{41, 42.5}}, {"gift", false}, {"note", nullptr}};
    service->registerEventWithType("buy", data);
    EXPECT_EQ(lastRequest().payload(), expected(data));
    service->registerEventWithType("buy", data, "given");
    EXPECT_EQ(lastRequest().payload(), expected(data, "given"));
}

TEST_F(VLEventServiceTest, StringsAndNulloptAreAcceptedInAnyForm) {
    const std::string text = "shoes";
    const std::optional<std::string> label = text;
    const std::optional<std::string> none;
    service->registerEventWithType("buy", text);
    EXPECT_EQ(lastRequest().payload(), expected("shoes"));
    service->registerEventWithType("buy", label, text);
    EXPECT_EQ(lastRequest().payload(), expected("shoes", "shoes"));
    service->registerEventWithType("buy", none, none);
    EXPECT_EQ(lastRequest().payload(), expected(""));
    service->registerEventWithType("buy", std::nullopt, "hash");
    EXPECT_EQ(lastRequest().payload(), expected("", "hash"));
    service->registerEventWithType("buy", Dictionary{{"a", 1}}, std::nullopt);
    EXPECT_EQ(lastRequest().payload(), expected(Dictionary{{"a", 1}}));
    service->registerEventWithType("buy", Value(Dictionary{{"a", 1}}), "hash", nullptr);
    EXPECT_EQ(lastRequest().payload(), expected(Dictionary{{"a", 1}}, "hash"));
}

TEST_F(VLEventServiceTest, NoArgumentIsChecked) {
    service->registerEventWithType("", "");
    EXPECT_EQ(lastRequest().payload(), merged({{"event_type", ""}, {"event_label", ""}}, basicFields(true)));
    settings->setPhash("stored");
    service->registerEventWithType("buy", "shoes", "");
    EXPECT_EQ(lastRequest().payload(), expected("shoes", ""));
}

TEST_F(VLEventServiceTest, EventsOfSeveralThreadsAreAllSent) {
    // Read once before: concurrent first reads may each make an id.
    const auto payload = expected("shoes");
    std::atomic<int> calls = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            for (int j = 0; j < 25; ++j) {
                service->registerEventWithType("buy", Value("shoes"), std::nullopt, [&](auto) { ++calls; });
            }
        });
    }
    for (auto& thread : threads) thread.join();
    session().alwaysAnswer("register_app_event", 200);
    EXPECT_TRUE(phone().settle());
    EXPECT_EQ(calls, 100);
    const auto requests = session().requests();
    EXPECT_EQ(requests.size(), 100U);
    for (const auto& request : requests) EXPECT_EQ(request.payload(), payload);
}

TEST_F(VLEventServiceTest, AChangedTrackingIdIsSentWithEveryEvent) {
    settings->setPrevTrackingId("before");
    service->registerEventWithType("buy", "shoes");
    EXPECT_EQ(lastRequest().payload()["prev_tracking_id"], Value("before"));
}

TEST_F(VLEventServiceTest, ConsecutiveEventsHaveConsecutiveRequestIds) {
    service->registerEventWithType("buy", "one");
    service->registerEventWithType("buy", "two");
    EXPECT_EQ(session().requests().size(), 2U);
    EXPECT_EQ(log().linesContaining("RQST0001 POST").size(), 1U);
    EXPECT_EQ(log().linesContaining("RQST0002 POST").size(), 1U);
}

TEST_F(VLEventServiceTest, TheHandlerReceivesNulloptAfterASuccess) {
    int calls = 0;
    std::optional<NSError> received = NSError("none", 0);
    service->registerEventWithType("buy", Value("shoes"), std::nullopt, [&](auto error) {
        ++calls;
        received = error;
        EXPECT_TRUE(phone().mainQueue()->isCurrent());
    });
    session().answer("register_app_event", 200, "whatever");
    EXPECT_EQ(calls, 0);
    phone().runMainQueue();
    EXPECT_EQ(calls, 1);
    EXPECT_FALSE(received);
}

TEST_F(VLEventServiceTest, TheHandlerReceivesTheErrorOfTheRequest) {
    std::optional<NSError> received;
    service->registerEventWithType("buy", std::nullopt, std::nullopt, [&](auto error) { received = error; });
    session().answer("register_app_event", 500);
    phone().runMainQueue();
    ASSERT_TRUE(received);
    EXPECT_EQ(received->domain(), VLErrorDomainNetwork);
    EXPECT_EQ(received->code(), 500);
    EXPECT_EQ(received->localizedDescription(), "Network request error with HTTP status code 500");
}

TEST_F(VLEventServiceTest, OfflineTheHandlerReceivesTheTransportError) {
    int calls = 0;
    std::optional<NSError> received;
    service->registerEventWithType("buy", std::nullopt, std::nullopt, [&](auto error) {
        ++calls;
        received = error;
        EXPECT_TRUE(phone().mainQueue()->isCurrent());
    });
    session().fail("register_app_event");
    EXPECT_EQ(calls, 0);
    phone().runMainQueue();
    EXPECT_EQ(calls, 1);
    ASSERT_TRUE(received);
    EXPECT_EQ(received->domain(), NSURLErrorDomain);
    EXPECT_EQ(received->code(), -1009);
}

TEST_F(VLEventServiceTest, AnEventThatFailedIsNotSentAgain) {
    service->registerEventWithType("buy", "shoes");
    session().fail("register_app_event");
    phone().advance(3600);
    EXPECT_EQ(session().requests().size(), 1U);
}

TEST_F(VLEventServiceTest, TheRequestOutlivesTheService) {
    int calls = 0;
    service->registerEventWithType("buy", std::nullopt, std::nullopt, [&](auto) { ++calls; });
    service.reset();
    session().answer("register_app_event", 204);
    phone().runMainQueue();
    EXPECT_EQ(calls, 1);
}

TEST_F(VLEventServiceTest, AStringThatIsNotUTF8IsLoggedAndSentEmpty) {
    service->registerEventWithType("buy", "\xff\xfe");
    EXPECT_EQ(lastRequest().bodyText(), "payload=");
    EXPECT_EQ(log().linesContaining("Error converting dictionary to JSON string").size(), 1U);
}

}  // namespace

}  // namespace vorlane
