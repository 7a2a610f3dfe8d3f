#include "Platform/Linux/Device/LinuxEnvironment.h"

#include <gtest/gtest.h>
#include <pwd.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <filesystem>
#include <map>

#include "Platform/Internal/StorageFaults.h"
#include "Platform/Internal/StorageFolder.h"
#include "Platform/Linux/Curl/CurlCertificates.h"
#include "Tests/Support/TemporaryFolderTest.h"

namespace {

// The room that an entry of the user database needs at least.
std::size_t entryLength = 0;

}  // namespace

extern "C" {

int __real_getpwuid_r(uid_t user, passwd* entry, char* buffer, std::size_t length, passwd** result);

int __wrap_getpwuid_r(uid_t user, passwd* entry, char* buffer, std::size_t length, passwd** result) {
    if (length >= entryLength) return __real_getpwuid_r(user, entry, buffer, length, result);
    *result = nullptr;
    return ERANGE;
}
}

namespace vorlane {
namespace {

EnvironmentLookup lookupIn(std::map<std::string, std::string> environment) {
    return [environment = std::move(environment)](const char* name) -> std::optional<std::string> {
        const auto found = environment.find(name);
        if (found == environment.end()) return std::nullopt;
        return found->second;
    };
}

/// What was reported about folders meanwhile.
class ReportedLines {
public:
    ReportedLines() {
        StorageFaults::shared().setHandler(
            [this](StorageFaults::Level /*level*/, const std::string& line) { text_ += line + "\n"; });
    }
    ~ReportedLines() {
        StorageFaults::shared().setHandler([](auto, const auto&) {});
    }
    bool contain(const std::string& part) const { return text_.find(part) != std::string::npos; }
    bool areEmpty() const { return text_.empty(); }

private:
    std::string text_;
};

/// A home folder that exists.
class LinuxEnvironmentFolderTest : public TemporaryFolderTest {
protected:
    const std::string home = path("home");
    ReportedLines reported;

    LinuxEnvironmentFolderTest() { std::filesystem::create_directory(home); }
};

TEST(LinuxEnvironmentTest, UnsetVariableIsAbsent) {
    EXPECT_EQ(environmentVariable("VORLANE_NO_SUCH_VARIABLE"), std::nullopt);
    EXPECT_NE(environmentVariable("PATH"), std::nullopt);
}

TEST(LinuxEnvironmentTest, ExecutableIsThisProgram) {
    EXPECT_EQ(executableName(), "vorlane_linux_tests");
    EXPECT_EQ(executablePath(), executableFolder() + "/vorlane_linux_tests");
    EXPECT_TRUE(std::filesystem::exists(executablePath()));
}

TEST_F(LinuxEnvironmentFolderTest, FolderFollowsTheXDGRules) {
    EXPECT_EQ(applicationDataFolder(lookupIn({}), home, "com.example.app"), home + "/.local/share/com.example.app");
    EXPECT_EQ(applicationDataFolder(lookupIn({{"XDG_DATA_HOME", "/data"}}), home, "com.example.app"),
              "/data/com.example.app");
    EXPECT_EQ(applicationDataFolder(lookupIn({{"XDG_DATA_HOME", "/data/"}}), "", "app"), "/data/app");
    EXPECT_TRUE(reported.areEmpty());
}

TEST_F(LinuxEnvironmentFolderTest, RelativeFoldersDoNotCount) {
    EXPECT_EQ(applicationDataFolder(lookupIn({{"XDG_DATA_HOME", "data"}, {"STATE_DIRECTORY", "state"}}), home, "app"),
              home + "/.local/share/app");
}

TEST_F(LinuxEnvironmentFolderTest, StateFolderOfAServiceComesFirst) {
    EXPECT_EQ(
        applicationDataFolder(lookupIn({{"STATE_DIRECTORY", "/var/lib/a"}, {"XDG_DATA_HOME", "/data"}}), home, "app"),
        "/var/lib/a/app");
    EXPECT_EQ(applicationDataFolder(lookupIn({{"STATE_DIRECTORY", "/var/lib/a:/var/lib/b"}}), home, "app"),
              "/var/lib/a/app");
}

TEST_F(LinuxEnvironmentFolderTest, MissingHomeIsNotMade) {
    const auto missing = path("nonexistent");
    const auto folder = applicationDataFolder(lookupIn({}), missing, "app");
    EXPECT_TRUE(reported.contain(missing)) << "names the path";
    EXPECT_TRUE(reported.contain("the identity will not persist"));
    EXPECT_EQ(StorageFolder::at(folder)->make(), StorageFolder::Access::Refused);
    EXPECT_FALSE(std::filesystem::exists(missing));
}

TEST_F(LinuxEnvironmentFolderTest, RuntimeFolderStandsInForAHome) {
    EXPECT_EQ(applicationDataFolder(lookupIn({{"XDG_RUNTIME_DIR", "/run/user/7"}}), "", "app"), "/run/user/7/app");
    EXPECT_TRUE(reported.contain("/run/user/7/app"));
}

TEST_F(LinuxEnvironmentFolderTest, UserWithoutAHomeStoresNothing) {
    const auto folder = applicationDataFolder(lookupIn({}), "", "app");
    EXPECT_EQ(StorageFolder::at(folder)->make(), StorageFolder::Access::Refused);
    EXPECT_TRUE(reported.contain("the user has no home folder"));
}

TEST(LinuxEnvironmentTest, HomeIsThatOfTheVariableOrTheUserDatabase) {
    EXPECT_EQ(homeFolder(lookupIn({{"HOME", "/home/me"}})), "/home/me");
    EXPECT_TRUE(homeFolder(lookupIn({})).starts_with('/'));
}

TEST(LinuxEnvironmentTest, LongEntriesOfTheUserDatabaseAreRead) {
    const auto home = homeFolder(lookupIn({}));
    for (const std::size_t length : {4097U, 100'000U}) {
        entryLength = length;
        EXPECT_EQ(homeFolder(lookupIn({})), home) << length;
    }
    entryLength = std::size_t{1} << 40U;
    EXPECT_EQ(homeFolder(lookupIn({})), "");
    entryLength = 0;
}

TEST(LinuxEnvironmentTest, FolderNameIsOneName) {
    EXPECT_TRUE(isFolderName("com.example.app"));
    EXPECT_TRUE(isFolderName("..."));
    for (const std::string& name : {std::string(), std::string("."), std::string(".."), std::string("a/b"),
                                    std::string("../etc"), std::string("a\0b", 3)}) {
        EXPECT_FALSE(isFolderName(name)) << name;
    }
}

TEST(LinuxEnvironmentTest, CertificatesAreThoseOfTheHostOrTheSystem) {
    const auto environment = lookupIn({{"SSL_CERT_FILE", "/env/file"}, {"SSL_CERT_DIR", "/env/folder"}});
    const auto given = CurlCertificates{"/host/file", ""}.located(environment);
    EXPECT_EQ(given.file, "/host/file");
    EXPECT_EQ(given.folder, "");
    const auto named = CurlCertificates().located(environment);
    EXPECT_EQ(named.file, "/env/file");
    EXPECT_EQ(named.folder, "/env/folder");
    const auto usual = CurlCertificates().located(lookupIn({}));
    EXPECT_TRUE(usual.file.empty() || usual.folder.empty());
    EXPECT_TRUE(usual.file.empty() || access(usual.file.c_str(), R_OK) == 0);
}

}  // namespace
}  // namespace vorlane
