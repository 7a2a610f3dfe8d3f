#pragma once

#include <optional>
#include <string>

#include "Public/VLLogger.h"
#include "Public/VLValue.h"

namespace vorlane::phone {

/// The options of the command line.
struct PhoneOptions {
    /// "--help": only the usage is wanted, and the other options are not read.
    bool wantsHelp = false;
    std::string dataDirectory;
    std::optional<std::string> serviceOrigin;
    Dictionary urls;
    Dictionary info;
    double systemVersion = 12.0;
    /// The start of the virtual clock; `nullopt`: the real clock.
    std::optional<double> virtualClock;
    /// The level for a `launch` whose options name none.
    std::optional<VLLogLevel> logLevel;
    std::string resources;

    static const char* usage();
    /// Throws std::invalid_argument for an option that is unknown, incomplete or unusable; its text says why.
    static PhoneOptions parse(int count, char** arguments);
};

}  // namespace vorlane::phone
