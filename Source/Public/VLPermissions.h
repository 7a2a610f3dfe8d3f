#pragma once

#include <cstdint>

namespace vorlane {

/// The permissions that the library can ask the user for.
enum class VLPermissions : std::uint64_t { Notifications = 0, LocationAlways = 1, LocationWhenInUse = 2 };

}  // namespace vorlane
