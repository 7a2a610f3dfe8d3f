#include <gtest/gtest.h>
#include <sys/stat.h>

#include <chrono>
#include <future>
#include <memory>
#include <string>
#include <utility>

#include "Platform/Internal/FlushedGeneration.h"
#include "Platform/Internal/PropertyListFile.h"
#include "Platform/Internal/StorageFlusher.h"
#include "Platform/Linux/LinuxPlatform.h"
#include "Platform/UIApplication.h"
#include "Tests/Support/TemporaryFolderTest.h"

namespace vorlane {

namespace {

class LinuxPlatformStorageTest : public TemporaryFolderTest {
protected:
    LinuxPlatformStorageTest() { Platform::install(makePlatform()); }
    ~LinuxPlatformStorageTest() override { Platform::install(nullptr); }

    std::shared_ptr<LinuxPlatform> makePlatform() const {
        LinuxPlatform::Options options;
        options.documentsFolder = path("app");
        return std::make_shared<LinuxPlatform>(std::move(options));
    }

    std::string filePath() const { return path("app/file.plist"); }

    /// Whether the file as it is now has become its own flushed generation.
    bool isFlushed() const {
        struct stat file {};
        struct stat generation {};
        return stat(filePath().c_str(), &file) == 0 &&
               stat(FlushedGeneration::pathOf(filePath()).c_str(), &generation) == 0 &&
               file.st_ino == generation.st_ino;
    }

    const Dictionary contents{{"k", 1}};
};

TEST_F(LinuxPlatformStorageTest, ShutdownFlushesEverything) {
    ASSERT_TRUE(PropertyListFile(filePath()).write(contents));
    Platform::shutdown();
    EXPECT_TRUE(isFlushed());
}

TEST_F(LinuxPlatformStorageTest, ShutdownFlushesWhatItsTasksChange) {
    Platform::current().mainQueue()->post([this] { PropertyListFile(filePath()).write(contents); });
    Platform::shutdown();
    EXPECT_TRUE(isFlushed());
}

TEST_F(LinuxPlatformStorageTest, PlatformThatGoesFlushesEverything) {
    ASSERT_TRUE(PropertyListFile(filePath()).write(contents));
    Platform::install(nullptr);
    EXPECT_TRUE(isFlushed());
}

TEST_F(LinuxPlatformStorageTest, NextPlatformUsesTheSameFolder) {
    ASSERT_TRUE(PropertyListFile(filePath()).write(contents));
    PropertyListFile later(filePath());
    for (int round = 0; round < 2; ++round) {
        Platform::install(makePlatform());
        EXPECT_EQ(later.read().contents, Value(contents));
        EXPECT_TRUE(later.write(Dictionary{{"round", round}}));
        EXPECT_TRUE(later.write(contents));
    }
}

TEST_F(LinuxPlatformStorageTest, BackgroundTaskIsHeldUntilTheFlush) {
    auto& storage = Platform::current().storage();
    const auto application = Platform::current().application();
    application->didEnterBackground();
    EXPECT_TRUE(application->backgroundTasks().empty()) << "nothing to flush";
    application->willEnterForeground();

    std::promise<void> disk;
    storage.flush([&disk] { disk.get_future().wait(); });
    ASSERT_TRUE(PropertyListFile(filePath()).write(contents));
    application->didEnterBackground();
    ASSERT_EQ(application->backgroundTasks().size(), 1U);
    EXPECT_EQ(application->backgroundTasks().begin()->second, "vorlane.storage");
    EXPECT_FALSE(isFlushed());

    std::promise<void> last;
    storage.flush([&last] { last.set_value(); });
    disk.set_value();
    last.get_future().wait();
    EXPECT_TRUE(isFlushed());
    EXPECT_TRUE(application->backgroundTasks().empty());
}

}  // namespace

}  // namespace vorlane
