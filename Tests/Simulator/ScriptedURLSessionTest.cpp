#include "Simulator/Platform/ScriptedURLSession.h"

#include <atomic>
#include <stdexcept>

#include "Tests/Support/SimulatedPhoneTest.h"

namespace vorlane {

namespace {

/// The arguments of a completion handler, and the number of its calls.
struct Outcome {
    int calls = 0;
    bool wasCurrentOnMain = true;
    std::optional<std::string> body;
    std::shared_ptr<const NSURLResponse> response;
    std::optional<NSError> error;

    std::int64_t status() const {
        const auto* http = dynamic_cast<const NSHTTPURLResponse*>(response.get());
        return http ? http->statusCode() : -1;
    }
    std::int64_t code() const { return error ? error->code() : 0; }
};

class ScriptedURLSessionTest : public SimulatedPhoneTest {
protected:
    std::shared_ptr<NSURLSessionDataTask> makeTask(const std::string& url, const std::shared_ptr<Outcome>& outcome) {
        return session().dataTaskWithRequest(
            {*NSURL::URLWithString(url)},
            [this, outcome](std::optional<Data> data, std::shared_ptr<const NSURLResponse> response,
                            std::optional<NSError> error) {
                ++outcome->calls;
                outcome->wasCurrentOnMain = phone().mainQueue()->isCurrent();
                outcome->body = data ? std::optional(std::string(data->begin(), data->end())) : std::nullopt;
                outcome->response = std::move(response);
                outcome->error = std::move(error);
            });
    }
    std::shared_ptr<Outcome> start(const std::string& url) {
        auto outcome = std::make_shared<Outcome>();
        makeTask(url, outcome)->resume();
        return outcome;
    }
};

TEST_F(ScriptedURLSessionTest, AnswerReturnsAfterTheHandlerHasRun) {
    const auto outcome = start("http://h/a");
    EXPECT_EQ(outcome->calls, 0);
    session().answer("/a", 201, "body");
    EXPECT_EQ(outcome->calls, 1);
    EXPECT_EQ(outcome->body, "body");
    EXPECT_EQ(outcome->status(), 201);
    EXPECT_EQ(outcome->response->URL().absoluteString(), "http://h/a");
    EXPECT_FALSE(outcome->error);
    EXPECT_FALSE(outcome->wasCurrentOnMain);
}

TEST_F(ScriptedURLSessionTest, AnswerWithoutBodyHasNoData) {
    const auto outcome = start("http://h/a");
    session().answer("/a", 204);
    EXPECT_EQ(outcome->body, std::nullopt);
    EXPECT_EQ(outcome->status(), 204);
}

TEST_F(ScriptedURLSessionTest, AnswersWithBytesUnchanged) {
    const auto empty = start("http://h/a");
    session().answerData("/a", 200, Data());
    EXPECT_EQ(empty->body, "");
    const auto zeros = start("http://h/b");
    session().answerData("/b", 200, Data{0, 255});
    EXPECT_EQ(zeros->body, std::string("\0\xff", 2));
}

TEST_F(ScriptedURLSessionTest, AnswersWithoutHTTPOrResponse) {
    const auto other = start("http://h/a");
    session().answerWithoutHTTP("/a", true);
    ASSERT_TRUE(other->response);
    EXPECT_EQ(other->status(), -1);
    const auto none = start("http://h/b");
    session().answerWithoutHTTP("/b", false);
    EXPECT_EQ(none->calls, 1);
    EXPECT_FALSE(none->response);
    EXPECT_FALSE(none->error);
}

TEST_F(ScriptedURLSessionTest, FailuresAreNSURLErrors) {
    const auto offline = start("http://h/a");
    session().fail("/a");
    EXPECT_EQ(offline->error->domain(), NSURLErrorDomain);
    EXPECT_EQ(offline->code(), -1009);
    EXPECT_EQ(offline->error->userInfo().at("NSErrorFailingURLStringKey"), Value("http://h/a"));
    const auto slow = start("http://h/b");
    session().fail("/b", NSURLError::TimedOut);
    EXPECT_EQ(slow->code(), -1001);
}

TEST_F(ScriptedURLSessionTest, AnswersTheOldestMatchingRequest) {
    const auto first = start("http://h/a?1");
    const auto second = start("http://h/a?2");
    const auto other = start("http://h/b");
    session().answer("/a", 200, "one");
    EXPECT_EQ(first->body, "one");
    EXPECT_EQ(second->calls, 0);
    session().answer("/a", 200, "two");
    EXPECT_EQ(second->body, "two");
    EXPECT_EQ(other->calls, 0);
    EXPECT_EQ(session().openRequests(), 1U);
}

TEST_F(ScriptedURLSessionTest, AnsweringWithoutAMatchingRequestThrows) {
    EXPECT_THROW(session().answer("/a", 200), std::logic_error);
    const auto outcome = start("http://h/a");
    session().answer("/a", 200);
    EXPECT_THROW(session().answer("/a", 200), std::logic_error);
    EXPECT_THROW(session().fail("/a"), std::logic_error);
    EXPECT_EQ(outcome->calls, 1);
}

TEST_F(ScriptedURLSessionTest, RulesAnswerOpenAndLaterRequests) {
    const auto open = start("http://h/a");
    session().alwaysAnswer("/a", 200, "rule");
    EXPECT_EQ(open->body, "rule");
    const auto later = start("http://h/a");
    const auto other = start("http://h/b");
    phone().settle();
    EXPECT_EQ(later->body, "rule");
    EXPECT_EQ(other->calls, 0);
}

TEST_F(ScriptedURLSessionTest, NewestMatchingRuleApplies) {
    session().alwaysAnswer("", 500);
    session().alwaysAnswer("/a", 200);
    session().alwaysFail("/a/b", NSURLError::CannotFindHost);
    const auto any = start("http://h/c");
    const auto narrower = start("http://h/a");
    const auto narrowest = start("http://h/a/b");
    phone().settle();
    EXPECT_EQ(any->status(), 500);
    EXPECT_EQ(narrower->status(), 200);
    EXPECT_EQ(narrowest->code(), -1003);
}

TEST_F(ScriptedURLSessionTest, RulesMayComputeAnswers) {
    const auto open = start("http://h/echo?one");
    session().alwaysAnswer("/echo", [](const RecordedRequest& request) {
        return ScriptedAnswer::withBody(202, request.request.URL.query().value_or("(none)"));
    });
    const auto later = start("http://h/echo?two");
    phone().settle();
    EXPECT_EQ(open->body, "one");
    EXPECT_EQ(later->body, "two");
    EXPECT_EQ(later->status(), 202);
}

TEST_F(ScriptedURLSessionTest, RulesMayMatchByMethod) {
    session().alwaysAnswerMatching(
        "reads", [](const NSURLRequest& request) { return request.HTTPMethod == "GET"; },
        [](const RecordedRequest& /*request*/) {
            return ScriptedAnswer::withJSON(Dictionary{{"a", "\xff"}});
        });
    const auto read = start("http://h/a");
    // Outlives the test: the end of the phone cancels the open request, whose handler counts once more.
    const auto answers = std::make_shared<std::atomic<int>>(0);
    session()
        .dataTaskWithRequest({.URL = *NSURL::URLWithString("http://h/a"), .HTTPMethod = "PUT"},
                             [answers](auto, auto, auto) { ++*answers; })
        ->resume();
    phone().settle();
    EXPECT_EQ(read->body, "{\"a\":\"\xEF\xBF\xBD\"}");
    EXPECT_EQ(*answers, 0);
    EXPECT_EQ(session().openRequests(), 1U);
}

TEST_F(ScriptedURLSessionTest, RulesReplaceTheRuleOfTheirName) {
    session().alwaysAnswer("/a", 200, "first");
    session().alwaysFail("/");
    session().alwaysAnswer("/a", 200, "second");
    const auto outcome = start("http://h/a");
    phone().settle();
    EXPECT_EQ(outcome->body, "second");
}

TEST_F(ScriptedURLSessionTest, MatchersMayCallTheSession) {
    session().alwaysAnswerMatching(
        "first only", [this](const NSURLRequest& /*request*/) { return session().requests().size() == 1; },
        [](const RecordedRequest& /*request*/) { return ScriptedAnswer(); });
    const auto first = start("http://h/a");
    const auto second = start("http://h/a");
    phone().settle();
    EXPECT_EQ(first->calls, 1);
    EXPECT_EQ(second->calls, 0);
}

TEST_F(ScriptedURLSessionTest, ForgettingRulesLeavesRequestsOpen) {
    session().alwaysAnswer("", 200);
    session().forgetRules();
    const auto outcome = start("http://h/a");
    phone().settle();
    EXPECT_EQ(outcome->calls, 0);
    EXPECT_EQ(session().openRequests(), 1U);
}

TEST_F(ScriptedURLSessionTest, SuspendedTasksSendNoRequest) {
    const auto outcome = std::make_shared<Outcome>();
    const auto task = makeTask("http://h/a", outcome);
    EXPECT_TRUE(session().requests().empty());
    task->resume();
    task->resume();
    EXPECT_EQ(session().requests().size(), 1U);
    session().answer("/a", 200);
    EXPECT_EQ(outcome->calls, 1);
}

TEST_F(ScriptedURLSessionTest, CancelledRequestsEndOnceAsCancelled) {
    const auto outcome = std::make_shared<Outcome>();
    const auto task = makeTask("http://h/a", outcome);
    task->resume();
    task->cancel();
    task->cancel();
    phone().settle();
    EXPECT_EQ(outcome->calls, 1);
    EXPECT_EQ(outcome->code(), -999);
    EXPECT_TRUE(session().lastRequest().cancelled);
    EXPECT_FALSE(session().lastRequest().answered);
    EXPECT_EQ(session().openRequests(), 0U);
}

TEST_F(ScriptedURLSessionTest, CancellingASuspendedTaskRunsItsHandler) {
    const auto outcome = std::make_shared<Outcome>();
    const auto task = makeTask("http://h/a", outcome);
    task->cancel();
    task->resume();
    phone().settle();
    EXPECT_EQ(outcome->calls, 1);
    EXPECT_EQ(outcome->code(), -999);
}

TEST_F(ScriptedURLSessionTest, CancellingAfterTheAnswerHasNoEffect) {
    const auto outcome = std::make_shared<Outcome>();
    const auto task = makeTask("http://h/a", outcome);
    task->resume();
    session().answer("/a", 200);
    task->cancel();
    phone().settle();
    EXPECT_EQ(outcome->calls, 1);
    EXPECT_EQ(outcome->status(), 200);
    EXPECT_TRUE(session().lastRequest().answered);
    EXPECT_FALSE(session().lastRequest().cancelled);
}

TEST_F(ScriptedURLSessionTest, TasksLiveWhileTheirRequestIsOpen) {
    const auto outcome = std::make_shared<Outcome>();
    auto task = makeTask("http://h/a", outcome);
    const std::weak_ptr<NSURLSessionDataTask> watched = task;
    task->resume();
    task = nullptr;
    EXPECT_FALSE(watched.expired());
    session().answer("/a", 200);
    EXPECT_TRUE(watched.expired());
}

TEST_F(ScriptedURLSessionTest, HandlersAreReleasedAfterTheyHaveRun) {
    auto held = std::make_shared<int>(1);
    const std::weak_ptr<int> watched = held;
    session().dataTaskWithRequest({*NSURL::URLWithString("http://h/a")}, [held](auto, auto, auto) {})->resume();
    held = nullptr;
    EXPECT_FALSE(watched.expired());
    session().answer("/a", 200);
    EXPECT_TRUE(watched.expired());
}

TEST_F(ScriptedURLSessionTest, HandlersMayStartRequests) {
    const auto second = std::make_shared<Outcome>();
    session()
        .dataTaskWithRequest({*NSURL::URLWithString("http://h/a")},
                             [this, second](auto, auto, auto) { makeTask("http://h/b", second)->resume(); })
        ->resume();
    session().answer("/a", 200);
    session().answer("/b", 200);
    EXPECT_EQ(second->calls, 1);
}

TEST_F(ScriptedURLSessionTest, HandlersMayBeEmpty) {
    session().dataTaskWithRequest({*NSURL::URLWithString("http://h/a")}, nullptr)->resume();
    session().answer("/a", 200);
    EXPECT_EQ(session().openRequests(), 0U);
}

TEST_F(ScriptedURLSessionTest, InvalidatingCancelsOpenAndLaterRequests) {
    const auto open = start("http://h/a");
    session().alwaysAnswer("/b", 200);
    session().invalidateAndCancel();
    EXPECT_EQ(open->code(), -999);
    const auto late = start("http://h/b");
    phone().settle();
    EXPECT_EQ(late->code(), -999);
    EXPECT_TRUE(session().lastRequest("/b").cancelled);
}

TEST_F(ScriptedURLSessionTest, RequestsAreRecordedInOrder) {
    start("http://h/a");
    start("http://h/b");
    start("http://h/a2");
    EXPECT_EQ(session().requests().size(), 3U);
    EXPECT_EQ(session().requests("/a").size(), 2U);
    EXPECT_EQ(session().lastRequest("/a").request.URL.absoluteString(), "http://h/a2");
    EXPECT_THROW(session().lastRequest("/c"), std::logic_error);
}

TEST_F(ScriptedURLSessionTest, AcceptsRequestsFromManyThreads) {
    session().alwaysAnswer("", 200);
    std::atomic<int> calls = 0;
    std::vector<std::shared_ptr<DispatchQueue>> queues;
    for (int i = 0; i < 4; ++i) {
        queues.push_back(phone().makeSerialQueue("sender"));
        for (int j = 0; j < 50; ++j) {
            queues.back()->post([&] {
                session()
                    .dataTaskWithRequest({*NSURL::URLWithString("http://h/a")}, [&](auto, auto, auto) { ++calls; })
                    ->resume();
            });
        }
    }
    EXPECT_TRUE(phone().settle(60));
    EXPECT_EQ(calls, 200);
}

RecordedRequest withBody(const std::string& text) {
    RecordedRequest recorded{{*NSURL::URLWithString("http://h/a"), "POST", {{"Content-Type", "x"}}}};
    recorded.request.HTTPBody = Data(text.begin(), text.end());
    return recorded;
}

TEST(RecordedRequestTest, PayloadIsPlainOrFormEncodedJSON) {
    EXPECT_EQ(withBody(R"({"a":1})").payload(), Value(Dictionary{{"a", 1}}));
    EXPECT_EQ(withBody("payload=%7B%22a%22%3A%22%C3%a9+%22%7D").payload(), Value(Dictionary{{"a", "\xc3\xa9+"}}));
    EXPECT_EQ(withBody("{").payload(), Value());
    EXPECT_EQ(withBody("payload=%7").payload(), Value());
    EXPECT_EQ(withBody("").payload(), Value());
    EXPECT_EQ(RecordedRequest{{*NSURL::URLWithString("http://h/a")}}.payload(), Value());
}

TEST(RecordedRequestTest, ReadsBodyAndHeaders) {
    EXPECT_EQ(withBody("text").bodyText(), "text");
    EXPECT_EQ(RecordedRequest{{*NSURL::URLWithString("http://h/a")}}.bodyText(), "");
    EXPECT_EQ(withBody("").header("Content-Type"), "x");
    EXPECT_EQ(withBody("").header("Accept"), std::nullopt);
}

}  // namespace

}  // namespace vorlane
