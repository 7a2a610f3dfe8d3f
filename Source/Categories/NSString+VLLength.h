#pragma once

#include <cstddef>
#include <string_view>

namespace vorlane {

/// `length` returns the number of UTF-16 code units. A character outside the basic plane counts twice.
std::size_t vl_length(std::string_view text);

}  // namespace vorlane
