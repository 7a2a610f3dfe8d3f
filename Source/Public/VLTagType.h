#pragma once

#include <cstdint>

namespace vorlane {

/// The type of a tag's value.
enum class VLTagType : std::uint64_t { String = 0, Numeric = 1, Timestamp = 2 };

}  // namespace vorlane
