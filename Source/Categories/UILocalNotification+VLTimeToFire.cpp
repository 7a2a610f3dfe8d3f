#include "Categories/UILocalNotification+VLTimeToFire.h"

#include "Categories/NSDate+VLTimestamp.h"

namespace vorlane {

double timeToFire(const UILocalNotification& notification) {
    return notification.fireDate ? *notification.fireDate - vl_now() : 0;
}

}  // namespace vorlane
