#pragma once

#include <cstddef>
#include <string_view>

namespace vorlane {

/// `length`: the number of UTF-16 units that the text takes, so that a character outside the basic plane counts twice.
std::size_t vl_length(std::string_view text);

}  // namespace vorlane
