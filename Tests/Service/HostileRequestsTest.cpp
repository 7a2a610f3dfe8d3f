#include <string>

#include "Simulator/Service/Http/RequestFilter.h"
#include "Tests/Service/RawConnection.h"
#include "Tests/Service/ServiceTest.h"

namespace vorlane::service {
namespace {

constexpr std::size_t kLargestBody = 32UL << 20U;

class HostileRequestsTest : public ServiceTest {
protected:
    ~HostileRequestsTest() override { expectOK(client().get("/_admin/health")); }

    std::string rawAnswer(const std::string& bytes) const {
        return RawConnection(port()).send(bytes).end().receiveAll();
    }

    static std::string statusLine(const std::string& answer) { return answer.substr(0, answer.find("\r\n")); }

    static std::string nested(std::size_t depth) {
        return R"({"name":"a","extra":)" + std::string(depth - 1, '[') + std::string(depth - 1, ']') + "}";
    }

    ServiceAnswer postTags(const std::string& body) const {
        return client().post("/api/apps/K/tracking/T", body, "application/json");
    }
};

TEST_F(HostileRequestsTest, NestingUpToTheLimitIsAccepted) {
    expectOK(postTags(nested(512)));
    EXPECT_EQ(lastRecord()["payload"].dump(), Value::parse(nested(512)).dump());
}

TEST_F(HostileRequestsTest, DeeperNestingIsRefused) {
    EXPECT_EQ(postTags(nested(513)).status, 400);
    EXPECT_EQ(postTags(nested(100'000)).status, 400);
    EXPECT_EQ(postTags(std::string(100'000, '{')).status, 400);
    EXPECT_EQ(listOf("requests", "?status=400").size(), 3u);
}

TEST_F(HostileRequestsTest, TooManyValuesAreRefused) {
    std::string body = R"({"name":"a","extra":[1)";
    for (int i = 0; i < 1'000'000; ++i) body += ",1";
    expectError(postTags(body + "]}"), 400, "the JSON has too many values");
}

TEST_F(HostileRequestsTest, SeparatorsInStringsAreNotCounted) {
    expectOK(postTags(R"({"name":"a","value":"\")" + std::string(1'500'000, ',') + "\"}"));
}

TEST_F(HostileRequestsTest, InvalidJSONBodiesAreRefusedAndRecorded) {
    const std::string bodies[] = {"",
                                  "null",
                                  "[]",
                                  "\"a\"",
                                  "{\"a\"}",
                                  "{} {}",
                                  "NaN",
                                  "{\"a\":1e999",
                                  "{\"a\":\"\xff\"}",
                                  "{\"a\":\"\\ud800\"}",
                                  "\xEF\xBB\xBF",
                                  "{'a':1}",
                                  std::string("{}\0", 3),
                                  std::string(1000, '\0')};
    for (const auto& body : bodies) EXPECT_EQ(postTags(body).status, 400) << body;
    const auto records = listOf("requests", "?status=400");
    ASSERT_EQ(records.size(), std::size(bodies));
    for (const auto& record : records) EXPECT_EQ(record["payload"], nullptr);
    // Bytes that are not UTF-8 are replaced in the record.
    EXPECT_EQ(records[8]["body"], "{\"a\":\"\xEF\xBF\xBD\"}");
}

TEST_F(HostileRequestsTest, TheLargestBodyIsReadCompletely) {
    // The type is not parsed, because that would take long.
    const auto answer = client().post("/api/apps/K/tracking/T", std::string(kLargestBody, 'x'), "text/plain");
    expectError(answer, 400, "the body is not of type application/json");
    const auto records = server().service().log().requests({});
    ASSERT_EQ(records.size(), 1u);
    EXPECT_EQ(records[0]->request.body, std::string(kLargestBody, 'x'));
}

TEST_F(HostileRequestsTest, LargeValuesAreReturnedCompletely) {
    const std::string value(1U << 20U, 'x');
    expectOK(postTags(R"({"name":"a","value":")" + value + "\"}"));
    EXPECT_EQ(client().get("/api/apps/K/tracking/T/tag/a").body, R"({"value":")" + value + "\"}");
}

TEST_F(HostileRequestsTest, LargerBodiesAreRefusedAndNotRecorded) {
    expectError(postTags(std::string(kLargestBody + 1, 'x')), 413, "the body is unreadable");
    EXPECT_EQ(lastRecord()["status"], 413);
    EXPECT_EQ(lastRecord()["body"], "");
    EXPECT_EQ(lastRecord()["endpoint"], "updateTag");
}

TEST_F(HostileRequestsTest, LargerChunkedBodiesAreRefused) {
    RawConnection connection(port());
    connection.send("POST /v1/device HTTP/1.1\r\nHost: h\r\nTransfer-Encoding: chunked\r\n\r\n");
    for (int i = 0; i < 33; ++i) connection.send("100000\r\n" + std::string(1U << 20U, 'x') + "\r\n");
    EXPECT_EQ(statusLine(connection.send("0\r\n\r\n").end().receiveAll()), "HTTP/1.1 413 Payload Too Large");
}

TEST_F(HostileRequestsTest, BrokenChunksAreRefused) {
    const std::string head = "POST /v1/device HTTP/1.1\r\nHost: h\r\nTransfer-Encoding: chunked\r\n\r\n";
    EXPECT_EQ(statusLine(rawAnswer(head + "zz\r\nabc\r\n")), "HTTP/1.1 400 Bad Request");
    EXPECT_EQ(statusLine(rawAnswer(head + "5\r\nabc")), "HTTP/1.1 400 Bad Request");
    EXPECT_EQ(listOf("requests", "?status=400").size(), 2u);
}

TEST_F(HostileRequestsTest, IncompleteBodiesAreRefused) {
    EXPECT_EQ(statusLine(rawAnswer("POST /v1/device HTTP/1.1\r\nHost: h\r\nContent-Length: 10\r\n\r\n{}")),
              "HTTP/1.1 400 Bad Request");
    EXPECT_EQ(lastRecord()["status"], 400);
}

TEST_F(HostileRequestsTest, RequestsWithoutALengthHaveNoBody) {
    const auto answer = rawAnswer("DELETE /api/apps/K/tracking/T/tag/* HTTP/1.1\r\nHost: h\r\n\r\n");
    EXPECT_EQ(statusLine(answer), "HTTP/1.1 200 OK");
}

TEST_F(HostileRequestsTest, SeveralRequestsShareAConnection) {
    const std::string one = "GET /config/application/ios/K HTTP/1.1\r\nHost: h\r\n\r\n";
    const std::string two = "POST /v1/device HTTP/1.1\r\nHost: h\r\nContent-Length: 2\r\n\r\n{}";
    const auto answer = rawAnswer(one + two + one);
    EXPECT_EQ(listOf("requests").size(), 3u);
    EXPECT_EQ(listOf("requests", "?status=200").size(), 2u);
    EXPECT_EQ(statusLine(answer), "HTTP/1.1 200 OK");
}

TEST_F(HostileRequestsTest, InvalidHTTPIsRefusedOrDisconnected) {
    const std::string attempts[] = {"\r\n\r\n",
                                    "GET\r\n\r\n",
                                    "GET / HTTP/9.9\r\n\r\n",
                                    "GET / HTTP/1.1 more\r\n\r\n",
                                    std::string(100'000, 'a'),
                                    "GET / HTTP/1.1\r\n" + std::string(20'000, 'a') + ": b\r\n\r\n",
                                    "GET /" + std::string(9000, 'a') + " HTTP/1.1\r\n\r\n",
                                    std::string("\x16\x03\x01\x00\xff\x00", 6),
                                    std::string(1000, '\0'),
                                    "POST /v1/device HTTP/1.1\r\nContent-Length: -1\r\n\r\n{}",
                                    "POST /v1/device HTTP/1.1\r\nContent-Length: 99999999999999999999\r\n\r\n{}",
                                    "GET / HTTP/1.1\r\nRange: bytes=5-1,a-b,-\r\n\r\n"};
    for (const auto& attempt : attempts) EXPECT_NE(statusLine(rawAnswer(attempt)), "HTTP/1.1 200 OK") << attempt;
}

TEST_F(HostileRequestsTest, TheLongestPathsAreProcessed) {
    for (const std::string part : {"a", "/", "%2F", "%", "%0a", "\xff"}) {
        std::string path = "/api/apps/K/tracking/";
        while (path.size() < 8000) path += part;
        EXPECT_NE(statusLine(rawAnswer("GET " + path + " HTTP/1.1\r\nHost: h\r\n\r\n")), "") << part;
    }
    std::string path = "/api/apps/K/tracking";
    while (path.size() < 8000) path += "/tag";
    EXPECT_EQ(statusLine(rawAnswer("GET " + path + " HTTP/1.1\r\nHost: h\r\n\r\n")), "HTTP/1.1 200 OK");
}

TEST_F(HostileRequestsTest, HeadersMayBeRepeatedOrNotUTF8) {
    rawAnswer("GET /x HTTP/1.1\r\nHost: h\r\nA: 1\r\na: 2\r\nB: \xff\r\n\r\n");
    const auto headers = lastRecord()["headers"];
    EXPECT_EQ(headers["A"], "1, 2");
    EXPECT_EQ(headers["B"], "\xEF\xBF\xBD");
}

TEST_F(HostileRequestsTest, UploadedFilesAreSkippedAndRefused) {
    const std::string body = "--b\r\nContent-Disposition: form-data; name=\"payload\"\r\n\r\n{}\r\n--b--\r\n";
    EXPECT_EQ(client().post("/0.8/session", body, "multipart/form-data; boundary=b").status, 400);
    EXPECT_EQ(client().post("/0.8/session", body, "multipart/form-data").status, 400);
    EXPECT_EQ(client().post("/0.8/session", "no parts", "multipart/form-data; boundary=b").status, 400);
    EXPECT_EQ(listOf("requests", "?status=400").size(), 3u);
}

TEST_F(HostileRequestsTest, FormsWithTooManyFieldsAreRefused) {
    std::string fields = "payload=";
    for (int i = 0; i < 999; ++i) fields += "&" + std::to_string(i);
    const auto post = [this](const std::string& body) {
        return client().post("/0.8/session", body, "application/x-www-form-urlencoded");
    };
    EXPECT_EQ(post(fields).body.find("too many fields"), std::string::npos);
    expectError(post(fields + "&a"), 400, "the form has too many fields");
}

TEST_F(HostileRequestsTest, InvalidFormsAreRefused) {
    for (const std::string body : {"", "=", "&&&", "payload", "payload=", "payload=%", "payload=%zz", "Payload=%7B%7D",
                                   "payload[]=%7B%7D", "a=%00&%00=b"})
        EXPECT_EQ(client().post("/0.8/session", body, "application/x-www-form-urlencoded").status, 400) << body;
}

TEST_F(HostileRequestsTest, AppKeysMayContainSQL) {
    const Value payload = {{"app_key", "'; DROP TABLE events; --"},
                           {"tracking_id", "' OR '1'='1"},
                           {"event_type", "%"},
                           {"event_label", "\";"}};
    expectOK(client().postForm("/0.8/register_app_event", payload));
    ASSERT_EQ(listOf("events").size(), 1u);
    EXPECT_EQ(listOf("events")[0]["payload"], payload);
    EXPECT_EQ(listOf("events", "?appKey=%27%20OR%201%3D1"), Value::array());
}

}  // namespace
}  // namespace vorlane::service
