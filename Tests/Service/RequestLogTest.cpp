#include "Simulator/Service/Http/RequestLog.h"

#include <gtest/gtest.h>

#include <future>

#include "Simulator/Service/Http/RequestFilter.h"

namespace vorlane::service {
namespace {

RecordedRequest recordWithBody(std::string body) {
    RecordedRequest record;
    record.request.body = std::move(body);
    return record;
}

TEST(RequestLogTest, DropsTheOldestBeyond10000Requests) {
    RequestLog log;
    for (int i = 0; i < 10'010; ++i) log.add({});
    const auto records = log.requests({});
    ASSERT_EQ(records.size(), 10'000u);
    EXPECT_EQ(records.front()->number, 11);
    EXPECT_EQ(records.back()->number, 10'010);
}

TEST(RequestLogTest, DropsTheOldestBeyond256MiB) {
    RequestLog log;
    for (int i = 0; i < 9; ++i) log.add(recordWithBody(std::string(32UL << 20U, 'x')));
    EXPECT_EQ(log.requests({}).size(), 8u);
    log.clear();
    log.add(recordWithBody("x"));
    EXPECT_EQ(log.requests({}).size(), 1u);
    EXPECT_EQ(log.requests({}).front()->number, 10);
}

TEST(RequestLogTest, HeadersCountTowardsTheLimit) {
    RequestLog log;
    for (int i = 0; i < 9; ++i) {
        RecordedRequest record;
        record.request.headers["X-Large"] = std::string(32UL << 20U, 'x');
        log.add(std::move(record));
    }
    EXPECT_EQ(log.requests({}).size(), 7u);
}

TEST(RequestLogTest, ClosingEndsEveryWait) {
    RequestLog log;
    auto waiting = std::async(std::launch::async, [&log] { return log.waitFor(1, {}, 600); });
    log.close();
    EXPECT_TRUE(waiting.get().empty());
    EXPECT_TRUE(log.waitFor(1, {}, 600).empty());
}

TEST(RequestLogTest, ListenersReceiveEachRequestWithItsNumber) {
    std::vector<std::int64_t> numbers;
    RequestLog log([&numbers](const RecordedRequest& request) { numbers.push_back(request.number); });
    log.add({});
    log.add({});
    EXPECT_EQ(numbers, (std::vector<std::int64_t>{1, 2}));
}

}  // namespace
}  // namespace vorlane::service
