#pragma once

#include <cstdint>

namespace vorlane {

/// What a tag's value is.
enum class VLTagType : std::uint64_t { String = 0, Numeric = 1, Timestamp = 2 };

}  // namespace vorlane
