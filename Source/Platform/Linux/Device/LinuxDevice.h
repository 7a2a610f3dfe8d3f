#pragma once

#include <string>
#include <vector>

#include "Platform/Linux/Device/LinuxEnvironment.h"
#include "Platform/UIDevice.h"

namespace vorlane {

/// The machine and its user's preferences, read anew with each question.
class LinuxDevice : public UIDevice {
public:
    explicit LinuxDevice(EnvironmentLookup lookup = environmentVariable);

    /// The distribution's name by os-release ("Debian GNU/Linux"); the kernel's name where there is none.
    std::string systemName() const override;
    /// The distribution's version by os-release ("12"); the kernel's release where there is none.
    std::string systemVersion() const override;
    std::string machine() const override;
    std::vector<std::string> preferredLanguages() const override;
    NSTimeZone localTimeZone() const override;

private:
    const EnvironmentLookup lookup_;
};

}  // namespace vorlane
