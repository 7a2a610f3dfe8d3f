#pragma once

#include "Platform/UILocalNotification.h"

namespace vorlane {

/// `timeToFire` returns the seconds until the fire date, negative for a date in the past; 0 without a fire date.
double timeToFire(const UILocalNotification& notification);

}  // namespace vorlane
