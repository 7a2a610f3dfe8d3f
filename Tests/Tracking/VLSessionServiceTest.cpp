#include "Tracking/VLSessionService.h"

#include <gtest/gtest.h>

#include <functional>
#include <limits>
#include <utility>

#include "Platform/NSBundle.h"
#include "Platform/NSURLSession.h"
#include "Tests/Support/ServicesTest.h"

namespace vorlane {

namespace {

const std::string kWarning = "sessionEnd() was called, but there is not an active session. This will be ignored.";

class VLSessionServiceTest : public ServicesTest {
protected:
    explicit VLSessionServiceTest(SimulatedPhone::Options options = {.infoDictionary = {{"CFBundleName", "Shop"},
                                                                                        {"CFBundleShortVersionString",
                                                                                         "3.1"},
                                                                                        {"CFBundleVersion", "77"}}})
        : ServicesTest(std::move(options)) {
        phone().simulatedDevice().setLocalTimeZone({"", 3600});
    }

    std::vector<RecordedRequest> requestsTo(const std::string& path) {
        std::vector<RecordedRequest> found;
        for (const auto& request : session().requests()) {
            if (request.request.URL.path() == path) found.push_back(request);
        }
        return found;
    }

    Value body(const Dictionary& own) {
        Dictionary expected{{"app_name", "Shop"},
                            {"app_version", "3.1"},
                            {"app_build", "77"},
                            {"session_length", 0},
                            {"average_session_length", 0},
                            {"lit", settings->libInstallTime()},
                            {"platform", "iOS"},
                            {"device", Dictionary{{"language", "en-GB"},
                                                  {"os_name", phone().device()->systemName()},
                                                  {"os_version", phone().device()->systemVersion()},
                                                  {"manufacturer", "Apple"},
                                                  {"type", phone().device()->machine()},
                                                  {"timezone", "+60"}}}};
        for (const auto& [key, value] : own) expected[key] = value;
        return merged(expected, basicFields(true));
    }

    /// Starts and ends a session of this length.
    void live(TimeInterval length) {
        service->sessionStart();
        phone().advance(length);
        service->sessionEnd();
    }

    Value endPayload() { return requestsTo("/0.8/session/end").back().payload(); }

    const std::weak_ptr<VLRemoteNotificationService> noRegistration = {};
    std::shared_ptr<VLSessionService> service = std::make_shared<VLSessionService>(
        settings, noRegistration, urlSession, urlBuilder, payloadBuilder, phone().mainBundle());
};

TEST_F(VLSessionServiceTest, AStartIsReportedWithEveryField) {
    const auto expected = body({});
    service->sessionStart();
    const auto request = requestsTo("/0.8/session").at(0);
    EXPECT_EQ(request.request.HTTPMethod, "POST");
    EXPECT_EQ(request.request.URL, urlBuilder->sessionStartURL());
    EXPECT_EQ(request.header("Content-Type"), "application/x-www-form-urlencoded");
    EXPECT_EQ(request.payload(), expected);
    EXPECT_TRUE(service->hasActiveSession());
}

TEST_F(VLSessionServiceTest, AnEndIsReportedWithTheSessionsOwnValues) {
    settings->setPhash("hash");
    settings->setPrevTrackingId("before");
    const auto expected =
        body({{"session_length", 30}, {"average_session_length", 30}, {"prev_tracking_id", "before"}});
    live(30);
    const auto request = requestsTo("/0.8/session/end").at(0);
    EXPECT_EQ(request.request.HTTPMethod, "POST");
    EXPECT_EQ(request.request.URL, urlBuilder->sessionEndURL());
    EXPECT_EQ(request.header("Content-Type"), "application/x-www-form-urlencoded");
    EXPECT_EQ(request.payload(), expected);
    EXPECT_FALSE(service->hasActiveSession());
}

TEST_F(VLSessionServiceTest, TheFirstSessionsAverageIsItsLength) {
    live(12.7);
    EXPECT_EQ(endPayload()["session_length"], Value(12));
    EXPECT_EQ(endPayload()["average_session_length"], Value(12));
    EXPECT_NEAR(service->averageSessionLength(), 12.7, 1e-6);
    EXPECT_EQ(settings->sessionCount(), 1);
    EXPECT_EQ(settings->totalSessionLength(), 12);
}

TEST_F(VLSessionServiceTest, TheSecondSessionsAverageIsTruncated) {
    live(12.7);
    live(7.9);
    EXPECT_EQ(endPayload()["session_length"], Value(7));
    EXPECT_EQ(endPayload()["average_session_length"], Value(9));
    EXPECT_EQ(settings->sessionCount(), 2);
    EXPECT_EQ(settings->totalSessionLength(), 19);
}

TEST_F(VLSessionServiceTest, ACountOf0MakesTheTotalTheAverage) {
    settings->setTotalSessionLength(100);
    live(10);
    EXPECT_EQ(settings->sessionCount(), 1);
    EXPECT_EQ(settings->totalSessionLength(), 110);
    EXPECT_EQ(endPayload()["average_session_length"], Value(110));
}

TEST_F(VLSessionServiceTest, ASecondEndOnlyLogsAWarning) {
    live(1);
    service->sessionEnd();
    EXPECT_EQ(requestsTo("/0.8/session/end").size(), 1U);
    EXPECT_EQ(log().count(kWarning, VLLogLevel::Warn), 1);
}

TEST_F(VLSessionServiceTest, TheEndClearsPhashPreviousTrackingIdAndSessionId) {
    settings->setPhash("hash");
    settings->setPrevTrackingId("before");
    live(1);
    const auto before = endPayload();
    EXPECT_EQ(settings->phash(), std::nullopt);
    EXPECT_EQ(settings->prevTrackingId(), std::nullopt);
    service->sessionStart();
    const auto next = requestsTo("/0.8/session").back().payload();
    EXPECT_NE(next["sid"], before["sid"]);
    EXPECT_EQ(next["phash"], Value(""));
    EXPECT_FALSE(next.contains("prev_tracking_id"));
}

TEST_F(VLSessionServiceTest, StartingAgainRestartsTheClockAndSendsAnotherStart) {
    service->sessionStart();
    phone().advance(100);
    service->sessionStart();
    phone().advance(5);
    service->sessionEnd();
    EXPECT_EQ(requestsTo("/0.8/session").size(), 2U);
    EXPECT_EQ(endPayload()["session_length"], Value(5));
}

TEST_F(VLSessionServiceTest, StartSessionIfNotActiveKeepsARunningSession) {
    service->startSessionIfNotActive();
    service->startSessionIfNotActive();
    EXPECT_EQ(requestsTo("/0.8/session").size(), 1U);
}

TEST_F(VLSessionServiceTest, ANewTrackingIdIsReportedWithThePreviousOne) {
    settings->setTrackingId("T");
    service->setTrackingID("new");
    EXPECT_EQ(settings->trackingId(), "new");
    EXPECT_EQ(settings->prevTrackingId(), "T");
    const auto request = requestsTo("/0.8/session/tracking_id").at(0);
    EXPECT_EQ(request.request.HTTPMethod, "POST");
    EXPECT_EQ(request.request.URL, urlBuilder->changeTrackingIdURL());
    EXPECT_EQ(request.header("Content-Type"), "application/x-www-form-urlencoded");
    EXPECT_EQ(request.payload(), body({{"tracking_id", "new"}, {"prev_tracking_id", "T"}}));
}

TEST_F(VLSessionServiceTest, AChangeAfterASessionCarriesItsLengths) {
    live(20);
    service->setTrackingID("new");
    const auto payload = requestsTo("/0.8/session/tracking_id").at(0).payload();
    EXPECT_EQ(payload["session_length"], Value(20));
    EXPECT_EQ(payload["average_session_length"], Value(20));
}

TEST_F(VLSessionServiceTest, AChangeLogsTheURLNotTheId) {
    service->setTrackingID("new");
    EXPECT_EQ(
        log().count("Changing tracking id: " + urlBuilder->changeTrackingIdURL().absoluteString(), VLLogLevel::Debug),
        1);
}

TEST_F(VLSessionServiceTest, TheSameTrackingIdSendsNoRequest) {
    service->setTrackingID("T");
    EXPECT_TRUE(session().requests().empty());
    EXPECT_EQ(settings->trackingId(), "T");
    EXPECT_EQ(settings->prevTrackingId(), std::nullopt);
}

TEST_F(VLSessionServiceTest, AnEmptyTrackingIdAndNulloptAreIgnored) {
    service->setTrackingID("");
    service->setTrackingID(std::nullopt);
    EXPECT_TRUE(session().requests().empty());
    EXPECT_EQ(settings->trackingId(), "T");
}

TEST_F(VLSessionServiceTest, AFailedReportChangesNoState) {
    session().alwaysFail("/0.8/session");
    live(10);
    phone().settle();
    EXPECT_EQ(settings->sessionCount(), 1);
    EXPECT_EQ(settings->totalSessionLength(), 10);
    EXPECT_EQ(requestsTo("/0.8/session/end").size(), 1U);
}

TEST_F(VLSessionServiceTest, AClockThatJumpsBackMakesANegativeLength) {
    service->sessionStart();
    phone().setClock(phone().now() - 3.5);
    service->sessionEnd();
    EXPECT_EQ(endPayload()["session_length"], Value(-3));
    EXPECT_EQ(settings->totalSessionLength(), -3);
}

TEST_F(VLSessionServiceTest, TotalsThatOverflowWrapAround) {
    settings->setSessionCount(2);
    settings->setTotalSessionLength(std::numeric_limits<std::int64_t>::max());
    live(1);
    EXPECT_EQ(settings->totalSessionLength(), std::numeric_limits<std::int64_t>::min());
    // The average is stored as a double and sent with its precision.
    const auto average = static_cast<double>(std::numeric_limits<std::int64_t>::min() / 3);
    EXPECT_EQ(endPayload()["average_session_length"], Value(static_cast<std::int64_t>(average)));
}

TEST_F(VLSessionServiceTest, ACountThatWrapsTo0MakesAnAverageOf0) {
    settings->setSessionCount(-1);
    settings->setTotalSessionLength(50);
    live(1);
    EXPECT_EQ(settings->sessionCount(), 0);
    EXPECT_EQ(endPayload()["average_session_length"], Value(0));
}

TEST_F(VLSessionServiceTest, AQuotientOutOfRangeWrapsAround) {
    settings->setSessionCount(-2);
    settings->setTotalSessionLength(std::numeric_limits<std::int64_t>::min());
    live(0);
    EXPECT_EQ(settings->sessionCount(), -1);
    EXPECT_EQ(endPayload()["average_session_length"], Value(std::numeric_limits<std::int64_t>::min()));
}

TEST_F(VLSessionServiceTest, ALengthOutOfRangeIsClamped) {
    service->sessionStart();
    phone().setClock(1e300);
    service->sessionEnd();
    EXPECT_EQ(endPayload()["session_length"], Value(std::numeric_limits<std::int64_t>::max()));
}

class VLSessionServiceBareBundleTest : public VLSessionServiceTest {
protected:
    VLSessionServiceBareBundleTest() : VLSessionServiceTest({.infoDictionary = {{"CFBundleName", 5}}}) {}
};

TEST_F(VLSessionServiceBareBundleTest, MissingBundleValuesAreLeftOut) {
    service->sessionStart();
    const auto payload = requestsTo("/0.8/session").at(0).payload();
    for (const auto* key : {"app_name", "app_version", "app_build"}) EXPECT_FALSE(payload.contains(key)) << key;
}

TEST_F(VLSessionServiceTest, WithoutSettingsNoRequestIsSent) {
    auto gone = std::make_shared<VLSettings>(phone().device());
    VLSessionService orphan(gone, noRegistration, urlSession, urlBuilder, payloadBuilder, phone().mainBundle());
    gone.reset();
    orphan.sessionStart();
    orphan.sessionEnd();
    orphan.setTrackingID("new");
    EXPECT_TRUE(session().requests().empty());
    EXPECT_EQ(settings->trackingId(), "T");
    EXPECT_EQ(settings->sessionCount(), 0);
}

TEST_F(VLSessionServiceTest, WithoutAURLBuilderNoRequestIsSent) {
    auto gone = std::make_shared<VLURLBuilder>(std::make_shared<VLURLsProduction>(), settings);
    VLSessionService orphan(settings, noRegistration, urlSession, gone, payloadBuilder, phone().mainBundle());
    gone.reset();
    orphan.sessionStart();
    orphan.sessionEnd();
    orphan.setTrackingID("new");
    EXPECT_TRUE(session().requests().empty());
    EXPECT_EQ(settings->trackingId(), "T");
}

/// A network that reports each request before it is sent.
class WatchedURLSession : public NSURLSession {
public:
    using Observer = std::function<void(const NSURLRequest& request)>;

    WatchedURLSession(std::shared_ptr<NSURLSession> network, Observer observer)
        : network_(std::move(network)), observer_(std::move(observer)) {}

    std::shared_ptr<NSURLSessionDataTask> dataTaskWithRequest(NSURLRequest request,
                                                              CompletionHandler completionHandler) override {
        observer_(request);
        return network_->dataTaskWithRequest(std::move(request), std::move(completionHandler));
    }

private:
    const std::shared_ptr<NSURLSession> network_;
    const Observer observer_;
};

TEST_F(VLSessionServiceTest, TotalsAreStoredBeforeTheEndIsSent) {
    settings->setPhash("hash");
    int ends = 0;
    urlSession = std::make_shared<VLURLSession>(
        std::make_shared<WatchedURLSession>(phone().makeURLSession({}),
                                            [&](const NSURLRequest& request) {
                                                if (request.URL.path() != "/0.8/session/end") return;
                                                ++ends;
                                                EXPECT_EQ(settings->sessionCount(), 1);
                                                EXPECT_EQ(settings->totalSessionLength(), 10);
                                                EXPECT_EQ(settings->phash(), "hash");
                                                EXPECT_FALSE(service->hasActiveSession());
                                            }),
        phone().application());
    service = std::make_shared<VLSessionService>(settings, noRegistration, urlSession, urlBuilder, payloadBuilder,
                                                 phone().mainBundle());
    live(10);
    EXPECT_EQ(ends, 1);
    EXPECT_EQ(settings->phash(), std::nullopt);
}

TEST_F(VLSessionServiceTest, WhileASessionRunsBothLengthsAre0) {
    live(20);
    EXPECT_NEAR(service->sessionLength(), 20, 1e-6);
    service->sessionStart();
    phone().advance(5);
    EXPECT_EQ(service->sessionLength(), 0);
    EXPECT_EQ(service->averageSessionLength(), 0);
    service->setTrackingID("new");
    const auto payload = requestsTo("/0.8/session/tracking_id").at(0).payload();
    EXPECT_EQ(payload["session_length"], Value(0));
    EXPECT_EQ(payload["average_session_length"], Value(0));
}

TEST_F(VLSessionServiceTest, ABodyCanBeSentToAnyURL) {
    const auto expected = body({});
    service->postSessionToUrl(*NSURL::URLWithString("https://example.test/elsewhere"));
    EXPECT_EQ(requestsTo("/elsewhere").at(0).payload(), expected);
    EXPECT_EQ(log().lines().size(), 1U);
    EXPECT_EQ(log().linesContaining("RQST0001 POST https://example.test/elsewhere").size(), 1U);
}

}  // namespace

}  // namespace vorlane
