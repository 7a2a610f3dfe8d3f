#include <stdlib.h>

#include <filesystem>
#include <fstream>

#include "Platform/NSBundle.h"
#include "Platform/NSNotificationCenter.h"
#include "Platform/OSLog.h"
#include "Tests/Support/SimulatedPhoneTest.h"
#include "Tests/Support/TemporaryFolderTest.h"

namespace vorlane {

namespace {

class SimulatedPhonePlatformTest : public TemporaryFolderTest {};

TEST_F(SimulatedPhonePlatformTest, RemovesItsTemporaryFolder) {
    std::string folder;
    {
        const SimulatedPhone phone;
        folder = phone.documentsFolder();
        EXPECT_TRUE(std::filesystem::is_directory(folder));
        std::ofstream(folder + "/file") << "x";
    }
    EXPECT_FALSE(std::filesystem::exists(folder));
}

TEST_F(SimulatedPhonePlatformTest, EachPhoneHasItsOwnTemporaryFolder) {
    const SimulatedPhone one;
    const SimulatedPhone other;
    EXPECT_NE(one.documentsFolder(), other.documentsFolder());
}

TEST_F(SimulatedPhonePlatformTest, TemporaryFoldersAreCreatedInTMPDIR) {
    const char* const before = getenv("TMPDIR");
    const std::string saved = before ? before : "";
    setenv("TMPDIR", path("").c_str(), 1);
    {
        const SimulatedPhone phone;
        EXPECT_TRUE(phone.documentsFolder().starts_with(path("")));
    }
    EXPECT_TRUE(names().empty());
    before ? setenv("TMPDIR", saved.c_str(), 1) : unsetenv("TMPDIR");
}

TEST_F(SimulatedPhonePlatformTest, AGivenFolderIsCreatedAndKept) {
    { const SimulatedPhone phone({.documentsFolder = path("a/b")}); }
    EXPECT_TRUE(std::filesystem::is_directory(path("a/b")));
}

TEST_F(SimulatedPhonePlatformTest, InstallDateIsTheFoldersCreationDateByDefault) {
    SimulatedPhone phone({.documentsFolder = path("phone")});
    EXPECT_TRUE(phone.documentsCreationDate());
    phone.setDocumentsCreationDate(5.0);
    EXPECT_EQ(phone.documentsCreationDate(), 5.0);
    phone.setDocumentsCreationDate(std::nullopt);
    EXPECT_EQ(phone.documentsCreationDate(), std::nullopt);
}

TEST_F(SimulatedPhonePlatformTest, GenerationIsReportedByPhoneAndDevice) {
    EXPECT_EQ(SimulatedPhone().systemVersion(), 12.0);
    SimulatedPhone phone({.systemVersion = 9.3});
    EXPECT_EQ(phone.systemVersion(), 9.3);
    EXPECT_EQ(phone.device()->systemVersion(), "9.3");
    EXPECT_EQ(SimulatedPhone({.systemVersion = 10.0}).device()->systemVersion(), "10.0");
}

TEST_F(SimulatedPhonePlatformTest, BundleHasTheGivenInfoAndResources) {
    std::ofstream(path("ding.wav")) << "x";
    SimulatedPhone phone({.infoDictionary = {{"VL_App_Key", "key"}}, .resourceFolder = path("")});
    EXPECT_EQ(phone.mainBundle()->objectForInfoDictionaryKey("VL_App_Key"), Value("key"));
    EXPECT_TRUE(phone.mainBundle()->pathForResource("ding", "wav"));
    EXPECT_FALSE(phone.mainBundle()->pathForResource("dong", "wav"));
}

TEST_F(SimulatedPhonePlatformTest, AccessorsReturnTheSameObjectEachTime) {
    SimulatedPhone phone;
    EXPECT_EQ(phone.application(), phone.application());
    EXPECT_EQ(phone.device(), phone.device());
    EXPECT_EQ(phone.mainBundle(), phone.mainBundle());
    EXPECT_EQ(phone.mainQueue(), phone.mainQueue());
    EXPECT_EQ(phone.notificationCenter(), phone.notificationCenter());
    EXPECT_EQ(phone.application().get(), &phone.simulatedApplication());
    EXPECT_EQ(phone.device().get(), &phone.simulatedDevice());
    EXPECT_EQ(phone.makeURLSession({}).get(), &phone.session());
    EXPECT_NE(phone.makeSerialQueue("a"), phone.makeSerialQueue("a"));
}

TEST_F(SimulatedPhonePlatformTest, RecordsTheSystemLogAndTheConsole) {
    SimulatedPhone phone;
    phone.makeOSLog("sub", "category")->log(OSLogType::Error, "text");
    phone.makeOSLog("sub", "other")->log(OSLogType::Debug, "more");
    phone.NSLog("line");
    const auto lines = phone.systemLog();
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_EQ(lines[0].subsystem, "sub");
    EXPECT_EQ(lines[0].category, "category");
    EXPECT_EQ(lines[0].type, 16);
    EXPECT_EQ(lines[0].text, "text");
    EXPECT_EQ(lines[1].category, "other");
    EXPECT_EQ(phone.console(), std::vector<std::string>{"line"});
}

TEST_F(SimulatedPhonePlatformTest, LogsMayOutliveThePhone) {
    std::shared_ptr<OSLog> log;
    {
        SimulatedPhone phone;
        log = phone.makeOSLog("sub", "category");
    }
    log->log(OSLogType::Info, "late");
}

}  // namespace

}  // namespace vorlane
