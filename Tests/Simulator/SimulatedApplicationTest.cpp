#include "Tests/Support/SimulatedPhoneTest.h"

namespace vorlane {

namespace {

class SimulatedApplicationTest : public SimulatedPhoneTest {
protected:
    SimulatedApplicationTest() {
        application.setEventObserver(
            [this](const std::string& event, const Dictionary& fields) { events.emplace_back(event, fields); });
    }

    static Dictionary task(const char* action, UIBackgroundTaskIdentifier identifier, const char* name) {
        return {{"action", action}, {"identifier", identifier}, {"name", name}};
    }

    SimulatedApplication& application = phone().simulatedApplication();
    std::vector<std::pair<std::string, Dictionary>> events;
};

TEST_F(SimulatedApplicationTest, RegistrationsAreCountedAndReported) {
    application.registerForRemoteNotifications();
    application.registerForRemoteNotifications();
    EXPECT_EQ(application.remoteNotificationRegistrations(), 2);
    ASSERT_EQ(events.size(), 2U);
    EXPECT_EQ(events[0].first, "registerForRemoteNotifications");
    EXPECT_EQ(events[0].second, Dictionary());
}

TEST_F(SimulatedApplicationTest, FetchIntervalsAreKeptAndReported) {
    application.setMinimumBackgroundFetchInterval(86400);
    application.setMinimumBackgroundFetchInterval(0.5);
    EXPECT_EQ(application.backgroundFetchIntervals(), (std::vector<TimeInterval>{86400, 0.5}));
    ASSERT_EQ(events.size(), 2U);
    EXPECT_EQ(events[1].first, "minimumBackgroundFetchInterval");
    EXPECT_EQ(events[1].second, (Dictionary{{"seconds", 0.5}}));
}

TEST_F(SimulatedApplicationTest, BackgroundTasksReportTheirBeginningAndEnd) {
    const auto identifier = application.beginBackgroundTaskWithName("work", nullptr);
    application.endBackgroundTask(identifier);
    application.endBackgroundTask(identifier);
    ASSERT_EQ(events.size(), 2U);
    EXPECT_EQ(events[0].first, "backgroundTask");
    EXPECT_EQ(events[0].second, task("begin", identifier, "work"));
    EXPECT_EQ(events[1].second, task("end", identifier, "work"));
    EXPECT_EQ(application.begunBackgroundTasks(), std::vector<std::string>{"work"});
}

TEST_F(SimulatedApplicationTest, TasksExpireAndThenEnd) {
    bool wasTold = false;
    const auto identifier = application.beginBackgroundTaskWithName("work", [&] { wasTold = true; });
    application.expireBackgroundTasks();
    EXPECT_TRUE(wasTold);
    ASSERT_EQ(events.size(), 3U);
    EXPECT_EQ(events[1].second, task("expired", identifier, "work"));
    EXPECT_EQ(events[2].second, task("end", identifier, "work"));
}

TEST_F(SimulatedApplicationTest, ObserversMayCallTheApplication) {
    application.setEventObserver([this](const std::string& event, const Dictionary& fields) {
        application.begunBackgroundTasks();
        application.setEventObserver(nullptr);
        events.emplace_back(event, fields);
    });
    application.beginBackgroundTaskWithName("work", nullptr);
    application.registerForRemoteNotifications();
    EXPECT_EQ(events.size(), 1U);
}

}  // namespace

}  // namespace vorlane
