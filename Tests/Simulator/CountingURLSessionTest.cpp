#include "Simulator/Platform/Internal/CountingURLSession.h"

#include "Tests/Support/SimulatedPhoneTest.h"

namespace vorlane {

namespace {

class CountingURLSessionTest : public SimulatedPhoneTest {
protected:
    std::shared_ptr<NSURLSessionDataTask> makeTask(NSURLSession::CompletionHandler handler = nullptr) {
        return counting.dataTaskWithRequest({*NSURL::URLWithString("http://h/a")}, std::move(handler));
    }

    std::shared_ptr<RequestCount> count = std::make_shared<RequestCount>();
    int completions = 0;
    CountingURLSession counting{phone().makeURLSession({}), count, [this] { ++completions; }};
};

TEST_F(CountingURLSessionTest, RequestsCountFromStartUntilHandlerHasRun) {
    bool wasCounted = false;
    const auto task = makeTask([&](auto, auto, auto) { wasCounted = !count->isZero(); });
    EXPECT_TRUE(count->isZero());
    task->resume();
    EXPECT_FALSE(count->isZero());
    session().answer("/a", 200);
    EXPECT_TRUE(wasCounted);
    EXPECT_TRUE(count->isZero());
    EXPECT_EQ(completions, 1);
}

TEST_F(CountingURLSessionTest, ForwardsAnswersUnchanged) {
    std::optional<Data> received;
    std::int64_t status = 0;
    makeTask([&](std::optional<Data> data, const std::shared_ptr<const NSURLResponse>& response, auto) {
        received = std::move(data);
        status = dynamic_cast<const NSHTTPURLResponse&>(*response).statusCode();
    })->resume();
    session().answer("/a", 418, "x");
    EXPECT_EQ(received, Data{'x'});
    EXPECT_EQ(status, 418);
}

TEST_F(CountingURLSessionTest, ResumingTwiceCountsOnce) {
    const auto task = makeTask();
    task->resume();
    task->resume();
    session().answer("/a", 200);
    EXPECT_TRUE(count->isZero());
    EXPECT_EQ(session().requests().size(), 1U);
}

TEST_F(CountingURLSessionTest, CancelledRequestsCountUntilTheyEnd) {
    std::int64_t code = 0;
    const auto task = makeTask([&](auto, auto, const std::optional<NSError>& error) { code = error->code(); });
    task->resume();
    task->cancel();
    phone().settle();
    EXPECT_EQ(code, -999);
    EXPECT_TRUE(count->isZero());
    EXPECT_EQ(completions, 1);
}

TEST_F(CountingURLSessionTest, CancellingASuspendedTaskLeavesTheCountAt0) {
    const auto task = makeTask();
    task->cancel();
    task->resume();
    phone().settle();
    EXPECT_TRUE(count->isZero());
    EXPECT_EQ(completions, 1);
}

TEST_F(CountingURLSessionTest, UnreferencedTasksLiveUntilTheirHandlerHasRun) {
    auto task = makeTask();
    const std::weak_ptr<NSURLSessionDataTask> watched = task;
    task->resume();
    task = nullptr;
    EXPECT_FALSE(watched.expired());
    session().answer("/a", 200);
    EXPECT_TRUE(watched.expired());
}

TEST_F(CountingURLSessionTest, TasksThatAreNeverResumedAreReleased) {
    auto held = std::make_shared<int>(1);
    const std::weak_ptr<int> watched = held;
    makeTask([held](auto, auto, auto) {});
    held = nullptr;
    EXPECT_TRUE(watched.expired());
    EXPECT_TRUE(count->isZero());
}

}  // namespace

}  // namespace vorlane
