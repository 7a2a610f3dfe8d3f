#pragma once

#include <map>
#include <string>

namespace vorlane {

/// The fields of an os-release file, which consists of shell assignments. Quotes and backslashes are resolved, comments
/// and other lines are ignored, and the last assignment of a name counts.
std::map<std::string, std::string> fieldsOfRelease(const std::string& text);

}  // namespace vorlane
