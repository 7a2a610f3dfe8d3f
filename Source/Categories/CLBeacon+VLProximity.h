#pragma once

#include <string>
#include <vector>

#include "Platform/CLBeacon.h"

namespace vorlane {

// The words for how near a beacon is.
const char* vl_proximity_unknown();
const char* vl_proximity_immediate();
const char* vl_proximity_near();
const char* vl_proximity_far();

/// `vl_getRangeStringForBeacon` gives the word for the beacon's proximity. A number that has none is logged at ERROR
/// and counts as unknown.
const char* vl_getRangeStringForBeacon(const CLBeacon& beacon);

/// `vl_majorMinorAsString`: "major_minor".
std::string vl_majorMinorAsString(const CLBeacon& beacon);

/// As log lines show it: the class and all fields.
std::string vl_description(const CLBeacon& beacon);
/// The beacons in square brackets.
std::string vl_description(const std::vector<CLBeacon>& beacons);

}  // namespace vorlane
