#include "Platform/Linux/Device/LinuxDevice.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/utsname.h>

#include <ctime>

namespace vorlane {
namespace {

TEST(LinuxDeviceTest, SystemHasNameAndVersion) {
    const LinuxDevice device;
    EXPECT_FALSE(device.systemName().empty());
    EXPECT_FALSE(device.systemVersion().empty());
}

TEST(LinuxDeviceTest, MachineIsTheKernels) {
    utsname kernel{};
    ASSERT_EQ(uname(&kernel), 0);
    EXPECT_EQ(LinuxDevice().machine(), kernel.machine);
}

TEST(LinuxDeviceTest, LanguagesComeFromTheEnvironment) {
    const LinuxDevice device([](const char* name) -> std::optional<std::string> {
        return name == std::string("LANG") ? std::optional<std::string>("de_AT.UTF-8") : std::nullopt;
    });
    EXPECT_THAT(device.preferredLanguages(), testing::ElementsAre("de-AT"));
}

TEST(LinuxDeviceTest, TimeZoneIsTheCurrentOne) {
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    const LinuxDevice device([](const char* name) -> std::optional<std::string> {
        return name == std::string("TZ") ? std::optional<std::string>("Europe/Oslo") : std::nullopt;
    });
    EXPECT_EQ(device.localTimeZone().secondsFromGMT, local.tm_gmtoff);
    EXPECT_EQ(device.localTimeZone().name, "Europe/Oslo");
}

}  // namespace
}  // namespace vorlane
