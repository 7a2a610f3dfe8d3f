#pragma once

#include <string>

#include "Public/VLValue.h"

namespace vorlane::benchmarks {

/// What replacing a file whole takes at the least: write a temporary file, flush it, rename it. Throws when that fails.
void writeBareFile(const Data& bytes, const std::string& path);

}  // namespace vorlane::benchmarks
