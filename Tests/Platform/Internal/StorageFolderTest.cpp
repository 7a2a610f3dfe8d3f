#include "Platform/Internal/StorageFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <filesystem>
#include <utility>
#include <vector>

#include "Platform/Internal/PropertyListFile.h"
#include "Platform/Internal/ScheduledLocalNotifications.h"
#include "Platform/Internal/StorageFaults.h"
#include "Platform/NSFileManager.h"
#include "Tests/Platform/FailingSystemCalls.h"
#include "Tests/Support/TemporaryFolderTest.h"

namespace vorlane {

namespace {

using Access = StorageFolder::Access;
using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

class StorageFolderTest : public TemporaryFolderTest {
protected:
    StorageFolderTest() {
        StorageFaults::shared().setHandler([this](StorageFaults::Level level, const std::string& line) {
            constexpr const char* kNames[] = {"ERROR ", "WARN ", "INFO "};
            lines.push_back(kNames[static_cast<std::size_t>(level)] + line);
        });
    }
    ~StorageFolderTest() override {
        StorageFaults::shared().setHandler([](auto, const auto&) {});
    }

    /// Has the folder as another process does; the lock goes with the object.
    FileDescriptor lockOfAnother() const {
        auto descriptor = FileDescriptor::open(folder, O_RDONLY | O_DIRECTORY);
        EXPECT_EQ(flock(descriptor.number(), LOCK_EX | LOCK_NB), 0);
        return descriptor;
    }

    std::vector<std::string> lines;
    const std::string folder = path("app");
    PropertyListFile file{folder + "/file.plist"};
};

TEST_F(StorageFolderTest, FolderIsMadeForTheFirstWrite) {
    const auto storage = StorageFolder::at(folder);
    EXPECT_EQ(storage->access(), Access::Missing);
    EXPECT_FALSE(NSFileManager::fileExistsAtPath(folder));
    EXPECT_EQ(storage->make(), Access::Owned);
    struct stat information {};
    ASSERT_EQ(stat(folder.c_str(), &information), 0);
    EXPECT_EQ(information.st_mode & 0777U, 0700U);
    EXPECT_TRUE(storage->takeIsNew());
    EXPECT_FALSE(storage->takeIsNew());
}

TEST_F(StorageFolderTest, OneObjectNamesOneFolder) {
    EXPECT_EQ(StorageFolder::at(folder), StorageFolder::at(folder));
    EXPECT_NE(StorageFolder::at(folder), StorageFolder::at(path("other")));
}

TEST_F(StorageFolderTest, FolderThatOthersMayWriteToIsRefused) {
    for (const unsigned mode : {0777U, 0770U, 0702U}) {
        std::filesystem::create_directory(folder);
        ASSERT_EQ(chmod(folder.c_str(), mode), 0);
        EXPECT_EQ(StorageFolder::at(folder)->access(), Access::Refused) << mode;
        EXPECT_EQ(file.read().status, PropertyListFile::Status::Unreadable);
        EXPECT_FALSE(file.write(Dictionary{{"k", 1}}));
        EXPECT_TRUE(std::filesystem::is_empty(folder));
        ASSERT_EQ(chmod(folder.c_str(), 0755), 0);
        EXPECT_EQ(StorageFolder::at(folder)->access(), Access::Owned);
        std::filesystem::remove(folder);
    }
    EXPECT_THAT(lines, Contains(AllOf(HasSubstr("ERROR"), HasSubstr(folder), HasSubstr("other users may write"))));
}

TEST_F(StorageFolderTest, FolderOfAnotherUserIsRefused) {
    if (geteuid() != 0) {
        // Only root can give a folder away; one of root's is trusted.
        EXPECT_NE(StorageFolder::at("/usr")->access(), Access::Refused);
        return;
    }
    std::filesystem::create_directory(folder);
    ASSERT_EQ(chmod(folder.c_str(), 0700), 0);
    ASSERT_EQ(chown(folder.c_str(), 65534, 65534), 0);
    EXPECT_EQ(StorageFolder::at(folder)->make(), Access::Refused);
    EXPECT_EQ(StorageFolder::at(folder)->make(), Access::Refused);
    EXPECT_THAT(lines, ElementsAre(AllOf(HasSubstr("ERROR"), HasSubstr("another user owns the folder"))));
}

TEST_F(StorageFolderTest, LinkOfAnotherUserIsRefused) {
    std::filesystem::create_directory(path("target"));
    ASSERT_EQ(chmod(path("target").c_str(), 0700), 0);
    std::filesystem::create_directory_symlink(path("target"), folder);
    EXPECT_EQ(StorageFolder::at(folder)->access(), Access::Owned) << "this user's own link";
    StorageFolder::releaseAll();
    if (geteuid() != 0) return;
    ASSERT_EQ(lchown(folder.c_str(), 65534, 65534), 0);
    EXPECT_EQ(StorageFolder::at(folder)->access(), Access::Refused);
}

TEST_F(StorageFolderTest, SecondProcessReadsButDoesNotWrite) {
    ASSERT_TRUE(file.write(Dictionary{{"id", "first"}}));
    StorageFolder::releaseAll();
    auto other = lockOfAnother();
    lines.clear();

    EXPECT_EQ(file.read().contents, Value(Dictionary{{"id", "first"}}));
    EXPECT_FALSE(file.isOwned());
    EXPECT_FALSE(file.write(Dictionary{{"id", "second"}}));
    EXPECT_EQ(file.readAgain(), std::nullopt);
    EXPECT_THAT(lines, ElementsAre(AllOf(HasSubstr("ERROR"), HasSubstr(folder), HasSubstr("another process"))));

    other.close();
    EXPECT_TRUE(file.isOwned());
    EXPECT_FALSE(file.write(Dictionary{{"id", "second"}})) << "not before it is read again";
    EXPECT_EQ(file.readAgain(), std::optional<Value>(Dictionary{{"id", "first"}}));
    EXPECT_TRUE(file.write(Dictionary{{"id", "second"}}));
    EXPECT_EQ(lines.size(), 2U);
    EXPECT_THAT(lines.back(), HasSubstr("INFO"));
}

TEST_F(StorageFolderTest, SecondProcessLeavesDamagedFilesAlone) {
    ASSERT_TRUE(NSFileManager::writeToFile({'x'}, folder + "/file.plist"));
    const auto other = lockOfAnother();
    EXPECT_EQ(file.read().status, PropertyListFile::Status::Malformed);
    EXPECT_TRUE(NSFileManager::fileExistsAtPath(folder + "/file.plist"));
}

TEST_F(StorageFolderTest, SecondProcessLeavesSchedulesAlone) {
    const auto scheduleFile = folder + "/scheduled.plist";
    const auto notification = [](const char* body) {
        UILocalNotification built;
        built.alertBody = body;
        built.fireDate = 1e9;
        return built;
    };
    {
        ScheduledLocalNotifications first;
        first.keepInFile(scheduleFile);
        first.add(notification("first"));
    }
    StorageFolder::releaseAll();
    auto other = lockOfAnother();
    ScheduledLocalNotifications second;
    second.keepInFile(scheduleFile);
    EXPECT_TRUE(second.notifications().empty());
    second.add(notification("second"));
    EXPECT_EQ(second.notifications().size(), 1U);
    other.close();
    second.add(notification("third"));
    EXPECT_EQ(second.notifications().size(), 3U);
    ScheduledLocalNotifications again;
    again.keepInFile(scheduleFile);
    EXPECT_EQ(again.notifications().size(), 3U);
}

TEST_F(StorageFolderTest, ReleasedFolderIsFreeForOthers) {
    ASSERT_TRUE(file.write(Dictionary{{"k", 1}}));
    const auto descriptor = FileDescriptor::open(folder, O_RDONLY | O_DIRECTORY);
    EXPECT_NE(flock(descriptor.number(), LOCK_EX | LOCK_NB), 0);
    StorageFolder::releaseAll();
    EXPECT_EQ(flock(descriptor.number(), LOCK_EX | LOCK_NB), 0);
}

TEST_F(StorageFolderTest, DeletedFolderIsMadeAgain) {
    ASSERT_TRUE(file.write(Dictionary{{"k", 1}}));
    std::filesystem::remove_all(folder);
    EXPECT_TRUE(file.write(Dictionary{{"k", 2}}));
    EXPECT_EQ(file.read().contents, Value(Dictionary{{"k", 2}}));
}

TEST_F(StorageFolderTest, EachCauseIsReportedOnce) {
    ASSERT_TRUE(file.write(Dictionary{{"k", 1}}));
    {
        FailingSystemCalls calls;
        calls.failWritesFrom(0);
        for (int k = 2; k < 5; ++k) EXPECT_FALSE(file.write(Dictionary{{"k", k}}));
        calls.failWritesFrom(1'000'000);
        calls.failRenames();
        for (int k = 2; k < 5; ++k) EXPECT_FALSE(file.write(Dictionary{{"k", k}}));
    }
    EXPECT_THAT(lines, ElementsAre(AllOf(HasSubstr("WARN"), HasSubstr("file.plist"), HasSubstr("No space left")),
                                   AllOf(HasSubstr("WARN"), HasSubstr("file.plist"), HasSubstr("Read-only"))));
    lines.clear();
    EXPECT_TRUE(file.write(Dictionary{{"k", 5}}));
    EXPECT_TRUE(file.write(Dictionary{{"k", 6}}));
    EXPECT_THAT(lines, ElementsAre(AllOf(HasSubstr("INFO"), HasSubstr("file.plist"))));
}

TEST_F(StorageFolderTest, LinesWaitForAHandler) {
    StorageFaults faults;
    faults.failed("a.plist", "read", EIO);
    faults.setHandler([this](StorageFaults::Level, const std::string& line) { lines.push_back(line); });
    EXPECT_THAT(lines, ElementsAre(HasSubstr("a.plist cannot be read: Input/output error")));
    faults.succeeded("b.plist", "read");
    faults.succeeded("a.plist", "written");
    EXPECT_EQ(lines.size(), 1U);
    faults.succeeded("a.plist", "read");
    EXPECT_EQ(lines.size(), 2U);
}

}  // namespace

}  // namespace vorlane
