#pragma once

#include <optional>
#include <string>

#include "Public/VLLogger.h"
#include "Public/VLValue.h"

namespace vorlane::phone {

/// What the command line says.
struct PhoneOptions {
    std::string dataDirectory;
    std::optional<std::string> serviceOrigin;
    Dictionary urls;
    Dictionary info;
    double systemVersion = 12.0;
    /// Where the virtual clock starts; nothing: the real clock.
    std::optional<double> virtualClock;
    /// What `launch` uses when its options name none.
    std::optional<VLLogLevel> logLevel;
    std::string resources;

    static const char* usage();
    /// Throws std::invalid_argument, with what is wrong, for an option that is unknown, incomplete or unusable.
    static PhoneOptions parse(int count, char** arguments);
};

}  // namespace vorlane::phone
