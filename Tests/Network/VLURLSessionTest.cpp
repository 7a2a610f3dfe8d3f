#include "Network/VLURLSession.h"

#include <atomic>
#include <limits>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "Public/VLErrorDomains.h"
#include "Tests/Network/NetworkTestSupport.h"
#include "Tests/Support/SimulatedPhoneTest.h"

namespace vorlane {
namespace {

using Headers = std::map<std::string, std::string>;

constexpr const char* kNoHTTPResponse =
    "No HTTP status code found: no server response received, or received a response object of unexpected type.";

class VLURLSessionTest : public SimulatedPhoneTest {
protected:
    ~VLURLSessionTest() override {
        // The handlers of open requests write into this object.
        session().invalidateAndCancel();
        phone().settle();
    }

    NSURLRequest lastRequest() { return session().lastRequest().request; }

    void expectNetworkError(const std::optional<NSError>& error, std::int64_t code, const std::string& description) {
        ASSERT_TRUE(error);
        EXPECT_EQ(*error, NSError(VLErrorDomainNetwork, code, {{NSLocalizedDescriptionKey, description}}));
    }

    const NSURL url = urlOf("https://h.test/a?b=c");
    VLURLSession urlSession{phone().makeURLSession({10.0}), phone().application()};
    std::vector<TextAnswer> texts;
    std::vector<JSONAnswer> objects;
};

// Requests.

TEST_F(VLURLSessionTest, GETSendsNoBodyAndSetsNoHeader) {
    EXPECT_NE(urlSession.GET(url, into(texts)), nullptr);
    EXPECT_EQ(session().requests().size(), 1u);
    EXPECT_EQ(lastRequest().URL, url);
    EXPECT_EQ(lastRequest().HTTPMethod, "GET");
    EXPECT_EQ(lastRequest().allHTTPHeaderFields, Headers());
    EXPECT_FALSE(lastRequest().HTTPBody);
}

TEST_F(VLURLSessionTest, GETJSONSendsTheSameAsGET) {
    EXPECT_NE(urlSession.GETJSON(url, into(objects)), nullptr);
    EXPECT_EQ(lastRequest().URL, url);
    EXPECT_EQ(lastRequest().HTTPMethod, "GET");
    EXPECT_EQ(lastRequest().allHTTPHeaderFields, Headers());
    EXPECT_FALSE(lastRequest().HTTPBody);
}

TEST_F(VLURLSessionTest, DELETESendsNoBodyAndSetsNoHeader) {
    EXPECT_NE(urlSession.DELETE(url, into(texts)), nullptr);
    EXPECT_EQ(lastRequest().URL, url);
    EXPECT_EQ(lastRequest().HTTPMethod, "DELETE");
    EXPECT_EQ(lastRequest().allHTTPHeaderFields, Headers());
    EXPECT_FALSE(lastRequest().HTTPBody);
}

TEST_F(VLURLSessionTest, AFormHoldsTheEncodedJSONInOneField) {
    EXPECT_NE(urlSession.POST(url, {{"a", "b c"}}, true, into(texts)), nullptr);
    EXPECT_EQ(lastRequest().URL, url);
    EXPECT_EQ(lastRequest().HTTPMethod, "POST");
    EXPECT_EQ(lastRequest().allHTTPHeaderFields, (Headers{{"Content-Type", "application/x-www-form-urlencoded"}}));
    EXPECT_EQ(session().lastRequest().bodyText(), "payload=%7B%22a%22%3A%22b%20c%22%7D");
}

TEST_F(VLURLSessionTest, AFormEncodesAllButLettersDigitsAnd4Signs) {
    urlSession.POST(url, {{"-_.*", "Az09~!'()+&=%/\xC3\xA9"}}, true, into(texts));
    EXPECT_EQ(session().lastRequest().bodyText(),
              "payload=%7B%22-_.*%22%3A%22Az09%7E%21%27%28%29%2B%26%3D%25%2F%C3%A9%22%7D");
}

TEST_F(VLURLSessionTest, POSTAsJSONSendsCompactJSON) {
    EXPECT_NE(urlSession.POST(url, {{"a", "b c"}, {"n", {{"x", {1, 2.5, true, nullptr}}}}}, false, into(texts)),
              nullptr);
    EXPECT_EQ(lastRequest().URL, url);
    EXPECT_EQ(lastRequest().HTTPMethod, "POST");
    EXPECT_EQ(lastRequest().allHTTPHeaderFields, (Headers{{"Content-Type", "application/json"}}));
    EXPECT_EQ(session().lastRequest().bodyText(), R"({"a":"b c","n":{"x":[1,2.5,true,null]}})");
}

TEST_F(VLURLSessionTest, POSTWithJSONResponseSendsTheSameAsPOST) {
    EXPECT_NE(urlSession.POSTWithJSONResponse(url, {{"a", 1}}, false, into(objects)), nullptr);
    EXPECT_EQ(lastRequest().HTTPMethod, "POST");
    EXPECT_EQ(lastRequest().allHTTPHeaderFields, (Headers{{"Content-Type", "application/json"}}));
    EXPECT_EQ(session().lastRequest().bodyText(), R"({"a":1})");

    urlSession.POSTWithJSONResponse(url, {{"a", 1}}, true, into(objects));
    EXPECT_EQ(lastRequest().allHTTPHeaderFields, (Headers{{"Content-Type", "application/x-www-form-urlencoded"}}));
    EXPECT_EQ(session().lastRequest().bodyText(), "payload=%7B%22a%22%3A1%7D");
}

TEST_F(VLURLSessionTest, PUTAlwaysSendsJSON) {
    EXPECT_NE(urlSession.PUT(url, {{"a", "b c"}}, into(texts)), nullptr);
    EXPECT_EQ(lastRequest().URL, url);
    EXPECT_EQ(lastRequest().HTTPMethod, "PUT");
    EXPECT_EQ(lastRequest().allHTTPHeaderFields, (Headers{{"Content-Type", "application/json"}}));
    EXPECT_EQ(session().lastRequest().bodyText(), R"({"a":"b c"})");
}

TEST_F(VLURLSessionTest, AnEmptyPayloadIsAnEmptyObject) {
    urlSession.PUT(url, {}, into(texts));
    EXPECT_EQ(session().lastRequest().bodyText(), "{}");
}

TEST_F(VLURLSessionTest, AnInvalidPayloadIsSentAsAnEmptyString) {
    const std::vector<Dictionary> payloads = {
        {{"a", std::numeric_limits<double>::quiet_NaN()}}, {{"a", Value::binary({1, 2})}}, {{"a", "\xFF"}}};
    for (const Dictionary& payload : payloads) {
        texts.clear();
        urlSession.POST(url, payload, false, into(texts));
        EXPECT_EQ(session().lastRequest().bodyText(), "");
        EXPECT_EQ(session().lastRequest().header("Content-Type"), "application/json");
        session().answer("h.test", 200, "ok");

        urlSession.POST(url, payload, true, into(texts));
        EXPECT_EQ(session().lastRequest().bodyText(), "payload=");
        EXPECT_EQ(session().lastRequest().header("Content-Type"), "application/x-www-form-urlencoded");
        session().answer("h.test", 200, "ok");

        ASSERT_EQ(texts.size(), 2u);
        EXPECT_EQ(texts.back().result, "ok");
    }
}

// Answers.

TEST_F(VLURLSessionTest, AnAnswerReachesTheHandlerOnce) {
    urlSession.GET(url, into(texts));
    EXPECT_TRUE(texts.empty());
    session().answer("h.test", 200, "hei \xC3\xA5");
    ASSERT_EQ(texts.size(), 1u);
    EXPECT_EQ(texts[0].result, "hei \xC3\xA5");
    EXPECT_EQ(texts[0].status, 200);
    EXPECT_FALSE(texts[0].error);
}

TEST_F(VLURLSessionTest, EveryOperationReturnsItsAnswer) {
    urlSession.DELETE(url, into(texts));
    urlSession.PUT(url, {}, into(texts));
    urlSession.POST(url, {}, true, into(texts));
    for (const char* body : {"d", "pu", "po"}) session().answer("h.test", 201, body);
    ASSERT_EQ(texts.size(), 3u);
    EXPECT_EQ(texts[0].result, "d");
    EXPECT_EQ(texts[1].result, "pu");
    EXPECT_EQ(texts[2].result, "po");
}

TEST_F(VLURLSessionTest, AnEmptyBodyIsNullopt) {
    urlSession.GET(url, into(texts));
    session().answerData("h.test", 204, std::nullopt);
    urlSession.GET(url, into(texts));
    session().answerData("h.test", 204, Data());
    ASSERT_EQ(texts.size(), 2u);
    for (const TextAnswer& answer : texts) {
        EXPECT_FALSE(answer.result);
        EXPECT_EQ(answer.status, 204);
        EXPECT_FALSE(answer.error);
    }
}

TEST_F(VLURLSessionTest, ABodyThatIsNotUTF8IsNullopt) {
    urlSession.GET(url, into(texts));
    session().answerData("h.test", 200, Data{'a', 0xC3, 0x28});
    ASSERT_EQ(texts.size(), 1u);
    EXPECT_FALSE(texts[0].result);
    EXPECT_EQ(texts[0].status, 200);
    EXPECT_FALSE(texts[0].error);
}

TEST_F(VLURLSessionTest, AJSONHandlerReceivesTheObject) {
    urlSession.GETJSON(url, into(objects));
    session().answer("h.test", 200, R"({"a":[1,{"b":null}]})");
    urlSession.POSTWithJSONResponse(url, {}, false, into(objects));
    session().answer("h.test", 299, R"( {} )");
    ASSERT_EQ(objects.size(), 2u);
    EXPECT_EQ(objects[0].result, (Dictionary{{"a", Array{1, Value{{"b", nullptr}}}}}));
    EXPECT_EQ(objects[0].status, 200);
    EXPECT_FALSE(objects[0].error);
    EXPECT_EQ(objects[1].result, Dictionary());
    EXPECT_EQ(objects[1].status, 299);
    EXPECT_FALSE(objects[1].error);
}

TEST_F(VLURLSessionTest, AnEmptyBodyIsAnErrorForAJSONHandler) {
    urlSession.GETJSON(url, into(objects));
    session().answerData("h.test", 204, std::nullopt);
    urlSession.POSTWithJSONResponse(url, {}, false, into(objects));
    session().answer("h.test", 204);
    ASSERT_EQ(objects.size(), 2u);
    for (const JSONAnswer& answer : objects) {
        EXPECT_FALSE(answer.result);
        EXPECT_EQ(answer.status, 204);
        expectNetworkError(answer.error, 0, "Cannot parse JSON object from nil or empty string");
    }
}

TEST_F(VLURLSessionTest, AStatusOutside200To299IsAnErrorWithThatCode) {
    for (const std::int64_t status : {0, 100, 199, 300, 304, 400, 401, 404, 500, 503, 999}) {
        SCOPED_TRACE(status);
        texts.clear();
        urlSession.GET(url, into(texts));
        session().answer("h.test", status, "the body is dropped");
        ASSERT_EQ(texts.size(), 1u);
        EXPECT_FALSE(texts[0].result);
        EXPECT_EQ(texts[0].status, status);
        expectNetworkError(texts[0].error, status,
                           "Network request error with HTTP status code " + std::to_string(status));
    }
}

TEST_F(VLURLSessionTest, AnAnswerThatIsNotHTTPIsAnError) {
    for (const bool withResponse : {true, false}) {
        SCOPED_TRACE(withResponse);
        texts.clear();
        urlSession.GET(url, into(texts));
        session().answerWithoutHTTP("h.test", withResponse);
        ASSERT_EQ(texts.size(), 1u);
        EXPECT_FALSE(texts[0].result);
        EXPECT_EQ(texts[0].status, -1);
        expectNetworkError(texts[0].error, 1, kNoHTTPResponse);
    }
}

TEST_F(VLURLSessionTest, ATransportErrorIsPassedOnUnchanged) {
    for (const NSURLError code : {NSURLError::NotConnectedToInternet, NSURLError::TimedOut, NSURLError::Cancelled}) {
        texts.clear();
        urlSession.GET(url, into(texts));
        session().fail("h.test", code);
        ASSERT_EQ(texts.size(), 1u);
        EXPECT_FALSE(texts[0].result);
        EXPECT_EQ(texts[0].status, -1);
        ASSERT_TRUE(texts[0].error);
        EXPECT_EQ(texts[0].error->domain(), NSURLErrorDomain);
        EXPECT_EQ(texts[0].error->code(), static_cast<std::int64_t>(code));
    }
}

TEST_F(VLURLSessionTest, AJSONHandlerReceivesTheErrorOfTheRequest) {
    urlSession.GETJSON(url, into(objects));
    session().answer("h.test", 404, "{}");
    urlSession.POSTWithJSONResponse(url, {}, true, into(objects));
    session().fail("h.test", NSURLError::TimedOut);
    ASSERT_EQ(objects.size(), 2u);
    EXPECT_FALSE(objects[0].result);
    EXPECT_EQ(objects[0].status, 404);
    expectNetworkError(objects[0].error, 404, "Network request error with HTTP status code 404");
    EXPECT_FALSE(objects[1].result);
    EXPECT_EQ(objects[1].status, -1);
    ASSERT_TRUE(objects[1].error);
    EXPECT_EQ(objects[1].error->code(), -1001);
}

TEST_F(VLURLSessionTest, NoRequestIsRetried) {
    urlSession.GET(url, into(texts));
    session().fail("h.test");
    urlSession.GET(url, into(texts));
    session().answer("h.test", 503);
    phone().advance(3600);
    EXPECT_EQ(session().requests().size(), 2u);
    EXPECT_EQ(texts.size(), 2u);
}

TEST_F(VLURLSessionTest, CancellingTheReturnedTaskFailsTheRequest) {
    const auto task = urlSession.GET(url, into(texts));
    task->cancel();
    phone().settle();
    ASSERT_EQ(texts.size(), 1u);
    EXPECT_EQ(texts[0].status, -1);
    ASSERT_TRUE(texts[0].error);
    EXPECT_EQ(texts[0].error->code(), -999);
}

TEST_F(VLURLSessionTest, EveryHandlerMayBeEmpty) {
    urlSession.GET(url, {});
    urlSession.GETJSON(url, {});
    urlSession.DELETE(url, {});
    urlSession.POST(url, {}, true, {});
    urlSession.POSTWithJSONResponse(url, {}, true, {});
    urlSession.PUT(url, {}, {});
    for (int i = 0; i < 5; ++i) session().answer("h.test", 200, "not JSON");
    session().answer("h.test", 500);
    EXPECT_EQ(session().openRequests(), 0u);
    EXPECT_EQ(log().linesContaining("RSPN").size(), 6u);
}

TEST_F(VLURLSessionTest, HandlersRunOffTheMainThread) {
    std::thread::id handlerThread;
    urlSession.GET(url, [&](auto, auto, auto) { handlerThread = std::this_thread::get_id(); });
    session().answer("h.test", 200);
    EXPECT_NE(handlerThread, std::thread::id());
    EXPECT_NE(handlerThread, std::this_thread::get_id());
}

TEST_F(VLURLSessionTest, AHandlerRunsAfterTheSessionIsDestroyed) {
    auto shortLived = std::make_unique<VLURLSession>(phone().makeURLSession({10.0}), phone().application());
    shortLived->GET(url, into(texts));
    shortLived->GETJSON(url, into(objects));
    shortLived.reset();
    session().answer("h.test", 200, "late");
    session().answer("h.test", 200, R"({"late":true})");
    ASSERT_EQ(texts.size(), 1u);
    EXPECT_EQ(texts[0].result, "late");
    ASSERT_EQ(objects.size(), 1u);
    EXPECT_EQ(objects[0].result, (Dictionary{{"late", true}}));
    EXPECT_TRUE(phone().application()->backgroundTasks().empty());
}

TEST_F(VLURLSessionTest, AHandlerMayStartTheNextRequest) {
    urlSession.GET(url, [this](auto, auto, auto) { urlSession.GET(urlOf("https://next.test"), into(texts)); });
    session().answer("h.test", 200);
    session().answer("next.test", 200, "second");
    ASSERT_EQ(texts.size(), 1u);
    EXPECT_EQ(texts[0].result, "second");
}

TEST_F(VLURLSessionTest, ManyThreadsMayStartRequests) {
    constexpr int kThreads = 4;
    constexpr int kRequestsEach = 50;
    session().alwaysAnswer("h.test", 200, "ok");
    std::atomic<int> answers = 0;
    std::vector<std::thread> threads;
    for (int thread = 0; thread < kThreads; ++thread)
        threads.emplace_back([&] {
            for (int i = 0; i < kRequestsEach; ++i)
                urlSession.POST(url, {{"i", i}}, true, [&](auto text, auto, auto) { answers += text == "ok" ? 1 : 0; });
        });
    for (std::thread& thread : threads) thread.join();
    phone().settle();
    EXPECT_EQ(answers, kThreads * kRequestsEach);
    EXPECT_TRUE(phone().application()->backgroundTasks().empty());
    for (int id = 1; id <= kThreads * kRequestsEach; ++id) {
        std::string digits = std::to_string(id);
        digits.insert(0, 4 - digits.size(), '0');
        EXPECT_EQ(log().count("RQST" + digits + " POST https://h.test/a?b=c", VLLogLevel::Debug), 1);
        EXPECT_EQ(log().count("RSPN" + digits + " POST SUCCESS 200 https://h.test/a?b=c", VLLogLevel::Debug), 1);
    }
}

}  // namespace
}  // namespace vorlane
