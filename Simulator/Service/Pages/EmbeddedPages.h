#pragma once

#include <map>
#include <string>

namespace vorlane::service {

/// The pages in Pages/ by their file names, each with its style inside. The source of this is written by the build.
std::map<std::string, std::string> embeddedPages();

}  // namespace vorlane::service
