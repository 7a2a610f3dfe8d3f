#pragma once

#include <cstdint>

#include "Platform/NSURLSession.h"

namespace vorlane {

/// Request methods by number: 0 GET, 1 POST, 2 PUT, 3 DELETE.
enum class VLHTTPMethodNumber : std::int64_t { GET = 0, POST = 1, PUT = 2, DELETE = 3 };

/// Returns the number of the request's method; -1 for any other method. The comparison is case-sensitive.
std::int64_t VLHTTPMethod(const NSURLRequest& request);
/// Sets the method by its number; any other number sets "GET".
void setVLHTTPMethod(NSURLRequest& request, std::int64_t method);

}  // namespace vorlane
