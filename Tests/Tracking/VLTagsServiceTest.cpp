#include "Tracking/VLTagsService.h"

#include <gtest/gtest.h>

#include <limits>
#include <thread>
#include <utility>
#include <vector>

#include "Platform/NSException.h"
#include "Public/VLErrorDomains.h"
#include "Tests/Support/ServicesTest.h"
#include "Tests/Tracking/HostileBodies.h"

namespace vorlane {

namespace {

class VLTagsServiceTest : public ServicesTest {
protected:
    /// The arguments of the last call of the handler.
    struct Received {
        int calls = 0;
        std::optional<std::string> value;
        std::optional<NSError> error;
    };

    VLTagsService::TagHandler tagHandler() {
        return [this](auto value, auto error) {
            EXPECT_TRUE(phone().mainQueue()->isCurrent());
            received = {received.calls + 1, value, error};
        };
    }
    VLTagsService::ErrorHandler errorHandler() {
        return [this](auto error) {
            EXPECT_TRUE(phone().mainQueue()->isCurrent());
            received = {received.calls + 1, std::nullopt, error};
        };
    }

    /// Reads a tag and answers the request.
    void getAnswered(const std::string& body, const std::string& name = "size") {
        service->getTag(name, tagHandler());
        session().answer("/tag/", 200, body);
        phone().runMainQueue();
    }

    void expectError(const std::string& domain, std::int64_t code, const std::string& description) {
        EXPECT_EQ(received.calls, 1);
        EXPECT_EQ(received.value, std::nullopt);
        ASSERT_TRUE(received.error);
        EXPECT_EQ(received.error->domain(), domain);
        EXPECT_EQ(received.error->code(), code);
        EXPECT_EQ(received.error->localizedDescription(), description);
    }

    Received received;
    std::shared_ptr<VLTagsService> service =
        std::make_shared<VLTagsService>(settings, urlBuilder, payloadBuilder, urlSession);
};

TEST_F(VLTagsServiceTest, AReadRequestsTheTagOfTheCurrentUser) {
    service->getTag("shoe size/eu", nullptr);
    const auto request = session().lastRequest();
    EXPECT_EQ(request.request.HTTPMethod, "GET");
    EXPECT_TRUE(request.request.URL.absoluteString().ends_with("/api/apps/K/tracking/T/tag/shoe%20size/eu"));
    EXPECT_FALSE(request.request.HTTPBody);
    EXPECT_TRUE(request.request.allHTTPHeaderFields.empty());
}

TEST_F(VLTagsServiceTest, AStringIsReturnedUnchanged) {
    getAnswered(R"({"value":"forty two"})");
    EXPECT_EQ(received.value, "forty two");
    EXPECT_FALSE(received.error);
}

TEST_F(VLTagsServiceTest, TheNumber42IsReturnedAsADecimalString) {
    getAnswered(R"({"value":42})");
    EXPECT_EQ(received.value, "42");
}

TEST_F(VLTagsServiceTest, OtherValuesAreReturnedAsTheirDescription) {
    const std::pair<const char*, const char*> cases[] = {{R"({"value":4.5})", "4.5"},
                                                         {R"({"value":-7})", "-7"},
                                                         {R"({"value":18446744073709551615})", "18446744073709551615"},
                                                         {R"({"value":5.0})", "5"},
                                                         {R"({"value":true})", "1"},
                                                         {R"({"value":[1,"a"]})", R"([1,"a"])"},
                                                         {R"({"value":{"a":null}})", R"({"a":null})"},
                                                         {R"({"value":""})", ""}};
    for (const auto& [body, text] : cases) {
        getAnswered(body);
        EXPECT_EQ(received.value, text) << body;
        EXPECT_FALSE(received.error) << body;
    }
}

TEST_F(VLTagsServiceTest, ReadingAnEmptyNameFailsOnTheMainQueue) {
    for (const auto& name : {std::optional<std::string>(), std::optional<std::string>("")}) {
        received = {};
        log().clear();
        service->getTag(name, tagHandler());
        EXPECT_EQ(received.calls, 0);
        phone().runMainQueue();
        expectError(VLErrorDomainTag, 0, "Cannot get tag with nil or blank name");
        EXPECT_EQ(log().count("Tags: cannot get tag with nil or blank name", VLLogLevel::Error), 1);
    }
    EXPECT_TRUE(session().requests().empty());
}

TEST_F(VLTagsServiceTest, AnUnknownTrackingIdIsNamedInTheError) {
    service->getTag("size", tagHandler());
    settings->setTrackingId("changed meanwhile");
    session().answer("/tag/", 200, R"({"error":"no such user","value":"x"})");
    phone().runMainQueue();
    expectError(VLErrorDomainTag, 1, "Could not get tag because the tracking id T was not found");
    EXPECT_EQ(log().count("Tags: tracking id T not found", VLLogLevel::Error), 1);
}

TEST_F(VLTagsServiceTest, AnErrorEntryOfAnyKindIsAnError) {
    for (const auto* body : {R"({"error":null})", R"({"error":false})", R"({"error":{}})"}) {
        received = {};
        getAnswered(body);
        expectError(VLErrorDomainTag, 1, "Could not get tag because the tracking id T was not found");
    }
}

TEST_F(VLTagsServiceTest, ATagThatDoesNotExistIsAnError) {
    getAnswered(R"({"value":null})");
    expectError(VLErrorDomainTag, 2, "Tag with name size does not exist");
    EXPECT_EQ(log().count("Tags: tag with name \"size\" does not exist", VLLogLevel::Error), 1);
}

TEST_F(VLTagsServiceTest, AnAnswerWithoutValueOrErrorIsNullopt) {
    getAnswered("{}");
    EXPECT_EQ(received.calls, 1);
    EXPECT_EQ(received.value, std::nullopt);
    EXPECT_FALSE(received.error);
}

TEST_F(VLTagsServiceTest, AFailedReadReturnsTheErrorOfTheRequest) {
    service->getTag("size", tagHandler());
    session().fail("/tag/", NSURLError::TimedOut);
    phone().runMainQueue();
    ASSERT_TRUE(received.error);
    EXPECT_EQ(received.error->domain(), NSURLErrorDomain);
    EXPECT_EQ(received.error->code(), -1001);
    EXPECT_EQ(log().count("Tags: error retrieving size tag.", VLLogLevel::Error), 1);
}

TEST_F(VLTagsServiceTest, ABodyThatIsNoObjectIsAnError) {
    for (const auto& body : bodiesThatAreNoObject()) {
        received = {};
        service->getTag("size", tagHandler());
        session().answerData("/tag/", 200, body.bytes);
        phone().runMainQueue();
        EXPECT_EQ(received.calls, 1) << body.name;
        EXPECT_TRUE(received.error) << body.name;
        EXPECT_FALSE(received.value) << body.name;
    }
}

TEST_F(VLTagsServiceTest, AValueNested200DeepIsReturnedAsItsDescription) {
    const auto nested = nestedJSON(200, "[", "", "]");
    getAnswered(R"({"value":)" + nested + "}");
    EXPECT_EQ(received.value, nested);
}

TEST_F(VLTagsServiceTest, AnAnswerNestedTooDeepIsAnError) {
    getAnswered(R"({"value":)" + nestedJSON(512, "[", "", "]") + "}");
    EXPECT_EQ(received.calls, 1);
    EXPECT_EQ(received.value, std::nullopt);
    EXPECT_TRUE(received.error);
}

TEST_F(VLTagsServiceTest, TheLastOfDuplicateKeysCounts) {
    getAnswered(R"({"value":"first","value":"last"})");
    EXPECT_EQ(received.value, "last");
}

TEST_F(VLTagsServiceTest, ASetSendsNameValueAndTypeAsJSON) {
    const std::pair<VLTagType, const char*> types[] = {
        {VLTagType::String, "string"}, {VLTagType::Numeric, "numeric"}, {VLTagType::Timestamp, "timestamp"}};
    for (const auto& [type, text] : types) {
        service->setTag("size", "42", type, nullptr);
        const auto request = session().lastRequest();
        EXPECT_EQ(request.request.HTTPMethod, "POST");
        EXPECT_EQ(request.request.URL, urlBuilder->updateTagURL());
        EXPECT_EQ(request.header("Content-Type"), "application/json");
        EXPECT_EQ(request.payload(), merged({{"name", "size"}, {"value", "42"}, {"type", text}}, basicFields(false)));
        EXPECT_EQ(log().count(std::string("Tags: set tag with Name: \"size\", Value: \"42\", Type: \"") + text + "\"",
                              VLLogLevel::Debug),
                  1);
    }
}

TEST_F(VLTagsServiceTest, AMissingValueIsLeftOut) {
    service->setTag("size", std::nullopt, VLTagType::String, nullptr);
    EXPECT_EQ(session().lastRequest().payload(), merged({{"name", "size"}, {"type", "string"}}, basicFields(false)));
    EXPECT_EQ(log().count("Tags: set tag with Name: \"size\", Value: \"(null)\", Type: \"string\"", VLLogLevel::Debug),
              1);
}

TEST_F(VLTagsServiceTest, SettingAnEmptyNameFailsOnTheMainQueue) {
    for (const auto& name : {std::optional<std::string>(), std::optional<std::string>("")}) {
        received = {};
        service->setTag(name, "42", VLTagType::Numeric, errorHandler());
        EXPECT_EQ(received.calls, 0);
        phone().runMainQueue();
        expectError(VLErrorDomainTag, 0, "Cannot set tag with nil or blank name");
    }
    EXPECT_TRUE(session().requests().empty());
    EXPECT_EQ(log().count("Tags: cannot set tag with nil or blank name", VLLogLevel::Error), 2);
}

TEST_F(VLTagsServiceTest, AnInvalidTypeThrowsBeforeAnyRequest) {
    try {
        service->setTag("size", "42", static_cast<VLTagType>(3), errorHandler());
        ADD_FAILURE() << "was taken";
    } catch (const NSException& exception) {
        EXPECT_EQ(exception.name(), "Invalid Tag Type Exception");
        EXPECT_EQ(exception.reason(), "An invalid VLTagType was provided to Vorlane.setTag(). Type was: 3");
    }
    phone().settle();
    EXPECT_TRUE(session().requests().empty());
    EXPECT_EQ(received.calls, 0);
    EXPECT_TRUE(log().lines().empty());
}

TEST_F(VLTagsServiceTest, TheExceptionNamesTheTypeAsAnUnsignedNumber) {
    try {
        VLTagsService::tagTypeToString(static_cast<VLTagType>(std::numeric_limits<std::uint64_t>::max()));
        ADD_FAILURE() << "was taken";
    } catch (const NSException& exception) {
        EXPECT_EQ(exception.reason(),
                  "An invalid VLTagType was provided to Vorlane.setTag(). Type was: 18446744073709551615");
    }
}

TEST_F(VLTagsServiceTest, TheTypesHaveTheirNames) {
    EXPECT_EQ(VLTagsService::tagTypeToString(static_cast<VLTagType>(0)), "string");
    EXPECT_EQ(VLTagsService::tagTypeToString(static_cast<VLTagType>(1)), "numeric");
    EXPECT_EQ(VLTagsService::tagTypeToString(static_cast<VLTagType>(2)), "timestamp");
}

TEST_F(VLTagsServiceTest, AnEmptyNameIsCheckedBeforeTheType) {
    EXPECT_NO_THROW(service->setTag("", "42", static_cast<VLTagType>(3), errorHandler()));
    phone().runMainQueue();
    EXPECT_EQ(received.calls, 1);
}

TEST_F(VLTagsServiceTest, TheResultOfASetIsReported) {
    service->setTag("size", "42", VLTagType::Numeric, errorHandler());
    session().answer("/tracking/T", 200);
    EXPECT_EQ(received.calls, 0);
    phone().runMainQueue();
    EXPECT_EQ(received.calls, 1);
    EXPECT_FALSE(received.error);

    received = {};
    service->setTag("size", "42", VLTagType::Numeric, errorHandler());
    session().answer("/tracking/T", 403);
    phone().runMainQueue();
    expectError(VLErrorDomainNetwork, 403, "Network request error with HTTP status code 403");
}

TEST_F(VLTagsServiceTest, ABatchIsSentUnchanged) {
    for (const Value& tags : {Value(Array{Dictionary{{"name", "a"}, {"value", "1"}, {"type", "numeric"}}, 7, nullptr}),
                              Value(Dictionary{{"a", "1"}}), Value("text"), Value(nullptr)}) {
        service->batchSetTags(tags, nullptr);
        EXPECT_EQ(session().lastRequest().request.HTTPMethod, "POST");
        EXPECT_EQ(session().lastRequest().request.URL, urlBuilder->updateTagURL());
        EXPECT_EQ(session().lastRequest().header("Content-Type"), "application/json");
        EXPECT_EQ(session().lastRequest().payload(), merged({{"tags", tags}}, basicFields(false)));
    }
    EXPECT_EQ(
        log().count(R"(Tags: batch set tags: [{"name":"a","type":"numeric","value":"1"},7,null])", VLLogLevel::Debug),
        1);
}

TEST_F(VLTagsServiceTest, TheResultOfABatchIsReported) {
    service->batchSetTags(Array(), errorHandler());
    session().fail("/tracking/T");
    EXPECT_EQ(received.calls, 0);
    phone().runMainQueue();
    EXPECT_EQ(received.calls, 1);
    ASSERT_TRUE(received.error);
    EXPECT_EQ(received.error->domain(), NSURLErrorDomain);
    EXPECT_EQ(received.error->code(), -1009);

    received = {};
    service->batchSetTags(Array(), errorHandler());
    session().answer("/tracking/T", 200, "whatever");
    phone().runMainQueue();
    EXPECT_EQ(received.calls, 1);
    EXPECT_FALSE(received.error);
}

TEST_F(VLTagsServiceTest, TheURLToDeleteAllTagsEndsInAStar) {
    service->deleteAllTagsWithCompletionHandler(errorHandler());
    const auto request = session().lastRequest();
    EXPECT_EQ(request.request.HTTPMethod, "DELETE");
    EXPECT_TRUE(request.request.URL.absoluteString().ends_with("/tracking/T/tag/*"));
    EXPECT_FALSE(request.request.HTTPBody);
    EXPECT_EQ(log().count("Tags: delete all tags for tracking ID T", VLLogLevel::Debug), 1);
    session().answer("/tag/*", 204);
    EXPECT_EQ(received.calls, 0);
    phone().runMainQueue();
    EXPECT_EQ(received.calls, 1);
    EXPECT_FALSE(received.error);
}

TEST_F(VLTagsServiceTest, AFailedDeletionReturnsTheErrorOfTheRequest) {
    service->deleteAllTagsWithCompletionHandler(errorHandler());
    session().answer("/tag/*", 503);
    phone().runMainQueue();
    expectError(VLErrorDomainNetwork, 503, "Network request error with HTTP status code 503");
}

TEST_F(VLTagsServiceTest, AStatusOutside200To299IsAnError) {
    service->getTag("size", tagHandler());
    session().answer("/tag/", 404, R"({"value":"x"})");
    phone().runMainQueue();
    expectError(VLErrorDomainNetwork, 404, "Network request error with HTTP status code 404");
    EXPECT_EQ(log().count("Tags: error retrieving size tag.", VLLogLevel::Error), 1);
}

TEST_F(VLTagsServiceTest, PreviousTrackingIdAndPhashAreSentWithEveryTag) {
    settings->setPrevTrackingId("before");
    settings->setPhash("hash");
    service->setTag("size", "42", VLTagType::Numeric, nullptr);
    EXPECT_EQ(session().lastRequest().payload(),
              merged({{"name", "size"}, {"value", "42"}, {"type", "numeric"}, {"prev_tracking_id", "before"}},
                     basicFields(false)));
}

TEST_F(VLTagsServiceTest, AFailedRequestIsNotRetried) {
    service->getTag("size", tagHandler());
    service->setTag("size", "42", VLTagType::Numeric, errorHandler());
    session().alwaysFail("/tracking/");
    phone().advance(3600);
    EXPECT_EQ(session().requests().size(), 2U);
    EXPECT_EQ(received.calls, 2);
}

TEST_F(VLTagsServiceTest, TheRequestOutlivesTheService) {
    service->getTag("size", tagHandler());
    service.reset();
    session().answer("/tag/", 200, R"({"value":"42"})");
    phone().runMainQueue();
    EXPECT_EQ(received.calls, 1);
    EXPECT_EQ(received.value, "42");
}

TEST_F(VLTagsServiceTest, RequestsOfSeveralThreadsAreAllSent) {
    session().alwaysAnswer("/tracking/", 200, R"({"value":"42"})");
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([this] {
            for (int j = 0; j < 10; ++j) {
                service->getTag("size", tagHandler());
                service->setTag("size", "42", VLTagType::Numeric, errorHandler());
                service->batchSetTags(Array(), errorHandler());
                service->deleteAllTagsWithCompletionHandler(errorHandler());
            }
        });
    }
    for (auto& thread : threads) thread.join();
    EXPECT_TRUE(phone().settle());
    EXPECT_EQ(session().requests().size(), 160U);
    EXPECT_EQ(received.calls, 160);
}

TEST_F(VLTagsServiceTest, EveryHandlerMayBeEmpty) {
    service->getTag("", nullptr);
    service->getTag("a", nullptr);
    session().answer("/tag/a", 200, R"({"value":null})");
    service->setTag("", "1", VLTagType::String, nullptr);
    service->setTag("a", "1", VLTagType::String, nullptr);
    service->batchSetTags(Array(), nullptr);
    service->deleteAllTagsWithCompletionHandler(nullptr);
    session().alwaysAnswer("/tracking/", 200);
    EXPECT_TRUE(phone().settle());
}

}  // namespace

}  // namespace vorlane
