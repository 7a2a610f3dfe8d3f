#pragma once

#include <string>

#include "Public/VLValue.h"

namespace vorlane::benchmarks {

/// Replaces a file in the cheapest way: writes a temporary file and renames it, without a flush. Throws
/// std::runtime_error on failure.
void writeBareFile(const Data& bytes, const std::string& path);

}  // namespace vorlane::benchmarks
