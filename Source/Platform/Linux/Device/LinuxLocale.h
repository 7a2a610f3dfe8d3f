#pragma once

#include <optional>
#include <string>
#include <vector>

#include "Platform/Linux/Device/LinuxEnvironment.h"

namespace vorlane {

/// The language tag of a POSIX locale name: "de_AT.UTF-8" is de-AT, "sr_RS@latin" sr-Latn-RS, "C" and "POSIX" are en.
/// `nullopt` if the name contains no language.
std::optional<std::string> languageTagOfLocale(const std::string& locale);

/// The user's languages as tags, most preferred first, each once: those in `LANGUAGE`, then the one in `LC_ALL`, or
/// else `LC_MESSAGES`, or else `LANG`. `LANGUAGE` is ignored if that locale is "C" or "POSIX". "en" if no variable
/// names a language.
std::vector<std::string> preferredLanguageTags(const EnvironmentLookup& lookup);

/// The name of the time zone, from the value of `TZ` or else from the target of the link /etc/localtime. Empty if `TZ`
/// is a rule ("CET-1CEST") or the target is outside the zone database.
std::string timeZoneName(const std::optional<std::string>& tz, const std::string& localtimeTarget);

}  // namespace vorlane
