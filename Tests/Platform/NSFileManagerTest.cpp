#include "Platform/NSFileManager.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <thread>

#include "Tests/Platform/FailingSystemCalls.h"
#include "Tests/Support/TemporaryFolderTest.h"

namespace vorlane {

namespace {

class NSFileManagerTest : public TemporaryFolderTest {
protected:
    static unsigned modeOf(const std::string& item) {
        struct stat information {};
        EXPECT_EQ(stat(item.c_str(), &information), 0);
        return information.st_mode & 0777U;
    }

    const Data old{1, 2, 3};
    const Data fresh{4, 5, 6, 7, 8, 9};
};

TEST_F(NSFileManagerTest, WrittenBytesAreReadBack) {
    for (const auto& bytes : {Data(), Data{0}, Data(1'000'000, 0xAB)}) {
        EXPECT_TRUE(NSFileManager::writeToFile(bytes, path("file")));
        EXPECT_EQ(NSFileManager::contentsAtPath(path("file")), bytes);
    }
    EXPECT_EQ(names(), std::vector<std::string>{"file"});
}

TEST_F(NSFileManagerTest, FilesAndFoldersArePrivate) {
    EXPECT_TRUE(NSFileManager::writeToFile(old, path("a/b/file")));
    EXPECT_EQ(modeOf(path("a/b/file")), 0600U);
    EXPECT_EQ(modeOf(path("a")), 0700U);
    EXPECT_EQ(modeOf(path("a/b")), 0700U);
}

TEST_F(NSFileManagerTest, OnlyOldTemporaryFilesAreRemoved) {
    const std::vector<std::string> kept{"VLLibSettings.plist",     "VLLibSettings.plist.corrupt",
                                        "VLLibSettings.plist.old", "VLLibSettings.plist.backup",
                                        "a.plist.123456",          "a.plist.vorlane-12345",
                                        "a.plist.vorlane-1234567", "a.plist.vorlane-12-456",
                                        "a.txt.vorlane-123456",    "123456"};
    for (const auto& name : kept) ASSERT_TRUE(NSFileManager::writeToFile(old, path(name)));
    for (const auto* name : {"VLLibSettings.plist.vorlane-aB3xYz", "a.plist.vorlane-123456"}) {
        ASSERT_TRUE(NSFileManager::writeToFile(old, path(name)));
    }
    std::filesystem::create_directory(path("b.plist.vorlane-abcdef"));
    std::filesystem::create_symlink(path("VLLibSettings.plist"), path("c.plist.vorlane-abcdef"));

    NSFileManager::removeAbandonedTemporaryFilesInFolder(path(""), 1.0);
    EXPECT_EQ(names().size(), kept.size() + 4) << "written after that time";

    NSFileManager::removeAbandonedTemporaryFilesInFolder(path(""), 1e12);
    auto expected = kept;
    expected.insert(expected.end(), {"b.plist.vorlane-abcdef", "c.plist.vorlane-abcdef"});
    EXPECT_THAT(names(), ::testing::UnorderedElementsAreArray(expected));

    NSFileManager::removeAbandonedTemporaryFilesInFolder(path("none"), 1e12);
}

TEST_F(NSFileManagerTest, FullDiskLeavesOnlyTheOldFile) {
    ASSERT_TRUE(NSFileManager::writeToFile(old, path("file")));
    for (long long byte = 0; byte < 6; ++byte) {
        FailingSystemCalls faults;
        faults.failWritesFrom(byte);
        EXPECT_FALSE(NSFileManager::writeToFile(fresh, path("file"))) << byte;
        EXPECT_EQ(NSFileManager::contentsAtPath(path("file")), old) << byte;
        EXPECT_EQ(names(), std::vector<std::string>{"file"}) << byte;
    }
}

TEST_F(NSFileManagerTest, FailedRenameLeavesTheOldFile) {
    ASSERT_TRUE(NSFileManager::writeToFile(old, path("file")));
    FailingSystemCalls faults;
    faults.failRenames();
    EXPECT_EQ(NSFileManager::replaceFile(fresh, path("file")), EROFS);
    EXPECT_EQ(NSFileManager::contentsAtPath(path("file")), old);
    EXPECT_EQ(names(), std::vector<std::string>{"file"});
}

TEST_F(NSFileManagerTest, WritingFlushesNothing) {
    const int before = FailingSystemCalls::flushes();
    ASSERT_TRUE(NSFileManager::writeToFile(old, path("file")));
    EXPECT_EQ(FailingSystemCalls::flushes(), before);
}

TEST_F(NSFileManagerTest, ErrorsOfReadingAreToldApart) {
    Data bytes;
    ASSERT_TRUE(NSFileManager::writeToFile(old, path("file")));
    EXPECT_EQ(NSFileManager::readFile(path("file"), bytes), 0);
    EXPECT_EQ(NSFileManager::readFile(path("none"), bytes), ENOENT);
    EXPECT_EQ(NSFileManager::readFile(path("file/below"), bytes), ENOTDIR);
    EXPECT_EQ(NSFileManager::readFile(path(""), bytes), EINVAL);
    FailingSystemCalls faults;
    faults.failOpening(EMFILE);
    EXPECT_EQ(NSFileManager::readFile(path("file"), bytes), EMFILE);
}

TEST_F(NSFileManagerTest, ShortAndInterruptedWritesContinue) {
    FailingSystemCalls faults;
    faults.writeInPieces(2);
    EXPECT_TRUE(NSFileManager::writeToFile(fresh, path("file")));
    EXPECT_EQ(NSFileManager::contentsAtPath(path("file")), fresh);
}

TEST_F(NSFileManagerTest, ShortAndInterruptedReadsContinue) {
    ASSERT_TRUE(NSFileManager::writeToFile(fresh, path("file")));
    FailingSystemCalls faults;
    faults.readInPieces(1);
    EXPECT_EQ(NSFileManager::contentsAtPath(path("file")), fresh);
}

TEST_F(NSFileManagerTest, UnreadableFileHasNoContents) {
    ASSERT_TRUE(NSFileManager::writeToFile(fresh, path("file")));
    FailingSystemCalls faults;
    faults.failReads();
    EXPECT_EQ(NSFileManager::contentsAtPath(path("file")), std::nullopt);
}

TEST_F(NSFileManagerTest, LinkIsReplacedAndItsTargetStays) {
    ASSERT_TRUE(NSFileManager::writeToFile(old, path("target")));
    std::filesystem::create_symlink(path("target"), path("link"));
    EXPECT_TRUE(NSFileManager::writeToFile(fresh, path("link")));
    EXPECT_EQ(NSFileManager::contentsAtPath(path("link")), fresh);
    EXPECT_EQ(NSFileManager::contentsAtPath(path("target")), old);
    EXPECT_FALSE(std::filesystem::is_symlink(path("link")));
}

TEST_F(NSFileManagerTest, RelativePathsStartAtTheCurrentFolder) {
    const auto before = std::filesystem::current_path();
    std::filesystem::current_path(path(""));
    EXPECT_TRUE(NSFileManager::writeToFile(fresh, "bare"));
    EXPECT_TRUE(NSFileManager::writeToFile(fresh, "below/file"));
    std::filesystem::current_path(before);
    EXPECT_EQ(NSFileManager::contentsAtPath(path("bare")), fresh);
    EXPECT_EQ(NSFileManager::contentsAtPath(path("below/file")), fresh);
}

TEST_F(NSFileManagerTest, ImpossiblePathsAreRefused) {
    ASSERT_TRUE(NSFileManager::createDirectoryAtPath(path("folder/occupied")));
    ASSERT_TRUE(NSFileManager::writeToFile(old, path("file")));
    for (const auto& unfit : {std::string(), path("folder"), path("file/below"), path(std::string("a\0b", 3)),
                              path(std::string(5000, 'x'))}) {
        EXPECT_FALSE(NSFileManager::writeToFile(fresh, unfit)) << unfit.substr(0, 80);
        EXPECT_EQ(NSFileManager::contentsAtPath(unfit), std::nullopt) << unfit.substr(0, 80);
    }
    EXPECT_EQ(NSFileManager::contentsAtPath(path("file")), old);
}

TEST_F(NSFileManagerTest, OnlyRegularFilesAreRead) {
    ASSERT_EQ(mkfifo(path("pipe").c_str(), 0600), 0);
    EXPECT_EQ(NSFileManager::contentsAtPath(path("pipe")), std::nullopt);
    EXPECT_EQ(NSFileManager::contentsAtPath("/dev/zero"), std::nullopt);
    EXPECT_EQ(NSFileManager::contentsAtPath(path("none")), std::nullopt);
}

TEST_F(NSFileManagerTest, FileBeyondTheLimitIsNotRead) {
    std::ofstream(path("long")).put('x');
    std::filesystem::resize_file(path("long"), 64U * 1024U * 1024U + 1U);
    EXPECT_EQ(NSFileManager::contentsAtPath(path("long")), std::nullopt);
}

TEST_F(NSFileManagerTest, FolderIsMadeWithItsParents) {
    EXPECT_TRUE(NSFileManager::createDirectoryAtPath(path("a/b/c")));
    EXPECT_TRUE(NSFileManager::createDirectoryAtPath(path("a/b/c")));
    ASSERT_TRUE(NSFileManager::writeToFile(old, path("file")));
    EXPECT_FALSE(NSFileManager::createDirectoryAtPath(path("file")));
    EXPECT_FALSE(NSFileManager::createDirectoryAtPath(path("file/below")));
    EXPECT_FALSE(NSFileManager::createDirectoryAtPath(""));
}

TEST_F(NSFileManagerTest, FileIsMovedOverAnother) {
    ASSERT_TRUE(NSFileManager::writeToFile(old, path("a")));
    ASSERT_TRUE(NSFileManager::writeToFile(fresh, path("b")));
    EXPECT_TRUE(NSFileManager::moveItemAtPath(path("b"), path("a")));
    EXPECT_EQ(NSFileManager::contentsAtPath(path("a")), fresh);
    EXPECT_FALSE(NSFileManager::fileExistsAtPath(path("b")));
    EXPECT_FALSE(NSFileManager::moveItemAtPath(path("none"), path("a")));
}

TEST_F(NSFileManagerTest, CreationDateIsThatOfTheItem) {
    const auto now = std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count();
    ASSERT_TRUE(NSFileManager::writeToFile(old, path("file")));
    const auto date = NSFileManager::creationDateOfItemAtPath(path("file"));
    ASSERT_TRUE(date);
    EXPECT_NEAR(*date, now, 60);
    EXPECT_EQ(NSFileManager::creationDateOfItemAtPath(path("none")), std::nullopt);
}

TEST_F(NSFileManagerTest, ConcurrentWritersLeaveOneWholeFile) {
    std::vector<std::thread> writers;
    for (std::uint8_t i = 0; i < 4; ++i) {
        writers.emplace_back([this, i] {
            for (int round = 0; round < 20; ++round) NSFileManager::writeToFile(Data(5000, i), path("file"));
        });
    }
    for (auto& writer : writers) writer.join();
    const auto bytes = NSFileManager::contentsAtPath(path("file")).value();
    EXPECT_EQ(bytes, Data(5000, bytes.front()));
    EXPECT_EQ(names(), std::vector<std::string>{"file"});
}

}  // namespace

}  // namespace vorlane
