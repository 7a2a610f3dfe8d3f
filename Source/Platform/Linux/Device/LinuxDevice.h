#pragma once

#include <string>
#include <vector>

#include "Platform/Linux/Device/LinuxEnvironment.h"
#include "Platform/UIDevice.h"

namespace vorlane {

/// The machine and its user's preferences, read again by each call.
class LinuxDevice : public UIDevice {
public:
    explicit LinuxDevice(EnvironmentLookup lookup = environmentVariable);

    /// The distribution's name in os-release ("Debian GNU/Linux"), or else the kernel's name.
    std::string systemName() const override;
    /// The distribution's version in os-release ("12"), or else the kernel's release.
    std::string systemVersion() const override;
    std::string machine() const override;
    std::vector<std::string> preferredLanguages() const override;
    NSTimeZone localTimeZone() const override;

private:
    const EnvironmentLookup lookup_;
};

}  // namespace vorlane
