#pragma once

#include <map>
#include <string>

namespace vorlane {

/// The fields of an os-release file, which is written as shell assignments: quotes and backslashes are resolved,
/// comments and lines of any other form are left out, a later assignment wins.
std::map<std::string, std::string> fieldsOfRelease(const std::string& text);

}  // namespace vorlane
