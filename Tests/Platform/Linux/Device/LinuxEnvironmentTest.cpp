#include "Platform/Linux/Device/LinuxEnvironment.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <map>

#include "Platform/Linux/Curl/CurlCertificates.h"

namespace vorlane {
namespace {

EnvironmentLookup lookupIn(std::map<std::string, std::string> environment) {
    return [environment = std::move(environment)](const char* name) -> std::optional<std::string> {
        const auto found = environment.find(name);
        if (found == environment.end()) return std::nullopt;
        return found->second;
    };
}

TEST(LinuxEnvironmentTest, AVariableThatIsUnsetIsNothing) {
    EXPECT_EQ(environmentVariable("VORLANE_NO_SUCH_VARIABLE"), std::nullopt);
    EXPECT_NE(environmentVariable("PATH"), std::nullopt);
}

TEST(LinuxEnvironmentTest, TheExecutableIsThisOne) {
    EXPECT_EQ(executableName(), "vorlane_linux_tests");
    EXPECT_EQ(executablePath(), executableFolder() + "/vorlane_linux_tests");
    EXPECT_TRUE(std::filesystem::exists(executablePath()));
}

TEST(LinuxEnvironmentTest, DataGoesWhereTheXDGRulesSay) {
    EXPECT_EQ(applicationDataFolder(lookupIn({}), "/home/me", "com.example.app"),
              "/home/me/.local/share/com.example.app");
    EXPECT_EQ(applicationDataFolder(lookupIn({{"XDG_DATA_HOME", "/data"}}), "/home/me", "com.example.app"),
              "/data/com.example.app");
    EXPECT_EQ(applicationDataFolder(lookupIn({{"XDG_DATA_HOME", "/data/"}}), "", "app"), "/data/app");
}

TEST(LinuxEnvironmentTest, ARelativeDataFolderDoesNotCount) {
    EXPECT_EQ(applicationDataFolder(lookupIn({{"XDG_DATA_HOME", "data"}}), "/home/me", "app"),
              "/home/me/.local/share/app");
}

TEST(LinuxEnvironmentTest, AUserWithoutAHomeGetsAFolderOfTheirOwn) {
    EXPECT_EQ(applicationDataFolder(lookupIn({}), "", "app"), "/tmp/app-" + std::to_string(getuid()));
}

TEST(LinuxEnvironmentTest, TheHomeIsThatOfTheVariableOrOfTheUserDatabase) {
    EXPECT_EQ(homeFolder(lookupIn({{"HOME", "/home/me"}})), "/home/me");
    EXPECT_TRUE(homeFolder(lookupIn({})).starts_with('/'));
}

TEST(LinuxEnvironmentTest, AFolderNameLeadsNowhereElse) {
    EXPECT_TRUE(isFolderName("com.example.app"));
    EXPECT_TRUE(isFolderName("..."));
    for (const std::string& name : {std::string(), std::string("."), std::string(".."), std::string("a/b"),
                                    std::string("../etc"), std::string("a\0b", 3)}) {
        EXPECT_FALSE(isFolderName(name)) << name;
    }
}

TEST(LinuxEnvironmentTest, CertificatesAreWhereTheHostSaysOrTheEnvironmentOrTheDistribution) {
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
