#pragma once

#include <functional>
#include <optional>
#include <string>

namespace vorlane {

/// Looks up an environment variable; one that is unset or empty is nothing.
using EnvironmentLookup = std::function<std::optional<std::string>(const char* name)>;

/// The lookup in this process's environment.
std::optional<std::string> environmentVariable(const char* name);

/// The path of the running program; empty when the system does not tell.
std::string executablePath();
/// The folder of the running program, without a slash at its end; empty when the system does not tell.
std::string executableFolder();
/// The file name of the running program; "vorlane" when the system does not tell.
std::string executableName();

/// The user's home folder: `$HOME`, else that of the user database; empty when there is none.
std::string homeFolder(const EnvironmentLookup& lookup);

/// The folder for an application's data by the XDG rules: `$XDG_DATA_HOME`, which counts only when absolute, else
/// `~/.local/share`, and in it a folder of that name. A user without a home gets a folder of their own below "/tmp".
std::string applicationDataFolder(const EnvironmentLookup& lookup, const std::string& home, const std::string& name);

/// Whether `name` can be the name of one folder: not empty, no slash, no NUL, neither "." nor "..".
bool isFolderName(const std::string& name);

}  // namespace vorlane
