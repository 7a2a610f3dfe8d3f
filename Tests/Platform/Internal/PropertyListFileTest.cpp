#include "Platform/Internal/PropertyListFile.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>
#include <chrono>
#include <filesystem>
#include <thread>

#include "Platform/Internal/FlushedGeneration.h"
#include "Platform/Internal/StorageFlusher.h"
#include "Platform/NSFileManager.h"
#include "Platform/NSPropertyListSerialization.h"
#include "Platform/Platform.h"
#include "Tests/Platform/FailingSystemCalls.h"
#include "Tests/Support/TemporaryFolderTest.h"

namespace vorlane {

namespace {

using Status = PropertyListFile::Status;
using Step = PropertyListFile::Step;

class PropertyListFileTest : public TemporaryFolderTest {
protected:
    static Dictionary version(int number) { return {{"version", number}}; }

    /// What another object reads, as a process does when it starts.
    std::optional<Value> stored() const {
        auto reading = PropertyListFile(path("file.plist")).read();
        return reading.status == Status::Contents ? std::optional(std::move(reading.contents)) : std::nullopt;
    }

    static void flush() {
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
        ASSERT_TRUE(Platform::current().storage().waitUntilIdle(deadline));
    }

    static ino_t inodeOf(const std::string& item) {
        struct stat information {};
        EXPECT_EQ(stat(item.c_str(), &information), 0) << item;
        return information.st_ino;
    }

    /// Puts a new file in the place of the old one, as an editor does.
    void replace(const std::string& text) const {
        ASSERT_TRUE(NSFileManager::writeToFile(Data(text.begin(), text.end()), path("file.plist")));
    }

    static std::string textOf(const std::string& item) {
        const auto bytes = NSFileManager::contentsAtPath(item).value_or(Data());
        return {bytes.begin(), bytes.end()};
    }

    PropertyListFile file{path("file.plist")};
};

TEST_F(PropertyListFileTest, ReadsWhatWasWritten) {
    EXPECT_EQ(file.read().status, Status::Absent);
    EXPECT_TRUE(file.write(version(1)));
    EXPECT_EQ(stored(), Value(version(1)));
}

TEST_F(PropertyListFileTest, ReadsAnArrayOnlyIfAskedFor) {
    PropertyListFile list(path("list.plist"), PropertyListFile::Root::ArrayRoot);
    EXPECT_TRUE(list.write(Array{1, 2}));
    EXPECT_EQ(list.read().contents, Value(Array{1, 2}));
    EXPECT_EQ(PropertyListFile(path("list.plist")).read().status, Status::Malformed);
    EXPECT_EQ(list.read().status, Status::Absent) << "moved aside";
}

TEST_F(PropertyListFileTest, WithoutAPathNothingIsStored) {
    PropertyListFile none("");
    EXPECT_EQ(none.read().status, Status::Absent);
    EXPECT_FALSE(none.write(version(1)));
    EXPECT_FALSE(none.isOwned());
}

TEST_F(PropertyListFileTest, UnreadableFileIsKeptAndNotOverwritten) {
    file.write(version(1));
    for (const int error : {EMFILE, EACCES, EIO, ENOMEM}) {
        PropertyListFile other(path("file.plist"));
        {
            FailingSystemCalls calls;
            calls.failOpening(error);
            EXPECT_EQ(other.read().status, Status::Unreadable) << error;
            EXPECT_EQ(other.readAgain(), std::nullopt);
            EXPECT_FALSE(other.write(version(2))) << error;
        }
        EXPECT_FALSE(other.write(version(2))) << "not read yet";
        EXPECT_EQ(stored(), Value(version(1)));
        EXPECT_EQ(other.readAgain(), std::optional<Value>(version(1)));
        EXPECT_EQ(other.readAgain(), std::nullopt) << "once";
        EXPECT_TRUE(other.write(version(1)));
    }
    EXPECT_FALSE(NSFileManager::fileExistsAtPath(path("file.plist.corrupt")));
}

TEST_F(PropertyListFileTest, FailingReadIsNoDamage) {
    file.write(version(1));
    {
        FailingSystemCalls calls;
        calls.failReads();
        EXPECT_EQ(file.read().status, Status::Unreadable);
    }
    EXPECT_EQ(file.readAgain(), std::optional<Value>(version(1)));
}

TEST_F(PropertyListFileTest, OverlongFileIsUnreadable) {
    replace("x");
    std::filesystem::resize_file(path("file.plist"), (std::size_t{64} << 20U) + 1);
    EXPECT_EQ(file.read().status, Status::Unreadable);
    EXPECT_FALSE(file.write(version(1)));
}

TEST_F(PropertyListFileTest, KeepsThe3NewestDamagedFiles) {
    for (const auto* text : {"first", "second", "third", "fourth"}) {
        replace(text);
        EXPECT_EQ(file.read().status, Status::Malformed);
        EXPECT_EQ(file.read().status, Status::Absent);
    }
    EXPECT_EQ(textOf(path("file.plist.corrupt")), "fourth");
    EXPECT_EQ(textOf(path("file.plist.corrupt.1")), "third");
    EXPECT_EQ(textOf(path("file.plist.corrupt.2")), "second");
    EXPECT_EQ(names().size(), 3U);
}

TEST_F(PropertyListFileTest, WhatIsNoFileIsMovedAside) {
    ASSERT_EQ(mkfifo(path("file.plist").c_str(), 0600), 0);
    EXPECT_EQ(file.read().status, Status::Malformed);
    EXPECT_TRUE(file.write(version(1)));
    ASSERT_TRUE(NSFileManager::createDirectoryAtPath(path("folder.plist/occupied")));
    EXPECT_EQ(PropertyListFile(path("folder.plist")).read().status, Status::Malformed);
    EXPECT_THAT(names(), ::testing::UnorderedElementsAre("file.plist", "file.plist.corrupt", "folder.plist.corrupt"));
}

TEST_F(PropertyListFileTest, FallsBackToTheFlushedGeneration) {
    file.write(version(1));
    flush();
    replace("damaged");
    EXPECT_EQ(file.read().contents, Value(version(1)));
    EXPECT_EQ(textOf(path("file.plist.corrupt")), "damaged");
    EXPECT_EQ(stored(), Value(version(1))) << "the file is restored";
    EXPECT_TRUE(file.write(version(2)));
    EXPECT_EQ(stored(), Value(version(2)));
}

TEST_F(PropertyListFileTest, AtRestTheFlushedGenerationIsTheFile) {
    for (int number = 1; number <= 3; ++number) {
        file.write(version(number));
        file.write(version(-number));
        flush();
        EXPECT_EQ(inodeOf(FlushedGeneration::pathOf(path("file.plist"))), inodeOf(path("file.plist")));
    }
    std::vector<std::string> kept;
    for (const auto& entry : std::filesystem::directory_iterator(path(".flushed"))) {
        kept.push_back(entry.path().filename());
    }
    EXPECT_EQ(kept, std::vector<std::string>{"file.plist"});
}

TEST_F(PropertyListFileTest, WithoutHardLinksTheGenerationIsACopy) {
    FailingSystemCalls calls;
    calls.failLinks();
    file.write(version(1));
    flush();
    EXPECT_NE(inodeOf(FlushedGeneration::pathOf(path("file.plist"))), inodeOf(path("file.plist")));
    replace("damaged");
    EXPECT_EQ(file.read().contents, Value(version(1)));
    EXPECT_EQ(textOf(path("file.plist.corrupt")), "damaged");
    EXPECT_EQ(stored(), Value(version(1)));
}

TEST_F(PropertyListFileTest, DeletedFileIsNotResurrected) {
    file.write(version(1));
    flush();
    std::filesystem::remove(path("file.plist"));
    EXPECT_EQ(file.read().status, Status::Absent);
    replace("damaged");
    EXPECT_EQ(file.read().status, Status::Malformed);
}

TEST_F(PropertyListFileTest, RemovedFileLosesItsFlushedGeneration) {
    file.write(version(1));
    flush();
    EXPECT_TRUE(file.remove());
    EXPECT_TRUE(file.remove());
    EXPECT_FALSE(NSFileManager::fileExistsAtPath(path("file.plist")));
    flush();
    EXPECT_FALSE(NSFileManager::fileExistsAtPath(FlushedGeneration::pathOf(path("file.plist"))));
}

TEST_F(PropertyListFileTest, UnchangedContentsAreNotWrittenAgain) {
    file.write(version(1));
    const auto inode = inodeOf(path("file.plist"));
    EXPECT_TRUE(file.write(version(1)));
    EXPECT_EQ(inodeOf(path("file.plist")), inode);
    PropertyListFile other(path("file.plist"));
    other.read();
    EXPECT_TRUE(other.write(version(1)));
    EXPECT_EQ(inodeOf(path("file.plist")), inode);
    EXPECT_TRUE(other.write(version(2)));
    EXPECT_TRUE(file.write(version(1))) << "another object has written meanwhile";
    EXPECT_EQ(stored(), Value(version(1)));
}

TEST_F(PropertyListFileTest, FailedWriteIsTriedAgain) {
    file.write(version(1));
    {
        FailingSystemCalls calls;
        calls.failWritesFrom(10);
        EXPECT_FALSE(file.write(version(2)));
        EXPECT_EQ(stored(), Value(version(1)));
    }
    EXPECT_TRUE(file.write(version(2)));
    EXPECT_EQ(stored(), Value(version(2)));
}

TEST_F(PropertyListFileTest, OneStepWritesOnce) {
    int writes = 0;
    const auto change = [&] {
        if (Step::postpone(file, [&] { file.write(version(++writes)); })) return;
        file.write(version(++writes));
    };
    {
        const Step outer;
        change();
        {
            const Step inner;
            change();
        }
        change();
        EXPECT_EQ(stored(), std::nullopt);
        std::thread([&] { EXPECT_FALSE(Step::postpone(file, [] {})) << "a step of another thread"; }).join();
    }
    EXPECT_EQ(stored(), Value(version(1)));
    change();
    EXPECT_EQ(stored(), Value(version(2)));
}

TEST_F(PropertyListFileTest, StepForgetsAFileThatIsGone) {
    bool isWritten = false;
    {
        const Step step;
        PropertyListFile other(path("other.plist"));
        EXPECT_TRUE(Step::postpone(other, [&] { isWritten = true; }));
    }
    EXPECT_FALSE(isWritten);
}

TEST_F(PropertyListFileTest, OnlyTheStorageThreadFlushes) {
    const int before = FailingSystemCalls::flushes();
    const int here = FailingSystemCalls::flushesOfThisThread();
    file.write(version(1));
    PropertyListFile(path("other.plist")).write(version(1));
    stored();
    file.remove();
    flush();
    EXPECT_EQ(FailingSystemCalls::flushesOfThisThread(), here);
    EXPECT_GT(FailingSystemCalls::flushes(), before);
}

TEST_F(PropertyListFileTest, ManyChangesShareOneFlush) {
    file.write(version(0));
    flush();
    const int before = FailingSystemCalls::flushes();
    for (int number = 1; number <= 20; ++number) file.write(version(number));
    flush();
    // The bytes, the subfolder and the folder: at once, or twice if the delayed flush came in between.
    EXPECT_LE(FailingSystemCalls::flushes() - before, 6);
}

TEST_F(PropertyListFileTest, FailedFlushIsTriedWithTheNextChange) {
    {
        FailingSystemCalls calls;
        calls.failFlushes();
        file.write(version(1));
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
        EXPECT_FALSE(Platform::current().storage().waitUntilIdle(deadline));
    }
    EXPECT_EQ(stored(), Value(version(1)));
    flush();
    EXPECT_EQ(inodeOf(FlushedGeneration::pathOf(path("file.plist"))), inodeOf(path("file.plist")));
}

TEST_F(PropertyListFileTest, TooManyValuesAreNotWritten) {
    file.write(version(1));
    EXPECT_FALSE(file.write(Dictionary{{"list", Array(1'000'000, 1)}}));
    EXPECT_EQ(stored(), Value(version(1)));
}

}  // namespace

}  // namespace vorlane
