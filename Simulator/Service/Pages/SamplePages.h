#pragma once

#include <vector>

#include "Simulator/Service/Store/Placement.h"

namespace vorlane::service {

/// What placements show in an app for which nothing else was set, so that everything can be tried at once. Made of the
/// files in Pages/, which are part of the program. Any thread.
const std::vector<Placement>& samplePages();

}  // namespace vorlane::service
