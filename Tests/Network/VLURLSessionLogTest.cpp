#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Network/VLURLSession.h"
#include "Platform/UIApplication.h"
#include "Tests/Network/HandDrivenURLSession.h"
#include "Tests/Network/NetworkTestSupport.h"
#include "Tests/Support/SimulatedPhoneTest.h"

namespace vorlane {
namespace {

class VLURLSessionLogTest : public SimulatedPhoneTest {
protected:
    /// The only line that contains `part`.
    RecordingLogger::Line line(const std::string& part) {
        const auto lines = log().linesContaining(part);
        EXPECT_EQ(lines.size(), 1u) << part;
        return lines.empty() ? RecordingLogger::Line{} : lines.front();
    }

    void expectLine(const std::string& part, VLLogLevel level, const std::string& message,
                    const std::optional<Value>& payload) {
        const RecordingLogger::Line found = line(part);
        EXPECT_EQ(found.level, level);
        EXPECT_EQ(found.message, message);
        EXPECT_EQ(found.payload, payload);
    }

    const NSURL url = urlOf("https://h.test/a?b=c");
    VLURLSession urlSession{phone().makeURLSession({10.0}), phone().application()};
};

TEST_F(VLURLSessionLogTest, ARequestWithoutABodyIsLoggedWithoutAPayload) {
    urlSession.GET(url, {});
    urlSession.DELETE(url, {});
    urlSession.GETJSON(url, {});
    expectLine("RQST0001", VLLogLevel::Debug, "RQST0001 GET https://h.test/a?b=c", std::nullopt);
    expectLine("RQST0002", VLLogLevel::Debug, "RQST0002 DELETE https://h.test/a?b=c", std::nullopt);
    expectLine("RQST0003", VLLogLevel::Debug, "RQST0003 GET https://h.test/a?b=c", std::nullopt);
}

TEST_F(VLURLSessionLogTest, ARequestWithABodyIsLoggedWithItsJSON) {
    urlSession.POST(url, {{"a", "b c"}}, true, {});
    urlSession.POST(url, {{"a", "b c"}}, false, {});
    urlSession.PUT(url, {}, {});
    expectLine("RQST0001", VLLogLevel::Debug, "RQST0001 POST https://h.test/a?b=c", R"({"a":"b c"})");
    expectLine("RQST0002", VLLogLevel::Debug, "RQST0002 POST https://h.test/a?b=c", R"({"a":"b c"})");
    expectLine("RQST0003", VLLogLevel::Debug, "RQST0003 PUT https://h.test/a?b=c", "{}");
}

TEST_F(VLURLSessionLogTest, AnInvalidPayloadIsLoggedAsAnError) {
    urlSession.POST(url, {{"a", std::numeric_limits<double>::infinity()}}, true, {});
    expectLine("dictionary", VLLogLevel::Error, "The dictionary is not a valid JSON object!", std::nullopt);
    expectLine("RQST0001", VLLogLevel::Debug, "RQST0001 POST https://h.test/a?b=c", "");
}

TEST_F(VLURLSessionLogTest, ASuccessIsLoggedWithItsBody) {
    urlSession.GET(url, {});
    session().answer("h.test", 200, R"({"x":1})");
    expectLine("RSPN", VLLogLevel::Debug, "RSPN0001 GET SUCCESS 200 https://h.test/a?b=c", R"({"x":1})");
}

TEST_F(VLURLSessionLogTest, AnEmptySuccessIsLoggedWithoutAPayload) {
    urlSession.PUT(url, {}, {});
    session().answerData("h.test", 204, std::nullopt);
    urlSession.DELETE(url, {});
    session().answerData("h.test", 200, Data{0xFF});
    expectLine("RSPN0001", VLLogLevel::Debug, "RSPN0001 PUT SUCCESS 204 https://h.test/a?b=c", std::nullopt);
    expectLine("RSPN0002", VLLogLevel::Debug, "RSPN0002 DELETE SUCCESS 200 https://h.test/a?b=c", std::nullopt);
}

TEST_F(VLURLSessionLogTest, SuccessLogsTheAnsweringURLFailureTheRequestedURL) {
    std::vector<std::string> events;
    const auto handDriven = std::make_shared<HandDrivenURLSession>(events);
    const auto redirected = urlOf("https://elsewhere.test/");
    VLURLSession redirecting(handDriven, phone().application());
    redirecting.GET(url, {});
    handDriven->complete(std::nullopt, std::make_shared<NSHTTPURLResponse>(redirected, 200), std::nullopt);
    redirecting.GET(url, {});
    handDriven->complete(std::nullopt, std::make_shared<NSHTTPURLResponse>(redirected, 500), std::nullopt);
    EXPECT_EQ(line("RSPN0001").message, "RSPN0001 GET SUCCESS 200 https://elsewhere.test/");
    EXPECT_TRUE(line("RSPN0002").message.starts_with("RSPN0002 GET ERROR 500 https://h.test/a?b=c\n"));
}

TEST_F(VLURLSessionLogTest, AFailureIsLoggedAsAnErrorWithItsReason) {
    urlSession.POST(url, {}, true, {});
    session().answer("h.test", 404, "dropped");
    urlSession.GET(url, {});
    session().answerWithoutHTTP("h.test", true);
    expectLine("RSPN0001", VLLogLevel::Error,
               "RSPN0001 POST ERROR 404 https://h.test/a?b=c\nError Domain=vorlane.sdk.network Code=404 "
               "\"Network request error with HTTP status code 404\"",
               std::nullopt);
    expectLine("RSPN0002", VLLogLevel::Error,
               "RSPN0002 GET ERROR -1 https://h.test/a?b=c\nError Domain=vorlane.sdk.network Code=1 "
               "\"No HTTP status code found: no server response received, or received a response object of "
               "unexpected type.\"",
               std::nullopt);
}

TEST_F(VLURLSessionLogTest, ATransportErrorIsLoggedUnchanged) {
    NSError received("", 0);
    urlSession.GET(url, [&](auto, auto, auto error) { received = error.value(); });
    session().fail("h.test", NSURLError::TimedOut);
    expectLine("RSPN", VLLogLevel::Error, "RSPN0001 GET ERROR -1 https://h.test/a?b=c\n" + received.description(),
               std::nullopt);
}

TEST_F(VLURLSessionLogTest, AtLevelInfoOnlyFailuresAreLogged) {
    VLLog::sharedInstance().setLogLevel(VLLogLevel::Info);
    urlSession.POST(url, {{"a", 1}}, true, {});
    session().answer("h.test", 200, "fine");
    urlSession.GET(url, {});
    session().answer("h.test", 500);
    EXPECT_EQ(log().linesContaining("RQST").size(), 0u);
    EXPECT_EQ(log().linesContaining("RSPN0001").size(), 0u);
    EXPECT_EQ(log().linesContaining("RSPN0002").size(), 1u);
}

TEST_F(VLURLSessionLogTest, RequestIdsWrapFrom9999To1) {
    session().alwaysAnswer("h.test", 204);
    VLLog::sharedInstance().setLogLevel(VLLogLevel::Off);
    for (int i = 1; i <= 9998; ++i) urlSession.GET(url, {});
    phone().settle();
    VLLog::sharedInstance().setLogLevel(VLLogLevel::Debug);
    urlSession.GET(url, {});
    urlSession.GET(url, {});
    EXPECT_EQ(log().count("RQST9999 GET https://h.test/a?b=c", VLLogLevel::Debug), 1);
    EXPECT_EQ(log().count("RSPN9999 GET SUCCESS 204 https://h.test/a?b=c", VLLogLevel::Debug), 1);
    EXPECT_EQ(log().count("RQST0001 GET https://h.test/a?b=c", VLLogLevel::Debug), 1);
    EXPECT_EQ(log().count("RSPN0001 GET SUCCESS 204 https://h.test/a?b=c", VLLogLevel::Debug), 1);
    EXPECT_EQ(log().linesContaining("RQST").size(), 2u);
}

}  // namespace
}  // namespace vorlane
