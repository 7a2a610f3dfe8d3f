#include "Platform/Linux/Device/LinuxDevice.h"

#include <sys/utsname.h>

#include <ctime>
#include <filesystem>
#include <map>
#include <system_error>
#include <utility>

#include "Platform/Linux/Device/LinuxLocale.h"
#include "Platform/Linux/Device/LinuxRelease.h"
#include "Platform/NSFileManager.h"

namespace vorlane {

namespace {

utsname kernel() {
    utsname names{};
    uname(&names);
    return names;
}

/// The field of os-release, or an empty string.
std::string releaseField(const std::string& name) {
    for (const char* path : {"/etc/os-release", "/usr/lib/os-release"}) {
        const auto text = NSFileManager::contentsAtPath(path);
        if (!text) continue;
        const auto fields = fieldsOfRelease(std::string(text->begin(), text->end()));
        const auto field = fields.find(name);
        return field == fields.end() ? std::string() : field->second;
    }
    return {};
}

}  // namespace

LinuxDevice::LinuxDevice(EnvironmentLookup lookup) : lookup_(std::move(lookup)) {}

std::string LinuxDevice::systemName() const {
    const std::string name = releaseField("NAME");
    return name.empty() ? kernel().sysname : name;
}

std::string LinuxDevice::systemVersion() const {
    const std::string version = releaseField("VERSION_ID");
    return version.empty() ? kernel().release : version;
}

std::string LinuxDevice::machine() const { return kernel().machine; }

std::vector<std::string> LinuxDevice::preferredLanguages() const { return preferredLanguageTags(lookup_); }

NSTimeZone LinuxDevice::localTimeZone() const {
    // Reads TZ again, which localtime_r() need not do.
    tzset();
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);

    std::error_code error;
    const std::string localtimeTarget = std::filesystem::read_symlink("/etc/localtime", error).string();
    return {timeZoneName(lookup_("TZ"), localtimeTarget), local.tm_gmtoff};
}

}  // namespace vorlane
