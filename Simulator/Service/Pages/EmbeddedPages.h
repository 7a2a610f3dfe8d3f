#pragma once

#include <map>
#include <string>

namespace vorlane::service {

/// The pages of this folder by file name, each with its style. The build generates the source.
std::map<std::string, std::string> embeddedPages();

}  // namespace vorlane::service
