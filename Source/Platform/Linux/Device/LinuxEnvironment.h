#pragma once

#include <functional>
#include <optional>
#include <string>

namespace vorlane {

/// Looks up an environment variable; `nullopt` if it is unset or empty.
using EnvironmentLookup = std::function<std::optional<std::string>(const char* name)>;

/// The lookup in this process's environment.
std::optional<std::string> environmentVariable(const char* name);

/// The path of the running program; empty if the system does not report it.
std::string executablePath();
/// The folder of the running program, without a slash at its end; empty if the system does not report it.
std::string executableFolder();
/// The file name of the running program; "vorlane" if the system does not report it.
std::string executableName();

/// The user's home folder, whether it exists or not: `$HOME`, else that of the user database; empty if there is none.
std::string homeFolder(const EnvironmentLookup& lookup);

/// Returns the folder named `name` for an application's data, in the first of these that is known:
/// - `$STATE_DIRECTORY` (the first of several), where a service manager keeps a service's data;
/// - `$XDG_DATA_HOME`, which counts only if it is absolute;
/// - ".local/share" in the home folder, if the home folder exists;
/// - `$XDG_RUNTIME_DIR`, which the system empties when the user logs out. This is reported.
///
/// Otherwise nothing can be stored. Reports so (see StorageFaults) and returns a path at which there can be no folder.
std::string applicationDataFolder(const EnvironmentLookup& lookup, const std::string& home, const std::string& name);

/// Whether `name` can be the name of a folder: not empty, no slash, no NUL, neither "." nor "..".
bool isFolderName(const std::string& name);

}  // namespace vorlane
