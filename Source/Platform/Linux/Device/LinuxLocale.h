#pragma once

#include <optional>
#include <string>
#include <vector>

#include "Platform/Linux/Device/LinuxEnvironment.h"

namespace vorlane {

/// The language tag of a POSIX locale name: "de_AT.UTF-8" is de-AT, "sr_RS@latin" sr-Latn-RS, "C" and "POSIX" are en.
/// Nothing when it names no language.
std::optional<std::string> languageTagOfLocale(const std::string& locale);

/// The user's languages as tags, most preferred first, each once: those of `LANGUAGE`, then that of `LC_ALL`, else
/// `LC_MESSAGES`, else `LANG`. Where that locale is "C" or "POSIX", `LANGUAGE` does not count. "en" when nothing names
/// a language.
std::vector<std::string> preferredLanguageTags(const EnvironmentLookup& lookup);

/// The name of the time zone, from the value of `TZ` or else from where the link /etc/localtime leads. Empty when `TZ`
/// is a rule
/// ("CET-1CEST") or the link leads outside of the zone database.
std::string timeZoneName(const std::optional<std::string>& tz, const std::string& localtimeTarget);

}  // namespace vorlane
