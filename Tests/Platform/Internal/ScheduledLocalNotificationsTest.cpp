#include "Platform/Internal/ScheduledLocalNotifications.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <limits>

#include "Platform/NSFileManager.h"
#include "Platform/NSPropertyListSerialization.h"
#include "Tests/Support/TemporaryFolderTest.h"

namespace vorlane {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class ScheduledLocalNotificationsTest : public TemporaryFolderTest {
protected:
    ScheduledLocalNotificationsTest() { list.keepInFile(file()); }

    std::string file() { return path("VLScheduledNotifications.plist"); }

    static UILocalNotification notification(const std::string& body, std::optional<double> date = 1000) {
        UILocalNotification made;
        made.alertBody = body;
        made.fireDate = date;
        return made;
    }

    static std::vector<std::string> bodies(const ScheduledLocalNotifications& notifications) {
        std::vector<std::string> found;
        for (const auto& each : notifications.notifications()) found.push_back(*each.alertBody);
        return found;
    }
    /// The bodies that a new process reads.
    std::vector<std::string> storedBodies() {
        ScheduledLocalNotifications stored;
        stored.keepInFile(file());
        return bodies(stored);
    }
    /// Each replacement of the file has a new inode, as long as the old one is kept by a link.
    ino_t inode() {
        struct stat information {};
        EXPECT_EQ(::stat(file().c_str(), &information), 0);
        const auto kept = path("kept" + std::to_string(information.st_ino));
        ::link(file().c_str(), kept.c_str());
        return information.st_ino;
    }

    ScheduledLocalNotifications list;
};

TEST_F(ScheduledLocalNotificationsTest, EachChangeIsInTheFile) {
    const auto a = notification("a");
    list.add(a);
    EXPECT_THAT(storedBodies(), ElementsAre("a"));
    list.add(notification("b", 10));
    EXPECT_THAT(storedBodies(), ElementsAre("a", "b"));
    list.remove(a);
    EXPECT_THAT(storedBodies(), ElementsAre("b"));
    EXPECT_TRUE(list.takeDue(10));
    EXPECT_THAT(storedBodies(), IsEmpty());
    list.add(a);
    list.removeAll();
    EXPECT_THAT(storedBodies(), IsEmpty());
}

TEST_F(ScheduledLocalNotificationsTest, TheFileHoldsEveryField) {
    auto full = notification("50 % <off> & \"more\" \xC3\xA9", 1000.25);
    full.timeZone = "Europe/Oslo";
    full.alertAction = "View";
    full.soundName = "bell.wav";
    full.applicationIconBadgeNumber = -2;
    full.userInfo = Dictionary{{"p", "h"}, {"list", Array{1, 2.5, true, Value(Dictionary{{"deep", "x"}})}}};
    list.add(full);
    ScheduledLocalNotifications stored;
    stored.keepInFile(file());
    EXPECT_THAT(stored.notifications(), ElementsAre(full));
    EXPECT_EQ(NSPropertyListSerialization::dictionaryWithContentsOfFile(file()),
              (Dictionary{{"notifications", Array{Value(full.toDictionary())}}}));
}

TEST_F(ScheduledLocalNotificationsTest, ARestoredNotificationIsWrittenAgainUnchanged) {
    list.add(notification("a"));
    ScheduledLocalNotifications next;
    next.keepInFile(file());
    next.add(notification("b"));
    EXPECT_THAT(storedBodies(), ElementsAre("a", "b"));
    EXPECT_EQ(NSPropertyListSerialization::dictionaryWithContentsOfFile(file()),
              (Dictionary{{"notifications",
                           Array{Value(notification("a").toDictionary()), Value(notification("b").toDictionary())}}}));
}

TEST_F(ScheduledLocalNotificationsTest, DeepUserInfoDoesNotMakeTheFileUnreadable) {
    Value nested = 1;
    for (int level = 0; level < 600; ++level) nested = Array{nested};
    auto deep = notification("deep");
    deep.userInfo = Dictionary{{"nested", nested}};
    list.add(notification("a"));
    list.add(deep);
    EXPECT_THAT(storedBodies(), ElementsAre("a", "deep"));
}

TEST_F(ScheduledLocalNotificationsTest, AStepReplacesTheFileOnce) {
    const auto a = notification("a");
    list.add(a);
    list.add(notification("b"));
    const auto before = inode();
    {
        const ScheduledLocalNotifications::Step step(list);
        list.remove(a);
        EXPECT_THAT(bodies(list), ElementsAre("b"));
        EXPECT_EQ(inode(), before);
        {
            const ScheduledLocalNotifications::Step inner(list);
            list.add(notification("c"));
        }
        EXPECT_EQ(inode(), before);
        EXPECT_THAT(storedBodies(), ElementsAre("a", "b"));
    }
    EXPECT_NE(inode(), before);
    EXPECT_THAT(storedBodies(), ElementsAre("b", "c"));
}

TEST_F(ScheduledLocalNotificationsTest, AStepWithoutChangesLeavesTheFile) {
    list.add(notification("a"));
    const auto before = inode();
    {
        const ScheduledLocalNotifications::Step step(list);
        list.remove(notification("unknown"));
    }
    EXPECT_EQ(inode(), before);
}

TEST_F(ScheduledLocalNotificationsTest, AFireDateThatNeverComesIsNotStored) {
    list.add(notification("never", std::numeric_limits<double>::quiet_NaN()));
    list.add(notification("infinite", std::numeric_limits<double>::infinity()));
    list.add(notification("a"));
    EXPECT_THAT(storedBodies(), ElementsAre("a"));
    EXPECT_THAT(bodies(list), ElementsAre("never", "infinite", "a"));
}

TEST_F(ScheduledLocalNotificationsTest, WithoutAFileTheListIsInMemory) {
    ScheduledLocalNotifications inMemory;
    inMemory.add(notification("a"));
    EXPECT_THAT(bodies(inMemory), ElementsAre("a"));
    EXPECT_FALSE(NSFileManager::fileExistsAtPath(file()));
}

TEST_F(ScheduledLocalNotificationsTest, AFailedWriteKeepsTheListInMemory) {
    ScheduledLocalNotifications unwritable;
    unwritable.keepInFile("/dev/null/VLScheduledNotifications.plist");
    unwritable.add(notification("a"));
    EXPECT_THAT(bodies(unwritable), ElementsAre("a"));
}

}  // namespace

}  // namespace vorlane
