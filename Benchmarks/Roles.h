#pragma once

#include <string>

namespace vorlane::benchmarks {

/// Measures one thing in this process, which does nothing else, and returns the figure: seconds, bytes or a count. The
/// roles are the names in Roles.cpp. Throws std::out_of_range for an unknown role.
double figureOfRole(const std::string& role);

}  // namespace vorlane::benchmarks
