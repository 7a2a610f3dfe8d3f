#include "Categories/NSDate+VLTimestamp.h"

#include <fmt/format.h>

#include "Platform/Platform.h"

namespace vorlane {

std::string vl_unixTimestampInMilliseconds(std::optional<double> time) {
    return fmt::format("{:.0f}", time.value_or(0.0) * 1000.0);
}

double vl_now() { return Platform::current().clock().now(); }

}  // namespace vorlane
