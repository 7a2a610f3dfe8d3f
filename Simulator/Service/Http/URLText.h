#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace vorlane::service {

/// Decodes percent-encoded bytes; a "%" that starts no such byte is kept.
std::string percentDecoded(std::string_view text);

/// Decodes the names and values of a query or a form; "+" stands for a blank. Of equal names the first applies.
std::map<std::string, std::string> formFields(std::string_view text);

/// Splits an absolute path at its slashes and decodes each part. "/a//b" has an empty part in the middle.
std::vector<std::string> pathSegments(std::string_view path);

}  // namespace vorlane::service
