#pragma once

#include "Public/VLValue.h"

namespace vorlane {

/// Whether a region can be made of the rule: its "beacon_type" is "ibeacon", and its "uuid" is one. A UUID that is none
/// is logged at WARN.
bool validIBeaconRule(const Dictionary& rule);

}  // namespace vorlane
