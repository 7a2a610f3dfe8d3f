#pragma once

#include "Platform/UILocalNotification.h"

namespace vorlane {

/// `timeToFire`: the seconds from now to the fire date, negative when it has passed; 0 without one.
double timeToFire(const UILocalNotification& notification);

}  // namespace vorlane
