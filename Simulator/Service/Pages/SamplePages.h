#pragma once

#include <vector>

#include "Simulator/Service/Store/Placement.h"

namespace vorlane::service {

/// The default content of placements, so that everything can be tried at once. Made of the files of this folder, which
/// are part of the program. Any thread.
const std::vector<Placement>& samplePages();

}  // namespace vorlane::service
