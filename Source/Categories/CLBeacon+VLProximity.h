#pragma once

#include <string>
#include <vector>

#include "Platform/CLBeacon.h"

namespace vorlane {

// The proximity of a beacon as a word.
const char* vl_proximity_unknown();
const char* vl_proximity_immediate();
const char* vl_proximity_near();
const char* vl_proximity_far();

/// `vl_getRangeStringForBeacon` returns the word for the beacon's proximity. Any other number is logged at ERROR and
/// counts as unknown.
const char* vl_getRangeStringForBeacon(const CLBeacon& beacon);

/// `vl_majorMinorAsString` returns "major_minor".
std::string vl_majorMinorAsString(const CLBeacon& beacon);

/// Returns the class and all fields, for log lines.
std::string vl_description(const CLBeacon& beacon);
/// Returns the beacons in square brackets.
std::string vl_description(const std::vector<CLBeacon>& beacons);

}  // namespace vorlane
