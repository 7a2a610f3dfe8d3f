#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace vorlane::service {

/// Text with its percent-encoded bytes decoded; a "%" that begins no such byte stays as it is.
std::string percentDecoded(std::string_view text);

/// Names and values of a query or a form body, decoded; "+" is a blank. Of equal names the first counts.
std::map<std::string, std::string> formFields(std::string_view text);

/// What stands between the slashes of an absolute path, each part decoded. "/a//b" has an empty part in its middle.
std::vector<std::string> pathSegments(std::string_view path);

}  // namespace vorlane::service
