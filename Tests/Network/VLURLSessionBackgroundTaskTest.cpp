#include <algorithm>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "Network/VLURLSession.h"
#include "Platform/NSNotificationCenter.h"
#include "Tests/Network/HandDrivenURLSession.h"
#include "Tests/Network/NetworkTestSupport.h"
#include "Tests/Support/SimulatedPhoneTest.h"

namespace vorlane {
namespace {

using Events = std::vector<std::string>;

/// A request completed by hand, and the events of the request and of its background task, in order.
class VLURLSessionBackgroundTaskTest : public SimulatedPhoneTest {
protected:
    VLURLSessionBackgroundTaskTest() {
        application().setEventObserver([this](const std::string& event, const Dictionary& fields) {
            if (event != "backgroundTask") return;
            const auto action = fields.at("action").get<std::string>();
            events.push_back(action + " " + fields.at("name").get<std::string>());
            if (action == "begin" && afterBegin) afterBegin();
        });
    }

    ~VLURLSessionBackgroundTaskTest() override { application().setEventObserver({}); }

    SimulatedApplication& application() { return phone().simulatedApplication(); }

    VLURLSession::TextHandler handler() {
        return [this](auto text, auto status, auto error) {
            events.push_back("handler");
            answers.push_back({text, status, error});
        };
    }

    void succeed() { handDriven->complete(std::nullopt, std::make_shared<NSHTTPURLResponse>(url, 204), std::nullopt); }

    void expectCancelledOnce() {
        ASSERT_EQ(answers.size(), 1u);
        EXPECT_FALSE(answers[0].result);
        EXPECT_EQ(answers[0].status, -1);
        ASSERT_TRUE(answers[0].error);
        EXPECT_EQ(answers[0].error->domain(), NSURLErrorDomain);
        EXPECT_EQ(answers[0].error->code(), -999);
    }

    int count(const std::string& event) const {
        return static_cast<int>(std::count(events.begin(), events.end(), event));
    }

    Events events;
    std::function<void()> afterBegin;
    std::vector<TextAnswer> answers;
    const NSURL url = urlOf("https://h.test/");
    const std::shared_ptr<HandDrivenURLSession> handDriven = std::make_shared<HandDrivenURLSession>(events);
    VLURLSession urlSession{handDriven, phone().application()};
};

TEST_F(VLURLSessionBackgroundTaskTest, BeginsBeforeTheRequestAndEndsAfterTheHandler) {
    urlSession.GET(url, handler());
    EXPECT_EQ(events, (Events{"begin 1d", "resume"}));
    succeed();
    EXPECT_EQ(events, (Events{"begin 1d", "resume", "handler", "end 1d"}));
    EXPECT_TRUE(application().backgroundTasks().empty());
}

TEST_F(VLURLSessionBackgroundTaskTest, EndsAfterTheHandlerOfAFailure) {
    urlSession.GET(url, handler());
    handDriven->complete(std::nullopt, std::make_shared<NSHTTPURLResponse>(url, 500), std::nullopt);
    urlSession.GET(url, handler());
    handDriven->complete(std::nullopt, nullptr, std::nullopt);
    urlSession.GET(url, handler());
    handDriven->complete(std::nullopt, nullptr, NSError(NSURLErrorDomain, -1009));
    EXPECT_EQ(events, (Events{"begin 1d", "resume", "handler", "end 1d", "begin 2d", "resume", "handler", "end 2d",
                              "begin 3d", "resume", "handler", "end 3d"}));
    EXPECT_TRUE(application().backgroundTasks().empty());
}

TEST_F(VLURLSessionBackgroundTaskTest, IsNamedByTheRequestIdAndALetter) {
    for (int i = 0; i < 12; ++i) {
        urlSession.GET(url, {});
        if (i < 11) succeed();
    }
    ASSERT_EQ(application().backgroundTasks().size(), 1u);
    EXPECT_EQ(application().backgroundTasks().begin()->second, "12d");
    succeed();
}

TEST_F(VLURLSessionBackgroundTaskTest, EveryOperationHasOne) {
    VLURLSession scripted(phone().makeURLSession({10.0}), phone().application());
    scripted.GET(url, {});
    scripted.GETJSON(url, {});
    scripted.DELETE(url, {});
    scripted.POST(url, {}, true, {});
    scripted.POSTWithJSONResponse(url, {}, false, {});
    scripted.PUT(url, {}, {});
    EXPECT_EQ(application().begunBackgroundTasks(), (Events{"1d", "2d", "3d", "4d", "5d", "6d"}));
    EXPECT_EQ(application().backgroundTasks().size(), 6u);
    for (int i = 0; i < 6; ++i) session().answer("h.test", 200);
    phone().settle();
    EXPECT_TRUE(application().backgroundTasks().empty());
}

TEST_F(VLURLSessionBackgroundTaskTest, ExpiryCancelsTheRequest) {
    handDriven->keepTasks();
    urlSession.GET(url, handler());
    const UIBackgroundTaskIdentifier identifier = application().backgroundTasks().begin()->first;
    application().expireBackgroundTasks();

    ASSERT_NO_FATAL_FAILURE(expectCancelledOnce());
    EXPECT_EQ(count("cancel"), 1);
    EXPECT_LE(count("end 1d"), 1);
    EXPECT_TRUE(application().backgroundTasks().empty());
    EXPECT_EQ(log().count("Network background task with id " + std::to_string(identifier) +
                              " and name 1d did not complete - forced to stop by the system",
                          VLLogLevel::Error),
              1);
    EXPECT_EQ(
        log().count("RSPN0001 GET ERROR -1 https://h.test/\n" + answers[0].error->description(), VLLogLevel::Error), 1);
    EXPECT_EQ(log().linesContaining("RSPN").size(), 1u);
}

/// An application whose expiry leaves it to the handlers to end their tasks.
class LenientApplication : public SimulatedApplication {
public:
    using SimulatedApplication::SimulatedApplication;
    using UIApplication::expireBackgroundTask;
};

TEST_F(VLURLSessionBackgroundTaskTest, ExpiryCancelsTheRequestThenEndsItsTask) {
    const auto lenient = std::make_shared<LenientApplication>(phone().notificationCenter());
    lenient->setEventObserver([this](const std::string& event, const Dictionary& fields) {
        if (event == "backgroundTask") events.push_back(fields.at("action").get<std::string>());
    });
    VLURLSession ownSession(handDriven, lenient);
    handDriven->keepTasks();
    ownSession.GET(url, handler());
    events.clear();
    EXPECT_TRUE(lenient->expireBackgroundTask(lenient->backgroundTasks().begin()->first));
    EXPECT_EQ(events, (Events{"expired", "cancel", "handler", "end"}));
    EXPECT_TRUE(lenient->backgroundTasks().empty());
    lenient->setEventObserver({});
}

TEST_F(VLURLSessionBackgroundTaskTest, ExpiryCancelsEveryOpenRequestOnly) {
    VLURLSession scripted(phone().makeURLSession({10.0}), phone().application());
    std::vector<TextAnswer> first, second, third;
    scripted.GET(urlOf("https://one.test/"), into(first));
    scripted.GET(urlOf("https://two.test/"), into(second));
    scripted.GET(urlOf("https://three.test/"), into(third));
    session().answer("two.test", 200, "in time");
    application().expireBackgroundTasks();
    phone().settle();
    ASSERT_EQ(first.size(), 1u);
    ASSERT_EQ(second.size(), 1u);
    ASSERT_EQ(third.size(), 1u);
    EXPECT_EQ(first[0].error->code(), -999);
    EXPECT_EQ(second[0].result, "in time");
    EXPECT_EQ(third[0].error->code(), -999);
    EXPECT_EQ(log().linesContaining("forced to stop by the system").size(), 2u);
    EXPECT_TRUE(application().backgroundTasks().empty());
}

TEST_F(VLURLSessionBackgroundTaskTest, ExpiryBeforeTheRequestIsSentCancelsIt) {
    // As the platform keeps a running task.
    handDriven->keepTasks();
    afterBegin = [this] {
        afterBegin = {};
        application().expireBackgroundTasks();
    };
    urlSession.GET(url, handler());

    expectCancelledOnce();
    EXPECT_EQ(count("resume"), 1);
    EXPECT_EQ(count("cancel"), 1);
    EXPECT_LT(std::find(events.begin(), events.end(), "resume"), std::find(events.begin(), events.end(), "cancel"));
    EXPECT_TRUE(application().backgroundTasks().empty());
    const auto lines = log().linesContaining("Network background task");
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_TRUE(lines[0].message.ends_with(" and name 1d did not complete - forced to stop by the system"));
    EXPECT_EQ(lines[0].message.find("with id 0 "), std::string::npos);
}

TEST_F(VLURLSessionBackgroundTaskTest, ExpiryInsideTheHandlerCancelsNothing) {
    urlSession.GET(url, [this](auto, auto, auto) { application().expireBackgroundTasks(); });
    succeed();
    EXPECT_TRUE(application().backgroundTasks().empty());
    EXPECT_LE(count("end 1d"), 1);
}

TEST_F(VLURLSessionBackgroundTaskTest, DoesNotKeepTheRequestAlive) {
    std::weak_ptr<NSURLSessionDataTask> task = urlSession.GET(url, handler());
    EXPECT_TRUE(task.expired());
    application().expireBackgroundTasks();
    EXPECT_EQ(count("cancel"), 0);
    EXPECT_TRUE(application().backgroundTasks().empty());
}

TEST_F(VLURLSessionBackgroundTaskTest, WithoutAnApplicationThereIsNoTask) {
    auto shortLived = std::make_shared<SimulatedApplication>(phone().notificationCenter());
    VLURLSession orphan(handDriven, shortLived);
    shortLived.reset();
    orphan.GET(url, handler());
    succeed();
    EXPECT_EQ(events, (Events{"resume", "handler"}));
}

TEST_F(VLURLSessionBackgroundTaskTest, TheApplicationMayBeDestroyedMeanwhile) {
    auto shortLived = std::make_shared<SimulatedApplication>(phone().notificationCenter());
    VLURLSession orphaned(handDriven, shortLived);
    orphaned.GET(url, handler());
    shortLived.reset();
    succeed();
    EXPECT_EQ(count("handler"), 1);
}

}  // namespace
}  // namespace vorlane
