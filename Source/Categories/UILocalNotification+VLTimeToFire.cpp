#include "Categories/UILocalNotification+VLTimeToFire.h"

#include "Platform/Platform.h"

namespace vorlane {

double timeToFire(const UILocalNotification& notification) {
    return notification.fireDate ? *notification.fireDate - Platform::current().clock().now() : 0;
}

}  // namespace vorlane
