#pragma once

#include "Simulator/Demo/Stage.h"

namespace vorlane::demo {

/// Writes the requests by endpoint, the sessions, totals and promises. Returns whether every promise was kept.
bool tellSummary(Stage& stage);

}  // namespace vorlane::demo
