#pragma once

#include "Public/VLValue.h"

namespace vorlane {

/// Whether a region can be made from the rule: its "beacon_type" is "ibeacon", and its "uuid" is a UUID. An invalid
/// UUID is logged at WARN.
bool validIBeaconRule(const Dictionary& rule);

}  // namespace vorlane
