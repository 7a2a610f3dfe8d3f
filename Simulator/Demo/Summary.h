#pragma once

#include "Simulator/Demo/Stage.h"

namespace vorlane::demo {

/// Tells what the day came to: requests by endpoint, sessions, totals, and every promise. Returns whether all of them
/// were kept.
bool tellSummary(Stage& stage);

}  // namespace vorlane::demo
